# SPDX-License-Identifier: MIT
"""What a soak of `tiltpole live` has to keep to, and whether it did."""
import dataclasses
import statistics

LATENCY_HALF, LATENCY_MOST = 0.5, 3.0  # [ms], that half and 99 in 100 of the epochs stay below
LATENCY_LOADED = 10.0  # for 99 in 100, instead of both, where the machine has more to do than cores [ms]
PROCESSOR = 2.0  # of one core [%]
MEMORY = 32.0  # [MiB]
GROWTH = 0.5  # of memory from the first to the last quarter [MiB]
RECOVERY = 3.0  # [s]


@dataclasses.dataclass
class Sample:
    memory: float  # resident [MiB]
    descriptors: int


@dataclasses.dataclass
class Soak:
    samples: list  # one a second, from after the warm-up on
    latencies: dict  # from script to script through the program [ms] by percentile: 50, 99
    hop: float  # half of the epochs without the program [ms]
    processor: float  # of one core [%]
    recoveries: list  # from the return of a device to the next tip [s]
    expected_recoveries: int
    received: int  # epochs, by all apps
    wrong: int  # epochs that came twice, late by a second, or without a tip while all was connected
    load: float  # mean number of runnable programs
    cores: int


@dataclasses.dataclass
class Row:
    name: str
    value: str
    limit: str
    holds: bool


def quarters(values):
    """The first and the last."""
    count = max(len(values) // 4, 1)
    return values[:count], values[-count:]


def growth(samples):
    first, last = quarters([sample.memory for sample in samples])
    return statistics.median(last) - statistics.median(first)


def more_descriptors(samples):
    """The most of them are compared: there are fewer while something is unplugged."""
    first, last = quarters([sample.descriptors for sample in samples])
    return max(last) - max(first)


def judged(soak):
    """A row for each limit."""
    if not soak.samples or not soak.received:
        return [Row("epochs received", "0", "some", False)]
    loaded = soak.load > soak.cores
    memory = max(sample.memory for sample in soak.samples)
    slowest = max(soak.recoveries, default=0.0)

    def row(name, value, limit, unit):
        return Row(name, f"{value:.2f} {unit}", f"{limit:.2f}", value <= limit)

    # What is added to a hop is known of the half; of the slowest, the scripts' own share stays in.
    half = row("added latency, half", soak.latencies[50] - soak.hop, LATENCY_HALF, "ms")
    if loaded:
        half.limit, half.holds = "-", True
    return [
        half,
        row("latency, 99 in 100", soak.latencies[99], LATENCY_LOADED if loaded else LATENCY_MOST, "ms"),
        row("processor, of a core", soak.processor, PROCESSOR, "%"),
        row("memory, most", memory, MEMORY, "MiB"),
        row("memory, growth", growth(soak.samples), GROWTH, "MiB"),
        row("descriptors, growth", more_descriptors(soak.samples), 0, ""),
        row("recovery, slowest", slowest, RECOVERY, "s"),
        row("recoveries missing", soak.expected_recoveries - len(soak.recoveries), 0, ""),
        row("wrong epochs", soak.wrong, 0, ""),
    ]
