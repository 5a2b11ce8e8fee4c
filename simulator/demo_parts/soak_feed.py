"""A feed of the long run: items are said without end, and each is looked for in its cart before the next is said."""

from __future__ import annotations

import hashlib
import subprocess
import threading
from collections.abc import Callable
from pathlib import Path

from cart_record import EMPTY, CartRecord

from .programs import wait_until
from .recordings import Timing, audio_file, check_cart, check_keys, record_of, timing_in
from .rotation import Rotation
from .sound import ITEM_SECONDS, PAUSE_SECONDS, is_recording, output_of, recordings
from .sound_server import SoundServer
from .station import Feed
from .status import StatusTerminal

# How late a recording may begin and end on a busy machine, in seconds. One that begins too late for its item is missing all the
# same.
LATEST_SECONDS = 3.0
# Of a cart that never held anything, and of one that was cleared: what the server writes ends play where the audio ends.
EMPTY_RECORDS = (CartRecord().encoded(), CartRecord(play_end=EMPTY).encoded())


class SoakFeed(threading.Thread):
    """Goes on until `ended` is set, and then to the end of the item. `report` is called with each fault, on this thread."""

    def __init__(
        self,
        feed: Feed,
        items: list[Path],
        sound_server: SoundServer,
        terminal: StatusTerminal,
        ended: threading.Event,
        report: Callable[[str], None],
    ) -> None:
        super().__init__(daemon=True)
        self.feed = feed
        self._items = items
        self._sound_server = sound_server
        self._terminal = terminal
        self._ended = ended
        self._report = report
        self._wall = feed.folder / "wall"
        self._digests: dict[int, str] = {}
        self.rotation = Rotation(feed.start_cart, feed.end_cart, feed.clear_carts)
        self.said = 0
        self.recorded = 0  # and in their carts as they were said
        self.missing = 0
        self.wrong = 0
        self.timings: list[Timing] = []

    def run(self) -> None:
        try:
            while not self._ended.is_set():
                self._say_one()
        except (OSError, subprocess.SubprocessError, ValueError) as problem:
            self._fault(f"the items ended: {problem!r}")

    def _say_one(self) -> None:
        item = self._items[self.said % len(self._items)]
        before = recordings(self._terminal)
        self._sound_server.play(output_of(self.feed), item)
        self.said += 1
        if not wait_until(lambda: recordings(self._terminal) > before, ITEM_SECONDS):
            self.missing += 1
            self._fault(f"item {self.said} ({item.name}) was not recorded")
            self._resume()
            return
        faults = self.check(item)
        self._ended.wait(PAUSE_SECONDS)
        if recordings(self._terminal) != before + 1 or is_recording(self._terminal):
            faults.append("more than one recording")
            wait_until(lambda: not is_recording(self._terminal), ITEM_SECONDS)
        for fault in faults:
            self._fault(f"item {self.said} ({item.name}), {fault}")
        if faults:
            self.wrong += 1
            self._resume()
        else:
            self.recorded += 1

    def check(self, item: Path) -> list[str]:
        """The item's own cart, what the feed says of it, and every other cart of the range: as it was, or cleared."""
        cart = self.rotation.record()
        faults = [f"cart {cart}: {fault}" for fault in check_cart(cart, item, self._wall, LATEST_SECONDS)]
        faults += check_keys(self.feed, cart, self._wall)
        if faults:
            return faults
        if timing := timing_in(cart, item, self._wall):
            self.timings.append(timing)
        self._digests[cart] = self._digest(cart)
        return [f"cart {other}: {fault}" for other in self.rotation.carts if (fault := self._fault_of(other))]

    def _fault_of(self, cart: int) -> str | None:
        """What is wrong with a cart of the range, none of which is being recorded into."""
        if cart in self.rotation.held:
            return None if self._digest(cart) == self._digests[cart] else "an earlier item has changed"
        if audio_file(cart, self._wall).exists():
            return "its audio should have been cleared"
        return None if record_of(cart, self._wall) in EMPTY_RECORDS else "its record should have been cleared"

    def _digest(self, cart: int) -> str:
        audio = audio_file(cart, self._wall)
        content = audio.read_bytes() if audio.exists() else b""
        return hashlib.sha256(content + record_of(cart, self._wall)).hexdigest()

    def _resume(self) -> None:
        """Takes the range as it is now for right, so that one fault is not told over and over."""
        held = {cart for cart in self.rotation.carts if record_of(cart, self._wall) not in EMPTY_RECORDS}
        self._digests = {cart: self._digest(cart) for cart in held}
        newest = max(held, key=self._written, default=self.feed.start_cart - 1)
        self.rotation.resume(newest, held)

    def _written(self, cart: int) -> int:
        audio = audio_file(cart, self._wall)
        return audio.stat().st_mtime_ns if audio.exists() else 0

    def _fault(self, text: str) -> None:
        self._report(f"feed {self.feed.number}: {text}")
