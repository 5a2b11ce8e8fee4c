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


def measure(bench: Bench) -> list[Row]:
    kinds = ("server", "empty frame")
    seconds, resident, proportional = ({kind: [] for kind in kinds} for _ in range(3))
    with Station(1, bench.program("tools")) as station:
        commands = {
            "server": [bench.server],
            "empty frame": [bench.program("EmptyFrame"), station.address, str(STATUS_PORT)],
        }
        for turn in range(bench.times(25, 5) + 1):
            for kind in kinds:
                with Program(commands[kind], station.environment()) as program:
                    up = program.wait_for_port(station.address, STATUS_PORT)
                    if turn == 0:
                        continue  # reads the files into the system's cache
                    seconds[kind].append(1000 * up)
                    if turn > 5:
                        continue
                    time.sleep(SETTLE_SECONDS)
                    resident[kind].append(program.resident() / MEGABYTE)
                    proportional[kind].append(program.proportional() / MEGABYTE)
    return [
        ratio_row("start to the first feed listening", "ms", *seconds.values(), REACH_TIME),
        ratio_row("resident memory after the start", "MB", *resident.values(), REACH_MEMORY),
        ratio_row("the same, shared pages by their part", "MB", *proportional.values(), None),
    ]
