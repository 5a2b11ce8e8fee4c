"""The station's audio wall: made at its start, and the same at its end as long as nothing is recorded."""

from __future__ import annotations

import hashlib
from pathlib import Path

from cart_audio import write_tone
from wall import Wall

# The head of the wall, where it is looked at first, the seam of two lists, and its end. The feeds' own carts stay empty.
CARTS = (*range(1, 41), *range(996, 1006), *range(9990, 10000))
LINKED = 17
TEXTS = (1, 2, 3, 1001)
STUDIO_SECONDS = 4.0


class DemoWall:
    def __init__(self, folder: Path) -> None:
        self._folder = folder
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
        """What every file of the wall, and the linked one, holds now."""
        places = (self._folder / "wall", self._folder / "studio")
        files = [file for place in places for file in sorted(place.rglob("*")) if not file.is_dir()]
        return {str(file.relative_to(self._folder)): hashlib.sha256(file.read_bytes()).hexdigest() for file in files}

    def changes(self) -> list[str]:
        """What is not as it was, a line a file."""
        now = self._digests()
        faults = [f"{name} is lost" for name in self.files if name not in now]
        faults += [f"{name} has other bytes" for name in self.files if now.get(name, self.files[name]) != self.files[name]]
        return faults + [f"{name} has come from nowhere" for name in now if name not in self.files]
