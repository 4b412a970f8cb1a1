"""The viewer of beam-tracking runs, in a notebook.

The same readers, plots and statistics as the `viewer` command:

    import viewer
    run = viewer.Run("examples", "rfgun", 1)
    run.table("Xemit")["X_RMS"]        # a numpy array
    run.plot("1:2", runs=[1, 2, 3])   # shows inline

Every error is a `ViewerError` with the message the command line prints.
"""

import csv
import io
import json
import os
import re
import warnings

import numpy as np

from ._viewer import Library as _Library
from ._viewer import ViewerError, __version__
from . import _viewer

__all__ = ["Run", "Picture", "ParticleFile", "Study", "study", "ViewerError", "__version__"]

_library = _Library()  # the one drawing state of the process


def _pass(directory, args, picture="", save="", numbers=False):
    answer = _library.run(str(directory), [str(a) for a in args], picture, save, numbers)
    if answer["notes"].strip():
        warnings.warn(answer["notes"].strip().removeprefix("viewer: "), stacklevel=3)
    return answer


def _points(text):
    """One CSV of the export as columns: header -> numpy array (empty cells NaN)."""
    rows = list(csv.reader(io.StringIO(text)))
    if not rows:
        return {}
    header, body = rows[0], rows[1:]
    return {name: _column([r[i] if i < len(r) else "" for r in body]) for i, name in enumerate(header)}


def _column(cells):
    """Numbers as floats (empty cells NaN); a column of names, such as a study's runs, as text."""
    try:
        return np.array([float(c) if c != "" else np.nan for c in cells])
    except ValueError:
        return np.array(cells)


def _size(size):
    width, height = size
    return ["--size", f"{int(width)}x{int(height)}"]


class Picture:
    """A plot as the viewer draws it, with the numbers behind it.

    Shows inline in Jupyter. `png` holds the bytes of the picture, `text`
    the console block, `stats` what `--stats` writes, `points` the points as
    drawn, one numpy array a column as `--csv` writes them (a list of such
    dicts when the picture holds several plots). `save(path)` writes .png,
    .pdf, .ps or .eps.
    """

    def __init__(self, directory, args, size):
        self._directory, self._args = directory, list(args)
        answer = _pass(directory, self._args + _size(size), picture=".png", numbers=True)
        self.png = answer["picture"]
        self.text = answer["text"]
        self.stats = json.loads(answer["json"]) if answer["json"] else {}
        points = [_points(t) for t in answer["csv"]]
        self.points = points[0] if len(points) == 1 else points
        self._size = size

    def _repr_png_(self):
        return self.png

    def save(self, path):
        """Writes the picture to `path`: .png (at the picture's size), .pdf, .ps or .eps."""
        path = os.fspath(path)
        extra = _size(self._size) if path.lower().endswith(".png") else []
        _pass(self._directory, self._args + extra, save=os.path.abspath(path))

    def __repr__(self):
        return f"<viewer.Picture {' '.join(self._args)}>"


def _run_items(base, runs):
    """--runs as the command line takes it: a list text, or items of other projects."""
    if isinstance(runs, str):
        return [runs]
    items = list(runs)
    if all(isinstance(r, int) for r in items):
        return [",".join(str(r) for r in items)]
    out = []
    for r in items:
        if isinstance(r, int):
            r = Run(base.directory, base.project, r)
        if not isinstance(r, Run):
            raise ViewerError(f"--runs takes run numbers or viewer.Run objects, not {r!r}")
        folder = os.path.relpath(r.directory, base.directory)
        out.append(("" if folder == "." else folder + "/") + f"{r.project},{r.run}")
    return out


def _plot_options(runs, zoom, fit, geometry, bins, mono, base):
    args = []
    if runs is not None:
        args += ["--runs"] + _run_items(base, runs)
    if zoom is not None:
        low, high = zoom
        args += ["--zoom", f"{float(low)!r}:{float(high)!r}"]
    if fit:
        args += ["--fit", str(fit)]
    if geometry:
        args += ["--geometry" if geometry is True else f"--geometry={os.fspath(geometry)}"]
    if bins:
        args += ["--bins", str(bins)]
    if mono:
        args += ["--mono"]
    return args


