"""A counting ramp on four feeds at once: every sample of it that was heard while the gates were open is in the carts."""

from __future__ import annotations

import array
from collections.abc import Iterator
from itertools import pairwise

from . import sound
from .row import Bench, MeasureError, Row
from .station import AUDIO_RATE, Station, index_cart

NAME = "audio capture, samples lost"
# The ramp counts through all 16-bit numbers, again and again.
PERIOD = 1 << 16
RAMP = array.array("h", [*range(PERIOD // 2), *range(-PERIOD // 2, 0)]).tobytes()


def _seconds(bench: Bench) -> int:
    return 600 if bench.long else bench.times(20, 5)


def lasts(bench: Bench) -> float:
    return _seconds(bench) + 10


def measure(bench: Bench) -> list[Row]:
    # To the ramp's highest number, so that its end can be told from the silence behind it.
    samples = _seconds(bench) * AUDIO_RATE // PERIOD * PERIOD + PERIOD // 2
    feeds = range(1, sound.FEEDS + 1)
    with (
        sound.Sound() as sounds,
        Station(sound.FEEDS, bench.program("tools"), bench.folder, sounds.audio()) as station,
        station.start_on_screen(bench.server) as server,
    ):
        sound.wait_for(lambda: sounds.streams() == sound.FEEDS, "all streams ran")
        players = sounds.play_everywhere(lambda: _ramp(samples))
        limit = 2 * _seconds(bench) + sound.PATIENCE_SECONDS
        sound.wait_for(lambda: all([player.ended() for player in players]), "the ramps were at their ends", limit)
        sound.wait_for(lambda: all(_is_filed(station, feed) for feed in feeds), "the recordings were filed")
        if not server.runs():
            raise MeasureError("the server has ended")
        lost = [_lost(sound.samples_of(sound.recording_of(station, feed)), samples) for feed in feeds]
    row = Row(f"{NAME} of {samples / AUDIO_RATE:.0f} s on {sound.FEEDS} feeds", "samples", sum(lost), 0, sum(lost), "samples", 0)
    row.note = "" if bench.long else "ten minutes with --long"
    return [row]


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
