"""The station's audio wall: made at its start, and the same at its end but for what the feeds record into their own carts."""

from __future__ import annotations

import hashlib
import re
from pathlib import Path

from cart_audio import write_tone
from cart_record import CARTS_A_PART, RECORD_SIZE, part_of
from wall import Wall

from .station import Feed

# The head of the wall, where it is looked at first, the seam of two lists, and its end. The feeds' own carts stay empty.
CARTS = (*range(1, 41), *range(996, 1006), *range(9990, 10000))
LINKED = 17
TEXTS = (1, 2, 3, 1001)
STUDIO_SECONDS = 4.0


class DemoWall:
    def __init__(self, folder: Path, feeds: list[Feed]) -> None:
        self._folder = folder
        self._feed_carts = {cart for feed in feeds for cart in range(feed.index_cart, feed.index_cart + 100)}
        studio = folder / "studio"
        studio.mkdir()
        write_tone(studio / "closing.wav", LINKED, STUDIO_SECONDS)
        wall = Wall(folder / "wall")
        for cart in CARTS:
            if cart == LINKED:
                wall.add_link(cart, str(studio / "closing.wav"), STUDIO_SECONDS)
            else:
                wall.add_tone(cart, 2 + cart % 4)
        for cart in TEXTS:
            wall.add_text(cart)
        wall.add_strays()
        wall.write_lists()
        self.locations = wall.locations()
        self.carts = len(CARTS)
        self.files = self._digests()

    def _digests(self) -> dict[str, str]:
        """What every file of the wall, and the linked one, holds now; without the feeds' own carts."""
        places = (self._folder / "wall", self._folder / "studio")
        files = [file for place in places for file in sorted(place.rglob("*")) if not file.is_dir()]
        others = [file for file in files if not self._is_of_a_feed(file)]
        return {str(file.relative_to(self._folder)): hashlib.sha256(self._bytes(file)).hexdigest() for file in others}

    def _is_of_a_feed(self, file: Path) -> bool:
        number = re.fullmatch(r"ORV(\d{5})", file.stem)
        return number is not None and int(number.group(1)) in self._feed_carts

    def _bytes(self, file: Path) -> bytes:
        """A list's without the records of the feeds' carts."""
        content = bytearray(file.read_bytes())
        number = re.fullmatch(r"Carts(\d+)\.lst", file.name)
        for cart in self._feed_carts if number is not None else ():
            if part_of(cart) == int(number.group(1)):
                at = (cart - CARTS_A_PART * (part_of(cart) - 1) - 1) * RECORD_SIZE
                content[at : at + RECORD_SIZE] = bytes(len(content[at : at + RECORD_SIZE]))
        return bytes(content)

    def changes(self) -> list[str]:
        """What is not as it was, a line a file."""
        now = self._digests()
        faults = [f"{name} is lost" for name in self.files if name not in now]
        faults += [f"{name} has other bytes" for name in self.files if now.get(name, self.files[name]) != self.files[name]]
        return faults + [f"{name} has come from nowhere" for name in now if name not in self.files]
