#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the documents to the tree. usage: check_docs.py rules|links|decisions ROOT

  rules      every rule of docs/rules.md names a test, and every test that it names exists
  links      every relative link of a Markdown file leads to a file or folder
  decisions  every record has the one form and is in the index
"""
import pathlib
import re
import sys

TEST = re.compile(r"\b(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P|RC_GTEST_PROP)\(\s*(\w+),\s*(\w+)")
CTEST = re.compile(r"add_test\(NAME ([\w.${}]+)")
FUZZER = re.compile(r"tiltpole_fuzzer\((\w+)")
LINK = re.compile(r"\]\(([^)#\s]+)(?:#[^)\s]*)?\)")
CODE = re.compile(r"```.*?```", re.S)


def read(path):
    return path.read_text(encoding="utf-8")


def documents(root):
    for folder in [root, *(root / name for name in ("docs", "examples", "tests"))]:
        yield from sorted(folder.glob("*.md") if folder == root else folder.rglob("*.md"))


def existing_tests(root):
    """Names of tests, and patterns of those that a loop of CMake makes."""
    names, patterns = set(), []
    for source in sorted((root / "tests").rglob("*.[ch]*")):
        names.update(f"{suite}.{name}" for suite, name in TEST.findall(read(source)))
    for lists in [*(root / "tests").rglob("CMakeLists.txt"), root / "fuzz" / "CMakeLists.txt"]:
        text = read(lists)
        names.update(FUZZER.findall(text))
        for name in CTEST.findall(text):
            patterns.append(re.compile(re.sub(r"\\\$\\\{\w+\\\}", r"[\\w.]+", re.escape(name))))
    return names, patterns


def check_rules(root):
    names, patterns = existing_tests(root)
    if len(names) < 500:
        yield f"only {len(names)} tests were found"
    rows = 0
    for number, line in enumerate(read(root / "docs" / "rules.md").splitlines(), 1):
        cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line)]
        if len(cells) != 4 or cells[1] == "rule" or set(cells[1]) == {"-"}:
            if line.startswith("|") and len(cells) != 4:
                yield f"docs/rules.md:{number}: a row has two cells"
            continue
        rows += 1
        tests = re.findall(r"`([^`]+)`", cells[2])
        if not tests:
            yield f"docs/rules.md:{number}: no test"
        for test in tests:
            test = re.sub(r"^\w+/(\w+\.)|/\*", r"\1", test)  # prefix and cases of a suite with values
            if test not in names and not any(p.fullmatch(test) for p in patterns):
                yield f"docs/rules.md:{number}: there is no test {test}"
    if rows < 100:
        yield f"docs/rules.md has only {rows} rules"


def check_links(root):
    count = 0
    for document in documents(root):
        for link in LINK.findall(CODE.sub("", read(document))):
            if re.match(r"[a-z]+:", link):
                continue
            count += 1
            if not (document.parent / link).exists():
                yield f"{document.relative_to(root)}: {link} leads nowhere"
    if count < 10:
        yield f"only {count} links were found"


def check_decisions(root):
    folder = root / "docs" / "decisions"
    index = read(folder / "README.md")
    records = sorted(path for path in folder.glob("*.md") if path.name != "README.md")
    if len(records) < 30:
        yield f"only {len(records)} records were found"
    for path in records:
        lines = read(path).splitlines()
        number = path.name[:4]
        title = lines[0].removeprefix(f"# {number} ")
        if title == lines[0] or lines[1] != "":
            yield f"{path.name}: begins with '# {number} Title' and an empty line"
        leads = re.findall(r"(?m)^\*\*([A-Z][^*]*)\*\*", "\n".join(lines))
        if leads.count("Chosen.") != 1:
            yield f"{path.name}: one paragraph begins with **Chosen.**, not {leads.count('Chosen.')}"
        if any(line.startswith("#") for line in lines[1:]):
            yield f"{path.name}: has headings below its title"
        if f"| [{number}]({path.name}) | {title} |" not in index:
            yield f"{path.name}: is not in the index as '| [{number}]({path.name}) | {title} |'"


def main():
    checks = {"rules": check_rules, "links": check_links, "decisions": check_decisions}
    if len(sys.argv) != 3 or sys.argv[1] not in checks:
        sys.exit(__doc__)
    findings = list(checks[sys.argv[1]](pathlib.Path(sys.argv[2])))
    for finding in findings:
        print(finding)
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
