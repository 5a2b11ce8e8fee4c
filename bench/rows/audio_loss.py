"""A counting ramp on four feeds at once: every sample of it that was heard while the gates were open is in the carts."""

from __future__ import annotations

import array
import os
import signal
from collections.abc import Callable, Iterator
from itertools import pairwise
from pathlib import Path

from . import sound
from .row import Bench, MeasureError, Row
from .station import AUDIO_RATE, Program, Station, index_cart

NAME = "audio capture, samples lost"
# The ramp counts through all 16-bit numbers, again and again.
PERIOD = 1 << 16
RAMP = array.array("h", [*range(PERIOD // 2), *range(-PERIOD // 2, 0)]).tobytes()


# Ahead of the moment at which the interface stands still and behind it.
AROUND_SECONDS = 5


def _seconds(bench: Bench) -> int:
    return 600 if bench.long else bench.times(20, 5)


def _standing_seconds(bench: Bench) -> int:
    return 60 if bench.long else 2


def lasts(bench: Bench) -> float:
    return _seconds(bench) + _standing_seconds(bench) + 2 * AROUND_SECONDS + 20


def measure(bench: Bench) -> list[Row]:
    seconds, still = _seconds(bench), _standing_seconds(bench)
    calm = _lost_of_a_run(bench, seconds, [bench.server], lambda station, server: None)

    def stand_still(station: Station, server: Program) -> None:
        sound.await_recordings(_recordings(station))
        os.kill(server.process, signal.SIGUSR1)
        stood = sound.await_findings(station, server, 1, still + sound.PATIENCE_SECONDS)[0]
        if stood < 1000 * still:
            raise MeasureError(f"the interface stood still for {stood} ms only")

    standing = _lost_of_a_run(bench, still + 2 * AROUND_SECONDS, [bench.program("StandingServer"), still], stand_still)
    rows = [
        _row(f"{NAME} of {seconds} s on {sound.FEEDS} feeds", calm),
        _row(f"{NAME} while the interface stands still for {still} s", standing),
    ]
    if not bench.long:
        rows[-1].note = "ten minutes, and a minute of standing still, with --long"
    return rows


def _row(name: str, lost: int) -> Row:
    return Row(name, "samples", lost, 0, lost, "samples", 0)


def _recordings(station: Station) -> list[Path]:
    return [sound.recording_of(station, feed) for feed in range(1, sound.FEEDS + 1)]


def _lost_of_a_run(bench: Bench, seconds: int, command: list[object], meanwhile: Callable[[Station, Program], None]) -> int:
    """The samples that all feeds together lost of a ramp of so many seconds."""
    # To the ramp's highest number, so that its end can be told from the silence behind it.
    samples = seconds * AUDIO_RATE // PERIOD * PERIOD + PERIOD // 2
    feeds = range(1, sound.FEEDS + 1)
    with (
        sound.Sound() as sounds,
        Station(sound.FEEDS, bench.program("tools"), bench.folder, sounds.audio()) as station,
        station.start_on_screen(*command) as server,
    ):
        sound.wait_for(lambda: sounds.streams() == sound.FEEDS, "all streams ran")
        players = sounds.play_everywhere(lambda: _ramp(samples))
        meanwhile(station, server)
        limit = 2 * seconds + sound.PATIENCE_SECONDS
        sound.wait_for(lambda: all([player.ended() for player in players]), "the ramps were at their ends", limit)
        sound.wait_for(lambda: all(_is_filed(station, feed) for feed in feeds), "the recordings were filed")
        if not server.runs():
            raise MeasureError("the server has ended")
        return sum(_lost(sound.samples_of(file), samples) for file in _recordings(station))


def _ramp(samples: int) -> Iterator[bytes]:
    for begin in range(0, samples, PERIOD):
        yield RAMP[: sound.SAMPLE_BYTES * (samples - begin)]


def _is_filed(station: Station, feed: int) -> bool:
    return sound.last_recorded(station, feed) > index_cart(feed)


def _lost(recorded: bytes, samples: int) -> int:
    """How many of the ramp's samples are missing from the moment on at which the gate was to open, or are not what they should
    be."""
    held = array.array("h", recorded)
    while held and held[-1] == 0:
        held.pop()
    if not held:
        return samples
    # A gate opens as soon as it may, and a bit later; whole periods that it might have come too late count as lost.
    earliest = sound.START_SECONDS * AUDIO_RATE
    begin = earliest + (held[0] - earliest) % PERIOD
    wrong = 0 if _counts_on(held) else sum((later - before) % PERIOD != 1 for before, later in pairwise(held))
    return max(abs(samples - begin - len(held)), wrong)


def _counts_on(held: array.array[int]) -> bool:
    bytes_each, begin = sound.SAMPLE_BYTES, held[0] % PERIOD
    wanted = RAMP[bytes_each * begin :] + RAMP * (len(held) // PERIOD + 1)
    return held.tobytes() == wanted[: bytes_each * len(held)]
