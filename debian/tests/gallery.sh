#!/bin/bash
# SPDX-License-Identifier: MIT
# The installed gallery finds its recorded motion and draws every control, without a screen.
set -euo pipefail
cd "$AUTOPKGTEST_TMP"

[[ $(tiltpole-gallery --version) == "tiltpole-gallery 0."* ]]
tiltpole-gallery --render pictures >names
cat names
count=0
while IFS= read -r name; do
    [[ $(head -c 8 "$name" | od -An -tx1 | tr -d ' ') == 89504e470d0a1a0a ]] \
        || { echo "$name is no PNG file" >&2; exit 1; }
    count=$((count + 1))
done <names
[[ $count -ge 10 ]]
# Some states look alike; most do not.
[[ $(sha256sum pictures/*.png | cut -d ' ' -f 1 | sort -u | wc -l) -gt $((count / 2)) ]] \
    || { echo "most pictures are the same" >&2; exit 1; }
[[ -s /usr/share/applications/org.tiltpole.Gallery.desktop ]]
