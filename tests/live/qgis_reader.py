# SPDX-License-Identifier: MIT
"""QGIS reads what `tiltpole live` sends, and the job that it writes. Usage: qgis_reader.py PROGRAM

A pole that stands still, from two files at the pace of devices; the pose ends in the middle, so that the second half
is blocked. Every epoch that was sent must come out of QgsNmeaConnection as it was sent. ./dev test-qgis runs it with
the Python that QGIS is built for.
"""
import math
import os
import pathlib
import random
import socket
import subprocess
import sys
import tempfile
import time

os.environ.setdefault("QT_QPA_PLATFORM", "offscreen")

from qgis.core import Qgis, QgsApplication, QgsNmeaConnection, QgsVectorLayer, QgsWkbTypes
from qgis.PyQt.QtCore import QCoreApplication
from qgis.PyQt.QtNetwork import QAbstractSocket, QTcpSocket

SECONDS, POSES_UNTIL = 7.0, 4.5
PLACE = (47.57, 19.0, 150.0)  # of the antenna: latitude, longitude [degrees], height [m]
GEOID = 39.429  # [m]
DEGREES = 1e-9
METERS = 1e-4  # as written
MERGED = 6  # epochs that may have come together with the next, on a busy computer
LEAST_BLOCKED = 0.3  # accuracy of a point under the antenna [m]


def sentence(body):
    check = 0
    for byte in body.encode():
        check ^= byte
    return f"${body}*{check:02X}\r\n"


def angle(value, width):
    minutes = abs(value) * 60.0
    return f"{int(minutes // 60):0{width}d}{minutes % 60:010.7f}"


def receiver_file():
    """GGA, RMC and GST at 10 Hz, the antenna with millimeters of noise."""
    noise = random.Random(5)
    text = ""
    for i in range(int(10 * SECONDS)):
        utc = 47230.0 + i / 10
        when = f"{int(utc // 3600):02d}{int(utc // 60 % 60):02d}{utc % 60:05.2f}"
        latitude = PLACE[0] + noise.gauss(0.0, 2e-8)
        longitude = PLACE[1] + noise.gauss(0.0, 3e-8)
        place = f"{angle(latitude, 2)},N,{angle(longitude, 3)},E"
        height = f"{PLACE[2] - GEOID + noise.gauss(0.0, 0.004):.4f},M,{GEOID:.3f},M"
        text += sentence(f"GNGGA,{when},{place},4,20,0.72,{height},1.0,0207")
        text += sentence(f"GNRMC,{when},A,{place},0.01,,221126,,,R,V")
        text += sentence(f"GNGST,{when},,,,,0.0080,0.0060,0.0150")
    return text


def pose_file():
    """A sensor at 50 Hz that leans by 7 degrees."""
    noise = random.Random(6)
    text = ""
    for i in range(int(50 * POSES_UNTIL)):
        a = [180.0 + noise.gauss(0.0, 0.3), -90.0 + noise.gauss(0.0, 0.3), -420.0 + noise.gauss(0.0, 0.3)]
        values = [*a, -a[0], -a[1], a[2], 0, 0, 0, 0.105, -0.070, 0.992]
        readings = ",".join(f"{v:.3f}" for v in values)
        text += sentence(f"PTPS,1,{1000 + 20 * i},6.0,-4.0,,{readings}")
    return text


def parameter_file():
    lines = []
    for magnetometer in "AB":
        for key in ("a", "b", "c", "d", "e", "x0", "y0", "z0"):
            lines.append(f"[Magnetic{magnetometer}.{key}]{1.0 if key in 'be' else 0.0}")
    for key in ("CoorTrans.dX", "CoorTrans.dY", "CoorTrans.dZ", "MagneticBiasAngle_A", "MagneticBiasAngle_B"):
        lines.append(f"[{key}]0.0")
    return "".join(line + "\r\n" for line in lines)


def degrees(text, hemisphere):
    point = text.index(".")
    value = float(text[: point - 2]) + float(text[point - 2 :]) / 60.0
    return -value if hemisphere in "SW" else value