class Run:
    """One run of the tracker: its tables, rows, plots and particle files.

    `Run(directory=".", project="rfgun", run=1)` raises `ViewerError` when
    the directory holds no table and no particle file of that run.
    """

    def __init__(self, directory=".", project="rfgun", run=1):
        self.directory = os.fspath(directory)
        self.project = str(project)
        self.run = int(run)
        if not os.path.isdir(self.directory):
            raise ViewerError(f"no directory {self.directory}")
        self.kinds = _viewer.table_kinds(self.directory, self.project, self.run)
        """The table kinds present, such as ["Xemit", "Yemit", "Zemit", "ref"]."""
        if not self.kinds and not self.particles():
            where = os.path.normpath(os.path.abspath(self.directory))
            raise ViewerError(f"no data files of project {self.project}, run {self.run:03d} in {where}")

    def __repr__(self):
        return f"viewer.Run({self.directory!r}, {self.project!r}, {self.run})"

    @property
    def _arg(self):
        return f"{self.project},{self.run}"

    def table(self, kind):
        """The table of `kind` ("Xemit", "ref", ...) as a numpy structured array.

        One field a field of the catalogue (Z_MEAN, X_RMS, ...), each value
        exactly as the viewer reads it; 32-bit where the tracker writes 32-bit.
        """
        return _viewer.read_table(self.directory, self.project, self.run, kind)

    def units(self, kind):
        """The unit of each field of `kind`, as a dict (empty where none)."""
        return _viewer.units(kind)

    def to_pandas(self, kind):
        """The table of `kind` as a pandas DataFrame (needs pandas)."""
        import pandas

        return pandas.DataFrame(self.table(kind))

    def rows(self):
        """The rows this run offers, as ("PAGE:ROW", text) pairs, as --list prints them."""
        text = _pass(self.directory, [self._arg, "--list"])["text"]
        return re.findall(r"^  (\d+:\d+) +(.*)$", text.split("particle files\n")[0], flags=re.M)

    def plot(self, row, *, runs=None, zoom=None, fit=None, geometry=False, bins=None, mono=False,
             size=(1000, 700)):
        """A row ("1:2" or (1, 2)) drawn as the menu draws it: a `Picture`.

        runs: run numbers, a list text ("1-3", "all") or `Run` objects of
        other projects and folders, laid over each other; zoom: (low, high)
        of the abscissa; fit: a model of the fit menu, 1 to 11; geometry:
        True or an aperture file; bins, mono and size as for the export.
        """
        if not isinstance(row, str):
            row = f"{row[0]}:{row[1]}"
        args = [self._arg, "--plot", row] + _plot_options(runs, zoom, fit, geometry, bins, mono, self)
        return Picture(self.directory, args, size)

    def overview(self, page, *, runs=None, zoom=None, fit=None, geometry=False, bins=None, mono=False,
                 size=(1000, 700)):
        """The nine-panel overview sheet of a page, as `plot` draws a row."""
        args = [self._arg, "--overview", str(page)] + _plot_options(runs, zoom, fit, geometry, bins, mono, self)
        return Picture(self.directory, args, size)

    def particles(self):
        """The run's particle files: dicts of id, name, path, position, z [m], particles, active."""
        return _viewer.list_particles(self.directory, self.project, self.run)

    def particle_file(self, which):
        """A particle file by its id in `particles()`, its position ("0360") or a path."""
        if isinstance(which, int):
            files = self.particles()
            if not 0 <= which < len(files):
                raise ViewerError(f"no particle file with id {which}: the run has {len(files)}")
            return ParticleFile(files[which]["path"], self)
        which = os.fspath(which)
        if re.fullmatch(r"\d{4}", which):
            for f in self.particles():
                if f["position"] == int(which):
                    return ParticleFile(f["path"], self)
            raise ViewerError(f"no particle file {self.project}.{which}.{self.run:03d}")
        return ParticleFile(which, self)


