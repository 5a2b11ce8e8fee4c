"""From the end code's way into the line to the story tool's first instruction, against the bare start of the same tool."""

from __future__ import annotations

import statistics
import subprocess
import time

from .row import Bench, MeasureError, Row, difference_row
from .station import END_CODE, START_CODE, Line, Station

NAME = "end code to the tool"
REACH_MORE_MS = 0.5
REACH_WORST_MS = 20
STORY = START_CODE + b"BULLETIN - IMMEDIATE BROADCAST REQUESTED\r\r\nFROST ADVISORY IN EFFECT UNTIL 9 AM\r\r\n"
# Long enough for the last tool to be gone and the server to be idle, as between two stories of a wire.
PAUSE_SECONDS = 0.004
TOOL_SECONDS = 10


class BareSpawner:
    """A process of so many resident bytes that does nothing but start the tool."""

    def __init__(self, bench: Bench, resident: int, environment: dict[str, str]) -> None:
        command = [str(bench.program("BareSpawner")), str(resident), str(_tool(bench))]
        self._process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment, bufsize=0
        )

    def __enter__(self) -> BareSpawner:
        return self

    def __exit__(self, *_) -> None:
        self._process.stdin.close()
        self._process.wait()
        self._process.stdout.close()

    def start_tool(self) -> int:
        """When it began to start the tool, in nanoseconds of the monotonic clock."""
        self._process.stdin.write(b"\n")
        before = self._process.stdout.read(8)
        if len(before) != 8:
            raise MeasureError("the bare process could not start the tool")
        return int.from_bytes(before, "little")


def lasts(bench: Bench) -> float:
    return bench.times(500, 60) * 0.015 + 1


def measure(bench: Bench) -> list[Row]:
    count = bench.times(500, 60)
    with Station(1, _tool(bench).parent) as station, station.start_server(bench.server) as server:
        _story(station)
        _story(station)
        with BareSpawner(bench, server.resident(), station.environment()) as spawner:
            ours, bare = [], []
            for _ in range(count):
                ours.append(_story(station))
                bare.append(_bare_start(station, spawner))
    median = difference_row(f"{NAME}, median of {count}", "ms", ours, bare, REACH_MORE_MS)
    worst = Row(f"{NAME}, worst of {count}", "ms", max(ours), max(bare), max(ours), "ms", REACH_WORST_MS)
    usual, usual_bare = (statistics.quantiles(sample, n=100)[98] for sample in (ours, bare))
    worst.note = f"99 of 100 within {usual:.2f} ms, bare {usual_bare:.2f} ms"
    worst.samples = median.samples
    return [median, worst]


def _tool(bench: Bench):
    return bench.program("tools") / "ItemFile"


def _story(station: Station) -> float:
    """Milliseconds from just before the end code is written until the tool began."""
    line: Line = station.lines[0]
    line.send(STORY)
    time.sleep(PAUSE_SECONDS)
    before = time.clock_gettime_ns(time.CLOCK_MONOTONIC)
    line.send(END_CODE)
    return _until_stamp(station, before)


def _bare_start(station: Station, spawner: BareSpawner) -> float:
    return _until_stamp(station, spawner.start_tool())


def _until_stamp(station: Station, before: int) -> float:
    began = station.stamps.receive(TOOL_SECONDS)
    if began is None:
        raise MeasureError("the story tool did not start")
    time.sleep(PAUSE_SECONDS)
    return (began - before) / 1e6
