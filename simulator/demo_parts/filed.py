"""What the story tool filed, against what had to come of the bytes on the line."""

from __future__ import annotations

import hashlib
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

from expected_stories import Expectation, Story, expected

from .station import DISCARD_SIZE, EXPIRED_DAYS, FRESH_DAYS, Feed


@dataclass(frozen=True)
class Comparison:
    missing: list[Story]
    unexpected: list[Path]


def expectation_of(feed: Feed, line: Path) -> Expectation:
    return expected(line.read_bytes(), feed.start, feed.end)


def filed_files(feed: Feed) -> list[Path]:
    planted = {feed.dated_folder(EXPIRED_DAYS), feed.dated_folder(FRESH_DAYS)}
    return [file for file in sorted(feed.stories.glob("*/*.txt")) if file.parent not in planted]


def waiting_files(feed: Feed) -> list[Path]:
    """Stories in the news directory that no tool has taken yet; the one that is still being written is among them."""
    return list(feed.news.glob(f"*.[Rr][Aa]{feed.number}"))


def everything_filed(feed: Feed) -> bool:
    """Whether what the bytes sent so far must give is there, and none is left waiting."""
    answer = expectation_of(feed, feed.sent)
    still_open = 0 if answer.rest is None else 1
    return len(filed_files(feed)) >= len(answer.filed(DISCARD_SIZE)) and len(waiting_files(feed)) <= still_open


def compare(feed: Feed, wanted: list[Story]) -> Comparison:
    """Compares by SHA-256; a story that came twice has to be there twice."""
    left = Counter(story.sha256 for story in wanted)
    unexpected = []
    for file in filed_files(feed):
        digest = hashlib.sha256(file.read_bytes()).hexdigest()
        if left[digest] > 0:
            left[digest] -= 1
        else:
            unexpected.append(file)
    missing = []
    for story in wanted:
        if left[story.sha256] > 0:
            left[story.sha256] -= 1
            missing.append(story)
    return Comparison(missing, unexpected)
