#!/bin/bash
# SPDX-License-Identifier: MIT
# The installed examples build against the installed libraries, by CMake and by pkg-config, and print
# what is installed beside them.
set -euo pipefail
cd "$AUTOPKGTEST_TMP"
examples=/usr/share/doc/tiltpole/examples
# For the objects that are drawn and saved.
export QT_QPA_PLATFORM=offscreen XDG_DATA_HOME=$PWD/data

# expect NAME: the program NAME prints NAME.txt. Some write files where they are.
expect() {
    mkdir -p run
    (cd run && "../$1" $examples) >printed
    diff "$examples/classes/$(basename "$1").txt" printed
}

cmake -S $examples/classes -B classes -G Ninja -D CMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >/dev/null
cmake --build classes >/dev/null
count=0
for source in "$examples"/classes/*.cpp; do
    expect "classes/$(basename "$source" .cpp)"
    count=$((count + 1))
done
echo "find_package: $count examples print what is beside them"
[[ $count -ge 14 ]]

# The loader finds every library, needed or not.
all=(core quality field job grid controls)
read -ra flags < <(pkg-config --cflags --libs "${all[@]/#/tiltpole-}")
g++ -std=c++20 -Wall -Wextra -Werror -Wl,--no-as-needed $examples/classes/position.cpp -o position \
    "${flags[@]}"
expect ./position
for library in "${all[@]}"; do
    ldd ./position | grep "libtiltpole_$library.so.* => /" \
        || { echo "the host has no libtiltpole_$library" >&2; exit 1; }
done
echo "pkg-config: tiltpole-core $(pkg-config --modversion tiltpole-core)"

# The host that the README shows: it refuses without a calibration, and prints what the README says with
# one that leaves readings as they are.
cmake -S $examples/host -B host -G Ninja >/dev/null
cmake --build host >/dev/null
if host/host; then
    echo "the host measures without a parameter file" >&2
    exit 1
fi
for magnetometer in A B; do
    printf "[Magnetic$magnetometer.%s]%s\r\n" a 0.0 b 1.0 c 0.0 d 0.0 e 1.0 x0 0.0 y0 0.0 z0 0.0
done >pole.cfg
printf '[%s]0.0\r\n' CoorTrans.dX CoorTrans.dY CoorTrans.dZ MagneticBiasAngle_A MagneticBiasAngle_B \
    >>pole.cfg
host/host >printed
cat printed
[[ $(wc -l <printed) -eq 2 && $(grep -cFxf printed /usr/share/doc/tiltpole/README.md) -eq 2 ]]
