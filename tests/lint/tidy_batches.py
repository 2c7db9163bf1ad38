#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs clang-tidy over sources in batches: reading the same headers once costs most of its time.

usage: tidy_batches.py BUILD JOBS [CLANG-TIDY-OPTIONS]   (sources, a line each, on standard input)

Sources with the same compiler options are included by one file, unless they declare the same names.
Those that do not compile after the others after all are read without them. Prints what clang-tidy
finds; exits with 1 where it finds something.
"""
import concurrent.futures
import json
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / 'cmake'))
import together  # noqa: E402

AT_MOST = 12
# What only stands because sources are read together.
CHECKS = '-bugprone-suspicious-include'
COMPILER = ['-Wno-shadow']
NOT_COMPILED = re.compile(r'^(\S+?):\d+:\d+: error: .*\[clang-diagnostic-error\]', re.MULTILINE)


def options_of(entry):
    """The compiler's call without its source and output."""
    words = shlex.split(entry['command'])
    if words[0].endswith('ccache'):
        words = words[1:]
    output = words.index('-o')
    del words[output:output + 2]
    return tuple(word for word in words if word not in ('-c', entry['file']))


def sources_by_options(build, wanted):
    groups = {}
    for entry in json.loads((build / 'compile_commands.json').read_text()):
        if entry['file'] in wanted:
            wanted.discard(entry['file'])
            groups.setdefault((entry['directory'], options_of(entry)), []).append(entry['file'])
    return groups


def batches_of(sources):
    """Lists of at most AT_MOST sources that can be read as one."""
    paths = [pathlib.Path(source) for source in sources]
    return [[str(path) for path in company] for company in together.companies_of(paths, ROOT, AT_MOST)]


def tidy(folder, directory, options, file, arguments):
    (folder / 'compile_commands.json').write_text(json.dumps(
        [{'directory': directory, 'file': file, 'arguments': [*options, '-c', file]}]))
    return subprocess.run(['clang-tidy', '--quiet', '-p', str(folder), *arguments, file],
                          capture_output=True, text=True, check=False)


def findings(folder, group, batch, arguments):
    """What clang-tidy says of a batch; nothing where it has nothing to say."""
    folder.mkdir(exist_ok=True)
    directory, options = group
    if len(batch) > 1:
        together = folder / 'batch.cpp'
        together.write_text(''.join(f'#include "{source}"\n' for source in batch))
        run = tidy(folder, directory, [*options, *COMPILER], str(together), arguments)
        if run.returncode == 0:
            return ''
        clashing = set(NOT_COMPILED.findall(run.stdout))
        if clashing:
            # Where a header fails, nothing tells whose it is.
            clashing = clashing & set(batch[1:]) or set(batch[len(batch) // 2:])
            return (findings(folder, group, [s for s in batch if s not in clashing], arguments)
                    + findings(folder, group, [s for s in batch if s in clashing], arguments))
    # What is found in a batch counts if it is found in a source alone.
    runs = [tidy(folder, directory, options, source, arguments) for source in batch]
    return ''.join(run.stdout + run.stderr for run in runs if run.returncode != 0)


def main():
    build, jobs, options = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2]), sys.argv[3:]
    wanted = {str(pathlib.Path(line.strip()).resolve()) for line in sys.stdin if line.strip()}
    count = len(wanted)
    work = [(group, batch) for group, sources in sources_by_options(build, wanted).items()
            for batch in batches_of(sources)]
    for source in sorted(wanted):
        sys.exit(f'{source}: is not compiled in {build.name}')
    checks = ','.join([option.removeprefix('--checks=') for option in options
                       if option.startswith('--checks=')] + [CHECKS])
    arguments = [f'--checks={checks}', *(o for o in options if not o.startswith('--checks='))]
    folder = build / 'batches'
    folder.mkdir(exist_ok=True)
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for found in pool.map(lambda item: findings(folder / str(item[0]), *item[1], arguments),
                              enumerate(work)):
            if found:
                failed = 1
                print(found, flush=True)
    print(f'clang-tidy: {count} sources in {len(work)} batches')
    return failed


if __name__ == '__main__':
    sys.exit(main())
