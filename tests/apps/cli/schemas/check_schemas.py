# SPDX-License-Identifier: MIT
"""Holds the JSON that the program prints to docs/schemas. Usage: check_schemas.py ROOT PROGRAM"""
import copy
import importlib.util
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema  # python3-jsonschema; where it is missing this check fails

ROOT, PROGRAM = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
EXAMPLES = {
    "replay": str(ROOT / "examples/pole-replay.csv"),
    "occupied": str(ROOT / "examples/occupations.csv"),
    "tips": str(ROOT / "examples/occupations-truth.csv"),
    "pairs": str(ROOT / "examples/icgc_similarity.csv"),
}

# What prepares files, then for each schema the runs that it must describe. An exit code of 1 is a
# negative result, whose JSON counts as well; FILE stands for the content of a file.
PREPARE = """
simulate points --seed 3 --out points.csv
simulate points --seed 3 --points 4 --out four.csv
simulate points --seed 3 --points 6 --most-lean 12 --spacing 0.05 --out narrow.csv
simulate turns --horizontal h.csv --vertical v.csv --seed 4 --start-heading 0,30
simulate turns --horizontal h2.csv --vertical v2.csv --seed 4 --start-heading 0,30 --axis-error 0.5,20
simulate turns --horizontal ht.csv --vertical vt.csv --truth t.json --stop 90:1 --turn-back 180:20 --magnet 1:2:50 --gap 3:4
simulate walk --out w.csv --truth w.json
simulate walk --out w.csv --truth clean.json --clean --by-formula --soft-iron-b 1,0.1,0,0,1,0,0,0,1
simulate points --out p.csv --truth p.json --outliers 2
simulate occupations --points 2 --out o.csv --scene o.json --motion free --slip 3:0.03:0:-0.01 --magnet 1:2:50 --gap 3:4 --dipole 1:2:50:1:0:1
simulate occupations --seed 5 --points 1 --motion free --out rocked.csv
simulate occupations --seed 5 --points 1 --motion free --turn 90 --out unturned.csv
simulate occupations --seed 5 --points 1 --out leaned.csv
simulate occupations --seed 5 --points 1 --motion free --out planted.csv
calibrate --horizontal h.csv --vertical v.csv --report good.json
calibrate --horizontal h.csv --vertical v.csv --method joint --report joint.json --out pole.cfg
calibrate --horizontal h2.csv --vertical v2.csv --report poor.json
calibrate --horizontal v.csv --vertical h.csv --report exchanged.json
calibrate --on-the-spot rocked.csv --pole 2 --out spot.cfg
transform fit {pairs} --only direction=forward --out parameters.json
"""
# Recordings of a live pole: of which log, its tip, and what was typed at which second. Then what is stored of them.
RECORDINGS = {
    "replay.tprec": ("{replay}", (238540, 650135, 112.5), [(14, "store! Q1"), (16, "store Q2")]),
    "planted.tprec": (
        "planted.csv",
        (4500000, 500000, 100),
        [(8, "store P1 KERB"), (9, "store! P2 KERB corner"), (9.5, "undo"), (9.9, "store! P3")],
    ),
}
LIVE = "--pole 2 --config plain.cfg --north file --delay 0.117,0.007"
PREPARE_JOBS = f"""
live --replay planted.tprec {LIVE} --job site.gpkg
live --replay replay.tprec {LIVE} --job site.gpkg
job recompute site.gpkg P3,Q1 --pole 1.999
"""
RUNS = {
    "live-status": [
        f"live --replay replay.tprec {LIVE} --json",
        "live --replay replay.tprec --pole 2 --delay 0.117,0.007 --json",
        f"live --replay planted.tprec {LIVE} --json",
        f"live --replay planted.tprec {LIVE} --json --max-lean 1",
    ],
    "job-list": ["job list site.gpkg --json"],
    "measure": [
        "measure {replay} --pole 2 --json",
        "measure {replay} --pole 2 --json --truth 238540,650135,112.5",
        "measure {replay} --pole 2 --json --field 450,66",
        "measure empty.csv --pole 2 --json",
        "measure bad.csv --pole 2 --json --skip-bad",
    ],
    "occupy": [
        "occupy {occupied} --pole 2 --bias 0.75 --json --truth {tips}",
        "occupy o.csv --pole 2 --json --no-magnetometer --delay 0.01",
        "occupy o.csv --pole 2 --json --gyro-free",
        "occupy none.csv --pole 2 --json",
        "occupy leaned.csv --pole 2 --json --calibration spot.cfg.spot.json",
    ],
    "solve": [
        "solve points.csv --height 2 --json",
        "solve four.csv --height 2 --json",
        "solve four.csv --height 1.2 --json",
        "solve narrow.csv --height 2 --json",
        "solve points.csv --height 2 --cutoff 1 --json",
    ],
    "transform-fit": [
        "transform fit {pairs} --only direction=forward --json",
        "transform fit two.csv --json",
        "transform fit two.csv --json --accept-unchecked",
    ],
    "transform-parameters": ["FILE parameters.json"],
    "transform-apply": [
        "transform apply points.csv --parameters parameters.json --json",
        "transform apply points.csv --parameters parameters.json --json --inverse --out back.csv",
    ],
    "simulate": [
        "simulate turns --horizontal a.csv --vertical b.csv --json",
        "simulate walk --out w.csv --truth w.json --json",
        "simulate occupations --points 1 --out o.csv --json",
        "simulate points --out p.csv --json",
    ],
    "simulate-truth": ["FILE t.json", "FILE w.json", "FILE clean.json", "FILE p.json", "FILE o.json"],
    "calibrate": [
        "calibrate --horizontal h.csv --vertical v.csv --json",
        "FILE good.json",
        "FILE joint.json",
        "FILE poor.json",
        "FILE exchanged.json",
    ],
    "calibration-record": ["FILE pole.cfg.json", "FILE spot.cfg.json"],
    "spot-calibration": [
        "FILE spot.cfg.spot.json",
        "calibrate --on-the-spot unturned.csv --pole 2 --json",
        "calibrate --on-the-spot leaned.csv --pole 2 --json",
    ],
}
def plain_parameters():
    """A parameter file that corrects nothing."""
    scales = "be"
    keys = [(f"Magnetic{m}.{k}", 1.0 if k in scales else 0.0) for m in "AB" for k in ("a", "b", "c", "d", "e", "x0", "y0", "z0")]
    keys += [(f"CoorTrans.{k}", 0.0) for k in ("dX", "dY", "dZ")] + [(f"MagneticBiasAngle_{m}", 0.0) for m in "AB"]
    return "".join(f"[{key}]{value}\r\n" for key, value in keys)


