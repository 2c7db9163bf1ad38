#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the Debian packages of a commit twice, compares them, has lintian read them, and uses them in
# a clean root. What it makes is in out/package/.
#
# usage: packaging/packages.sh COMMIT JOBS [--once]
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
commit=$(git rev-parse --verify "$1^{commit}") jobs=$2 once=${3:-}
out=$PWD/out/package
version=$(git show "$commit:framework/core/Version.h" \
    | sed -n 's/^#define TILTPOLE_VERSION_STRING "\(.*\)"$/\1/p')
name=tiltpole-$version
second=second/in/another/folder

say() { printf '%s\n' "$*"; }
# Runs a command with its output in a file, which is shown when it fails.
step() {
    local title=$1 start=$SECONDS
    shift
    mkdir -p "$out/logs"
    if ! "$@" >"$out/logs/$title.log" 2>&1; then
        tail -n 60 "$out/logs/$title.log"
        say "$title FAILED after $((SECONDS - start)) s; all of its output: $out/logs/$title.log"
        exit 1
    fi
    say "$title: $((SECONDS - start)) s"
}

# build FOLDER OPTION: unpacks the sources in FOLDER and builds there; -F packs the sources as well.
build() {
    mkdir -p "$1" && cp "$out/tiltpole_$version.orig.tar.gz" "$1" \
        && tar -C "$1" -xf "$out/tiltpole_$version.orig.tar.gz" \
        && git archive --prefix="$name/" "$commit" debian | tar -C "$1" -x \
        && (cd "$1/$name" && dpkg-buildpackage -us -uc "$2" -j"$jobs")
}

# Debhelper would look for the compiler cache in a home of its own. Each build has a part of the cache
# that the other cannot see: the second never gets an object of the first.
build_here() {
    CCACHE_DIR=$(ccache -k cache_dir) CCACHE_NAMESPACE=package-1 CCACHE_BASEDIR=$out/first/$name \
        CMAKE_CXX_COMPILER_LAUNCHER=ccache build "$out/first" -F
}

# In another folder, time zone, locale and file mask.
build_elsewhere() (
    umask 027
    CCACHE_DIR=$(ccache -k cache_dir) CCACHE_NAMESPACE=package-2 CCACHE_BASEDIR=$out/$second/$name \
        CMAKE_CXX_COMPILER_LAUNCHER=ccache TZ=Pacific/Kiritimati LC_ALL=C \
        build "$out/$second" -b
)

compare() {
    local package same=0 differ=0
    for package in "$out"/first/*.deb; do
        if cmp "$package" "$out/$second/$(basename "$package")"; then
            same=$((same + 1))
        else
            differ=$((differ + 1))
        fi
    done
    say "built twice: $same packages are the same byte for byte, $differ differ"
    [[ $differ -eq 0 && $same -gt 0 ]]
}

# The sources of this machine that are Debian's, as apt knows them, and how it reaches them.
sources() {
    local keys=/usr/share/keyrings/debian-archive-keyring.gpg
    # shellcheck disable=SC2016 # apt's fields
    apt-get indextargets --format "deb [signed-by=$keys] "'$(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' | sort -u | grep .
}
access() {
    apt-config dump Acquire | grep -E '^Acquire::(Check-|https?::[A-Za-z-]+ )' || true
}

# The packages in Debian's minimum, a folder that mmdebstrap removes, whatever happens there.
use() {
    local root=$out/root
    mkdir -p "$root/packages" && cp "$out"/first/*.deb "$root/packages" \
        && rm -f "$root"/packages/*-dbgsym_*.deb \
        && cp -r "$out/first/$name/debian/tests" "$out/first/$name/packaging/clean_root.sh" \
            "$root/packages" \
        && sources >"$root/sources.list" && access >"$root/apt.conf" || return 1
    # shellcheck disable=SC2016 # the hook's argument
    mmdebstrap --variant=apt --aptopt="$root/apt.conf" \
        --customize-hook="copy-in $root/packages /" \
        --customize-hook='chroot "$1" bash /packages/clean_root.sh /packages' \
        '' /dev/null "$root/sources.list"
}

rm -rf "$out"
mkdir -p "$out"
[[ -z $(git status --porcelain) ]] || say "what is not committed is not in the packages"
git archive --prefix="$name/" "$commit" -- . ':(exclude)debian' \
    | gzip -n >"$out/tiltpole_$version.orig.tar.gz"
step build build_here
if [[ $once != --once ]]; then
    step build-again build_elsewhere
    compare
fi
step lintian lintian --allow-root --pedantic --fail-on error,warning "$out"/first/*.changes
grep -v '^N:' "$out/logs/lintian.log" || say "lintian found nothing"
step clean-root use
grep '^== ' "$out/logs/clean-root.log"
find "$out/first" -maxdepth 1 -type f -exec mv -t "$out" {} +
rm -rf "$out/first" "$out/second" "$out/root"
say "the packages are in $out"
