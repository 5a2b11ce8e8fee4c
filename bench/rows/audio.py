"""Feeds that record, beside sox with its silence effect, and liquidsoap where it is installed, on the same sound at the same time."""

from __future__ import annotations

import time
from contextlib import ExitStack

from . import peers, sound
from .row import Bench, MeasureError, Row, ratio_row
from .station import Program, Station

NAME = "audio capture"
REACH_ALONE = 1.2
REACH_PROGRAM = 3
REACH_LIQUIDSOAP = 1
# Until what happens for the first time is over.
SETTLE_SECONDS = 2
FEEDS = (1, 4)


def _windows(bench: Bench) -> tuple[int, float]:
    """How many are measured, and their seconds."""
    return bench.times(3, 1), bench.times(10, 3)


def lasts(bench: Bench) -> float:
    count, seconds = _windows(bench)
    return len(FEEDS) * (count * seconds + SETTLE_SECONDS + 5)


def measure(bench: Bench) -> list[Row]:
    peers.need_sox()
    return [row for feeds in FEEDS for row in _processor_rows(bench, feeds)]


def _processor_rows(bench: Bench, feeds: int) -> list[Row]:
    with sound.Sound(feeds) as sounds, ExitStack() as running:
        bare, whole = (
            running.enter_context(Station(feeds, bench.program("tools"), bench.folder, sounds.audio())) for _ in range(2)
        )
        command = [bench.program("CaptureFeeds"), bare.folder / "wall", *bare.configurations]
        programs = {
            "alone": [running.enter_context(Program(command, bare.environment()))],
            "whole": [running.enter_context(whole.start_on_screen(bench.program("TiledServer")))],
            "sox": [],
        }
        files = [sound.recording_of(station, feed) for station in (bare, whole) for feed in range(1, feeds + 1)]
        for feed in range(1, feeds + 1):
            files.append(bare.folder / f"sox{feed}.wav")
            programs["sox"].append(running.enter_context(peers.start_sox(bare, feed, files[-1])))
        if feeds == max(FEEDS) and peers.has_liquidsoap():
            liquid = {feed: bare.folder / f"liquidsoap{feed}.wav" for feed in range(1, feeds + 1)}
            files += liquid.values()
            programs["liquidsoap"] = [running.enter_context(peers.start_liquidsoap(bare, liquid))]
        sounds.play_everywhere(sound.loud_sound)
        sound.await_recordings(files)
        time.sleep(SETTLE_SECONDS)
        sizes = [file.stat().st_size for file in files]
        used = _used(programs, *_windows(bench))
        grown = [file.stat().st_size - size for file, size in zip(files, sizes, strict=True)]
        if max(grown) - min(grown) > sound.SAMPLE_BYTES * sound.AUDIO_RATE * 2:
            raise MeasureError(f"not all have recorded the same: files grew by {min(grown)} to {max(grown)} bytes")
    spoken = "one feed" if feeds == 1 else f"{feeds} feeds"
    name = f"{NAME}, {spoken} recording, processor time a minute"
    whole_name = f"{name}, whole program in view"
    rows = [
        ratio_row(name, "ms", used["alone"], used["sox"], REACH_ALONE),
        ratio_row(whole_name, "ms", used["whole"], used["sox"], REACH_PROGRAM if feeds == max(FEEDS) else None),
    ]
    if "liquidsoap" in used:
        rows.append(ratio_row(f"{whole_name}, beside liquidsoap", "ms", used["whole"], used["liquidsoap"], REACH_LIQUIDSOAP))
    return rows


def _used(programs: dict[str, list[Program]], count: int, seconds: float) -> dict[str, list[float]]:
    """Milliseconds of the processor's time that each kind takes for a minute, in each of the windows."""
    used: dict[str, list[float]] = {kind: [] for kind in programs}
    for _ in range(count):
        began, before = time.monotonic(), _processor_seconds(programs)
        time.sleep(seconds)
        lasted, after = time.monotonic() - began, _processor_seconds(programs)
        for kind in programs:
            used[kind].append(60_000 * (after[kind] - before[kind]) / lasted)
    return used


def _processor_seconds(programs: dict[str, list[Program]]) -> dict[str, float]:
    if not all(program.runs() for kind in programs.values() for program in kind):
        raise MeasureError("a program that records has ended")
    return {kind: sum(program.processor_seconds() for program in all_of) for kind, all_of in programs.items()}
