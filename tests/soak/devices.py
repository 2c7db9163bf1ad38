# SPDX-License-Identifier: MIT
"""Sensor and receiver of a soak: the recorded pole of examples/, moved to and fro for as long as needed with rests
between, on a pseudo-terminal and on TCP, both of which can be unplugged."""
import bisect
import contextlib
import csv
import os
import pathlib
import random
import socket
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "examples"))
import live_recording as recording  # noqa: E402

REST = 3.0  # at both ends of the motion [s]
LONGEST_GAP = 0.05  # between recorded poses [s]
NOISE = 0.3  # of the magnetometers [counts]: a sensor that repeats its readings is stuck
READINGS = ("dMag_x", "dMag_y", "dMag_z", "dMag_x_2", "dMag_y_2", "dMag_z_2")
RATES = ("dGyro_x", "dGyro_y", "dGyro_z")
OTHERS = ("dPitch", "dRoll", "dAcc_x", "dAcc_y", "dAcc_z")


class Motion:
    """The longest part of the recording without a pause."""

    def __init__(self, path):
        with open(path, encoding="utf-8", newline="") as file:
            rows = list(csv.DictReader(file))
        times = [float(row["seconds"]) for row in rows]
        starts = [0] + [i for i in range(1, len(times)) if times[i] - times[i - 1] > LONGEST_GAP]
        begin, end = max(zip(starts, starts[1:] + [len(times)]), key=lambda part: times[part[1] - 1] - times[part[0]])
        self._times = [at - times[begin] for at in times[begin:end]]
        self._antennas = [[float(row[k]) - tip for k, tip in zip("xyh", recording.TIP_IN_FILE)] for row in rows[begin:end]]
        self._rows = [{name: float(row[name]) for name in READINGS + RATES + OTHERS} for row in rows[begin:end]]
        self._noise = random.Random(1)

    def _along(self, seconds):
        """Time of the motion, and its direction: 1, -1, or 0 at rest."""
        length = self._times[-1]
        at = seconds % (2.0 * (length + REST))
        if at < length:
            return at, 1
        if at < length + REST:
            return length, 0
        if at < 2.0 * length + REST:
            return 2.0 * length + REST - at, -1
        return 0.0, 0

    def _between(self, at):
        later = min(max(bisect.bisect_left(self._times, at), 1), len(self._times) - 1)
        before = self._times[later - 1]
        return later, (at - before) / (self._times[later] - before)

    def pose(self, seconds):
        at, direction = self._along(seconds)
        later, part = self._between(at)
        a, b = self._rows[later - 1], self._rows[later]
        row = {name: a[name] + part * (b[name] - a[name]) for name in a}
        for name in READINGS:
            row[name] += self._noise.gauss(0.0, NOISE)
        for name in RATES:
            row[name] *= direction
        return recording.pose(row, seconds, 1).encode()

    def epoch(self, seconds):
        later, part = self._between(self._along(seconds)[0])
        antenna = [a + part * (b - a) for a, b in zip(self._antennas[later - 1], self._antennas[later])]
        return recording.epoch(antenna, seconds).encode()


class Sensor:
    """A pseudo-terminal below a name that stays the same."""

    def __init__(self, link):
        self.link = link
        self.plug()

    def plug(self):
        self._pty, self._terminal = os.openpty()
        os.set_blocking(self._pty, False)
        os.symlink(os.ttyname(self._terminal), self.link)

    def unplug(self):
        os.unlink(self.link)
        os.close(self._pty)
        os.close(self._terminal)
        self._pty = None

    def send(self, text):
        if self._pty is not None:
            with contextlib.suppress(BlockingIOError):
                os.write(self._pty, text)


class Receiver:
    """A server on a port that stays the same."""

    def __init__(self):
        self._connection = None
        self.port = 0
        self.plug()

    def plug(self):
        self._listener = socket.create_server(("127.0.0.1", self.port))
        self._listener.setblocking(False)
        self.port = self._listener.getsockname()[1]

    def unplug(self):
        self._listener.close()
        self._drop()

    def _drop(self):
        if self._connection:
            self._connection.close()
        self._connection = None

    def send(self, text):
        if not self._connection:
            try:
                self._connection, _ = self._listener.accept()
            except (BlockingIOError, OSError):
                return
            self._connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        try:
            self._connection.sendall(text)
        except OSError:
            self._drop()
