"""How long it takes from the moment at which the level has been up for long enough until a recording takes sound in."""

from __future__ import annotations

import json
import subprocess
import sys
import tempfile
from pathlib import Path

from . import sound
from .row import Bench, MeasureError, Row
from .station import Audio, Station, first_cart
from .wall import CROWDED, LISTS, WALL_MAKER

NAME = "audio capture, opening of the gate"
TICK_MS = 50
REACH_MS = 100
CARTS = 20  # of each feed


def _openings(bench: Bench) -> int:
    return bench.times(50, 8)


def lasts(bench: Bench) -> float:
    return 5 + _openings(bench) / sound.FEEDS * (sound.START_SECONDS + sound.END_SECONDS + 0.3)


def measure(bench: Bench) -> list[Row]:
    with tempfile.TemporaryDirectory(prefix="vorda-bench-", dir=bench.folder) as name:
        wall = _make_wall(Path(name) / "wall")
        inputs = dict.fromkeys(range(1, sound.FEEDS + 1), "none")
        audio = Audio(inputs, sound.KEYS, wall={f"Carts{part}": wall for part in range(1, 12)})
        with (
            Station(sound.FEEDS, bench.program("tools"), bench.folder, audio) as station,
            station.start_on_screen(bench.program("GateMoments"), sound.START_SECONDS) as server,
        ):
            findings = sound.await_findings(station, server, _openings(bench) + 1)
        scan = _scan(bench, wall)
    first, *others = (nanoseconds / 1e6 for nanoseconds in findings)
    # The first one may cost one scan more.
    worst = max(*others, first - scan)
    row = Row(f"{NAME}, worst of {len(others)}", "ms", worst, TICK_MS, worst, "ms", REACH_MS)
    row.samples = {"first": [first], "others": others}
    row.note = (
        f"beside one tick; in a wall directory of {CROWDED:,} files, all carts full;"
        f" the first one after the start {first:.0f} ms, one scan of which takes {scan:.0f} ms"
    )
    return [row]


def _make_wall(folder: Path) -> Path:
    """All carts of the feeds have been recorded, so that each recording clears one."""
    carts = [cart for feed in range(1, sound.FEEDS + 1) for cart in range(first_cart(feed), first_cart(feed) + CARTS)]
    filler = CROWDED - LISTS - len(carts)
    command = [sys.executable, str(WALL_MAKER), str(folder), "--carts", ",".join(map(str, carts)), "--seconds", "1"]
    run = subprocess.run([*command, "--filler", str(filler)], capture_output=True, text=True, check=False)
    if run.returncode != 0:
        raise MeasureError(run.stderr.strip())
    return folder


def _scan(bench: Bench, wall: Path) -> float:
    """Milliseconds on the clock that one bare scan of the directory takes."""
    run = subprocess.run([str(bench.program("WallDeletes")), str(wall)], capture_output=True, text=True, check=False)
    if run.returncode != 0:
        raise MeasureError(run.stderr.strip())
    return json.loads(run.stdout)["scan_elapsed"][0] / 1e6
