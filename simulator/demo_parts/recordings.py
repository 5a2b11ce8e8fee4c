"""Whether each item that was said is in its cart: its sound, its record, and what the feed's configuration says of it."""

from __future__ import annotations

import re
import struct
from dataclasses import dataclass
from pathlib import Path

from cart_record import LAYOUT, RECORD_SIZE, part_of

from .sound import samples_of
from .station import AUDIO_END_SECONDS, AUDIO_LEVEL, AUDIO_RATE, AUDIO_START_SECONDS, Feed

HEADER = struct.Struct("<4sI4s4sIHHIIHH4sI")
# A block of sound and a tick of the level's timer, and what a busy machine adds to both.
SLACK_SECONDS = 0.6
FULL_SCALE = 32767
BLANK_COLORS = (0x8000000F, 0x80000012)
TITLE = re.compile(r"Recorded by Vorda Server \S+ \d\d:\d\d *")


@dataclass(frozen=True)
class Piece:
    """The part of an item that a cart holds: from `begin` on to its end, and silence behind it; seconds."""

    begin: float
    silence: float


@dataclass(frozen=True)
class Timing:
    """When a recording began and ended, in seconds behind the item's first and last loud sample."""

    begin: float
    end: float


def piece_of(item: bytes, recorded: bytes) -> Piece | None:
    """None when the recorded samples are not one unbroken piece of the item with silence behind it."""
    sound = recorded.rstrip(b"\0")
    if not sound:
        return None
    sound += bytes(len(sound) % 2)
    # The item's own end may be silent; it is part of the piece all the same.
    at = item.find(sound[: 2 * AUDIO_RATE])
    while at >= 0 and (at % 2 != 0 or not (item[at:] + bytes(len(recorded))).startswith(recorded)):
        at = item.find(sound[: 2 * AUDIO_RATE], at + 1)
    if at < 0:
        return None
    return Piece(at / 2 / AUDIO_RATE, (len(recorded) - (len(item) - at)) / 2 / AUDIO_RATE)


def loud_from(item: bytes) -> float:
    return _loud(item, range(0, len(item) // 2)) / AUDIO_RATE


def loud_until(item: bytes) -> float:
    """How long before its end the item is loud for the last time; seconds."""
    samples = len(item) // 2
    return (samples - _loud(item, range(samples - 1, -1, -1))) / AUDIO_RATE


def _loud(item: bytes, places: range) -> int:
    values = memoryview(item).cast("h")
    return next(at for at in places if abs(values[at]) * 100 / FULL_SCALE > AUDIO_LEVEL)


def check_recordings(feed: Feed, items: list[Path], wall: Path) -> list[str]:
    faults = []
    for number, item in enumerate(items):
        cart = feed.index_cart + 1 + number
        faults += [f"feed {feed.number}, cart {cart}: {fault}" for fault in check_cart(cart, item, wall)]
    faults += [f"feed {feed.number}: {fault}" for fault in check_keys(feed, feed.index_cart + len(items), wall)]
    return faults


def audio_file(cart: int, wall: Path) -> Path:
    return wall / f"ORV{cart:05}.WAV"


def check_cart(cart: int, item: Path, wall: Path, latest: float = SLACK_SECONDS) -> list[str]:
    """`latest`: how many seconds late a recording may begin and end."""
    path = audio_file(cart, wall)
    if not path.exists():
        return ["its item was not recorded"]
    audio = path.read_bytes()
    if len(audio) < HEADER.size:
        return ["it has no header"]
    wanted = (b"RIFF", len(audio) - 8, b"WAVE", b"fmt ", 16, 1, 1, AUDIO_RATE, 2 * AUDIO_RATE, 2, 16, b"data", len(audio) - HEADER.size)
    if HEADER.unpack_from(audio) != wanted:
        return ["the header is wrong"]
    return _check_sound(samples_of(item), audio[HEADER.size :], latest) + _check_record(cart, len(audio) - HEADER.size, wall)


def timing_of(said: bytes, recorded: bytes) -> Timing | None:
    piece = piece_of(said, recorded)
    return piece and Timing(piece.begin - loud_from(said), piece.silence + loud_until(said))


def timing_in(cart: int, item: Path, wall: Path) -> Timing | None:
    return timing_of(samples_of(item), audio_file(cart, wall).read_bytes()[HEADER.size :])


def _check_sound(said: bytes, recorded: bytes, latest: float) -> list[str]:
    timing = timing_of(said, recorded)
    if timing is None:
        return ["what was recorded is no unbroken piece of what was said"]
    faults = []
    if not AUDIO_START_SECONDS - SLACK_SECONDS <= timing.begin <= AUDIO_START_SECONDS + latest:
        faults.append(f"begins {timing.begin:.2f} s behind the first sound, not {AUDIO_START_SECONDS} s")
    if not AUDIO_END_SECONDS - SLACK_SECONDS <= timing.end <= AUDIO_END_SECONDS + latest:
        faults.append(f"ends {timing.end:.2f} s behind the last sound, not {AUDIO_END_SECONDS} s")
    return faults


def record_of(cart: int, wall: Path) -> bytes:
    part = part_of(cart)
    at = (cart - 1000 * (part - 1) - 1) * RECORD_SIZE
    return (wall / f"Carts{part}.lst").read_bytes()[at : at + RECORD_SIZE]


def _title(record: bytes) -> str:
    return record[:60].decode("cp1252")


def _check_record(cart: int, audio_bytes: int, wall: Path) -> list[str]:
    record = record_of(cart, wall)
    seconds = struct.unpack("<f", struct.pack("<f", audio_bytes // 2 * 1000 // AUDIO_RATE / 1000))[0]
    fields = LAYOUT.unpack(record)
    faults = [] if TITLE.fullmatch(_title(record)) else [f"the title is {_title(record)!r}"]
    if fields[3:5] != BLANK_COLORS:
        faults.append("the colours are wrong")
    # Marks, countdown, length, and where play begins, ends and how long it takes.
    if fields[-8:-1] != (0.0, 0.0, seconds, seconds, 0.0, seconds, seconds):
        faults.append(f"the times are {fields[-8:-1]}, the audio has {seconds} s")
    return faults


def check_keys(feed: Feed, last: int, wall: Path) -> list[str]:
    """What the feed's configuration and its index cart say when `last` was the last recording."""
    text = (feed.news / "vorda.ini").read_text(encoding="cp1252")
    faults = []
    for key, value in (("LastRecordedCartNumber", last), ("CurrentlyRecordingCartNumber", 0)):
        if not re.search(rf"^{key}={value}\s*$", text, re.MULTILINE):
            faults.append(f"the configuration does not say {key}={value}")
    if _title(record_of(feed.index_cart, wall)).rstrip() != f"Last recorded cart was : {last}":
        faults.append("the index cart does not name the last recording")
    return faults
