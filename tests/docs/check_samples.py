#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the samples of the documents and compares what is shown with what the programs print.

usage: check_samples.py [--write] ROOT BUILD [DOCUMENT...]

With --write, output that differs is replaced in the document. docs/testing.md, "Samples in the
documents", explains the marks. The commands of a document run in order in one scratch folder with a
copy of examples/; standard output and standard error are read together, as on a terminal.
"""
import difflib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
import samples  # noqa: E402

PROGRAMS = ("apps/cli", "apps/study", "apps/gallery")
SECONDS = 300  # for one command, with sanitizers on a busy machine


def documents(root):
    yield from sorted(root.glob("*.md"))
    for folder in ("docs", "examples", "tests"):
        yield from sorted((root / folder).rglob("*.md"))


def environment(build, home):
    surroundings = {
        name: value
        for name, value in os.environ.items()
        if name not in ("XDG_DATA_HOME", "COLUMNS") and not name.startswith("LC_")
    }
    programs = [str(build / folder) for folder in PROGRAMS]
    return surroundings | {
        "PATH": os.pathsep.join([*programs, os.environ["PATH"]]),
        "HOME": str(home),
        "LC_ALL": "C.UTF-8",
        "QT_QPA_PLATFORM": "offscreen",
    }


class Scratch:
    """The folder in which the commands of one document run."""

    def __init__(self, root, build, folder):
        self.work, self.home = pathlib.Path(folder) / "work", pathlib.Path(folder) / "home"
        self.home.mkdir()
        shutil.copytree(root / "examples", self.work / "examples")
        self.surroundings = environment(build, self.home)

    def run(self, command):
        """Lines of output and the exit code."""
        done = subprocess.run(
            ["bash", "-c", command],
            cwd=self.work,
            env=self.surroundings,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            timeout=SECONDS,
            check=False,
        )
        output = done.stdout.decode("utf-8", "replace").replace("\r", "")
        output = output.replace(str(self.home), "~").replace(str(self.work), ".")
        return output.removesuffix("\n").split("\n") if output else [], done.returncode


def failed(run, code):
    """Bare commands succeed; of the others no exit code is shown, but they are found and end."""
    return code >= 126 or code < 0 or (not run.compared and code != 0)


def check(root, build, path, write):
    """Findings of one document, and the number of its runs."""
    name = path.relative_to(root)
    document = samples.find(path.read_text(encoding="utf-8"))
    findings = [f"{name}:{fault}" for fault in document.faults]
    changes = []
    with tempfile.TemporaryDirectory(prefix="samples-") as folder:
        scratch = Scratch(root, build, folder)
        for run in document.runs:
            output, code = scratch.run(run.command)
            shown, place = document.shown(run), f"{name}:{run.first + 1}"
            if failed(run, code):
                findings.append("\n".join([f"{place}: exit code {code}: {run.command}", *output]))
            elif not run.compared or samples.same(shown, output, run.varies):
                continue
            elif write and not run.hidden:
                changes.append((run, samples.filled(shown, output)))
            else:
                where = "hidden sample differs; the text beside it, too?" if run.hidden else "differs"
                findings.append("\n".join([f"{place}: {where}: {run.command}", *difference(shown, output)]))
    for run, output in reversed(changes):
        document.lines[run.first : run.end] = output
    if changes:
        path.write_text("\n".join(document.lines), encoding="utf-8")
        print(f"{name}: {len(changes)} samples written")
    return findings, len(document.runs)


def difference(shown, output):
    return list(difflib.unified_diff(shown, output, "shown", "printed", lineterm="", n=1))[2:]


def main():
    arguments = sys.argv[1:]
    write = arguments[:1] == ["--write"]
    arguments = arguments[write:]
    if len(arguments) < 2 or arguments[0].startswith("-"):
        sys.exit(__doc__)
    root, build = (pathlib.Path(argument).resolve() for argument in arguments[:2])
    chosen = [pathlib.Path(argument).resolve() for argument in arguments[2:]]
    findings, count = [], 0
    for path in chosen or documents(root):
        found, runs = check(root, build, path, write)
        findings += found
        count += runs
    if not chosen and count < 20:
        findings.append(f"only {count} samples were found")
    for finding in findings:
        print(finding)
    print(f"{count} commands run, {len(findings)} findings")
    if findings and not write:
        print("./dev docs --samples writes the output anew")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
