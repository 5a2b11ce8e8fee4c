"""The long run notices an item that is not in its cart, and a cart of the range that is not as it should be."""

import tempfile
import threading
import unittest
import wave
from pathlib import Path

from cart_audio import write_tone
from cart_record import CARTS_A_PART, EMPTY, RECORD_SIZE, CartRecord, part_of
from demo_parts.recordings import audio_file
from demo_parts.soak_feed import LATEST_SECONDS, SoakFeed
from demo_parts.soak_station import ITEMS, RANGES, make_feeds
from demo_parts.sound import samples_of
from demo_parts.station import AUDIO_END_SECONDS, AUDIO_RATE, AUDIO_START_SECONDS
from wall import make_empty_wall

ITEM_SECONDS = 3.0


class SoakFeedTest(unittest.TestCase):
    def setUp(self) -> None:
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = Path(place.name)
        self.wall = self.folder / "wall"
        make_empty_wall(self.wall)
        self.feed = make_feeds(self.folder, self.folder)[1]
        self.feed.news.mkdir()
        self.items = [self.folder / f"{number}.wav" for number in range(3)]
        for number, item in enumerate(self.items):
            write_tone(item, number, ITEM_SECONDS, AUDIO_RATE)
        self.soak = SoakFeed(self.feed, self.items, None, None, threading.Event(), self.fail)

    def record(self, cart: int, item: Path, late: float = 0, silence: float = AUDIO_END_SECONDS) -> None:
        """What the server leaves behind."""
        first = round((AUDIO_START_SECONDS + late) * AUDIO_RATE)
        sound = samples_of(item)[2 * first :] + bytes(2 * round(silence * AUDIO_RATE))
        with wave.open(str(audio_file(cart, self.wall)), "wb") as file:
            file.setparams((1, 2, AUDIO_RATE, 0, "NONE", ""))
            file.writeframes(sound)
        seconds = len(sound) // 2 * 1000 // AUDIO_RATE / 1000
        title = "Recorded by Vorda Server 2026-03-01 12:00"
        times = {"audio_length": seconds, "countdown_mark": seconds, "play_end": seconds, "play_length": seconds}
        self.write_record(cart, CartRecord(title, **times))
        index = CartRecord(f"Last recorded cart was : {cart}", audio_length=0, play_length=0)
        self.write_record(self.feed.index_cart, index)
        keys = f"LastRecordedCartNumber={cart}\r\nCurrentlyRecordingCartNumber=0\r\n"
        (self.feed.news / "vorda.ini").write_text(keys, newline="")

    def clear(self, cart: int) -> None:
        audio_file(cart, self.wall).unlink()
        self.write_record(cart, CartRecord(play_end=EMPTY))

    def write_record(self, cart: int, record: CartRecord) -> None:
        with (self.wall / f"Carts{part_of(cart)}.lst").open("r+b") as records:
            records.seek((cart - CARTS_A_PART * (part_of(cart) - 1) - 1) * RECORD_SIZE)
            records.write(record.encoded())

    def record_and_check(self, number: int) -> list[str]:
        """The item of that number, from 0, as it should be recorded in the first turn."""
        item = self.items[number % len(self.items)]
        self.record(self.feed.start_cart + number, item)
        return self.soak.check(item)

    def test_items_in_their_carts(self) -> None:
        self.assertEqual(self.record_and_check(0) + self.record_and_check(1), [])
        self.assertEqual(len(self.soak.timings), 2)
        self.assertAlmostEqual(self.soak.timings[0].begin, AUDIO_START_SECONDS, 2)
        self.assertAlmostEqual(self.soak.timings[0].end, AUDIO_END_SECONDS, 2)

    def test_busy_machine_may_be_late(self) -> None:
        self.record(self.feed.start_cart, self.items[0], late=1.5, silence=AUDIO_END_SECONDS + LATEST_SECONDS - 0.1)
        self.assertEqual(self.soak.check(self.items[0]), [])

    def test_other_item(self) -> None:
        self.record(self.feed.start_cart, self.items[0])
        self.assertIn("no unbroken piece", self.soak.check(self.items[1])[0])

    def test_sound_with_a_gap(self) -> None:
        self.record(self.feed.start_cart, self.items[0])
        path = audio_file(self.feed.start_cart, self.wall)
        content = bytearray(path.read_bytes())
        content[30000:30400] = bytes(400)
        path.write_bytes(content)
        self.assertIn("no unbroken piece", self.soak.check(self.items[0])[0])

    def test_silence_alone(self) -> None:
        self.record(self.feed.start_cart, self.items[0], late=ITEM_SECONDS)
        self.assertIn("no unbroken piece", self.soak.check(self.items[0])[0])

    def test_cart_out_of_turn(self) -> None:
        self.record(self.feed.start_cart + 1, self.items[0])
        self.assertIn("not recorded", self.soak.check(self.items[0])[0])

    def test_earlier_item_that_has_changed(self) -> None:
        self.record_and_check(0)
        path = audio_file(self.feed.start_cart, self.wall)
        path.write_bytes(path.read_bytes()[:-2])
        self.assertEqual(self.record_and_check(1), [f"cart {self.feed.start_cart}: an earlier item has changed"])

    def test_earlier_record_that_has_changed(self) -> None:
        self.record_and_check(0)
        self.write_record(self.feed.start_cart, CartRecord("Another", audio_length=1))
        self.assertEqual(self.record_and_check(1), [f"cart {self.feed.start_cart}: an earlier item has changed"])

    def test_carts_behind_the_turn_are_cleared(self) -> None:
        carts, cleared = RANGES[1]
        for number in range(carts - 2):
            self.assertEqual(self.record_and_check(number), [])
        # The one ahead of the range's last cart clears from the start on.
        first, second = self.feed.start_cart, self.feed.start_cart + 1
        self.assertEqual(cleared, 2)
        self.clear(first)
        self.assertEqual(self.record_and_check(carts - 2), [f"cart {second}: its audio should have been cleared"])

    def test_record_that_was_not_cleared(self) -> None:
        carts, _ = RANGES[1]
        for number in range(carts - 2):
            self.record_and_check(number)
        first, second = self.feed.start_cart, self.feed.start_cart + 1
        self.clear(first)
        audio_file(second, self.wall).unlink()
        self.assertEqual(self.record_and_check(carts - 2), [f"cart {second}: its record should have been cleared"])

    def test_no_range_comes_round_to_the_same_item(self) -> None:
        for carts, cleared in RANGES:
            a_turn = carts if cleared == 0 else carts - 1
            self.assertNotEqual(a_turn % len(ITEMS), 0)


if __name__ == "__main__":
    unittest.main()
