#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the manual pages of a program and its completion for bash from what --help prints.

usage: manual.py PROGRAM VERSION FOLDER

One page for the program and for each of its commands goes to FOLDER (tiltpole.1,
tiltpole-job-list.1, ...), the completion to FOLDER/PROGRAM.bash.
"""
import pathlib
import re
import subprocess
import sys

SECTION = re.compile(r"^(Positionals|Options|Subcommands|[A-Z][^\n]*(?=:\n  -)):$", re.MULTILINE)
ENTRY = re.compile(r"^  (\S.*?)(?:  +(\S.*))?$")
EXIT_CODES = re.compile(r"^Exit codes?: ")
CHOICES = re.compile(r":\{([^}]*)\}")


class Help:
    """The parts of one help page."""

    def __init__(self, text):
        self.summary, self.usage, self.entries, self.details = [], "", {}, []
        section = None
        headings = {match[0]: match[1] for match in SECTION.finditer(text)}
        for line in text.splitlines():
            heading = None if self.details else headings.get(line)
            entry = ENTRY.match(line) if section is not None else None
            if heading:
                section = self.entries.setdefault(heading, [])
            elif line.startswith("Usage: "):
                self.usage = line.removeprefix("Usage: ")
            elif entry:
                section.append([entry[1], entry[2] or ""])
            elif section and line.startswith(" " * 10) and section:
                section[-1][1] = (section[-1][1] + " " + line.strip()).strip()
            elif self.usage:
                if line or self.details:
                    section = None
                    self.details.append(line)
            elif line:
                self.summary.append(line)

    def options(self):
        """Each option with what may follow it: None, a list of choices, or [] for anything."""
        names = [name for entries in self.entries.values() for name, _ in entries]
        for name in filter(lambda name: name.startswith("-"), names):
            words = name.split(" ", 1)
            choices = CHOICES.search(name)
            value = None if len(words) == 1 or words[1].startswith("Excludes") else []
            if choices:
                value = choices[1].split(",")
            for option in words[0].split(","):
                yield option, value

    def commands(self):
        return [name for name, _ in self.entries.get("Subcommands", [])]


def read_help(program, path):
    result = subprocess.run([program, *path, "--help"], check=True, capture_output=True, text=True)
    return Help(result.stdout)


def read_all(program, path=()):
    """{path of a command: its help}, the program itself first."""
    pages = {path: read_help(program, path)}
    for command in pages[path].commands():
        pages.update(read_all(program, (*path, command)))
    return pages


def roff(text):
    """Text as troff prints it, character by character."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("`", "\\(ga").replace("'", "\\(aq")
    text = text.replace("^", "\\(ha").replace("~", "\\(ti")
    return "\\&" + text if text.startswith((".", "\\(aq")) else text


def paragraphs(lines):
    """The lines between blank ones."""
    block = []
    for line in [*lines, ""]:
        if line:
            block.append(line)
        elif block:
            yield block
            block = []


def as_shown(block):
    return [".PP", ".nf", *(roff(line) for line in block), ".fi"]


def details(lines):
    """The text below the options: its examples and exit codes get sections of their own."""
    text, examples, codes = [], [], []
    target = text
    for block in paragraphs(lines):
        if EXIT_CODES.match(block[0]):
            block[0] = EXIT_CODES.sub("", block[0])
            codes += [".PP", *(roff(line) for line in block)]
            continue
        if re.match(r"^Examples?:$", block[0]):
            target, block = examples, block[1:]
        else:
            target = text
        target += as_shown(block)
    out = []
    for title, body in (("DETAILS", text), ("EXAMPLES", examples), ("EXIT STATUS", codes)):
        out += [f".SH \"{title}\"", *body[1 if body[:1] == [".PP"] else 0:]] if body else []
    return out


def page(name, version, help_page, others):
    summary = " ".join(help_page.summary).split(": ")[0].split(". ")[0].rstrip(".")
    lines = [f".TH {name.upper()} 1 \"\" \"tiltpole {version}\" \"User Commands\"",
             ".SH NAME", f"{roff(name)} \\- {roff(summary[0].lower() + summary[1:])}",
             ".SH SYNOPSIS", roff(help_page.usage),
             ".SH DESCRIPTION", *(roff(line) for line in help_page.summary)]
    for section, entries in help_page.entries.items():
        lines.append(f".SH \"{'COMMANDS' if section == 'Subcommands' else roff(section.upper())}\"")
        for entry, text in entries:
            lines += [".TP", f".B {roff(entry)}", roff(text) or "\\&"]
    lines += details(help_page.details)
    if others:
        lines.append(".SH \"SEE ALSO\"")
        lines += [f".BR {roff(other)} (1){',' if other != others[-1] else ''}" for other in others]
    return "\n".join(lines) + "\n"


def completion(program, pages):
    """A bash function that knows the options of each command, and the choices of an option."""
    name = re.sub(r"\W", "_", program)
    cases, options_of, values, plain = [], [], [], []
    for path, help_page in pages.items():
        key = " ".join((program, *path))
        options = [option for option, _ in help_page.options()]
        options_of.append(f"        '{key}') words='{' '.join(options)}' ;;")
        if help_page.commands():
            cases.append(f"        '{key}') words='{' '.join(help_page.commands())}' ;;")
        for option, value in help_page.options():
            if value:
                values.append(f"        '{key} {option}') words='{' '.join(value)}' ;;")
            elif value is not None:
                plain.append(f"'{key} {option}'")
    with_value = [value.split(")")[0].strip() for value in values] + plain
    commands = [f"'{' '.join((program, *path))}'" for path in pages if path]
    anything = f"        {' | '.join(plain)}) return ;;\n" if plain else ""
    choices = "\n".join(values) + "\n" if values else ""
    skip = f"            {' | '.join(with_value)}) index=$((index + 1)) ;;\n" if with_value else ""
    sub = (f"            *)\n                case \"$path $word\" in\n                    "
           f"{' | '.join(commands)}) path+=\" $word\" ;;\n                esac\n                ;;\n"
           if commands else "")
    commands_of = ""
    if cases:
        shown = "\n".join("    " + case for case in cases)
        commands_of = f"    elif [[ -z $words ]]; then\n        case \"$path\" in\n{shown}\n        esac\n"
    return f"""# bash completion for {program}
_{name}()
{{
    local path={program} word words='' index
    for ((index = 1; index < COMP_CWORD; ++index)); do
        word=${{COMP_WORDS[index]}}
        case "$path $word" in
{skip}{sub}        esac
    done
    COMPREPLY=()
    case "$path ${{COMP_WORDS[COMP_CWORD - 1]}}" in
{choices}{anything}    esac
    if [[ -z $words && ${{COMP_WORDS[COMP_CWORD]}} == -* ]]; then
        case "$path" in
{chr(10).join("    " + case for case in options_of)}
        esac
{commands_of}    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "${{COMP_WORDS[COMP_CWORD]}}")
}} && complete -o default -F _{name} {program}
"""


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    program, version, folder = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    name = pathlib.Path(program).name
    pages = read_all(program)
    names = {path: "-".join((name, *path)) for path in pages}
    folder.mkdir(parents=True, exist_ok=True)
    for path, help_page in pages.items():
        others = [names[o] for o in pages if o and o[:-1] == path]
        others = ([names[path[:-1]]] if path else []) + others
        text = page(names[path], version, help_page, others)
        (folder / f"{names[path]}.1").write_text(text, encoding="utf-8")
    (folder / f"{name}.bash").write_text(completion(name, pages), encoding="utf-8")


if __name__ == "__main__":
    main()
