#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks for every control in the picture of an example host, by the colors that only it has there.

usage: check_picture.py HOST PICTURE
"""
import struct
import sys
import zlib

RED, GREEN, BLUE = (255, 0, 0), (0, 255, 0), (0, 0, 255)
WHITE, BLACK, CYAN = (255, 255, 255), (0, 0, 0), (0, 255, 255)
FACE = (204, 255, 102)  # of dial and gauges

# At least so many pixels of each color, a half or less of what the recorded motion gives. Needle and
# pointers have left the places where they begin.
COLORS = {
    "dial": {FACE: 16000, BLUE: 400},  # face, labels
    "dial's needle": {RED: 60},
    "left gauge": {FACE: 8000, BLUE: 150},
    "left pointer": {RED: 60},
    "right gauge": {FACE: 8000, BLUE: 150},
    "right pointer": {RED: 60},
    "horizontal plot": {BLACK: 25000, WHITE: 1500, CYAN: 50},  # background, crosses, axes
    "vertical plot": {BLACK: 25000, GREEN: 1500, CYAN: 50},
    "tilt graph": {BLACK: 100000, WHITE: 300, RED: 50},  # background, observations, position
}
# A part of each control that belongs to no other: left, top, right, bottom. It leaves out the edges.
# The motion ends with a heading of 86 degrees and an upright pole.
PLACES = {
    "frame-host": {
        "dial": (15, 15, 325, 295),
        "dial's needle": (200, 140, 265, 165),
        "left gauge": (345, 15, 490, 295),
        "left pointer": (345, 140, 490, 170),
        "right gauge": (510, 15, 655, 295),
        "right pointer": (510, 140, 655, 170),
        "horizontal plot": (15, 315, 325, 590),
        "vertical plot": (345, 315, 655, 590),
        "tilt graph": (675, 15, 985, 590),
    },
    "qt-host": {
        "dial": (25, 45, 255, 290),
        "dial's needle": (165, 155, 215, 180),
        "left gauge": (292, 45, 395, 290),
        "left pointer": (292, 155, 395, 185),
        "right gauge": (432, 45, 535, 290),
        "right pointer": (432, 155, 535, 185),
        "horizontal plot": (30, 350, 250, 585),
        "vertical plot": (295, 350, 530, 585),
        "tilt graph": (575, 45, 970, 590),
    },
}


def unfilter(kind, line, above, step):
    """The bytes of a line of pixels (filters of PNG, ISO/IEC 15948, clause 9), in place."""
    for i, value in enumerate(line):
        left = line[i - step] if i >= step else 0
        up = above[i]
        corner = above[i - step] if i >= step else 0
        if kind == 1:
            value += left
        elif kind == 2:
            value += up
        elif kind == 3:
            value += (left + up) // 2
        elif kind == 4:
            near = [(abs(left + up - corner - v), n) for n, v in enumerate((left, up, corner))]
            value += (left, up, corner)[min(near)[1]]
        line[i] = value & 255


def read_png(path):
    """Lines of pixels (r, g, b). Eight bits a channel, not interlaced."""
    with open(path, "rb") as file:
        data = file.read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        sys.exit(f"{path} is no PNG file")
    at, packed, header = 8, b"", None
    while at < len(data):
        (length,) = struct.unpack(">I", data[at:at + 4])
        kind, body = data[at + 4:at + 8], data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    width, height, depth, color, _, _, interlaced = header
    if depth != 8 or color not in (2, 6) or interlaced:
        sys.exit(f"{path} is of a kind that is not read here")
    step = 3 if color == 2 else 4
    raw = zlib.decompress(packed)
    above, lines = bytearray(width * step), []
    for y in range(height):
        begin = y * (width * step + 1)
        line = bytearray(raw[begin + 1:begin + 1 + width * step])
        if raw[begin]:
            unfilter(raw[begin], line, above, step)
        lines.append([tuple(line[i:i + 3]) for i in range(0, width * step, step)])
        above = line
    return lines


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in PLACES:
        sys.exit(__doc__)
    lines = read_png(sys.argv[2])
    missing = []
    for control, (left, top, right, bottom) in PLACES[sys.argv[1]].items():
        counts = {}
        for line in lines[top:bottom]:
            for pixel in line[left:right]:
                counts[pixel] = counts.get(pixel, 0) + 1
        for color, least in COLORS[control].items():
            found = counts.get(color, 0)
            print(f"{control}: {found} pixels of {color}, at least {least} expected")
            if found < least:
                missing.append(control)
    if missing:
        sys.exit(f"not shown: {', '.join(sorted(set(missing)))}")


main()
