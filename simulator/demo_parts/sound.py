"""What is said on the feeds' sound lines, and who plays it: items with pauses between them, as news audio comes."""

from __future__ import annotations

import threading
import time
import wave
from collections.abc import Callable, Sequence
from pathlib import Path

from cart_audio import can_speak, write_speech, write_tone

from .programs import wait_until
from .sound_server import SoundServer
from .station import AUDIO_RATE, Feed
from .status import StatusTerminal

STARTED_LINE = "Started Recording"
STOPPED_LINE = "Stopped Recording"
ITEM_SECONDS = 30  # at the latest then an item has been said and filed
# Sound that comes back sooner is taken for more of the same item, and starts the next recording at once.
PAUSE_SECONDS = 1.5
LEAD_SECONDS = 4
REST_SECONDS = 120

ITEMS = {
    1: (
        "Gale warning for the western coast. Winds of fifty knots are expected by midnight.",
        "The harbour master has closed the outer basin until further notice.",
    ),
    2: (
        "Flood watch in the valley. The river stands at four metres and rises slowly.",
        "Schools in three districts stay closed tomorrow, the council says.",
    ),
}
TONE_SECONDS = 4.0


def output_of(feed: Feed) -> str:
    """The sound server's output that the feed hears."""
    return f"wire{feed.number}"


def make_items(folder: Path, feed: Feed, texts: Sequence[str]) -> list[Path]:
    """A sound file for each item: spoken, or a tone where nothing can speak."""
    place = folder / "items"
    place.mkdir(exist_ok=True)
    items = []
    for number, text in enumerate(texts, 1):
        items.append(place / f"feed{feed.number}-{number}.wav")
        if can_speak():
            write_speech(items[-1], text)
        else:
            write_tone(items[-1], 10 * feed.number + number, TONE_SECONDS, AUDIO_RATE)
    return items


def samples_of(sound: Path) -> bytes:
    with wave.open(str(sound), "rb") as file:
        return file.readframes(file.getnframes())


def write_programme(path: Path, items: list[Path]) -> None:
    """All items in one file, for an input that is a file: each behind a pause that lets the one before be filed."""
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, AUDIO_RATE, 0, "NONE", ""))
        for item in items:
            file.writeframes(_silence(LEAD_SECONDS))
            file.writeframes(samples_of(item))
        file.writeframes(_silence(REST_SECONDS))


def _silence(seconds: float) -> bytes:
    return bytes(2 * round(seconds * AUDIO_RATE))


class Announcer(threading.Thread):
    """Says a feed's items, the next one when the one before has been filed."""

    def __init__(self, feed: Feed, items: list[Path], server: SoundServer, terminal: StatusTerminal) -> None:
        super().__init__(daemon=True)
        self._feed = feed
        self._items = items
        self._server = server
        self._terminal = terminal

    def run(self) -> None:
        for number, item in enumerate(self._items, 1):
            self._server.play(output_of(self._feed), item)
            if not wait_until(lambda: recordings(self._terminal) >= number, ITEM_SECONDS):
                return
            time.sleep(PAUSE_SECONDS)


def recordings(terminal: StatusTerminal) -> int:
    """How many recordings the feed has ended."""
    return terminal.count(STOPPED_LINE)


def is_recording(terminal: StatusTerminal) -> bool:
    return terminal.count(STARTED_LINE) > recordings(terminal)


def all_recorded(feeds: list[Feed], terminal_of: Callable[[int], StatusTerminal]) -> bool:
    return all(recordings(terminal_of(feed.number)) >= len(ITEMS[feed.number]) for feed in feeds)
