# SPDX-License-Identifier: MIT
"""Runs `tiltpole live` for minutes as on a working day: 20 epochs and 100 poses a second, apps that come and go, one that
never reads, receiver and sensor unplugged each minute. Prints latency, processor, memory and descriptors beside their
limits; exits with 1 where one is missed.

usage: soak.py PROGRAM MINUTES
"""
import contextlib
import heapq
import itertools
import multiprocessing
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

import devices
import judge

recording = devices.recording
EPOCHS, POSES = 20, 100  # a second
LATE_EPOCH, LATE_POSE = 0.120, 0.003  # [s]
APPS = 3
AWAY = 1.0  # how long a device is unplugged [s]
CALM = 3.0  # after its return, or the start: epochs that only recovery is judged by [s]
STALE = 1.0  # [s]
HOP = 10.0  # how long epochs go from script to script without the program, at most [s]
KEYS = 86400 * EPOCHS
SPAWN = multiprocessing.get_context("spawn")  # a forked app would keep the unplugged devices open
BIN = 0.01  # of the histogram of latencies [ms]
BINS = 100000


class Shared:
    """What player and apps know of each other."""

    def __init__(self):
        self.sent = SPAWN.RawArray("d", KEYS)  # instant by epoch, 0: none
        self.histogram = [SPAWN.RawArray("L", BINS) for _ in range(APPS)]
        self.wrong = SPAWN.RawArray("L", APPS)
        self.connected = SPAWN.RawArray("b", APPS)
        self.tip_at = SPAWN.RawArray("d", APPS)  # instant of the last tip
        self.calm_from = SPAWN.RawValue("d", float("inf"))
        self.calm_to = SPAWN.RawValue("d", float("inf"))


def key_of(utc):
    seconds = 3600 * int(utc[:2]) + 60 * int(utc[2:4]) + float(utc[4:])
    return round(EPOCHS * seconds) % KEYS


def read_app(port, shared, number):
    """An app until the program ends."""
    with socket.create_connection(("127.0.0.1", port)) as connection:
        shared.connected[number] = 1
        rest, last = b"", -1
        while data := connection.recv(65536):
            now = time.monotonic()
            *lines, rest = (rest + data).split(b"\r\n")
            for line in lines:
                if line[3:6] == b"GGA":
                    last = take(line.decode().split(","), now, last, shared, number)


def take(gga, now, last, shared, number):
    key = key_of(gga[1])
    latency = now - shared.sent[key]
    repeated = 0 <= last - key < KEYS // 2
    if gga[6] == "4":
        shared.tip_at[number] = now
    if repeated or latency > STALE:
        shared.wrong[number] += 1
    elif shared.calm_from.value <= shared.sent[key] < shared.calm_to.value:
        shared.wrong[number] += gga[6] != "4"
        shared.histogram[number][min(int(1000.0 * latency / BIN), BINS - 1)] += 1
    return key


def mark(shared, count):
    """That an epoch is sent now."""
    shared.sent[(round(recording.START * EPOCHS) + count) % KEYS] = time.monotonic()


def motion_of_example():
    return devices.Motion(pathlib.Path(__file__).parents[2] / "examples" / "pole-replay.csv")


def hop(seconds):
    """What half of the epochs take from this script to an app without the program between them [ms]."""
    shared, motion = Shared(), motion_of_example()
    shared.calm_from.value = 0.0
    with socket.create_server(("127.0.0.1", 0)) as listener:
        app = SPAWN.Process(target=read_app, args=(listener.getsockname()[1], shared, 0), daemon=True)
        app.start()
        connection, _ = listener.accept()
    with connection:
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        start = time.monotonic()
        for count in range(int(seconds * EPOCHS)):
            text = motion.epoch(count / EPOCHS)
            time.sleep(max(0.0, start + count / EPOCHS - time.monotonic()))
            mark(shared, count)
            connection.sendall(text)
    app.join(5)
    return percentile(shared.histogram[0], 0.5)


