#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# In a root that is thrown away: installs the packages in FOLDER, runs the tests in FOLDER/tests on
# them as a user without rights, purges them, and compares the names of all files with those before.
#
# usage: clean_root.sh FOLDER
set -euo pipefail
folder=$1
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8

say() { printf '== %s\n' "$*"; }
install() { apt-get install -y -qq --no-install-recommends "$@"; }
all_files() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path "$folder" \) -prune \
        -o -print | LC_ALL=C sort
}

mapfile -t names < <(for deb in "$folder"/*.deb; do dpkg-deb -f "$deb" Package; done)
ours=$(printf '%s\n' "${names[@]}")

# What they and their tests need comes first, so that what they leave is theirs.
mapfile -t needed < <({
    apt-get install -s -qq --no-install-recommends "$folder"/*.deb | sed -n 's/^Inst \([^ ]*\) .*/\1/p'
    sed -n 's/^Depends: //p' "$folder/tests/control" | tr -s ', ' '\n'
} | grep -vFx "$ours" | sort -u)
install "${needed[@]}"
all_files >"$folder/before"

install "$folder"/*.deb
for package in "${names[@]}"; do
    [[ $(dpkg-query -W -f='${Status}' "$package") == "install ok installed" ]]
done
[[ -z $(dpkg --audit) ]]
all_files >"$folder/with"
say "installed: ${#names[@]} packages, $(LC_ALL=C comm -13 "$folder/before" "$folder/with" | wc -l) files and folders"

mapfile -t tests < <(sed -n 's/^Tests: //p' "$folder/tests/control")
for test in "${tests[@]}"; do
    scratch=$(mktemp -d)
    chown nobody "$scratch"
    start=$SECONDS
    runuser -u nobody -- env HOME="$scratch" AUTOPKGTEST_TMP="$scratch" "$folder/tests/$test" \
        || { say "test $test FAILED"; exit 1; }
    say "test $test: passed in $((SECONDS - start)) s"
    rm -rf "$scratch"
done
[[ ${#tests[@]} -ge 1 ]]

apt-get purge -y -qq "${names[@]}"
all_files >"$folder/after"
if ! diff "$folder/before" "$folder/after"; then
    say "purged packages left (>) or took (<) the files above"
    exit 1
fi
say "purged: the $(wc -l <"$folder/after") files and folders are those before"
