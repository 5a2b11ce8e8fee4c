"""The books of the stories balance when each has been filed, and tell what is missing and what is too many."""

import datetime
import tempfile
import unittest
from pathlib import Path

from demo_parts.station import Feed
from demo_parts.story_ledger import GRACE_SECONDS, LineCutter, StoryLedger
from expected_stories import expected

LINE = b"\r\n\x01First\r\n\x03\r\n\0\x01Second\x01Third\r\n\x03late"
TEXT = b"Winds of fifty knots are expected by midnight, and more of the same tomorrow.\r\n"


class LineCutterTest(unittest.TestCase):
    def test_line_in_two_pieces_gives_the_stories_of_the_whole(self) -> None:
        whole = expected(LINE, 1, 3).stories
        for at in range(len(LINE) + 1):
            with self.subTest(at=at):
                cutter = LineCutter(1, 3)
                self.assertEqual(cutter.cut(LINE[:at]) + cutter.cut(LINE[at:]), whole)

    def test_line_byte_by_byte(self) -> None:
        cutter = LineCutter(1, 3)
        stories = [story for byte in LINE for story in cutter.cut(bytes((byte,)))]
        self.assertEqual(stories, expected(LINE, 1, 3).stories)


class StoryLedgerTest(unittest.TestCase):
    def setUp(self) -> None:
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        folder = Path(place.name)
        self.feed = Feed(1, "Line", "soh-etx", 1, 3, 1, folder, folder, False, datetime.date(2026, 3, 1))
        self.today = self.feed.dated_folder(0)
        self.today.mkdir(parents=True)
        self.feed.sent.touch()
        self.ledger = StoryLedger(self.feed)

    def send(self, text: bytes) -> None:
        with self.feed.sent.open("ab") as line:
            line.write(b"\x01" + text + b"\x03")

    def file(self, name: str, text: bytes) -> None:
        (self.today / f"{name}.txt").write_bytes(text)

    def test_story_that_came_twice_has_to_be_filed_twice(self) -> None:
        self.send(TEXT)
        self.send(TEXT)
        self.file("a", TEXT)
        self.assertEqual(self.ledger.look(0), [])
        self.assertFalse(self.ledger.balanced())
        self.file("b", TEXT)
        self.assertEqual(self.ledger.look(1), [])
        self.assertTrue(self.ledger.balanced())
        self.assertEqual((self.ledger.sent, self.ledger.filed), (2, 2))

    def test_file_may_be_seen_ahead_of_its_story(self) -> None:
        self.file("a", TEXT)
        self.assertEqual(self.ledger.look(0), [])
        self.send(TEXT)
        self.assertEqual(self.ledger.look(1), [])
        self.assertTrue(self.ledger.balanced())

    def test_story_is_missing_after_the_time_of_grace_and_once(self) -> None:
        self.send(TEXT)
        self.assertEqual(self.ledger.look(0), [])
        self.assertEqual(self.ledger.look(GRACE_SECONDS - 1), [])
        self.assertEqual(len(self.ledger.look(GRACE_SECONDS)), 1)
        self.assertEqual(self.ledger.look(GRACE_SECONDS + 1), [])
        self.assertEqual(self.ledger.missing, 1)

    def test_filed_story_is_not_taken_for_a_later_one_of_the_same_text(self) -> None:
        self.send(TEXT)
        self.file("a", TEXT)
        self.ledger.look(0)
        self.send(TEXT)
        self.assertEqual(self.ledger.look(GRACE_SECONDS - 1), [])
        self.assertEqual(self.ledger.look(GRACE_SECONDS), [])
        self.assertEqual(len(self.ledger.look(2 * GRACE_SECONDS - 1)), 1)

    def test_changed_story_is_missing_and_unexpected(self) -> None:
        self.send(TEXT)
        self.file("a", TEXT + b"more")
        self.assertEqual(len(self.ledger.close()), 2)
        self.assertEqual((self.ledger.missing, self.ledger.unexpected), (1, 1))

    def test_story_that_the_tool_discards_is_not_waited_for(self) -> None:
        self.send(b"short")
        self.assertEqual(self.ledger.close(), [])
        self.assertEqual((self.ledger.handed_on, self.ledger.sent), (1, 0))


if __name__ == "__main__":
    unittest.main()
