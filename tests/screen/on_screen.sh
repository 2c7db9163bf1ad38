#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# usage: on_screen.sh PROGRAM [ARGUMENT...]
# Runs a program on an X server of its own, which chooses a free display and ends with it.
set -euo pipefail

folder=$(mktemp -d)
server=
clean_up() {
    [[ -z $server ]] || kill "$server" 2>/dev/null || true
    rm -rf "$folder"
}
trap clean_up EXIT

: >"$folder/display"
Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp >"$folder/display" 2>"$folder/log" &
server=$!
tries=0
until read -r display <"$folder/display"; do
    if ! kill -0 "$server" 2>/dev/null || ((++tries > 300)); then
        echo "the X server did not start:" >&2
        cat "$folder/log" >&2
        exit 1
    fi
    sleep 0.1
done

unset WAYLAND_DISPLAY
DISPLAY=:$display "$@"