def epochs_of(nmea):
    """What was sent: UTC, latitude, longitude, height, separation, quality, accuracy in plan and height."""
    epochs = {}
    for line in nmea.splitlines():
        fields = line.partition("*")[0].split(",")
        if fields[0] == "$GNGGA":
            known = fields[2] != ""
            epochs[fields[1]] = {
                "latitude": degrees(fields[2], fields[3]) if known else math.nan,
                "longitude": degrees(fields[4], fields[5]) if known else math.nan,
                "height": float(fields[9]) if known else math.nan,
                "separation": float(fields[11]) if known else math.nan,
                "quality": int(fields[6]),
            }
        elif fields[0] == "$GNGST":
            plan = [float(f) if f else math.nan for f in fields[6:8]]
            epochs[fields[1]]["accuracy"] = math.sqrt(0.5 * (plan[0] ** 2 + plan[1] ** 2))
            epochs[fields[1]]["accuracy_h"] = float(fields[8]) if fields[8] else math.nan
    return epochs


def read_by_qgis(port, process):
    """The states that QGIS told for each time, until the program ends."""
    client = QTcpSocket()
    connection = QgsNmeaConnection(client)
    read = {}

    def on_state(info):
        when = info.utcDateTime.time().toString("hhmmss.zzz")[:-1]
        state = {
            "latitude": info.latitude,
            "longitude": info.longitude,
            "height": info.elevation,
            "separation": info.elevation_diff,
            "quality": info.quality,
            "accuracy": info.hacc,
            "accuracy_h": info.vacc,
        }
        read.setdefault(when, []).append(state)

    connection.stateChanged.connect(on_state)
    deadline = time.monotonic() + 30.0
    while client.state() != QAbstractSocket.ConnectedState:
        client.connectToHost("127.0.0.1", port)
        client.waitForConnected(200)
        if time.monotonic() > deadline:
            raise RuntimeError("QGIS's socket was not accepted")
    connection.connect()
    stored = False
    begun = time.monotonic()
    while process.poll() is None and time.monotonic() < deadline:
        QCoreApplication.processEvents()
        if not stored and time.monotonic() - begun > 2.5:
            process.stdin.write("store P1 KERB corner\nstore P2\n")
            process.stdin.flush()
            stored = True
        time.sleep(0.002)
    for _ in range(50):
        QCoreApplication.processEvents()
        time.sleep(0.002)
    return read


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def same(name, sent, seen):
    if math.isnan(sent) or math.isnan(seen):
        return math.isnan(sent) and math.isnan(seen)
    return abs(sent - seen) <= (DEGREES if name in ("latitude", "longitude") else METERS)


def differences(profile, epoch, seen):
    """What of an epoch QGIS shows otherwise."""
    strictly = epoch["quality"] != 4 and profile == "strict"
    found = [f"{n} sent {epoch[n]!r}, read {seen[n]!r}" for n in (("quality",) if strictly else epoch) if not same(n, epoch[n], seen[n])]
    if strictly and not (math.isnan(seen["latitude"]) and math.isnan(seen["longitude"])):
        found.append(f"blocked, and QGIS shows {seen['latitude']}, {seen['longitude']}")
    if epoch["quality"] != 4 and not strictly and not seen["accuracy"] >= LEAST_BLOCKED:
        found.append(f"blocked, and QGIS shows an accuracy of {seen['accuracy']} m")
    return found


