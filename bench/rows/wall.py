"""The audio wall's records and files, against the bare calls of the system that each comes down to."""

from __future__ import annotations

import json
import statistics
import subprocess
import sys
import tempfile
from collections import defaultdict
from pathlib import Path

from .row import Bench, MeasureError, Row, ratio_row
from .stories import file_system

NAME = "audio wall"
WALL_MAKER = Path(__file__).resolve().parents[2] / "simulator" / "wall.py"
CARTS = 9_999
LISTS = 10
DELETED, FILES_EACH = 10, 4
CROWDED, SMALL = 50_000, 100  # files in a directory
REACH_DELETES = 3


def _turns(bench: Bench) -> tuple[int, int]:
    """Of the records and of the deletes."""
    return bench.times(25, 5), bench.times(41, 5)


def lasts(bench: Bench) -> float:
    records, deletes = _turns(bench)
    return 4 + records * 0.2 + deletes * 0.1


def measure(bench: Bench) -> list[Row]:
    records, deletes = _turns(bench)
    with tempfile.TemporaryDirectory(prefix="vorda-bench-", dir=bench.folder) as name:
        folder = Path(name)
        rows = [*_records(bench, folder, records), _deletes(bench, folder, deletes)]
        rows[0].note += f"; files on {file_system(folder)}"
    return rows


def _records(bench: Bench, folder: Path, turns: int) -> list[Row]:
    wall = _make_wall(folder / "wall", "--carts", f"1-{CARTS}", "--individual")
    took = _run(bench.program("WallRecords"), wall, folder, turns)
    rows = (
        (f"records of {CARTS:,} carts from lists", "lists", "lists_bare", 2),
        ("the same from the carts' own files", "files", "files_bare", 1.5),
        (f"records of {CARTS:,} carts written, with close and reopen", "write", "write_bare", 1.5),
        ("search for an empty cart in a full wall", "search", "lists_bare", 2),
        ("a fresh wall connected, ten lists made", "connect", "connect_bare", 2),
    )
    return [_ratio_row(name, took, ours, bare, reach) for name, ours, bare, reach in rows]


def _ratio_row(name: str, took: dict[str, list[float]], ours: str, bare: str, reach: float) -> Row:
    """The processor's time: others who wait for the processor as well don't belong to it. The note tells the time on the clock."""
    row = ratio_row(f"{NAME}, {name}", "ms", took[ours], took[bare], reach)
    elapsed, elapsed_bare = (statistics.median(took[f"{kind}_elapsed"]) for kind in (ours, bare))
    row.note = f"on the clock {elapsed:.3g} ms, bare {elapsed_bare:.3g} ms"
    return row


def _deletes(bench: Bench, folder: Path, turns: int) -> Row:
    """What stays of the figure without one scan of the directory is what the reach is about. Each process deletes once, so that
    it begins without having listed its directory."""
    folders = {files: _make_crowd(folder / f"files{files}", files) for files in (CROWDED, SMALL)}
    took: dict[str, list[float]] = defaultdict(list)
    for _ in range(turns):
        for files, place in folders.items():
            for what, (lasted,) in _run(bench.program("WallDeletes"), place).items():
                took[f"{what} {files}"].append(lasted)
    ours, scans, small = (took[name] for name in (f"deletes {CROWDED}", f"scan {CROWDED}", f"deletes {SMALL}"))
    figure, scan, baseline = (statistics.median(sample) for sample in (ours, scans, small))
    if figure < scan:
        raise MeasureError("the crowded directory was listed before its carts were deleted")
    beyond = statistics.median(whole - bare for whole, bare in zip(ours, scans))
    name = f"{NAME}, {DELETED} carts of {FILES_EACH} files deleted among {CROWDED:,} files"
    row = Row(name, "ms", figure, baseline, beyond / baseline, "times and a scan", REACH_DELETES, samples=took)
    elapsed = statistics.median(took[f"deletes_elapsed {CROWDED}"])
    row.note = f"on the clock {elapsed:.1f} ms; beside the same among {SMALL} files; one bare scan takes {scan:.1f} ms"
    return row


def _make_crowd(folder: Path, files: int) -> Path:
    """A directory of so many files, the lists and those of the carts to be deleted among them."""
    return _make_wall(folder, "--carts", str(DELETED + 1), "--filler", str(files - LISTS - FILES_EACH * DELETED))


def _make_wall(folder: Path, *words: str) -> Path:
    command = [sys.executable, str(WALL_MAKER), str(folder), "--no-audio", *words]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    if run.returncode != 0:
        raise MeasureError(run.stderr.strip())
    return folder


def _run(program: Path, *words: object) -> dict[str, list[float]]:
    """The milliseconds that the program measured, by name."""
    run = subprocess.run([str(program), *map(str, words)], capture_output=True, text=True, check=False)
    if run.returncode != 0:
        raise MeasureError(f"{program.name}: {run.stderr.strip()}")
    return {name: [lasted / 1e6 for lasted in sample] for name, sample in json.loads(run.stdout).items()}
