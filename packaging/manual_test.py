#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the manual pages and the completion of a program with what its --help prints.

usage: manual_test.py PROGRAM FOLDER

Reads --help without manual.py: every command has its page, on which each of its options and each
line of its help stands, and bash completes every option and every command.
"""
import pathlib
import re
import shutil
import subprocess
import sys


def output_of(*command, **how):
    return subprocess.run(command, check=True, capture_output=True, text=True, **how).stdout


def commands_of(text):
    section = re.search(r"^Subcommands:\n((?:  .*\n)+)", text, re.MULTILINE)
    return re.findall(r"^  (\w+)", section[1], re.MULTILINE) if section else []


def plain(text):
    """Letters and digits alone, without their case: neither how lines break nor how characters are escaped."""
    return re.sub(r"\W", "", text).casefold()


def page_words(page):
    source = page.read_text(encoding="utf-8")
    escapes = {"\\-": "-", "\\e": "\\", "\\&": "", "\\(ga": "`", "\\(aq": "'", "\\(ha": "^", "\\(ti": "~"}
    for escape, character in escapes.items():
        source = source.replace(escape, character)
    return plain(source)


def completed(script, *words):
    """What bash offers for the last word of a command line."""
    quoted = " ".join(f"'{word}'" for word in words)
    return output_of("bash", "-c", f"""source '{script}'; COMP_WORDS=({quoted})
        COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); $(complete -p {words[0]} | sed 's/.*-F \\([^ ]*\\).*/\\1/')
        printf '%s\\n' "${{COMPREPLY[@]}}" """).split()


def problems_of(program, folder, path):
    name = pathlib.Path(program).name
    shown = " ".join((name, *path))
    text = output_of(program, *path, "--help")
    page = folder / ("-".join((name, *path)) + ".1")
    if not page.exists():
        yield f"{shown} has no manual page"
        return
    words = page_words(page)
    for line in text.splitlines():
        missing = [part for part in re.split(r"  +", re.sub(r"^(Usage|Exit codes): ", "", line))
                   if not re.match(r"^(Positionals|Options|Subcommands|Examples?):$", part)
                   and plain(part) not in words]
        for part in missing:
            yield f"{page.name} lacks: {part}"
    if shutil.which("man"):
        said = subprocess.run(["man", "--warnings", "-l", "-Tutf8", "-Z", page], capture_output=True,
                              text=True, env={"LC_ALL": "C.UTF-8", "MANWIDTH": "80", "PATH": "/usr/bin:/bin"})
        if said.stderr:
            yield f"{page.name}: {said.stderr.strip()}"
    script = folder / f"{name}.bash"
    options = re.findall(r"^  (?:-\w,)?(--[\w-]+)", text, re.MULTILINE)
    if "--help" not in options:
        yield f"{shown} shows no option --help"
    lost = set(options) - set(completed(script, name, *path, "--"))
    lost |= set(commands_of(text)) - set(completed(script, name, *path, ""))
    if lost:
        yield f"bash does not complete after '{shown}': {' '.join(sorted(lost))}"
    for option, choices in re.findall(r"^  (?:-\w,)?(--[\w-]+) \S*:\{([^}]*)\}", text, re.MULTILINE):
        if completed(script, name, *path, option, "") != choices.split(","):
            yield f"bash does not complete the choices of {shown} {option}"
    for command in commands_of(text):
        yield from problems_of(program, folder, (*path, command))


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    problems = list(problems_of(sys.argv[1], pathlib.Path(sys.argv[2]), ()))
    print("\n".join(problems) or "every command has its page, bash knows every option")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
