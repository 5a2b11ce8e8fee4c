#!/usr/bin/env python3
"""Works out which story files must come of the bytes that went down a line.

It knows nothing of the server's code. The rules: the text is filtered (every line feed goes, then one is put behind every
carriage return) and cut at the two codes. A start code ends a story that is open and opens the next; an end code ends the one
that is open; text with none open opens one of its own, so the line ends between two stories are a story too. A story may be
empty. What follows the last code stays in an open story and is never handed on. The story tool discards what is smaller than
the discard size.

Prints a line a story: number, SHA-256, length, "filed" or "discarded", first words.
"""

from __future__ import annotations

import argparse
import hashlib
import sys
import unittest
from dataclasses import dataclass
from pathlib import Path

BACKSPACE = 8


class BackspaceError(Exception):
    """What a backspace takes away depends on how the bytes arrived, so the bytes alone don't tell the stories."""


@dataclass(frozen=True)
class Story:
    text: bytes

    @property
    def sha256(self) -> str:
        return hashlib.sha256(self.text).hexdigest()

    def is_filed(self, discard_size: int) -> bool:
        return len(self.text) >= discard_size

    def first_words(self) -> str:
        words = " ".join(self.text[:200].decode("cp1252", "replace").split())[:60]
        return "".join(letter if letter.isprintable() else "." for letter in words)


@dataclass(frozen=True)
class Expectation:
    stories: list[Story]  # in the order in which they are handed on
    rest: bytes | None  # what the story that stays open holds; None when none is open

    def filed(self, discard_size: int) -> list[Story]:
        return [story for story in self.stories if story.is_filed(discard_size)]


def filtered(line: bytes) -> bytes:
    if BACKSPACE in line:
        raise BackspaceError(f"backspace at byte {line.index(BACKSPACE)}")
    return line.replace(b"\n", b"").replace(b"\r", b"\r\n")


def cut(text: bytes, start: int, end: int) -> Expectation:
    stories: list[Story] = []
    story: bytearray | None = None
    for byte in text:
        if byte in (start, end):
            if story is not None:
                stories.append(Story(bytes(story)))
            story = bytearray() if byte != end else None
        elif story is None:
            story = bytearray((byte,))
        else:
            story.append(byte)
    return Expectation(stories, None if story is None else bytes(story))


def expected(line: bytes, start: int, end: int) -> Expectation:
    """The stories that `line` makes; raises BackspaceError when the bytes alone can't tell."""
    return cut(filtered(line), start, end)


class HandWorkedCases(unittest.TestCase):
    """Each expectation was worked out by hand from the rules."""

    def check(self, line: bytes, stories: list[bytes], rest: bytes | None, start: int = 1, end: int = 3) -> None:
        answer = expected(line, start, end)
        self.assertEqual(([story.text for story in answer.stories], answer.rest), (stories, rest))

    def test_story_between_its_codes_comes_without_them(self) -> None:
        self.check(b"\x01ABC\x03", [b"ABC"], None)

    def test_line_ends_become_carriage_return_and_line_feed(self) -> None:
        self.check(b"\x01A\r\r\nB\r\nC\rD\n\x03", [b"A\r\n\r\nB\r\nC\r\nD"], None)

    def test_text_outside_opens_a_story_that_the_next_start_code_ends(self) -> None:
        self.check(b"X\x01A\x03\r\n\x01B\x03", [b"X", b"A", b"\r\n", b"B"], None)

    def test_text_outside_is_ended_by_an_end_code_too(self) -> None:
        self.check(b"X\x03\x03\x01A\x03", [b"X", b"A"], None)

    def test_line_feed_alone_between_stories_is_nothing(self) -> None:
        self.check(b"\x01A\x03\n\x01B\x03\n", [b"A", b"B"], None)

    def test_two_start_codes_make_an_empty_story(self) -> None:
        self.check(b"\x01\x01A\x03", [b"", b"A"], None)

    def test_start_code_inside_a_story_ends_it(self) -> None:
        self.check(b"\x01AB\x01CD\x03", [b"AB", b"CD"], None)

    def test_what_follows_the_last_end_code_is_not_handed_on(self) -> None:
        self.check(b"\x01A\x03\r\n\0", [b"A"], b"\r\n\0")

    def test_story_without_end_stays_open(self) -> None:
        self.check(b"\x01A\x03\x01", [b"A"], b"")

    def test_equal_codes_only_close(self) -> None:
        self.check(b"A\x02\x02B\x02", [b"A", b"B"], None, start=2, end=2)

    def test_line_feed_as_a_code_never_takes_effect(self) -> None:
        self.check(b"A\nB\x03", [b"AB"], None, start=10)

    def test_carriage_return_as_end_code_leaves_its_line_feed_as_text(self) -> None:
        self.check(b"\x01A\r\x01B\r", [b"A", b"\n", b"B"], b"\n", end=13)

    def test_other_codes_and_high_bytes_are_text(self) -> None:
        self.check(b"\x01\0\x04\x1e\xff\x03", [b"\0\x04\x1e\xff"], None)

    def test_backspace_is_refused(self) -> None:
        with self.assertRaises(BackspaceError):
            expected(b"\x01AB\x08\x03", 1, 3)

    def test_discard_size_is_the_least_that_is_filed(self) -> None:
        self.assertEqual([Story(b"x" * size).is_filed(70) for size in (0, 69, 70)], [False, False, True])


def self_test() -> int:
    tests = unittest.defaultTestLoader.loadTestsFromTestCase(HandWorkedCases)
    return 0 if unittest.TextTestRunner(stream=sys.stderr).run(tests).wasSuccessful() else 1


def print_expectation(answer: Expectation, discard_size: int) -> None:
    for number, story in enumerate(answer.stories, 1):
        fate = "filed" if story.is_filed(discard_size) else "discarded"
        print(number, story.sha256, len(story.text), fate, story.first_words(), sep="\t")
    filed = len(answer.filed(discard_size))
    rest = "" if answer.rest is None else f"; {len(answer.rest)} bytes stay in an open story"
    print(f"{len(answer.stories)} stories, {filed} filed, {len(answer.stories) - filed} discarded{rest}", file=sys.stderr)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("line", nargs="?", type=Path, help="file with the bytes that went down the line")
    parser.add_argument("--start", type=int, default=1, help="start code (default 1)")
    parser.add_argument("--end", type=int, default=3, help="end code (default 3)")
    parser.add_argument("--discard", type=int, default=70, help="least size in bytes that is filed (default 70)")
    parser.add_argument("--self-test", action="store_true", help="run the hand-worked cases")
    options = parser.parse_args()
    if options.self_test:
        return self_test()
    if options.line is None:
        parser.error("which file?")
    try:
        print_expectation(expected(options.line.read_bytes(), options.start, options.end), options.discard)
    except (OSError, BackspaceError) as error:
        print(f"expected_stories: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
