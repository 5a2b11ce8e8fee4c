"""A thousand stories a second: nothing is lost, the interface thread stays awake, the memory stays as it is."""

from __future__ import annotations

import statistics
import time
from itertools import pairwise

from . import stories
from .row import Bench, MeasureError, Row
from .station import Program, Station

NAME = "stories at a steady pace"
FEEDS = 4
PER_SECOND = 1000
# What happens for the first time takes memory once.
SETTLE_SECONDS = 10
REACH_GAP_MS = 100
REACH_GROWTH_MB = 1
MEGABYTE = 1 << 20
# Stories that go into the line so late were not sent at the pace that is to be measured.
LATE_SECONDS = 1


def seconds_of(bench: Bench) -> int:
    return bench.times(60, 15)


def lasts(bench: Bench) -> float:
    return seconds_of(bench) * 1.1


def measure(bench: Bench) -> list[Row]:
    seconds = seconds_of(bench)
    count = seconds * PER_SECOND
    name = f"{PER_SECOND:,} stories a second for {seconds} s"
    with stories.station(bench, FEEDS) as station:
        sent = stories.make(station.folder, count)
        with station.start_on_screen(bench.program("TickServer")) as server:
            memory = Memory(server)
            began = time.monotonic()
            with stories.Source(bench, station, sent, PER_SECOND) as source:
                told, ended = stories.await_tools(station, server, count, memory.look)
                report = source.report() if len(told) == count else {}
        gaps = _gaps(station, began, ended)
        lost = stories.lost_row(f"{name}, lost or spoilt", station, count, told)
    late = report.get("late_worst_us", 0) / 1e6
    if late > LATE_SECONDS:
        raise MeasureError(f"a story went into its line {late:.1f} s late: the machine or the server can't keep that pace")
    if not memory.sizes:
        raise MeasureError("the server ended, or the stories did, before its memory could be looked at")
    return [lost, _gap_row(name, gaps, late), _growth_row(name, memory)]


class Memory:
    """The resident bytes of a program over time."""

    def __init__(self, program: Program) -> None:
        self._program = program
        self._settled = time.monotonic() + SETTLE_SECONDS
        self._next = self._settled
        self.sizes: list[int] = []

    def look(self) -> None:
        if time.monotonic() >= self._next and self._program.runs():
            self._next += 0.1
            self.sizes.append(self._program.resident())


def _gaps(station: Station, began: float, ended: float) -> list[list[float]]:
    """For each feed's timer the milliseconds between two of its ticks in that time, and to its edges."""
    ticks: dict[str, list[float]] = {}
    for line in station.ticks.read_text(encoding="ascii").splitlines():
        timer, nanoseconds = line.split()
        if began < (moment := int(nanoseconds) / 1e9) < ended:
            ticks.setdefault(timer, [began]).append(moment)
    if len(ticks) != FEEDS:
        raise MeasureError(f"{len(ticks)} timers ticked instead of {FEEDS}")
    return [[1000 * (later - earlier) for earlier, later in pairwise([*moments, ended])] for moments in ticks.values()]


def _gap_row(name: str, gaps: list[list[float]], late: float) -> Row:
    # Of the timer that fared worst, not of all together: what holds up one of them holds up the others as well, and would be the
    # same gap over again.
    usual = max(statistics.quantiles(of_timer, n=1000, method="inclusive")[998] for of_timer in gaps)
    together = [gap for of_timer in gaps for gap in of_timer]
    row = Row(f"{name}, gap between 50 ms ticks, 999 of 1000 within", "ms", usual, None, usual, "ms", REACH_GAP_MS)
    row.note = (
        f"{len(gaps[0])} ticks each of {FEEDS} timers, median {statistics.median(together):.1f} ms, worst {max(together):.1f} ms;"
        f" worst story {1000 * late:.1f} ms late on its way into the line"
    )
    row.samples = {"gaps": together}
    return row


def _growth_row(name: str, memory: Memory) -> Row:
    grown = (max(memory.sizes) - memory.sizes[0]) / MEGABYTE
    row = Row(f"{name}, memory grown after {SETTLE_SECONDS} s", "MB", grown, None, grown, "MB", REACH_GROWTH_MB)
    row.note = f"{memory.sizes[0] / MEGABYTE:.1f} MB after {SETTLE_SECONDS} s, {memory.sizes[-1] / MEGABYTE:.1f} MB at the end"
    return row
