#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The main job on data with known truth: a recorded motion, a calibration on simulated turns, recorded
# points whose tips come from the motion of the pole, and the recorded motion as live devices send it.
# usage: examples/demo.sh PROGRAM FOLDER
set -euo pipefail
program=$(readlink -f "$1")
mkdir -p "$2"
out=$(readlink -f "$2")
cd "$(dirname "$(readlink -f "$0")")/.."

printf '\n== A recorded motion about a known tip with tilts up to 35 degrees\n'
printf '   (recorded: magnetometer A by hand, attitude by a tracker; computed: tilt, antenna, B)\n\n'
"$program" measure examples/pole-replay.csv --pole 2.0 --bias 0.75 \
    --truth 238540.000,650135.000,112.500 --out "$out/tips.csv" --plot "$out/replay.png"

printf '\n== Two simulated turns of a sensor with hard and soft iron, calibrated\n\n'
"$program" simulate turns --seed 7 --level-error 0.5 --wobble 0.3 \
    --horizontal "$out/horizontal.csv" --vertical "$out/vertical.csv" --truth "$out/turns.json"
"$program" calibrate --horizontal "$out/horizontal.csv" --vertical "$out/vertical.csv" \
    --out "$out/pole.cfg" --report "$out/calibration.json" --plot "$out/calibration.png"

printf '\n== The same sensor measures one point, N 4500000 E 500000 h 100\n'
"$program" simulate walk --seed 7 --points 1 --dwell 60 --out "$out/walk.csv"
printf '\n-- without the calibration\n\n'
"$program" measure "$out/walk.csv" --pole 2.0 --truth 4500000,500000,100 --out "$out/walk-raw.csv"
printf '\n-- with it\n\n'
"$program" measure "$out/walk.csv" --pole 2.0 --truth 4500000,500000,100 \
    --config "$out/pole.cfg" --out "$out/walk-calibrated.csv" --plot "$out/walk.png"

printf '\n== 24 recorded points of 10 s: the tip by single samples, by their mean, and by the motion of the pole\n\n'
"$program" occupy examples/occupations.csv --pole 2.0 --bias 0.75 \
    --truth examples/occupations-truth.csv --out "$out/occupations.csv" \
    --plot "$out/occupations.png" > "$out/occupations.txt"
sed -n '/^horizontal error/,$p' "$out/occupations.txt"

printf '\n== The recorded motion live, ten times as fast: the sensor on a pseudo-terminal, the receiver and an app on TCP\n\n'
python3 -B examples/live_player.py "$program" examples/pole-replay.csv

printf '\nTables, pictures and reports are in %s\n' "$out"