FILES = {
    "plain.cfg": plain_parameters(),
    "empty.csv": "dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h\n",
    "none.csv": "seconds,dPitch,dRoll,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,"
    "dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h\n",
    "bad.csv": "dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h\n"
    "0,nan,1,0,0,-1,0,0,5,6,7\n0,1,1,0,0,-1,0,0,5,6,7\n",
    "two.csv": "x_source,y_source,x_target,y_target\n0,0,5,5\n1,0,6,5\n",
}
COORDINATES = ("N", "E")  # of a point in `tip_m`
LINES = ("live-status",)  # formats of one object a line, without a header
OLD_NAMES = ("ellipsoidalHeight",)
SEEN_LIVE = {  # what the outputs of live must show among them
    "the state store": lambda o: o["state"] == "store",
    "the state wait": lambda o: o["state"] == "wait",
    "the state block": lambda o: o["state"] == "block",
    "no tip": lambda o: o["tip"] is None,
    "an occupation to be stored": lambda o: o["occupation"] and o["occupation"]["advice"] == "store",
    "an occupation that goes on": lambda o: o["occupation"] and o["occupation"]["advice"] == "move",
}
SEEN_JOB = {
    "a current point": lambda p: p["state"] == "current",
    "a replaced point": lambda p: p["state"] == "replaced",
    "a void point": lambda p: p["state"] == "void",
    "a forced point": lambda p: p["forced"],
    "a point of an occupation": lambda p: p["method"] == "occupation",
    "a mean": lambda p: p["method"] == "mean",
}
NAME = re.compile(r"^[a-z][a-z0-9]*(_[a-z0-9]+)*$")


