"""Stories as fast as the line takes them, against a bare loop that writes the same files and starts the same tool."""

from __future__ import annotations

import statistics
import time
from dataclasses import dataclass

from . import stories
from .row import Bench, Row, ratio_row
from .station import Program, Station

NAME = "stories at full speed"
REACH = 1.3


def runs(bench: Bench) -> tuple[int, int]:
    """How many stories, and how often."""
    return bench.times(100_000, 5_000), bench.times(3, 1)


def lasts(bench: Bench) -> float:
    count, times = runs(bench)
    return count * times * 0.0012


@dataclass
class Run:
    seconds: float  # until the last tool said its story's name
    lost: Row
    own_seconds: float = 0  # of the processor, without the tools


def measure(bench: Bench) -> list[Row]:
    count, times = runs(bench)
    ours, bare = [], []
    for _ in range(times):
        for run, results in ((_server, ours), (_bare_loop, bare)):
            with stories.station(bench, 1) as station:
                kind = stories.file_system(station.folder)
                results.append(run(bench, station, stories.make(station.folder, count)))
    name = f"{count:,} stories of {stories.LENGTH} bytes at full speed"
    speed = ratio_row(name, "s", [run.seconds for run in ours], [run.seconds for run in bare], REACH)
    own = statistics.median(run.own_seconds for run in ours)
    speed.note = (
        f"{count / speed.figure:.0f} stories a second, bare {count / speed.baseline:.0f}; files on {kind};"
        f" the server itself, without the tools, {1000 * own / count:.2f} ms of a processor a story"
    )
    return [speed, max((run.lost for run in ours + bare), key=lambda row: row.value)]


def _server(bench: Bench, station: Station, sent: stories.Stories) -> Run:
    with station.start_server(bench.server) as server:
        own, began = server.processor_seconds(), time.monotonic()
        with stories.Source(bench, station, sent, 0):
            told, last = stories.await_tools(station, server, sent.count)
        own = server.processor_seconds() - own if server.runs() else 0
    return Run(last - began, _lost(station, sent, told), own)


def _bare_loop(bench: Bench, station: Station, sent: stories.Stories) -> Run:
    configuration = station.configurations[0]
    tool = bench.program("naming") / "ItemFile"
    command = [bench.program("BareStories"), *sent.words(), configuration.parent, tool, configuration]
    with Program(command, station.environment()) as program:
        told, last = stories.await_tools(station, program, sent.count)
    return Run(last - program.began, _lost(station, sent, told))


def _lost(station: Station, sent: stories.Stories, told: list[str]) -> Row:
    return stories.lost_row("the same, lost or spoilt in the worst run", station, sent.count, told)
