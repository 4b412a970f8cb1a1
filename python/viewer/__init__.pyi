"""The viewer of beam-tracking runs, in a notebook: tables, plots, particle files and studies."""

import os
from typing import Any, Iterable, Sequence

import numpy as np

__version__: str

class ViewerError(Exception):
    """A request the viewer refuses, with the message the command line prints."""

_Size = tuple[int, int]
_Runs = str | Sequence[int] | Sequence["Run | int"]

class Picture:
    """A plot as the viewer draws it, with the numbers behind it; shows inline in Jupyter."""

    png: bytes
    """The picture as PNG."""
    text: str
    """The console block of the plot."""
    stats: dict[str, Any]
    """What --stats writes: the statistics blocks and fits."""
    points: dict[str, np.ndarray] | list[dict[str, np.ndarray]]
    """The points as drawn, a numpy array a column as --csv writes them."""
    def _repr_png_(self) -> bytes: ...
    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the picture to a .png, .pdf, .ps or .eps file."""

class Run:
    """One run of the tracker: its tables, rows, plots and particle files."""

    directory: str
    project: str
    run: int
    kinds: list[str]
    """The table kinds present, such as ["Xemit", "Yemit", "Zemit", "ref"]."""
    def __init__(self, directory: str | os.PathLike[str] = ".", project: str = "rfgun", run: int = 1) -> None: ...
    def table(self, kind: str) -> np.ndarray:
        """The table of a kind as a structured array, one field a catalogue field (Z_MEAN, X_RMS, ...)."""
    def units(self, kind: str) -> dict[str, str]:
        """The unit of each field of a kind."""
    def to_pandas(self, kind: str) -> Any:
        """The table of a kind as a pandas DataFrame."""
    def rows(self) -> list[tuple[str, str]]:
        """The rows this run offers, as ("PAGE:ROW", text), as --list prints them."""
    def plot(
        self,
        row: str | tuple[int, int],
        *,
        runs: _Runs | None = None,
        zoom: tuple[float, float] | None = None,
        fit: int | None = None,
        geometry: bool | str = False,
        bins: int | None = None,
        mono: bool = False,
        size: _Size = (1000, 700),
    ) -> Picture:
        """A row drawn as the menu draws it, runs laid over each other where given."""
    def overview(
        self,
        page: int,
        *,
        runs: _Runs | None = None,
        zoom: tuple[float, float] | None = None,
        fit: int | None = None,
        geometry: bool | str = False,
        bins: int | None = None,
        mono: bool = False,
        size: _Size = (1000, 700),
    ) -> Picture:
        """The nine-panel overview sheet of a page."""
    def particles(self) -> list[dict[str, Any]]:
        """The run's particle files: id, name, path, position, z [m], particles, active."""
    def particle_file(self, which: int | str | os.PathLike[str]) -> ParticleFile:
        """A particle file by id, position ("0360") or path."""

class ParticleFile:
    """One particle file: its active particles, statistics and views."""

    path: str
    name: str
    stats: dict[str, Any]
    """The statistics block, as --stats writes it."""
    units: dict[str, str]
    @property
    def array(self) -> np.ndarray:
        """The active particles: x, y, z [mm], xp, yp [mrad], px, py, pz [MeV/c], E [MeV], dE [keV], t [ps], q [nC]."""
    def plot(
        self,
        plane: str = "x:xp",
        *,
        window: tuple[tuple[float, float], tuple[float, float]] | None = None,
        bins: int | None = None,
        lost: bool = False,
        density: bool = False,
        mono: bool = False,
        size: _Size = (1000, 700),
    ) -> Picture:
        """A phase-space plane with its projections."""
    def slices(self, n: int = 20, *, along: str | None = None, mono: bool = False, size: _Size = (1000, 700)) -> Picture:
        """The bunch in n slices along "t" or "z"."""
    def sheet(self, *, mono: bool = False, size: _Size = (1000, 700)) -> Picture:
        """The nine panels of the file."""

class Study(list[dict[str, Any]]):
    """The figures of every run of a tree, one dict a run."""

    units: dict[str, str]
    text: str
    def to_pandas(self) -> Any:
        """The study as a pandas DataFrame."""
    def scatter(self, x: str, y: str, *, colour: str | None = None, size: _Size = (1000, 700)) -> Picture:
        """Figure x against figure y, one dot a run, the Pareto front joined."""

def study(
    directory: str | os.PathLike[str] | Iterable[str | os.PathLike[str]] = ".",
    figures: Sequence[str] | None = None,
    front: Sequence[str] | None = None,
) -> Study:
    """The figures of merit of every run under a directory."""
