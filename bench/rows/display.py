"""Four lines at the pace of 115,200 baud into the server with its windows, against the same work without any window."""

from __future__ import annotations

import json
import subprocess
import time

from .row import Bench, MeasureError, Row, difference_row
from .station import Program, Station

NAME = "display"
REACH_POINTS = 3
LINES = 4
# Time for the first seconds' work, which no later one repeats.
SETTLE_SECONDS = 1.5


def lasts(bench: Bench) -> float:
    return bench.times(5, 1) * 4 * (SETTLE_SECONDS + bench.times(10, 4) + 2)


def measure(bench: Bench) -> list[Row]:
    seconds = bench.times(10, 4)
    subjects = {
        "placed": lambda station: station.start_on_screen(bench.server),
        "tiled": lambda station: station.start_on_screen(bench.program("TiledServer")),
        "reads": lambda station: _reader(bench, station, "reads"),
        "stories": lambda station: _reader(bench, station, "stories"),
    }
    shares = {name: [] for name in subjects}
    notes = []
    for _ in range(bench.times(5, 1)):
        for name, start in subjects.items():
            share, note = _share(bench, start, seconds)
            shares[name].append(share)
            notes.append(note)
    rows = [
        _row("as the server places its windows", shares["placed"], shares["stories"], REACH_POINTS),
        _row("all four feed windows in view", shares["tiled"], shares["stories"], REACH_POINTS),
        _row("the same, beside reads without stories", shares["tiled"], shares["reads"], None),
    ]
    rows[0].note = f"worst arrival {max(note['late_worst_us'] for note in notes) / 1000:.1f} ms late on its way into the line"
    return rows


def _row(name: str, ours: list[float], baseline: list[float], reach: float | None) -> Row:
    return difference_row(f"{NAME}, {name}", "% of a core", ours, baseline, reach)


def _reader(bench: Bench, station: Station, what: str) -> Program:
    return Program([bench.program("BareReader"), what, *station.configurations], station.environment())


def _share(bench: Bench, start, seconds: int) -> tuple[float, dict[str, int]]:
    """Per cent of a core over so many seconds under all four lines, and what the player of the lines has to say."""
    with Station(LINES, bench.program("tools")) as station, start(station) as program:
        descriptors = [line.near for line in station.lines]
        command = [str(bench.program("LinePace")), str(int(SETTLE_SECONDS + seconds + 1)), *map(str, descriptors)]
        with subprocess.Popen(command, pass_fds=descriptors, stdout=subprocess.PIPE) as player:
            _idle(station, SETTLE_SECONDS)
            used, began = program.processor_seconds(), time.monotonic()
            stories = _idle(station, seconds)
            used, lasted = program.processor_seconds() - used, time.monotonic() - began
            note = json.loads(player.communicate()[0])
        if note["refused"] or not program.runs():
            raise MeasureError(f"{program.name} did not keep up: {note['refused']} bytes found no room in its lines")
    return 100 * used / lasted, note | {"stories": stories}


def _idle(station: Station, seconds: float) -> int:
    """Waits, and takes what the story tools have to say; how many there were."""
    deadline = time.monotonic() + seconds
    stories = 0
    while (left := deadline - time.monotonic()) > 0:
        stories += station.stamps.receive(left) is not None
    return stories