def refuse_constant(name):
    raise ValueError(f"{name} is not JSON")


def parse(text):
    return json.loads(text, parse_constant=refuse_constant)


def names(value):
    """All names of members, except those of `units`."""
    if isinstance(value, dict):
        for name, member in value.items():
            yield name
            if name != "units":
                yield from names(member)
    elif isinstance(value, list):
        for member in value:
            yield from names(member)


def run(arguments, folder):
    words = [word.format(**EXAMPLES) for word in arguments.split()]
    done = subprocess.run([PROGRAM, *words], cwd=folder, capture_output=True, text=True, check=False)
    if done.returncode not in (0, 1):
        raise RuntimeError(f"{arguments}: exit code {done.returncode}: {done.stderr}")
    return done.stdout


def record(folder):
    spec = importlib.util.spec_from_file_location("live_recording", ROOT / "examples/live_recording.py")
    live_recording = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(live_recording)
    for name, (log, tip, typed) in RECORDINGS.items():
        keys = [(live_recording.FIRST + at, "K", text) for at, text in typed]
        sent = live_recording.records(folder / log.format(**EXAMPLES), tip=tip) + keys
        lines = live_recording.recording(sorted(sent, key=lambda record: record[0]))
        (folder / name).write_text("\n".join(lines) + "\n", encoding="ascii")


def output_of(command, folder):
    if command.startswith("FILE "):
        return (folder / command[5:]).read_text(encoding="utf-8")
    return run(command, folder)


def damaged(output):
    """Copies of an output that no schema may accept."""
    if "format" not in output:
        for name in output:
            yield f"without {name}", {n: v for n, v in output.items() if n != name}
        yield "in another state", {**output, "state": "fine"}
        yield "blocked without a reason", {**output, "state": "block", "reasons": []}
        return
    for name in ("format", "version", "units"):
        copied = copy.deepcopy(output)
        del copied[name]
        yield f"without {name}", copied
    for name, value in output.items():
        if isinstance(value, (int, float)) and not isinstance(value, bool):
            yield f"{name} as text", {**output, name: "1"}
            break
    yield "a later version", {**output, "version": 2}


def outputs_of(name, command, folder):
    text = output_of(command, folder)
    return [parse(line) for line in text.splitlines()] if name in LINES else [parse(text)]


def missing(seen, outputs):
    return [f"no output shows {what}" for what, shows in seen.items() if not any(map(shows, outputs))]


def check(name, folder):
    schema = parse((ROOT / f"docs/schemas/{name}.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    findings = []
    everything = []
    for command in RUNS[name]:
        try:
            outputs = outputs_of(name, command, folder)
        except ValueError as error:
            findings.append(f"{name}: {command}: {error}")
            continue
        everything += outputs
        for output in outputs:
            for error in validator.iter_errors(output):
                findings.append(f"{name}: {command}: {error.json_path}: {error.message[:200]}")
            for member in names(output):
                if not NAME.match(member) and member not in COORDINATES + OLD_NAMES:
                    findings.append(f"{name}: {command}: {member} is not in snake case")
        for what, copied in damaged(outputs[-1]):
            if validator.is_valid(copied):
                findings.append(f"{name}: accepts an output {what}")
    if name == "live-status":
        findings += missing(SEEN_LIVE, everything)
    if name == "job-list":
        findings += missing(SEEN_JOB, everything[0]["points"])
    return findings


def main():
    findings = []
    with tempfile.TemporaryDirectory(prefix="schemas-") as scratch:
        folder = pathlib.Path(scratch)
        for file, content in FILES.items():
            (folder / file).write_text(content, encoding="utf-8")
        for line in PREPARE.strip().splitlines():
            run(line, folder)
        record(folder)
        for line in PREPARE_JOBS.strip().splitlines():
            run(line, folder)
        for name in RUNS:
            findings += check(name, folder)
    found = {path.name.removesuffix(".schema.json") for path in (ROOT / "docs/schemas").iterdir()}
    if found != set(RUNS):
        findings.append(f"schemas without runs, or runs without a schema: {found ^ set(RUNS)}")
    print("\n".join(findings) or f"{sum(map(len, RUNS.values()))} outputs fit their schemas")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
