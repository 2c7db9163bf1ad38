#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# usage: on_screen.sh PROGRAM [ARGUMENT...]
# Runs a program on an X server of its own, which has a number by chance and ends with the program.
set -euo pipefail

folder=$(mktemp -d)
server=
stop() {
    [[ -z $server ]] || { kill "$server" && wait "$server"; } 2>/dev/null || true
    server=
}
clean_up() {
    stop
    rm -rf "$folder"
}
trap clean_up EXIT

# A number by chance: a server that ends takes the socket of its number with it, also that of a new
# one that has just been given the lowest free number. Without -noreset the server would begin anew
# after the client that asks for it here, and refuse the next one meanwhile.
start() {
    display=$((100 + RANDOM))
    Xvfb ":$display" -noreset -screen 0 1280x1024x24 -nolisten tcp >"$folder/log" 2>&1 &
    server=$!
    local tries=0
    until xdpyinfo -display ":$display" >/dev/null 2>&1; do
        if ! kill -0 "$server" 2>/dev/null || ((++tries > 300)); then
            return 1
        fi
        sleep 0.1
    done
}

starts=1
until start; do
    stop
    if ((++starts > 5)); then
        echo "the X server did not start:" >&2
        cat "$folder/log" >&2
        exit 1
    fi
    sleep 0.5
done

unset WAYLAND_DISPLAY
DISPLAY=:$display "$@"
