#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Builds the reference documentation of the public headers with doxygen, in out/docs/html/.

usage: reference.py              from the root of the project
       reference.py filter FILE  (for doxygen: a page of the documentation as doxygen shall read it)

Fails on every warning of doxygen, where a class or record of a public header has no description,
and where a picture of a page is missing.
"""
import pathlib
import re
import shutil
import subprocess
import sys

OUT = pathlib.Path("out/docs")
PAGES = ["README.md", "CHANGELOG.md", "examples/README.md", "tests/data/README.md"]


def public_headers():
    """The headers that the folders' CMakeLists.txt install."""
    headers = set()
    for path in sorted(pathlib.Path(".").glob("[a-z]*/**/CMakeLists.txt")):
        if path.parts[0] in ("build", "out", "tests"):
            continue
        for part in path.read_text(encoding="utf-8").split("tiltpole_sources(")[1:]:
            words = part.replace("$<TARGET_OBJECTS:", "").split(")")[0].split("PUBLIC")
            for name in words[1].split() if len(words) == 2 else []:
                headers.add(shorter(path.parent / name))
    return sorted(headers)


def shorter(path):
    """The path without "..": as it is included."""
    parts = []
    for part in path.parts:
        parts = parts[:-1] if part == ".." else [*parts, part]
    return "/".join(parts)


def pages():
    return [pathlib.Path(page) for page in PAGES] + sorted(pathlib.Path("docs").glob("**/*.md"))


def page_name(path):
    return re.sub(r"\W", "_", str(path).removesuffix(".md"))


def slug(title):
    """The anchor of a heading, as sites that show Markdown make it."""
    return re.sub(r"[^\w\- ]", "", title.lower()).strip().replace(" ", "-")


def linked(text, path):
    """A page with an anchor at each heading, and links that lead to pages of this documentation;
    links to other files become plain text."""
    known = {str(page) for page in pages()}

    def link(match):
        label, target = match[1], match[2]
        if "://" in target:
            return match[0]
        file, _, anchor = target.partition("#")
        page = shorter(path.parent / file) if file else str(path)
        if page not in known:
            return label
        return f"[{label}](#{page_name(page)}{'-' + anchor if anchor else ''})"

    out, fenced, first, seen = [], False, True, {}
    for line in text.split("\n"):
        fenced ^= line.startswith("```")
        heading = None if fenced else re.match(r"^(#+) (.*)$", line)
        if heading:
            title = slug(heading[2])
            seen[title] = seen.get(title, -1) + 1
            title += f"-{seen[title]}" if seen[title] else ""
            anchor = page_name(path) + ("" if first else "-" + title)
            line, first = f"{line} {{#{anchor}}}", False
        elif not fenced:
            line = re.sub(r"(?<!!)\[([^\]]*)\]\(([^)\s]+)\)", link, line)
        out.append(line)
    return "\n".join(out)


def doxygen(settings, files):
    """Runs doxygen over files with the settings of docs/Doxyfile and more; what it says."""
    text = pathlib.Path("docs/Doxyfile").read_text(encoding="utf-8")
    text += f'\nFILTER_PATTERNS = *.md="{sys.executable} -S {__file__} filter"\n'
    text += f"INPUT = {' '.join(map(str, files))}\n{settings}\n"
    return subprocess.run(["doxygen", "-"], input=text, text=True, stderr=subprocess.PIPE, check=False)


def undescribed(headers):
    """Classes and records without a description. Their members may speak for themselves."""
    said = doxygen("GENERATE_HTML = NO\nWARN_AS_ERROR = NO\nWARN_IF_UNDOCUMENTED = YES", headers)
    return [line for line in said.stderr.splitlines() if "warning: Compound" in line]


def missing_pictures():
    for page in pages():
        for picture in re.findall(r"!\[[^\]]*\]\(([^)]+)\)", page.read_text(encoding="utf-8")):
            if not (OUT / "html" / pathlib.Path(picture).name).exists():
                yield f"{page}: the picture {picture} is not in the documentation"


def build():
    headers = public_headers()
    if len(headers) < 80:
        sys.exit(f"only {len(headers)} public headers were found")
    shutil.rmtree(OUT, ignore_errors=True)
    OUT.mkdir(parents=True)
    main_page = pathlib.Path.cwd() / "README.md"
    built = doxygen(f"USE_MDFILE_AS_MAINPAGE = {main_page}", [*pages(), *headers])
    problems = built.stderr.splitlines() + undescribed(headers) + list(missing_pictures())
    if built.returncode != 0 and not problems:
        problems = [f"doxygen ended with {built.returncode}"]
    print("\n".join(problems) or f"{len(headers)} headers, {len(pages())} pages, no warnings")
    return 1 if problems else 0


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "filter":
        path = pathlib.Path(sys.argv[2]).resolve().relative_to(pathlib.Path.cwd())
        print(linked(path.read_text(encoding="utf-8"), path), end="")
        return 0
    if len(sys.argv) != 1:
        sys.exit(__doc__)
    return build()


if __name__ == "__main__":
    sys.exit(main())
