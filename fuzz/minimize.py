#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Renews the corpus of fuzzers in fuzz/corpus/ from what their runs found in out/fuzz/.

usage: fuzz/minimize.py BUILD_FOLDER_OF_FUZZERS [NAME ...]

Of a fuzzer's inputs that reach something of their own it keeps short and long ones, up to 6 KB in 40 files.
"""
import hashlib
import pathlib
import shutil
import subprocess
import sys
import tempfile

MOST_BYTES = 6000
MOST_FILES = 40


def minimize(program, found, corpus):
    with tempfile.TemporaryDirectory() as scratch:
        folders = [str(folder) for folder in (corpus, found) if folder.is_dir()]
        subprocess.run([program, "-merge=1", "-timeout=10", scratch, *folders], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        inputs = sorted((path.read_bytes() for path in pathlib.Path(scratch).iterdir()),
                        key=lambda data: (len(data), data))
    # Every k-th of the order by length, so that long ones are among them.
    step = max(1, len(inputs) // MOST_FILES)
    kept, size = [], 0
    for data in inputs[::step][:MOST_FILES]:
        if data and size + len(data) <= MOST_BYTES:
            kept.append(data)
            size += len(data)
    shutil.rmtree(corpus, ignore_errors=True)
    corpus.mkdir(parents=True)
    for data in kept:
        (corpus / hashlib.sha1(data).hexdigest()[:12]).write_bytes(data)
    print(f"{program.name}: {len(kept)} files, {size} bytes, of {len(inputs)}")


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    root = pathlib.Path(__file__).resolve().parent.parent
    names = sys.argv[2:]
    for program in sorted(pathlib.Path(sys.argv[1]).rglob("*_fuzzer")):
        if program.is_file() and (not names or program.name in names):
            minimize(program, root / "out" / "fuzz" / program.name,
                     root / "fuzz" / "corpus" / program.name)


if __name__ == "__main__":
    main()