class ParticleFile:
    """One particle file: its active particles, statistics and views."""

    def __init__(self, path, run=None):
        self.path = os.path.abspath(os.fspath(path))
        self.name = os.path.basename(self.path)
        self._directory = run.directory if run else os.path.dirname(self.path)
        self._arg = [run._arg] if run else []
        self._array = None
        self.stats = json.loads(_pass(self._directory, self._arg + ["--particles", self.path],
                                      numbers=True)["json"])
        """The statistics block of the file, as --stats writes it."""

    def __repr__(self):
        return f"viewer.ParticleFile({self.path!r})"

    @property
    def array(self):
        """The active particles, one field a coordinate in the views' units (x, y, z [mm], xp, yp
        [mrad], px, py, pz [MeV/c], E [MeV], dE [keV], t [ps]) and q [nC]."""
        if self._array is None:
            self._array, self.units = _viewer.read_particles(self.path)
        return self._array

    def _view(self, view, window, bins, lost, density, mono, size):
        args = self._arg + ["--particles", self.path] + view
        if window is not None:
            (x1, x2), (y1, y2) = window
            args += ["--window", f"{x1!r}:{x2!r},{y1!r}:{y2!r}"]
        if bins:
            args += ["--bins", str(bins)]
        args += ["--lost"] * bool(lost) + ["--density"] * bool(density) + ["--mono"] * bool(mono)
        return Picture(self._directory, args, size)

    def plot(self, plane="x:xp", *, window=None, bins=None, lost=False, density=False, mono=False,
             size=(1000, 700)):
        """A phase-space plane ("x:xp", "z:dE", ...): dots or a density, with projections."""
        return self._view(["--plane", plane], window, bins, lost, density, mono, size)

    def slices(self, n=20, *, along=None, mono=False, size=(1000, 700)):
        """The bunch in `n` slices along "t" or "z": current, slice emittances, energy, spread."""
        view = ["--slices", str(n)] + (["--along", along] if along else [])
        return self._view(view, None, None, False, False, mono, size)

    def sheet(self, *, mono=False, size=(1000, 700)):
        """The nine panels of the file on one page."""
        return self._view(["--sheet"], None, None, False, False, mono, size)


class Study(list):
    """The figures of every run of a tree: a list of dicts, one a run.

    Each holds folder, project, run, state, records, front and the figures
    by name; `units` gives the unit of each figure.
    """

    def __init__(self, directories, figures=None, front=None):
        self._args = ["--study"] + [os.path.abspath(os.fspath(d)) for d in directories]
        if figures:
            self._args += ["--figures", ",".join(figures)]
        if front:
            self._args += ["--front", ",".join(front)]
        answer = _pass(".", self._args, numbers=True)
        data = json.loads(answer["json"])
        self.text = answer["text"]
        self.units = {}
        for r in data["runs"]:
            row = {k: v for k, v in r.items() if k != "figures"}
            for key, value in r["figures"].items():
                name, _, unit = key.partition(" [")
                self.units[name] = unit.rstrip("]")
                row[name] = value
            self.append(row)

    def to_pandas(self):
        """The study as a pandas DataFrame (needs pandas)."""
        import pandas

        return pandas.DataFrame(list(self))

    def scatter(self, x, y, *, colour=None, size=(1000, 700)):
        """Figure `x` against figure `y`, one dot a run, the front joined: a `Picture`."""
        args = self._args + ["--scatter", f"{x}:{y}"] + (["--colour", colour] if colour else [])
        return Picture(".", args, size)


def study(directory=".", figures=None, front=None):
    """The figures of merit of every run under `directory` (one or a list): a `Study`.

    figures: names such as ["NX_EMIT", "Z_RMS"] (default: all); front: two
    or three figures (a leading "-" for larger is better) whose Pareto front
    is marked in each run's "front".
    """
    directories = [directory] if isinstance(directory, (str, os.PathLike)) else list(directory)
    return Study(directories, figures, front)
