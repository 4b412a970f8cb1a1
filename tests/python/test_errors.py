"""Whatever a user passes, the module raises ViewerError with the command
line's words, and the kernel lives on."""
import os

import pytest

import viewer
from conftest import cli

HOSTILE = "  1.0000E-01  2.0000E-01  3.0000E-01\n  nonsense!!  2.0000E-01\n"


def cases(example, tmp):
    run = viewer.Run(example, "rfgun", 1)
    with open(os.path.join(tmp, "bad.Xemit.001"), "w") as f:
        f.write(HOSTILE)
    with open(os.path.join(tmp, "notes.txt"), "w") as f:
        f.write("not a particle file\n")
    return [
        (lambda: viewer.Run(os.path.join(tmp, "none")), "no directory"),
        (lambda: viewer.Run(example, "nothere", 1), "no data files of project nothere, run 001"),
        (lambda: viewer.Run(example, "rfgun", 1000), "a run is a number from 0 to 999"),
        (lambda: run.table("Nope"), 'no table kind "Nope"'),
        (lambda: run.table("C99emit"), "no table rfgun.C99emit.001"),
        (lambda: viewer.Run(tmp, "bad", 1).table("Xemit"), "bad.Xemit.001, line 2, column"),
        (lambda: run.units("Nope"), 'no table kind "Nope"'),
        (lambda: run.plot("9:9"), "there is no page 9"),
        (lambda: run.plot("1:2", zoom=(float("nan"), 1)), "--zoom takes LOW:HIGH"),
        (lambda: run.plot("1:2", fit=99), "--fit takes a fit of the fit menu"),
        (lambda: run.plot("1:2", runs=[5000]), "--runs"),
        (lambda: run.plot("1:2", runs=["x"]), "viewer.Run objects"),
        (lambda: run.plot("1:2", size=(1, 1)), "--size"),
        (lambda: run.plot("1:2").save(os.path.join(tmp, "a.gif")), "--out"),
        (lambda: run.plot("1:2").save(os.path.join(tmp, "no", "a.png")), "a.png"),
        (lambda: run.particle_file(7), "no particle file with id 7"),
        (lambda: run.particle_file("0999"), "no particle file rfgun.0999.001"),
        (lambda: run.particle_file(os.path.join(tmp, "notes.txt")), "notes.txt, line 1"),
        (lambda: run.particle_file(os.path.join(tmp, "missing")), "missing"),
        (lambda: run.particle_file("0500").plot("x:nope"), "--plane"),
        (lambda: viewer.study(os.path.join(tmp, "none")), "none"),
        (lambda: viewer.study(example, figures=["NOPE"]), "NOPE"),
        (lambda: viewer.study(example, front=["NX_EMIT"]), "--front takes two or three figures"),
    ]


def test_every_bad_request_raises_viewer_error(example, tmp_path):
    for n, (call, words) in enumerate(cases(example, str(tmp_path))):
        with pytest.raises(viewer.ViewerError, match="") as e:
            call()
            pytest.fail(f"case {n} ({words}) raised nothing")
        assert words in str(e.value), f"case {n}: {e.value}"
    assert viewer.Run(example, "rfgun", 1).plot("1:2").png  # still drawing after all of them


def test_messages_are_the_command_lines(example):
    for ask, args in ((lambda r: r.plot("1:2", zoom=(float("nan"), 1)), ["--plot", "1:2", "--zoom", "nan:1.0", "--out", "a.png"]),
                      (lambda r: r.plot("1:14"), ["--plot", "1:14", "--out", "a.png"])):
        with pytest.raises(viewer.ViewerError) as e:
            ask(viewer.Run(example, "rfgun", 3))
        status, _, err = cli(example, "rfgun,3", *args)
        assert status != 0 and err.strip() == f"viewer: {e.value}"
