# SPDX-License-Identifier: MIT
"""What soaks of `tiltpole live`, of the library and of the controls have to keep to, and whether they did."""
import dataclasses
import statistics

LATENCY_HALF, LATENCY_MOST = 0.5, 3.0  # [ms], that half and 99 in 100 of the epochs stay below
LATENCY_LOADED = 10.0  # for 99 in 100, instead of both, where the machine has more to do than cores [ms]
PROCESSOR = 2.0  # of one core [%]
MEMORY = 32.0  # [MiB]
GROWTH = 0.5  # of memory from the first to the last quarter [MiB]
RECOVERY = 3.0  # [s]
SAMPLE = 50.0  # that 999 in 1000 samples stay below, of those without an estimate and without a calibration [us]
ESTIMATE = 2000.0  # likewise with an estimate of the occupation [us]
CALIBRATION = 20000.0  # likewise with a calibration: until the next sample is due [us]
QUICKEST = "sample, quickest of its place"
SAMPLES_PER_EPOCH, SAMPLES_PER_CALIBRATION = 10, 2000
FIRST_EPOCH = 17  # samples, with the last of which it comes


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
class EngineSoak:
    rounds: list  # what was held after each round of 80 s: samples, blocks, resident [KiB], descriptors
    calls: dict  # by name: "clock" and "processor", of each count, p50, p99, p99.9, most [us]
    outcome: dict  # counts
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


def judged_engine(soak):
    """A row for each limit. Where the machine has more to do than cores other work interrupts a call and takes its caches:
    then the quickest of all rounds counts, which its code cannot do without."""
    rounds = soak.rounds[1:]  # the first one fills what is kept
    if len(rounds) < 2:
        return [Row("rounds of 80 s, but the first", str(len(rounds)), ">= 2", False)]
    loaded = soak.load > soak.cores
    rows = []
    for name, limit in (
        ("sample", SAMPLE),
        ("sample with an estimate", ESTIMATE),
        ("sample with a calibration", CALIBRATION),
        (QUICKEST, SAMPLE),
    ):
        for clock, label in (("clock", name), ("processor", "  its processor time")):
            times = soak.calls[name][clock]
            if name == QUICKEST and clock == "processor":
                continue
            slow = times["p99.9"]
            row = Row(label, f"{slow:.1f} us", f"{limit:.1f}", times["count"] > 0 and slow <= limit)
            if loaded and name != QUICKEST:
                row.limit, row.holds = "-", True
            rows.append(row)

    def growth_of(key):
        first, last = quarters([held[key] for held in rounds])
        return max(last) - max(first)

    seen = soak.outcome
    counted = all(held["blocks"] > 0 for held in rounds)
    resident = growth_of("resident") / 1024
    missing = seen["samples"] - seen["tips"]
    epochs = (seen["samples"] - FIRST_EPOCH) // SAMPLES_PER_EPOCH + 1 - seen["live"]
    calibrations = seen["samples"] // SAMPLES_PER_CALIBRATION - seen["calibrations"]
    return rows + [
        Row("blocks of memory, growth", str(growth_of("blocks")), "0", counted and growth_of("blocks") <= 0),
        Row("memory, growth", f"{resident:.2f} MiB", f"{GROWTH:.2f}", resident <= GROWTH),
        Row("descriptors, growth", str(growth_of("descriptors")), "0", growth_of("descriptors") <= 0),
        Row("tips missing", str(missing), "0", missing == 0),
        Row("epochs without a tip", str(epochs), "0", epochs == 0),
        Row("calibrations missing", str(calibrations), "0", calibrations == 0),
        Row("refused, disturbed", str(seen["refused"] + seen["disturbed"]), "0", seen["refused"] + seen["disturbed"] == 0),
        Row("estimates", str(seen["estimates"]), "> 0", seen["estimates"] > 0),
        Row("epochs that may be stored", str(seen["stored"]), "> 0", seen["stored"] > 0),
    ]


def holds_nothing_more(line):
    """Whether a control left nothing behind, in what `controls_soak` prints of it."""
    more = (line["blocks"], line["descriptors"], line["windows"], line["wrong"])
    return line["held"] > 0 and max(more) <= 0 and line["resident"] <= 1024 * GROWTH


def shown(rows):
    """Prints the rows. The exit code."""
    print(f"\n{'':<32}{'measured':>14}{'limit':>10}")
    for row in rows:
        print(f"{row.name:<32}{row.value:>14}{row.limit:>10}{'' if row.holds else '   MISSED'}")
    return 0 if all(row.holds for row in rows) else 1