def compare(profile, sent, read):
    """Findings, and how many epochs with and without a tip came as they were sent. QGIS tells a state for what has come
    together: where that is more than one epoch, it shows the time of one with the place of the next."""
    findings = []
    counts = {"tip": 0, "blocked": 0, "merged": 0}
    places = {(e["latitude"], e["longitude"]) for e in sent.values()}
    for when, epoch in sent.items():
        if when not in read:
            continue
        found = [differences(profile, epoch, seen) for seen in read[when]]
        last = read[when][-1]
        of_another = any(same("latitude", last["latitude"], p[0]) and same("longitude", last["longitude"], p[1]) for p in places)
        if [] in found:
            counts["tip" if epoch["quality"] == 4 else "blocked"] += 1
        elif of_another and counts["merged"] < MERGED:
            counts["merged"] += 1
        else:
            findings.append(f"{profile} {when}: " + "; ".join(found[-1]))
    for kind in ("tip", "blocked"):
        if counts[kind] < 15:
            findings.append(f"{profile}: only {counts[kind]} epochs of the kind {kind} came to be compared")
    return findings, counts


def run(program, folder, profile):
    port = free_port()
    nmea = folder / f"{profile}.nmea"
    words = [program, "live", "--gnss", f"file:{folder}/gnss.txt@30", "--pose", f"file:{folder}/pose.txt@50"]
    words += ["--pole", "2.0", "--apc", "0.1165", "--config", str(folder / "pole.cfg"), "--north", "file"]
    words += ["--delay", "0.02,0.007", "--profile", profile, "--serve", f"tcp:{port}", "--serve", f"file:{nmea}"]
    words += ["--job", str(folder / f"{profile}.gpkg")]
    with open(folder / f"{profile}.log", "w", encoding="utf-8") as log:
        process = subprocess.Popen(words, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=log, text=True)
        try:
            read = read_by_qgis(port, process)
        finally:
            process.kill()
            process.wait()
    sent = epochs_of(nmea.read_text(encoding="ascii"))
    findings, counts = compare(profile, sent, read)
    if findings:
        findings.append((folder / f"{profile}.log").read_text(encoding="utf-8"))
    print(
        f"{profile}: {len(sent)} epochs sent; read as sent {counts['tip']} with a tip and {counts['blocked']} blocked, "
        f"{counts['merged']} together with the next"
    )
    return findings


def check_job(path):
    layer = QgsVectorLayer(f"{path}|layername=point", "point", "ogr")
    if not layer.isValid():
        return [f"QGIS does not open {path.name}"]
    findings = []
    if layer.wkbType() != QgsWkbTypes.PointZ:
        findings.append(f"the layer is of {QgsWkbTypes.displayString(layer.wkbType())}, not PointZ")
    if layer.crs().authid() != "EPSG:4979":
        findings.append(f"the layer is in {layer.crs().authid()}, not EPSG:4979")
    features = list(layer.getFeatures())
    if [f["name"] for f in features] != ["P1", "P2"]:
        findings.append(f"the points are {[f['name'] for f in features]}")
    for feature in features:
        point = feature.geometry().constGet()
        if abs(point.z() - feature["h_ell_m"]) > 1e-9 or abs(point.z() - (PLACE[2] - 2.1)) > 0.05:
            findings.append(f"{feature['name']} is {point.z()} m high, its column says {feature['h_ell_m']}")
        if abs(point.y() - PLACE[0]) > 1e-5 or abs(point.x() - PLACE[1]) > 1e-5:
            findings.append(f"{feature['name']} lies at {point.y()}, {point.x()}")
    print(f"job: {len(features)} points in {layer.crs().authid()}, {QgsWkbTypes.displayString(layer.wkbType())}")
    return findings


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    application = QgsApplication([], False)
    application.initQgis()
    print(f"QGIS {Qgis.QGIS_VERSION}")
    with tempfile.TemporaryDirectory(prefix="qgis-") as scratch:
        folder = pathlib.Path(scratch)
        (folder / "gnss.txt").write_text(receiver_file(), encoding="ascii", newline="")
        (folder / "pose.txt").write_text(pose_file(), encoding="ascii", newline="")
        (folder / "pole.cfg").write_text(parameter_file(), encoding="ascii", newline="")
        findings = run(program, folder, "strict")
        findings += run(program, folder, "qfield")
        findings += check_job(folder / "strict.gpkg")
    application.exitQgis()
    print("\n".join(findings) or "QGIS reads what is sent")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
