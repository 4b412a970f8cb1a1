"""Plots, overviews, particle views and studies drawn by the module are the
command line's own: the same PNG bytes under one clock, the same points and
statistics."""
import json
import os
import threading

import numpy as np
import pytest

import viewer
from conftest import REALDATA, cli, cli_files

# (what the module is asked, the same request on the command line)
CASES = [
    (lambda r: r.plot("1:2"), ["rfgun,1", "--plot", "1:2"]),
    (lambda r: r.plot((1, 2), runs=[1, 2, 3], zoom=(0.5, 3.0)), ["rfgun,1", "--plot", "1:2", "--runs", "1,2,3",
                                                                  "--zoom", "0.5:3.0"]),
    (lambda r: r.plot("1:1", fit=3, mono=True), ["rfgun,1", "--plot", "1:1", "--fit", "3", "--mono"]),
    (lambda r: r.plot("3:1", runs="all"), None),  # a scan row draws one run: refused by both
    (lambda r: r.overview(1), ["rfgun,1", "--overview", "1"]),
    (lambda r: r.particle_file("0500").plot("x:xp", lost=True), ["rfgun,1", "--plane", "x:xp", "--lost"]),
    (lambda r: r.particle_file(0).slices(10, along="z"), ["rfgun,1", "--slices", "10", "--along", "z"]),
]


@pytest.mark.parametrize("ask,args", CASES)
def test_pictures_and_numbers_are_the_command_lines(example, tmp_path, ask, args):
    run = viewer.Run(example, "rfgun", 1)
    if args is None:
        with pytest.raises(viewer.ViewerError, match="lays runs over each other on the rows drawn against z"):
            ask(run)
        return
    if "--plane" in args or "--slices" in args:
        which = "0500" if "--plane" in args else 0
        args = args[:1] + ["--particles", run.particle_file(which).path] + args[1:]
    picture = ask(run)
    png, csvs, stats = cli_files(example, str(tmp_path), args)
    assert picture.png == png and picture._repr_png_() == png
    assert picture.stats == json.loads(stats)
    points = picture.points if isinstance(picture.points, list) else [picture.points]
    assert len(points) == len(csvs)
    for ours, text in zip(points, csvs):
        header = text.splitlines()[0].split(",")
        assert list(ours) == header
        first = [float(v) if v else np.nan for v in text.splitlines()[1].split(",")]
        assert np.allclose([ours[h][0] for h in header], first, equal_nan=True, rtol=0, atol=0)
    assert picture.text.strip() and "\n" in picture.text


def test_saved_files_are_the_command_lines(example, tmp_path):
    picture = viewer.Run(example, "rfgun", 2).plot("1:5")
    for ext, magic in ((".png", b"\x89PNG"), (".ps", b"%!PS"), (".eps", b"%!PS"), (".pdf", b"%PDF")):
        picture.save(tmp_path / f"a{ext}")
        assert (tmp_path / f"a{ext}").read_bytes().startswith(magic), ext
    assert (tmp_path / "a.png").read_bytes() == picture.png


def test_particle_files_and_their_numbers(example):
    run = viewer.Run(example, "rfgun", 1)
    files = run.particles()
    assert [f["position"] for f in files] == [20, 30, 500] and files[2]["active"] == 1990
    f = run.particle_file("0500")
    status, out, _ = cli(example, "rfgun,1", "--particles", "0500")
    assert status == 0 and out.splitlines()[0].strip() == "particle file: rfgun.0500.001"
    a = f.array
    assert len(a) == f.stats["particles"]["active"] == 1990
    assert f.units["xp"] == "mrad" and list(a.dtype.names)[-1] == "q"
    x = f.stats["transverse"]["x"] if "transverse" in f.stats else None
    rms = np.sqrt(np.average((a["x"] - np.average(a["x"], weights=a["q"])) ** 2, weights=a["q"]))
    assert x is None or np.isclose(rms, x["rms [mm]"], rtol=1e-9)
    assert np.isclose(rms, 1.9548, atol=5e-5)  # the .Xemit record at this z


def test_a_study_ranks_the_real_runs(tmp_path):
    if not os.path.isdir(REALDATA):
        pytest.skip("no real runs beside the project")
    s = viewer.study(REALDATA, front=["NX_EMIT", "Z_RMS"])
    _, _, stats = cli_files(".", str(tmp_path), ["--study", os.path.abspath(REALDATA), "--front", "NX_EMIT,Z_RMS"],
                            picture=False)
    expected = json.loads(stats)["runs"]
    assert [(r["folder"], r["project"], r["run"], r["front"]) for r in s] == [
        (r["folder"], r["project"], r["run"], r["front"]) for r in expected]
    assert all(r.get("NX_EMIT") == e["figures"].get("NX_EMIT [pi mrad mm]") for r, e in zip(s, expected))
    assert s.units["Z_RMS"] == "mm" and sum(r["front"] for r in s) >= 1
    frame = s.to_pandas() if pytest.importorskip("pandas") else None
    assert len(frame) == len(s)
    dots = s.scatter("NX_EMIT", "Z_RMS")
    assert dots.png.startswith(b"\x89PNG") and len(dots.points["NX_EMIT [pi mrad mm]"]) == len(s)


def test_two_threads_draw_one_at_a_time_and_right(example):
    run = viewer.Run(example, "rfgun", 1)
    alone = {row: run.plot(row).png for row in ("1:2", "1:4")}
    answers, failures = {}, []

    def draw(row):
        try:
            for _ in range(3):
                answers.setdefault(row, set()).add(run.plot(row).png)
                assert len(run.table("track")) > 0
        except Exception as e:  # noqa: BLE001 - reported below
            failures.append(e)

    threads = [threading.Thread(target=draw, args=(row,)) for row in alone]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert not failures
    assert answers == {row: {png} for row, png in alone.items()}
