#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Prints what pynmea2 reads in the GGA, RMC and GST of a file, a line each."""
import sys

import pynmea2


def main():
    with open(sys.argv[1], encoding="ascii", newline="") as lines:
        for line in lines:
            if line.startswith("$P"):  # of a maker that it does not know
                continue
            read = pynmea2.parse(line, check=True)
            place = "" if read.sentence_type not in ("GGA", "RMC") else (
                f"{read.latitude:.10f} {read.longitude:.10f}")
            if read.sentence_type == "GGA":
                print(f"GGA {place} {read.altitude} {read.geo_sep} {read.gps_qual}")
            elif read.sentence_type == "RMC":
                print(f"RMC {read.status} {place} {read.datetime.isoformat()}")
            elif read.sentence_type == "GST":
                print(f"GST {read.std_dev_latitude} {read.std_dev_longitude} {read.std_dev_altitude}")


if __name__ == "__main__":
    main()
