# SPDX-License-Identifier: MIT
"""Plays examples/pole-replay.csv, a recorded motion about a known tip, to `tiltpole live` as devices do: the pose sensor
on a pseudo-terminal, the receiver on TCP. An app on TCP reads what the program serves; shown are the states and how
far the tips lie from the known one.

The pole moves ten times as fast as it was recorded, and all clocks run with it: an epoch every 0.01 s of its own UTC, a
receiver 11.7 ms later than the sensor. So the program sees true instants, of a faster pole. Long pauses of the recording
are cut.

usage: live_player.py PROGRAM POLE-REPLAY.CSV
"""
import collections
import math
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

import live_recording

SPEED = 10
LONGEST_PAUSE = 1.5  # of the recording [s]
LATE = (live_recording.RECEIVER_LATE - live_recording.SENSOR_LATE) / SPEED  # [s]
PARAMETERS = {"MagneticA.b": 1, "MagneticA.e": 1, "MagneticB.b": 1, "MagneticB.e": 1}
PARAMETERS |= {"MagneticBiasAngle_A": 0.75, "MagneticBiasAngle_B": 0.75}  # that of the recording
KEYS = [f"Magnetic{sensor}.{key}" for sensor in "AB" for key in ("a", "b", "c", "d", "e", "x0", "y0", "z0")]
KEYS += [f"CoorTrans.d{axis}" for axis in "XYZ"] + ["MagneticBiasAngle_A", "MagneticBiasAngle_B"]


class App(threading.Thread):
    """What an app gets: of each epoch the verdict, and how far its tip lies from the known one."""

    def __init__(self, port):
        super().__init__(daemon=True)
        self.tips = collections.defaultdict(list)  # errors by verdict; None where no tip was sent
        self._connection = socket.create_connection(("127.0.0.1", port))
        self._error = None

    def run(self):
        with self._connection.makefile("r", encoding="ascii", newline="\r\n") as lines:
            for line in lines:
                self._take(line.strip().rsplit("*", 1)[0].split(","))

    def _take(self, fields):
        if fields[0].endswith("GGA"):
            has_tip = fields[6] == "4"
            self._error = error_of(fields) if has_tip else None
        elif fields[0] == "$PTLTS":
            self.tips[f"{fields[3]} {fields[4]}".strip()].append(self._error)


def degrees(text):
    whole = text.index(".") - 2
    return float(text[:whole]) + float(text[whole:]) / 60.0


def error_of(gga):
    """Of a tip against the known one, in plan and in height [m]."""
    latitude, longitude, height = degrees(gga[2]), degrees(gga[4]), float(gga[9]) + float(gga[11])
    meridian, normal = live_recording.radii()
    tip = live_recording.TIP
    north = math.radians(latitude - tip[0]) * (meridian + tip[2])
    east = math.radians(longitude - tip[1]) * (normal + tip[2]) * math.cos(math.radians(tip[0]))
    return math.hypot(north, east), abs(height - tip[2])


def port_of(program):
    """Shows what the program says of itself up to the port at which it serves."""
    for line in program.stderr:
        print(line, end="", flush=True)
        served = re.match(r"serving .*?:(\d+) ", line)
        if served:
            return int(served[1])
    sys.exit("live_player.py: the program serves nothing")


def show(program):
    """Shows the rest of it but the changes of state, which are many of a pole that is waved about."""
    for line in program.stderr:
        if not re.match(r"(\d\d:\d\d:\d\d\.\d|          ) (STORE|WAIT|BLOCK)", line):
            print(line, end="", flush=True)


def play(records, pose, receiver):
    start = time.monotonic() - records[0][0]
    for at, channel, text in records:
        time.sleep(max(0.0, start + at - time.monotonic()))
        if channel == "P":
            os.write(pose, text.encode())
        else:
            receiver.sendall(text.encode())


def command(program, folder, port, pose):
    with open(os.path.join(folder, "pole.cfg"), "w", encoding="ascii", newline="\r\n") as file:
        file.writelines(f"[{key}]{PARAMETERS.get(key, 0.0):.10f}\n" for key in KEYS)
    sources = ["--gnss", f"tcp:127.0.0.1:{port}", "--pose", f"serial:{os.ttyname(pose)}:115200"]
    limits = ["--max-pose-gap", "0.005", "--max-speed", "0.5", "--still-for", "0.05"]  # of a pole ten times as fast
    pole = ["--pole", "2.0", "--north", "file", "--config", "pole.cfg", "--heading-sd", "1"]
    return [os.path.abspath(program), "live", *sources, *pole, *limits, "--delay", f"{LATE:.4f},0.001", "--serve", "tcp:0"]


def summary(app):
    """A table of what was sent; whether most epochs came with a tip."""

    def row(name, errors):
        known = [error for error in errors if error]
        text = f"  {name:<24}{len(errors):>7}{len(known):>6}"
        for values in zip(*known):
            text += "   " + "".join(f"{1000 * sorted(values)[int(p * (len(values) - 1))]:8.1f}" for p in (0.5, 0.9))
        print(text)

    print("\nWhat the app got; errors against the known tip [mm], half and nine in ten are below")
    print(f"  {'':<24} epochs  tips       plan            height")
    for name, errors in sorted(app.tips.items(), key=lambda item: -len(item[1])):
        row(name, errors)
    everything = sum(app.tips.values(), [])
    row("all", everything)
    return sum(error is not None for error in everything)


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: live_player.py PROGRAM POLE-REPLAY.CSV")
    records = live_recording.records(sys.argv[2], SPEED, LONGEST_PAUSE)
    pose, terminal = os.openpty()
    with tempfile.TemporaryDirectory() as folder, socket.create_server(("127.0.0.1", 0)) as server:
        server.settimeout(5)
        words = command(sys.argv[1], folder, server.getsockname()[1], terminal)
        streams = {"stdin": subprocess.DEVNULL, "stderr": subprocess.PIPE}
        with subprocess.Popen(words, cwd=folder, text=True, **streams) as program:
            try:
                app = App(port_of(program))
                receiver, _ = server.accept()
                app.start()
                echo = threading.Thread(target=show, args=(program,), daemon=True)
                echo.start()
                with receiver:
                    play(records, pose, receiver)
                    time.sleep(0.3)  # the last epoch waits for a pose
                    program.send_signal(signal.SIGINT)
                    echo.join(5)
                app.join(5)
            finally:
                program.kill()
    if summary(app) < len([record for record in records if record[1] == "R"]) / 2:
        sys.exit("live_player.py: most epochs came without a tip")


main()
