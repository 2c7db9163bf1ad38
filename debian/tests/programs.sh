#!/bin/bash
# SPDX-License-Identifier: MIT
# The installed program prints the figures that the installed README shows, and solves a known tip.
set -euo pipefail
cd "$AUTOPKGTEST_TMP"
doc=/usr/share/doc/tiltpole

[[ $(tiltpole --version) == "tiltpole 0."* ]]

tiltpole measure $doc/examples/pole-replay.csv --pole 2.0 --bias 0.75 \
    --truth 238540.000,650135.000,112.500 --out tips.csv 2>&1 | tail -n 3 >measured
tiltpole occupy $doc/examples/occupations.csv --pole 2.0 --bias 0.75 \
    --truth $doc/examples/occupations-truth.csv | sed -n '/^horizontal error/,$p' >occupied
cat measured occupied
while IFS= read -r line; do
    grep -qFx -- "$line" $doc/README.md || { echo "not in README.md: $line" >&2; exit 1; }
done < <(cat measured occupied)
[[ $(wc -l <measured) -eq 3 && $(wc -l <occupied) -eq 12 ]]

tiltpole simulate points --seed 3 --out points.csv 2>/dev/null
tiltpole solve points.csv --height 2.0 >solved
tail -n 1 solved
# The last tip is that of the least squares; the truth is N 4500000, E 500000, h 100.
sed -n 's/^  tip  *N \(.*\)  E \(.*\)  h \(.*\) m$/\1 \2 \3/p' solved | tail -n 1 | awk '
    function near(a, b) { return a > b - 0.05 && a < b + 0.05 }
    { print "solved", $0; good = near($1, 4500000) && near($2, 500000) && near($3, 100) }
    END { exit !good }'

for page in tiltpole tiltpole-measure tiltpole-live; do
    [[ -s /usr/share/man/man1/$page.1.gz ]]
done
# shellcheck source=/dev/null
source /usr/share/bash-completion/completions/tiltpole
complete -p tiltpole
