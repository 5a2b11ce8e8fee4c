"""A change of the demo's wall is noticed, whatever it is."""

import tempfile
import unittest
from pathlib import Path

from demo_parts.carts import CARTS, LINKED, DemoWall
from demo_parts.station import make_feeds


class DemoWallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        place = tempfile.TemporaryDirectory()
        cls.addClassCleanup(place.cleanup)
        cls.folder = Path(place.name)
        cls.wall = DemoWall(cls.folder, make_feeds(cls.folder, cls.folder))

    def test_wall_that_nobody_touched(self) -> None:
        # 59 with audio and the link, 4 texts, 6 strays, 10 lists, the linked file.
        self.assertEqual(len(self.wall.files), 60 + 4 + 6 + 10 + 1)
        self.assertEqual(self.wall.changes(), [])

    def test_byte_in_a_list(self) -> None:
        path = self.folder / "wall" / "Carts10.lst"
        before = path.read_bytes()
        path.write_bytes(before[:-1] + b"\x01")
        self.assertEqual(self.wall.changes(), ["wall/Carts10.lst has other bytes"])
        path.write_bytes(before)
        self.assertEqual(self.wall.changes(), [])

    def test_lost_file(self) -> None:
        path = self.folder / "wall" / f"ORV{LINKED:05}.FLK"
        before = path.read_bytes()
        path.unlink()
        self.assertEqual(self.wall.changes(), [f"wall/{path.name} is lost"])
        path.write_bytes(before)

    def test_lost_audio_behind_the_link(self) -> None:
        path = self.folder / "studio" / "closing.wav"
        self.assertEqual((self.folder / "wall" / f"ORV{LINKED:05}.FLK").read_text(), f"{path}\n")
        before = path.read_bytes()
        path.unlink()
        self.assertEqual(self.wall.changes(), ["studio/closing.wav is lost"])
        path.write_bytes(before)

    def test_further_file(self) -> None:
        path = self.folder / "wall" / "ORV00041.WAV"
        path.touch()
        self.assertEqual(self.wall.changes(), ["wall/ORV00041.WAV has come from nowhere"])
        path.unlink()

    def test_feeds_record_where_the_wall_is_empty_and_not_into_each_others_carts(self) -> None:
        ranges = [set(range(feed.index_cart, feed.index_cart + 100)) for feed in make_feeds(self.folder, self.folder)]
        self.assertFalse(set.intersection(*ranges))
        self.assertFalse(set.union(*ranges) & set(CARTS))


if __name__ == "__main__":
    unittest.main()
