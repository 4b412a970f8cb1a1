#!/usr/bin/python3
"""The README's picture of the tour notebook: its first cells run in a fresh
kernel, laid out as a notebook page in HTML, for a headless browser to take.

    tools/notebook_picture.py NOTEBOOK RUN_DIR OUT.html   (PYTHONPATH finds the module)
"""
import html
import sys

import nbclient
import nbformat

notebook, run_dir, out = sys.argv[1:4]
nb = nbformat.read(notebook, as_version=4)
nb.cells = nb.cells[:6]  # a table and three runs laid over each other
nbclient.NotebookClient(nb, timeout=120, kernel_name="python3", resources={"metadata": {"path": run_dir}}).execute()

parts = []
for cell in nb.cells:
    if cell.cell_type == "markdown":
        text = html.escape(cell.source.lstrip("# "))
        parts.append(f"<p class=md>{text}</p>")
        continue
    parts.append(f"<div class=in><span>In [{cell.execution_count}]:</span><pre>{html.escape(cell.source)}</pre></div>")
    for o in cell.outputs:
        data = o.get("data", {})
        if "image/png" in data:
            parts.append(f"<div class=out><img src='data:image/png;base64,{data['image/png']}'></div>")
        else:
            text = o.get("text") or data.get("text/plain", "")
            parts.append(f"<div class=out><pre>{html.escape(text)}</pre></div>")
style = """body{font-family:sans-serif;width:1000px;margin:16px;font-size:14px}
.in{display:flex;background:#f5f5f5;border:1px solid #ddd;margin:6px 0}
.in span{color:#303f9f;width:70px;padding:6px;font-family:monospace}
pre{margin:6px;white-space:pre-wrap}.out{margin-left:70px}.out img{width:640px}
.md{margin:10px 0 4px 0}"""
with open(out, "w") as f:
    f.write(f"<!doctype html><html><head><style>{style}</style></head><body>{''.join(parts)}</body></html>")
