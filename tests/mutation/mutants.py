# SPDX-License-Identifier: MIT
"""The changes that can be made to a C++ source: where, what and by what."""
import re

SWAPPED = {
    "arithmetic": {"+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "*=": "/=",
                   "/=": "*="},
    "relation": {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="},
    "logic": {"&&": "||", "||": "&&"},
}
# The formatter puts a blank on both sides of every binary operator, and of no template bracket.
OPERATOR = re.compile(r"(?<= )(\+=|-=|\*=|/=|<=|>=|==|!=|&&|\|\||[-+*/<>])(?= )")
NUMBER = re.compile(r"(?<![\w.])(\d+\.\d*(?:e[-+]?\d+)?|\d+e[-+]?\d+|\d+)(?![\w.])")
CONDITION = re.compile(r"\bif (?:constexpr )?\(")
RETURN = re.compile(r"\breturn ([^;{}]+);")
STATEMENT = re.compile(r"(?m)^ +((?:[\w.:]|->|\[[^][;]*\])+ [-+*/]?= [^;{}]+;"
                       r"|(?:[\w.:]|->)+\([^;{}]*\);)")
NOT_STATEMENTS = re.compile(r"(return|static_assert|assert|using|delete|throw)\b")
OPPOSITE = {"0": "1", "1": "0", "0.0": "1.0", "true": "false", "false": "true"}


def blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def masked(text):
    """The text with blanks for comments, literals of text, directives and assertions."""
    text = re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![\w])L?\'(?:\\.|[^\'\\\n])+\'', blank, text,
                  flags=re.S)
    text = re.sub(r"(?m)^[ ]*#(?:[^\n]*\\\n)*[^\n]*", blank, text)
    return re.sub(r"\b(?:static_assert|assert)\([^;]*\);", blank, text)


def closing(code, opening):
    depth = 0
    for at in range(opening, len(code)):
        depth += (code[at] == "(") - (code[at] == ")")
        if depth == 0:
            return at
    return None


def another_number(number):
    if re.fullmatch(r"\d+", number):
        return str(int(number) + 1)
    return f"({number} * 1.25 + 0.125)"


def spans(code):
    """Kind, begin, end and replacement of every change."""
    for match in OPERATOR.finditer(code):
        for kind, swapped in SWAPPED.items():
            if match.group() in swapped:
                yield kind, match.start(), match.end(), swapped[match.group()]
    for match in NUMBER.finditer(code):
        yield "constant", match.start(), match.end(), another_number(match.group())
    for match in CONDITION.finditer(code):
        begin, end = match.end(), closing(code, match.end() - 1)
        if end is not None and ";" not in code[begin:end]:
            yield "condition", begin, end, f"!({code[begin:end]})"
    for match in RETURN.finditer(code):
        if match.group(1) != "{}":
            yield "result", match.start(1), match.end(1), OPPOSITE.get(match.group(1), "{}")
    for match in STATEMENT.finditer(code):
        if not NOT_STATEMENTS.match(match.group(1)):
            yield "statement", match.start(1), match.end(1), ";"


def mutants_of(name, text):
    code = masked(text)
    found = []
    for kind, begin, end, new in spans(code):
        line_start = text.rfind("\n", 0, begin) + 1
        if kind == "condition":
            new = f"!({text[begin:end]})"
        found.append({
            "file": name,
            "kind": kind,
            "line": text.count("\n", 0, begin) + 1,
            "column": begin - line_start + 1,
            "old": " ".join(text[begin:end].split()),
            "new": new,
            "span": (begin, end),
        })
    return found
