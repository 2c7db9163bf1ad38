# SPDX-License-Identifier: MIT
"""Console samples of a Markdown document: finding them, comparing them, filling them anew."""
import dataclasses
import re

FENCE = re.compile(r"^( *)```(\w*)\s*$")
MARK = re.compile(r"^<!-- samples: ((?:not run: |output of |varies )(?!-->)|hidden$)(.*)$")
COMMAND_LINE = re.compile(r"^(\S*/)?tiltpole([-_]\w+)? ")
NUMBER = re.compile(r"[-+]?\d+(?:\.\d*)?(?:[eE][-+]?\d+)?")
ELISION = "..."

# The last digits of a figure with ten or more depend on the mathematical functions of the system.
LONG_FIGURE = 10
LONG_FIGURE_TOLERANCE = 1e-9


@dataclasses.dataclass
class Run:
    """One command and the output below it: lines [first, end) of the document."""

    command: str
    first: int
    end: int
    compared: bool = True  # a block of bare commands shows no output
    hidden: bool = False
    varies: re.Pattern | None = None


@dataclasses.dataclass
class Document:
    lines: list[str]
    runs: list[Run] = dataclasses.field(default_factory=list)
    not_run: int = 0
    faults: list[str] = dataclasses.field(default_factory=list)

    def shown(self, run):
        return self.lines[run.first : run.end]


def session(lines, first, end):
    """Runs of a block whose commands begin with '$ ', continued where a line ends in a backslash."""
    at = first
    while at < end:
        command = [lines[at][2:]]
        while command[-1].endswith("\\") and at + 1 < end:
            at += 1
            command.append(lines[at])
        output = at = at + 1
        while at < end and not lines[at].startswith("$ "):
            at += 1
        yield Run("\n".join(command), output, at)


def bare_commands(lines, first, end):
    at = first
    while at < end:
        start = at
        while lines[at].endswith("\\") and at + 1 < end:
            at += 1
        at += 1
        yield Run("\n".join(lines[start:at]), at, at, compared=False)


def find(text):
    """The samples of a document, in order, and what is wrong with its marks."""
    document = Document(text.split("\n"))
    lines, at, marks = document.lines, 0, {}
    while at < len(lines):
        mark, fence = MARK.match(lines[at]), FENCE.match(lines[at])
        if mark:
            start, kind = at, mark[1].split()[0]
            while "-->" not in lines[at] and at + 1 < len(lines):
                at += 1
            if kind == "hidden":
                runs = list(session(lines, start + 1, at))
                document.runs += [dataclasses.replace(run, hidden=True) for run in runs]
            else:
                content = "\n".join([mark[2], *lines[start + 1 : at + 1]])
                marks[kind] = " ".join(content.removesuffix("-->").split())
        elif lines[at].startswith("<!-- sample"):
            document.faults.append(f"{at + 1}: no mark that is known: {lines[at]}")
        elif fence:
            start = at
            at += 1
            while at < len(lines) and lines[at].strip() != "```":
                at += 1
            read_block(document, start, at, fence[2], marks)
            marks = {}
        elif lines[at].strip() and marks:
            document.faults.append(f"{at + 1}: a mark stands directly above a block")
            marks = {}
        at += 1
    return document


def read_block(document, fence, end, language, marks):
    lines, first = document.lines, fence + 1
    if "not" in marks:
        document.not_run += 1
        return
    if "output" in marks:
        runs = [Run(marks["output"], first, end)]
    elif any(line.startswith("$ ") for line in lines[first:end]):
        if not lines[first].startswith("$ "):
            document.faults.append(f"{first + 1}: a sample begins with its command")
            return
        runs = list(session(lines, first, end))
    elif any(COMMAND_LINE.match(line) for line in lines[first:end]):
        runs = list(bare_commands(lines, first, end))
    else:
        if not language:
            document.faults.append(
                f"{fence + 1}: a block that is no sample names its language (text, sh, cpp ...)"
            )
        return
    varies = re.compile(marks["varies"]) if "varies" in marks else None
    document.runs += [dataclasses.replace(run, varies=varies) for run in runs]


def digits(figure):
    return len(re.sub(r"[eE].*|\D", "", figure).lstrip("0"))


def same_line(shown, actual, varies=None):
    if varies:
        shown, actual = varies.sub("", shown), varies.sub("", actual)
    if shown == actual:
        return True
    if NUMBER.sub("", shown) != NUMBER.sub("", actual):
        return False
    return all(
        a == b
        or min(digits(a), digits(b)) >= LONG_FIGURE
        and abs(float(a) - float(b)) <= LONG_FIGURE_TOLERANCE * max(1.0, abs(float(a)))
        for a, b in zip(NUMBER.findall(shown), NUMBER.findall(actual))
    )


def segments(shown):
    """The shown lines between elisions, one list more than there are elisions."""
    parts = [[]]
    for line in shown:
        if line.strip() == ELISION:
            parts.append([])
        else:
            parts[-1].append(line)
    return parts


def same(shown, actual, varies=None):
    """Whether the output is what is shown; an elision stands for one line or more."""

    def fits(part, at):
        return 0 <= at <= len(actual) - len(part) and all(
            same_line(line, actual[at + i], varies) for i, line in enumerate(part)
        )

    first, *others = segments(shown)
    if not others:
        return len(first) == len(actual) and fits(first, 0)
    if not fits(first, 0):
        return False
    at = len(first)
    for part in others[:-1]:
        at = next((i for i in range(at + 1, len(actual)) if fits(part, i)), None)
        if at is None:
            return False
        at += len(part)
    last = len(actual) - len(others[-1])
    return last > at and fits(others[-1], last)


def filled(shown, actual):
    """The output with the elisions of what was shown: each part where its words are found again."""
    parts = segments(shown)
    if len(parts) == 1:
        return actual
    words = [NUMBER.sub("0", line) for line in actual]

    def likeness(part, at):
        return sum(NUMBER.sub("0", line) == words[at + i] for i, line in enumerate(part))

    at = len(parts[0])
    result = actual[:at]
    for part in parts[1:-1]:
        places = range(at + 1, len(actual) - len(part) + 1)
        at = max(places, key=lambda i: likeness(part, i), default=len(actual))
        result += [ELISION, *actual[at : at + len(part)]]
        at += len(part)
    tail = len(parts[-1])
    return [*result, ELISION, *actual[max(at, len(actual) - tail) :]] if tail else [*result, ELISION]
