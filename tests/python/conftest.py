"""Shared pieces of the notebook module's tests: the command line beside the
module, a copy of the bundled run, and one fixed clock for both, so that
their pictures can be compared byte for byte."""
import os
import shutil
import subprocess

import pytest

os.environ["SOURCE_DATE_EPOCH"] = "1764000000"
SOURCE = os.environ.get("VIEWER_SOURCE_DIR", os.path.join(os.path.dirname(__file__), "..", ".."))
BINARY = os.environ.get("VIEWER_BINARY", os.path.join(SOURCE, "build", "viewer"))
REALDATA = os.path.join(SOURCE, "..", "shared", "realdata")


@pytest.fixture(scope="session")
def example(tmp_path_factory):
    """A copy of the bundled runs, so that no test writes beside the sources."""
    d = tmp_path_factory.mktemp("example")
    for f in os.listdir(os.path.join(SOURCE, "examples")):
        if f.startswith("rfgun."):
            shutil.copy(os.path.join(SOURCE, "examples", f), d)
    return str(d)


def cli(cwd, *args):
    """The command line's answer: status, standard output, standard error."""
    p = subprocess.run([BINARY, *args], cwd=cwd, capture_output=True, text=True)
    return p.returncode, p.stdout, p.stderr


def cli_files(cwd, tmp, args, picture=True):
    """The files an export writes for `args`: png bytes, csv texts, stats text."""
    out = os.path.join(tmp, "cli")
    extra = ["--out", out + ".png", "--size", "1000x700"] if picture else []
    status, _, err = cli(cwd, *args, *extra, "--csv", out + ".csv", "--stats", out + ".json")
    assert status == 0, err
    csvs, n = [], 1
    while os.path.exists(name := out + (".csv" if n == 1 else f"_{n}.csv")):
        csvs.append(open(name).read())
        n += 1
    png = open(out + ".png", "rb").read() if picture else b""
    return png, csvs, open(out + ".json").read()
