"""Every table kind of the bundled run and of the real runs reads in the
module to the values the command line's --table --csv writes."""
import csv
import io
import os
import re

import numpy as np
import pytest

import viewer
from conftest import REALDATA, SOURCE, cli


def runs_of(folder, most=3):
    """(folder, project, run) of the runs whose tables a folder holds, a few of each folder."""
    found = set()
    for name in os.listdir(folder):
        m = re.fullmatch(r"(.+)\.([A-Za-z][A-Za-z0-9_-]*)\.(\d{3})", name)
        if m and os.path.isfile(os.path.join(folder, name)):
            found.add((m[1], int(m[3])))
    return [(folder, p, r) for p, r in sorted(found)[:most]]


def every_run():
    runs = runs_of(os.path.join(SOURCE, "examples"))
    if os.path.isdir(REALDATA):
        for d in sorted(os.listdir(REALDATA)):
            if os.path.isdir(os.path.join(REALDATA, d)):
                runs += runs_of(os.path.join(REALDATA, d), 1)
    return runs


def as_read(array, column, name):
    """The CSV text of a column read back into the array's own type."""
    t = array.dtype[name]
    if t.kind == "S":
        return np.array([c.encode() for c in column], dtype=t)
    if t.kind == "b":
        return np.array([c == "1" for c in column])
    return np.array([float(c) for c in column]).astype(t)


@pytest.mark.parametrize("folder,project,run", every_run(), ids=lambda v: os.path.basename(str(v)))
def test_every_kind_reads_as_the_command_line(folder, project, run):
    r = viewer.Run(folder, project, run)
    for kind in r.kinds:
        status, out, err = cli(folder, f"{project},{run}", "--table", kind)
        if status != 0:  # a table the readers refuse is refused by both, in the same words
            with pytest.raises(viewer.ViewerError) as e:
                r.table(kind)
            assert str(e.value) in err
            continue
        rows = list(csv.reader(io.StringIO(out)))
        a = r.table(kind)
        assert len(a) == len(rows) - 1, kind
        units = r.units(kind)
        for i, name in enumerate(a.dtype.names):
            head = rows[0][i]
            assert head.split(" [")[0] == name and (units.get(name, "") in ("", head[len(name) + 2 : -1])), head
            expected = as_read(a, [row[i] for row in rows[1:]], name)
            assert np.array_equal(a[name], expected, equal_nan=a.dtype[name].kind == "f"), f"{kind} {name}"


def test_tables_are_numpy_views_and_frame_into_pandas(example):
    r = viewer.Run(example, "rfgun", 1)
    x = r.table("Xemit")
    assert x.base is not None and not x.flags.owndata  # the reader's buffer, not a copy
    assert x.dtype["X_RMS"] == np.float32 and r.units("Xemit")["X_RMS"] == "mm"
    pandas = pytest.importorskip("pandas")
    frame = r.to_pandas("Xemit")
    assert isinstance(frame, pandas.DataFrame) and list(frame.columns) == list(x.dtype.names)
    assert frame["Z_MEAN"].iloc[-1] == x["Z_MEAN"][-1]


def test_large_tables_read_in_pieces_like_whole(tmp_path):
    """A table above the split size reads the same as record by record, its
    records spanning lines or not, and a bad record is named at its line."""
    n = 120_000
    one = "".join(f"{i % 9 + 1:5d}{0:5d}{i * 1e-6:12.4E}{-i * 1e-7:12.4E} 1.0 2.0 3.0 4.0\n" for i in range(n))
    (tmp_path / "a.track.001").write_text(one)
    t = viewer.Run(tmp_path, "a", 1).table("track")
    assert len(t) == n and t["I"][-1] == (n - 1) % 9 + 1 and t["Z"][n // 2] == np.float32((n // 2) * 1e-6)
    # every record over two lines: the cut falls inside one, and the reader starts again whole
    (tmp_path / "b.track.001").write_text(one.replace(" 1.0 2.0", "\n 1.0 2.0"))
    assert np.array_equal(viewer.Run(tmp_path, "b", 1).table("track"), t)
    bad = one.splitlines(keepends=True)
    bad[100_000] = bad[100_000].replace("1.0", "x.0")
    (tmp_path / "c.track.001").write_text("".join(bad))
    with pytest.raises(viewer.ViewerError, match=r"c\.track\.001, line 100001, column"):
        viewer.Run(tmp_path, "c", 1).table("track")
