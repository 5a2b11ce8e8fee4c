"""Four feeds on whose lines nothing comes, against the same twelve timers in a program that has nothing else."""

from __future__ import annotations

import time

from .row import Bench, Row
from .station import Program, Station

NAME = "idle"
FEEDS = 4
REACH_TIMES = 3
REACH_SHARE = 1
REACH_GROWTH_MB = 1
# Until everything has been painted and the splash window is gone.
SETTLE_SECONDS = 3
MEGABYTE = 1 << 20


def seconds_of(bench: Bench) -> int:
    return 600 if bench.long else bench.times(60, 10)


def lasts(bench: Bench) -> float:
    return SETTLE_SECONDS + seconds_of(bench)


class Watch:
    """What a program uses from now on."""

    def __init__(self, program: Program) -> None:
        self._program = program
        self._used = program.processor_seconds()
        self._began = time.monotonic()
        self._sizes = [program.resident()]

    def look(self) -> None:
        self._sizes.append(self._program.resident())

    def share(self) -> float:
        """Per cent of a core."""
        return 100 * (self._program.processor_seconds() - self._used) / (time.monotonic() - self._began)

    def grown(self) -> float:
        """Megabytes, at the highest."""
        return (max(self._sizes) - self._sizes[0]) / MEGABYTE


def measure(bench: Bench) -> list[Row]:
    seconds = seconds_of(bench)
    with (
        Station(FEEDS, bench.program("tools")) as station,
        station.start_on_screen(bench.server) as server,
        # Side by side, so that both have the same minutes.
        Program([bench.program("BareTimers")], station.environment()) as timers,
    ):
        time.sleep(SETTLE_SECONDS)
        ours, bare = Watch(server), Watch(timers)
        for _ in range(seconds):
            time.sleep(1)
            ours.look()
            bare.look()
        share, bare_share = ours.share(), bare.share()
        grown, bare_grown = ours.grown(), bare.grown()
    name = f"{NAME} with four feeds for {seconds} s"
    return [
        Row(f"{name}, processor time", "% of a core", share, bare_share, share / bare_share, "times", REACH_TIMES),
        Row("the same, as a share", "% of a core", share, None, share, "% of a core", REACH_SHARE),
        Row("the same, memory grown", "MB", grown, bare_grown, grown, "MB", REACH_GROWTH_MB),
    ]
