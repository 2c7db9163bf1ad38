# SPDX-License-Identifier: MIT
import ast
import doctest
import os
import pathlib
import re
import unittest

import tiltpole
from tiltpole import _tiltpole

STUB = pathlib.Path(tiltpole.__file__).with_name("_tiltpole.pyi")


def stub_names(node):
    """Functions, attributes and properties that a class or module of the stub declares."""
    names = {}
    for item in node.body:
        if isinstance(item, (ast.FunctionDef, ast.ClassDef)):
            names[item.name] = item
        elif isinstance(item, ast.AnnAssign):
            names[item.target.id] = item
    return names


def parameters(function):
    arguments = function.args.args + function.args.kwonlyargs
    return [argument.arg for argument in arguments if argument.arg != "self"]


def documented(function):
    """The parameters by the signature that pybind11 writes into the first line of the docstring."""
    signature = function.__doc__.split("\n")[0].split(" -> ")[0]
    return [name for name in re.findall(r"[(,] ?(\w+): ", signature) if name != "self"]


class Stub(unittest.TestCase):
    def setUp(self):
        self.stub = stub_names(ast.parse(STUB.read_text(encoding="utf-8")))

    def test_declares_what_the_module_has(self):
        has = {name for name in vars(_tiltpole) if not name.startswith("_")}
        self.assertEqual(set(self.stub), has)
        self.assertEqual(set(tiltpole.__all__), has)

    def test_declares_the_members_of_each_class(self):
        for name, node in self.stub.items():
            if not isinstance(node, ast.ClassDef):
                continue
            declared = {member for member in stub_names(node) if not member.startswith("__")}
            if issubclass(getattr(_tiltpole, name), tuple):
                has = set(getattr(_tiltpole, name)._fields)
            else:
                has = {m for m in vars(getattr(_tiltpole, name)) if not m.startswith("_")}
            self.assertEqual(declared, has, name)

    def test_declares_the_parameters_of_each_function(self):
        functions = [
            (node, getattr(_tiltpole, name))
            for name, node in self.stub.items()
            if isinstance(node, ast.FunctionDef)
        ]
        functions += [
            (member, getattr(_tiltpole.Pole, name))
            for name, member in stub_names(self.stub["Pole"]).items()
            if name in ("load", "save", "position")
        ]
        self.assertGreaterEqual(len(functions), 9)
        for node, function in functions:
            self.assertEqual(parameters(node), documented(function), node.name)

    def test_declares_the_defaults_of_each_function(self):
        for name, node in self.stub.items():
            if not isinstance(node, ast.FunctionDef):
                continue
            signature = getattr(_tiltpole, name).__doc__.split("\n")[0]
            for argument, default in zip(node.args.kwonlyargs, node.args.kw_defaults):
                if default is None:
                    continue
                shown = re.search(rf"\b{argument.arg}: [^=]*= (\([^)]*\)|[^,)]*)", signature)
                self.assertEqual(
                    ast.literal_eval(shown.group(1)), ast.literal_eval(default), argument.arg
                )


class Documentation(unittest.TestCase):
    def test_has_an_example_in_the_readme_that_runs(self):
        readme = pathlib.Path(os.environ["TILTPOLE_SOURCE_DIR"], "README.md")
        (example,) = re.findall(r"```python\n(.*?)```", readme.read_text(encoding="utf-8"), re.S)
        names = {}
        exec(example, names)
        self.assertTrue(names["result"].accepted)
        self.assertEqual(names["tips"].shape, (1000, 3))

    def test_runs_as_it_is_shown(self):
        failed, attempted = doctest.testmod(tiltpole)
        self.assertGreater(attempted, 0)
        self.assertEqual(failed, 0)

    def test_tells_of_every_name(self):
        for name in tiltpole.__all__:
            self.assertTrue(getattr(tiltpole, name).__doc__, name)

    def test_tells_the_unit_of_every_number(self):
        stub = stub_names(ast.parse(STUB.read_text(encoding="utf-8")))
        told = 0
        for name, node in stub.items():
            if not isinstance(node, ast.ClassDef):
                continue
            for member, declared in stub_names(node).items():
                if member.startswith("_"):
                    continue
                doc = getattr(getattr(tiltpole, name), member).__doc__ or ""
                self.assertRegex(doc, r"[\w\]]", f"{name}.{member}")
                self.assertNotIn("Alias for field", doc, f"{name}.{member}")
                kind = declared.returns if isinstance(declared, ast.FunctionDef) else declared.annotation
                if not re.search(r"float|Doubles", ast.unparse(kind)):
                    continue
                self.assertRegex(doc, r"\[.+\]|no unit", f"{name}.{member}")
                told += 1
        self.assertGreater(told, 40)

    def test_tells_of_every_parameter(self):
        for name in tiltpole.__all__:
            function = getattr(tiltpole, name)
            if isinstance(function, type):
                continue
            text = function.__doc__.split("\n", 1)[1]
            for parameter in documented(function):
                self.assertRegex(text, rf"(?m)^(\w+, )*{parameter}\b", f"{name}: {parameter}")


if __name__ == "__main__":
    unittest.main()