def wait_for_apps(shared, apps):
    while not all(shared.connected):
        if not all(app.is_alive() for app in apps):
            sys.exit("soak.py: an app could not connect")
        time.sleep(0.01)


class Program:
    def __init__(self, path, folder, receiver, sensor):
        parameters = folder / "pole.cfg"
        keys = [f"Magnetic{s}.{k}" for s in "AB" for k in ("a", "b", "c", "d", "e", "x0", "y0", "z0")]
        keys += [f"CoorTrans.d{axis}" for axis in "XYZ"] + ["MagneticBiasAngle_A", "MagneticBiasAngle_B"]
        values = {key: 1.0 for key in keys if key[-2:] in (".b", ".e")} | {keys[-2]: 0.75, keys[-1]: 0.75}
        lines = (f"[{key}]{values.get(key, 0.0):.10f}\r\n" for key in keys)
        parameters.write_bytes("".join(lines).encode())
        sources = ["--gnss", f"tcp:127.0.0.1:{receiver.port}", "--pose", f"serial:{sensor.link}:115200"]
        pole = ["--pole", "2.0", "--north", "file", "--config", str(parameters), "--delay", "0.117,0.007"]
        sinks = ["--serve", "tcp:0", "--status", "tcp:0", "--record", "/dev/null"]
        self._process = subprocess.Popen(
            [path, "live", *sources, *pole, *sinks], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True
        )
        self._text = ""
        self.ports = []
        for line in self._process.stderr:
            self._text += line
            if served := re.match(r"serving .*?:(\d+) ", line):
                self.ports.append(int(served[1]))
            if len(self.ports) == 2:
                break
        else:
            sys.exit(self._text + "soak.py: the program serves nothing")
        self._drain = threading.Thread(target=lambda: [None for _ in self._process.stderr], daemon=True)
        self._drain.start()

    def seconds(self):
        """Of the processor."""
        fields = pathlib.Path(f"/proc/{self._process.pid}/stat").read_text(encoding="ascii").rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def sample(self):
        status = pathlib.Path(f"/proc/{self._process.pid}/status").read_text(encoding="ascii")
        resident = int(re.search(r"VmRSS:\s+(\d+) kB", status)[1]) / 1024
        return judge.Sample(resident, len(os.listdir(f"/proc/{self._process.pid}/fd")))

    def has_ended(self):
        return self._process.poll() is not None

    def end(self):
        self._process.send_signal(signal.SIGINT)
        with contextlib.suppress(subprocess.TimeoutExpired):
            self._process.wait(5)
        self._process.kill()
        self._process.wait()


