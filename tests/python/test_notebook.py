"""The tour notebook runs headless in a fresh kernel: every cell runs, and
the pictures come out as PNG."""
import base64
import os
import shutil

import pytest

from conftest import SOURCE

nbformat = pytest.importorskip("nbformat")
nbclient = pytest.importorskip("nbclient")


def test_the_tour_runs_in_a_fresh_kernel(example, tmp_path):
    for f in os.listdir(example):
        shutil.copy(os.path.join(example, f), tmp_path)
    nb = nbformat.read(os.path.join(SOURCE, "examples", "tour.ipynb"), as_version=4)
    nbclient.NotebookClient(nb, timeout=120, kernel_name="python3",
                            resources={"metadata": {"path": str(tmp_path)}}).execute()
    code = [c for c in nb.cells if c.cell_type == "code"]
    assert all(c.execution_count for c in code)
    assert not [o for c in code for o in c.outputs if o.output_type == "error"]
    pictures = [o["data"]["image/png"] for c in code for o in c.outputs if "image/png" in o.get("data", {})]
    assert len(pictures) == 4
    assert all(base64.b64decode(p).startswith(b"\x89PNG\r\n\x1a\n") for p in pictures)
