# SPDX-License-Identifier: MIT
"""Runs the code cells of each notebook in examples/python/ in order, in a fresh namespace as a kernel does, and
compares what they print and show with the outputs that the notebook keeps.

usage: notebook_test.py            compare
       notebook_test.py --update   keep what they print now
"""
import ast
import contextlib
import io
import json
import pathlib
import sys
import unittest

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "examples" / "python"


def lines(text):
    return text.splitlines(keepends=True)


def shown(value, count):
    """What a kernel sends for the value of a cell's last line."""
    data = {}
    if hasattr(value, "_repr_svg_"):
        data["image/svg+xml"] = lines(value._repr_svg_())
    data["text/plain"] = lines(repr(value))
    return {
        "data": data,
        "execution_count": count,
        "metadata": {},
        "output_type": "execute_result",
    }


def run(source, names, count):
    """The outputs of a cell."""
    tree = ast.parse(source)
    last = None
    if tree.body and isinstance(tree.body[-1], ast.Expr):
        last = ast.Expression(tree.body.pop().value)
    printed = io.StringIO()
    value = None
    with contextlib.redirect_stdout(printed):
        exec(compile(tree, f"cell {count}", "exec"), names)
        if last:
            value = eval(compile(last, f"cell {count}", "eval"), names)
    outputs = []
    if printed.getvalue():
        outputs.append(
            {"name": "stdout", "output_type": "stream", "text": lines(printed.getvalue())}
        )
    if value is not None:
        outputs.append(shown(value, count))
    return outputs


def code_cells(notebook):
    return [cell for cell in notebook["cells"] if cell["cell_type"] == "code"]


def outputs_of(path):
    """What each code cell gives, run beside the notebook."""
    names = {"__name__": "__main__"}
    cells = code_cells(json.loads(path.read_text(encoding="utf-8")))
    with contextlib.chdir(path.parent):
        return [run("".join(cell["source"]), names, i) for i, cell in enumerate(cells, 1)]


def update(path):
    notebook = json.loads(path.read_text(encoding="utf-8"))
    for count, (cell, outputs) in enumerate(zip(code_cells(notebook), outputs_of(path)), 1):
        cell["execution_count"] = count
        cell["outputs"] = outputs
    text = json.dumps(notebook, indent=1, ensure_ascii=False) + "\n"
    path.write_text(text, encoding="utf-8")


class Notebooks(unittest.TestCase):
    def test_give_what_they_keep(self):
        paths = sorted(FOLDER.glob("*.ipynb"))
        self.assertTrue(paths)
        for path in paths:
            cells = code_cells(json.loads(path.read_text(encoding="utf-8")))
            self.assertGreater(sum(bool(cell["outputs"]) for cell in cells), 3, path.name)
            for count, (cell, outputs) in enumerate(zip(cells, outputs_of(path)), 1):
                self.assertEqual(cell["outputs"], outputs, f"{path.name}, cell {count}")

    def test_are_of_the_form_that_readers_expect(self):
        for path in FOLDER.glob("*.ipynb"):
            notebook = json.loads(path.read_text(encoding="utf-8"))
            self.assertEqual((notebook["nbformat"], notebook["nbformat_minor"]), (4, 5))
            ids = [cell["id"] for cell in notebook["cells"]]
            self.assertEqual(len(set(ids)), len(ids), path.name)
            counts = [cell["execution_count"] for cell in code_cells(notebook)]
            self.assertEqual(counts, list(range(1, len(counts) + 1)), path.name)


if __name__ == "__main__":
    if sys.argv[1:] == ["--update"]:
        for notebook_path in FOLDER.glob("*.ipynb"):
            update(notebook_path)
    else:
        unittest.main()