class Player:
    """Does what is due: sentences, cables, samples."""

    def __init__(self, seconds, program, receiver, sensor, shared):
        self._program, self._shared = program, shared
        self._devices = [receiver, sensor]
        self._motion = motion_of_example()
        self._start = time.monotonic() + 0.2
        self._end = self._start + seconds
        self._warm = min(60.0, seconds / 3.0)
        self._unplug_every = min(60.0, seconds / 6.0)
        self._returned = None
        self._churn = None
        self._measured_from = None
        self.samples, self.recoveries, self.loads, self.returns, self.processor = [], [], [], 0, 0.0
        self._due, self._turn = [], itertools.count()
        for at, action in (
            (LATE_EPOCH, self._epoch),
            (LATE_POSE, self._pose),
            (self._warm, self._sample),
            (self._unplug_every, self._unplug),
            (1.0, self._come_and_go),
        ):
            self._later(self._start + at, action, 0)
        shared.calm_from.value = self._start + min(CALM, self._warm)

    def _later(self, at, action, count):
        heapq.heappush(self._due, (at, next(self._turn), action, count))

    def run(self):
        while self._due and self._due[0][0] < self._end and not self._program.has_ended():
            at, _, action, count = heapq.heappop(self._due)
            time.sleep(max(0.0, at - time.monotonic()))
            action(at, count)
            self._look_for_recovery()

    def _epoch(self, at, count):
        text = self._motion.epoch(count / EPOCHS)
        mark(self._shared, count)
        self._devices[0].send(text)
        self._later(at + 1.0 / EPOCHS, self._epoch, count + 1)

    def _pose(self, at, count):
        self._devices[1].send(self._motion.pose(count / POSES))
        self._later(at + 1.0 / POSES, self._pose, count + 1)

    def _sample(self, at, count):
        if self._measured_from is None:
            self._measured_from = (time.monotonic(), self._program.seconds())
        self.samples.append(self._program.sample())
        self.loads.append(os.getloadavg()[0])
        began, used = self._measured_from
        self.processor = 100.0 * (self._program.seconds() - used) / max(time.monotonic() - began, 1e-3)
        self._later(at + min(1.0, self._warm / 10.0), self._sample, count + 1)

    def _unplug(self, at, count):
        if at + AWAY + judge.RECOVERY > self._end:
            return
        self._shared.calm_to.value = time.monotonic() - 0.2
        self._devices[count % 2].unplug()
        self._later(at + AWAY, self._plug, count)
        self._later(at + self._unplug_every, self._unplug, count + 1)

    def _plug(self, _, count):
        self._devices[count % 2].plug()
        self._returned = time.monotonic()
        self.returns += 1
        self._shared.calm_from.value = self._returned + CALM
        self._shared.calm_to.value = float("inf")

    def _look_for_recovery(self):
        if self._returned and self._shared.tip_at[0] > self._returned:
            self.recoveries.append(self._shared.tip_at[0] - self._returned)
            self._returned = None

    def _come_and_go(self, at, count):
        if self._churn:
            self._churn.close()
        self._churn = socket.create_connection(("127.0.0.1", self._program.ports[count % 2]))
        self._later(at + 5.0, self._come_and_go, count + 1)


def percentile(histogram, part):
    """Upper edge of the bin [ms]."""
    left = part * sum(histogram)
    for i, count in enumerate(histogram):
        left -= count
        if left <= 0:
            return (i + 1) * BIN
    return BINS * BIN


def soaked(path, seconds):
    shared, alone = Shared(), hop(min(HOP, 0.25 * seconds))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        receiver, sensor = devices.Receiver(), devices.Sensor(str(folder / "sensor"))
        program = Program(path, folder, receiver, sensor)
        apps = [SPAWN.Process(target=read_app, args=(program.ports[0], shared, i), daemon=True) for i in range(APPS)]
        try:
            for app in apps:
                app.start()
            wait_for_apps(shared, apps)
            with socket.create_connection(("127.0.0.1", program.ports[0])):  # never reads
                player = Player(seconds, program, receiver, sensor, shared)
                player.run()
            if program.has_ended():
                sys.exit("soak.py: the program ended by itself")
        finally:
            program.end()
        for app in apps:
            app.join(5)
    return judge.Soak(
        samples=player.samples,
        latencies={p: percentile(together(shared), p / 100.0) for p in (50, 99)},
        hop=alone,
        processor=player.processor,
        recoveries=player.recoveries,
        expected_recoveries=player.returns,
        received=sum(together(shared)),
        wrong=sum(shared.wrong),
        load=sum(player.loads) / max(len(player.loads), 1),
        cores=os.cpu_count(),
    )


def together(shared):
    return [sum(counts) for counts in zip(*shared.histogram)]


def main():
    try:
        path, minutes = sys.argv[1], float(sys.argv[2])
    except (IndexError, ValueError):
        sys.exit("usage: soak.py PROGRAM MINUTES")
    soak = soaked(path, 60.0 * minutes)
    print(f"{minutes:g} minutes, {EPOCHS} epochs and {POSES} poses a second, {APPS} apps, one that comes and goes and one that")
    print(f"never reads; {soak.expected_recoveries} times a device was unplugged; {soak.received} epochs received")
    print(f"load of the machine {soak.load:.1f} on {soak.cores} cores; from script to script half of the epochs take")
    print(f"{soak.hop:.2f} ms without the program, {soak.latencies[50]:.2f} ms with it")
    sys.exit(judge.shown(judge.judged(soak)))


if __name__ == "__main__":
    main()
