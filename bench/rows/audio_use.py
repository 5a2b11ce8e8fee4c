"""What the server takes while four feeds record, and while they hear nothing."""

from __future__ import annotations

import statistics
import time
from collections.abc import Iterator
from contextlib import ExitStack, contextmanager

from . import sound
from .idle import MEGABYTE, Watch
from .row import Bench, Row
from .station import Program, Station, first_cart

SUBJECT = "audio capture"
NAME = f"{SUBJECT}, footprint"
REACH_MEGABYTES = 70
REACH_GROWTH_MB = 1
REACH_IDLE_SHARE = 3
REACH_TICK_US = 20
SETTLE_SECONDS = 3
# Recordings follow one another, and turn round and round in the carts of their feed: the oldest make way.
CUT_SECONDS = 2
TICK_LINES = 40  # each of a thousand ticks


def _growth_seconds(bench: Bench) -> tuple[int, int]:
    """Until what happens for the first time is over, and for how long it is watched from then on."""
    return (60, 1800) if bench.long else (bench.times(20, 5), bench.times(40, 5))


def _idle_seconds(bench: Bench) -> int:
    return bench.times(30, 5)


def lasts(bench: Bench) -> float:
    return sum(_growth_seconds(bench)) + _idle_seconds(bench) + 2 * SETTLE_SECONDS + 10


def measure(bench: Bench) -> list[Row]:
    return [*_memory_rows(bench), _idle_row(bench), _tick_row(bench)]


@contextmanager
def _server(bench: Bench, sounds: sound.Sound, name: str, *words: object, **keys: object) -> Iterator[tuple[Station, Program]]:
    """A station whose server has all of its windows in view."""
    with ExitStack() as ends:
        station = ends.enter_context(Station(sound.FEEDS, bench.program("tools"), bench.folder, sounds.audio(**keys)))
        yield station, ends.enter_context(station.start_on_screen(bench.program(name), *words))


def _memory_rows(bench: Bench) -> list[Row]:
    settle, seconds = _growth_seconds(bench)
    with sound.Sound() as sounds, _server(bench, sounds, "TiledServer", MaxCutLength=CUT_SECONDS) as (station, server):
        sounds.play_everywhere(sound.loud_sound)
        sound.wait_for(lambda: _all_have_gone_on(station), "recordings followed one another")
        time.sleep(settle)
        watch = Watch(server)
        for _ in range(seconds):
            time.sleep(1)
            watch.look()
        resident, grown = server.resident() / MEGABYTE, watch.grown()
    held = Row(f"{SUBJECT}, resident with {sound.FEEDS} feeds recording", "MB", resident, None, resident, "MB", REACH_MEGABYTES)
    growth = Row(f"the same, grown in {seconds} s", "MB", grown, None, grown, "MB", REACH_GROWTH_MB)
    growth.note = f"behind the first {settle} s; cuts of {CUT_SECONDS} s" + ("" if bench.long else "; half an hour with --long")
    return [held, growth]


def _all_have_gone_on(station: Station) -> bool:
    return all(sound.last_recorded(station, feed) > first_cart(feed) for feed in range(1, sound.FEEDS + 1))


def _idle_row(bench: Bench) -> Row:
    with sound.Sound() as sounds, _server(bench, sounds, "TiledServer") as (_, server):
        sound.wait_for(lambda: sounds.streams() == sound.FEEDS, "all streams ran")
        time.sleep(SETTLE_SECONDS)
        watch = Watch(server)
        time.sleep(_idle_seconds(bench))
        share = watch.share()
    name = f"{SUBJECT}, {sound.FEEDS} feeds that hear silence"
    return Row(name, "% of a core", share, None, share, "% of a core", REACH_IDLE_SHARE)


def _tick_row(bench: Bench) -> Row:
    words = (sound.FEEDS, TICK_LINES)
    with sound.Sound() as sounds, _server(bench, sounds, "LevelTicks", *words) as (station, server):
        findings = sound.await_findings(station, server, TICK_LINES)
    tick = statistics.median(findings) / 1000
    row = Row(f"{SUBJECT}, a level's tick that changes nothing", "µs", tick, None, tick, "µs", REACH_TICK_US)
    row.samples = {"ticks": [nanoseconds / 1000 for nanoseconds in findings]}
    return row
