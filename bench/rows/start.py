"""From the start until the first feed listens, and the memory then, against an empty frame with two child windows."""

from __future__ import annotations

import time

from .row import Bench, Row, ratio_row
from .station import STATUS_PORT, Program, Station

NAME = "start and memory"
REACH_TIME = 2
REACH_MEMORY = 1.6
# Until everything has been painted and the splash window is gone.
SETTLE_SECONDS = 1
MEGABYTE = 1 << 20



def lasts(bench: Bench) -> float:
    return bench.times(25, 5) * 0.2 + bench.times(5, 2) * 2.5


def measure(bench: Bench) -> list[Row]:
    with Station(1, bench.program("tools")) as station:
        frame = [bench.program("EmptyFrame"), station.address, str(STATUS_PORT)]
        kinds = {"server": [bench.server], "titled": [*frame, "titled"], "untitled": [*frame, "untitled"]}
        for command in kinds.values():
            _start(station, command)  # brings the files into the system's cache
        seconds = {kind: [] for kind in kinds}
        for _ in range(bench.times(25, 5)):
            for kind, command in kinds.items():
                seconds[kind].append(_start(station, command))
        memory = {kind: [] for kind in ("server", "titled")}
        for _ in range(bench.times(5, 2)):
            for kind, sizes in memory.items():
                sizes.append(_memory(station, kinds[kind]))
    resident, proportional = ([[size[part] for size in sizes] for sizes in memory.values()] for part in (0, 1))
    return [
        ratio_row("start to the first feed listening", "ms", seconds["server"], seconds["titled"], REACH_TIME),
        ratio_row("the same, beside a frame without any text", "ms", seconds["server"], seconds["untitled"], None),
        ratio_row("resident memory after the start", "MB", *resident, REACH_MEMORY),
        ratio_row("the same, shared pages by their part", "MB", *proportional, None),
    ]


def _start(station: Station, command: list) -> float:
    """Milliseconds from the program's start until its port takes a connection."""
    with Program(command, station.environment()) as program:
        return 1000 * program.wait_for_port(station.address, STATUS_PORT)


def _memory(station: Station, command: list) -> tuple[float, float]:
    """Megabytes in memory once it is up: all that is resident, and with what it shares divided among those who share it."""
    with Program(command, station.environment()) as program:
        program.wait_for_port(station.address, STATUS_PORT)
        time.sleep(SETTLE_SECONDS)
        return program.resident() / MEGABYTE, program.proportional() / MEGABYTE
