# SPDX-License-Identifier: MIT
"""Lays examples/pole-replay.csv, a recorded motion about a known tip, about a place on the ellipsoid and prints it
as a recording of `tiltpole live`: $PTPS of the sensor, GGA RMC GST of an antenna at 10 Hz that tells 120 ms late.
examples/live_player.py streams the same lines.

usage: live_recording.py POLE-REPLAY.CSV > day.tprec
"""
import csv
import math
import sys

TIP = (47.57, 19.0, 150.0)  # latitude, longitude [degrees], height [m]
TIP_IN_FILE = (238540.0, 650135.0, 112.5)  # N, E, h of pole-replay.csv
GEOID = 39.429  # [m]
START = 47278.0  # 13:07:58 UTC
FIRST = 1.0  # instant of the first pose [s]
SENSOR_LATE, RECEIVER_LATE = 0.003, 0.120  # [s]


def sentence(body):
    check = 0
    for byte in body.encode():
        check ^= byte
    return f"${body}*{check:02X}\r\n"


def degrees_and_minutes(value, width):
    whole = int(value)
    return f"{whole:0{width}d}{60.0 * (value - whole):010.7f}"


def radii():
    """Of curvature at the tip: along the meridian and across it [m]."""
    a, e2 = 6378137.0, 0.00669437999014
    w = math.sqrt(1.0 - e2 * math.sin(math.radians(TIP[0])) ** 2)
    return a * (1.0 - e2) / w**3, a / w


def geodetic(north, east, up):
    meridian, normal = radii()
    return (
        TIP[0] + math.degrees(north / (meridian + TIP[2])),
        TIP[1] + math.degrees(east / ((normal + TIP[2]) * math.cos(math.radians(TIP[0])))),
        TIP[2] + up,
    )


def pose(row, seconds, speed):
    readings = [float(row[c]) for c in ("dMag_x", "dMag_y", "dMag_z", "dMag_x_2", "dMag_y_2", "dMag_z_2")]
    turning = [speed * float(row[c]) for c in ("dGyro_x", "dGyro_y", "dGyro_z")]
    weight = [float(row[c]) for c in ("dAcc_x", "dAcc_y", "dAcc_z")]
    values = ",".join(f"{v:.5f}" for v in readings + turning + weight)
    tilt = f"{float(row['dPitch']):.4f},{float(row['dRoll']):.4f}"
    milliseconds = f"{1000 * seconds + 5000:.{0 if speed == 1 else 1}f}"
    return sentence(f"PTPS,1,{milliseconds},{tilt},,{values}")


def epoch(antenna, seconds):
    day, utc = divmod(START + seconds, 86400.0)
    second = f"{utc % 60:06.3f}".removesuffix("0")
    time = f"{int(utc // 3600):02d}{int(utc // 60 % 60):02d}{second}"
    latitude, longitude, height = geodetic(*antenna)
    place = f"{degrees_and_minutes(latitude, 2)},N,{degrees_and_minutes(longitude, 3)},E"
    return (
        sentence(f"GNGGA,{time},{place},4,20,0.72,{height - GEOID:.4f},M,{GEOID:.3f},M,1.0,0207")
        + sentence(f"GNRMC,{time},A,{place},0.10,,{22 + int(day)}1126,,,R,V")
        + sentence(f"GNGST,{time},,,,,0.0080,0.0080,0.0150")
    )


def antenna_at(times, antennas):
    """Moments and antennas of epochs: ten a second between the rows, or the rows, where only some have an antenna."""
    if not all(antennas):
        return [(t, at) for t, at in zip(times, antennas) if at]
    found = []
    later = 1
    for i in range(1, int(10 * times[-1])):
        t = i / 10
        while times[later] < t:
            later += 1
        gap = times[later] - times[later - 1]
        if gap > 0.05:
            continue  # the recording pauses
        part = (t - times[later - 1]) / gap
        found.append((t, [a + part * (b - a) for a, b in zip(antennas[later - 1], antennas[later])]))
    return found


def records(path, speed=1, longest_pause=math.inf, tip=TIP_IN_FILE):
    """What sensor and receiver send, as (seconds, "P" or "R", bytes) in the order of arrival. The motion is `speed`
    times as fast as recorded, and so is every clock: all times are divided by it, rates of turn multiplied. Pauses of the recording are cut to
    `longest_pause` seconds of it. `tip` is that of the log."""
    with open(path, encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file))
    first, cut = float(rows[0]["seconds"]), 0.0
    times = []
    for row in rows:
        at = float(row["seconds"]) - first - cut
        excess = max(at - times[-1] - longest_pause, 0.0) if times else 0.0
        cut += excess
        times.append(at - excess)
    keys = ("N", "E", "h") if "N" in rows[0] else ("x", "y", "h")
    antennas = [[float(row[k]) - t for k, t in zip(keys, tip)] if row["h"] else [] for row in rows]
    sent = [(FIRST + (t + SENSOR_LATE) / speed, "P", pose(row, t / speed, speed)) for t, row in zip(times, rows)]
    for t, at in antenna_at(times, antennas):
        sent.append((FIRST + (t + RECEIVER_LATE) / speed, "R", epoch(at, t / speed)))
    return sorted(sent, key=lambda record: record[0])


def recording(sent):
    """The lines of a recording of what was sent."""
    yield "# tiltpole recording 1, started 2026-11-22T13:07:57.000000Z"
    for at, channel, text in sent:
        escaped = text.replace("\r\n", "\\x0D\\x0A")
        yield f"+{at:.6f} {channel} {escaped}"


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        sys.exit("usage: live_recording.py LOG.csv > RECORDING.tprec")
    for line in recording(records(sys.argv[1])):
        print(line)


if __name__ == "__main__":
    main()
