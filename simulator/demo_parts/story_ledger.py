"""The books of a feed's stories while they come: what went down the line, and what of it has been filed."""

from __future__ import annotations

import hashlib
import time
from collections import defaultdict, deque
from pathlib import Path

from expected_stories import Story, expected

from .filed import filed_files
from .station import DISCARD_SIZE, Feed

# From the end of a story on the line until it is filed, on the busiest machine.
GRACE_SECONDS = 60


class LineCutter:
    """Gives a line's stories as its bytes grow, each of them once."""

    def __init__(self, start: int, end: int) -> None:
        self._start = start
        self._end = end
        self._rest = b""  # from the code on that opened the story still open, or behind the last one's end

    def cut(self, more: bytes) -> list[Story]:
        line = self._rest + more
        at = max(line.rfind(bytes((code,))) for code in (self._start, self._end))
        if at < 0:
            self._rest = line
            return []
        # A start code belongs to what comes behind it as well.
        self._rest = line[at:] if line[at] == self._start else line[at + 1 :]
        return expected(line[: at + 1], self._start, self._end).stories


class Unmatched:
    """What has no counterpart yet: by its digest, when it came and what it is."""

    def __init__(self) -> None:
        self._entries: defaultdict[str, deque[tuple[float, str]]] = defaultdict(deque)

    def add(self, digest: str, now: float, what: str) -> None:
        self._entries[digest].append((now, what))

    def take(self, digest: str) -> bool:
        """Whether there was one; the oldest is taken."""
        if not self._entries[digest]:
            return False
        self._entries[digest].popleft()
        return True

    def older_than(self, moment: float) -> list[str]:
        """Takes all that came then or before."""
        taken = []
        for entries in self._entries.values():
            while entries and entries[0][0] <= moment:
                taken.append(entries.popleft()[1])
        return taken

    def __bool__(self) -> bool:
        return any(self._entries.values())


class StoryLedger:
    """A story counts as missing, and a file as unexpected, when it has had no counterpart for the time of grace."""

    def __init__(self, feed: Feed) -> None:
        self.feed = feed
        self._cutter = LineCutter(feed.start, feed.end)
        self._read = 0
        self._seen: set[Path] = set()
        self._stories = Unmatched()
        self._files = Unmatched()
        self.handed_on = 0  # with those that the tool discards
        self.sent = 0
        self.filed = 0
        self.missing = 0
        self.unexpected = 0

    def look(self, now: float | None = None) -> list[str]:
        """Brings the books up to date; answers what is wrong from now on."""
        now = time.monotonic() if now is None else now
        self._enter_files(now)
        self._enter_stories(now)
        return self._give_up(now - GRACE_SECONDS)

    def balanced(self) -> bool:
        """Whether there is a file for each story and a story for each file; without those that have been given up."""
        return not self._stories and not self._files

    def close(self) -> list[str]:
        """What is wrong when nothing more will come."""
        return self.look() + self._give_up(float("inf"))

    def _enter_files(self, now: float) -> None:
        for file in filed_files(self.feed):
            if file in self._seen:
                continue
            self._seen.add(file)
            self.filed += 1
            digest = hashlib.sha256(file.read_bytes()).hexdigest()
            if not self._stories.take(digest):
                self._files.add(digest, now, str(file))

    def _enter_stories(self, now: float) -> None:
        with self.feed.sent.open("rb") as line:
            line.seek(self._read)
            more = line.read()
        self._read += len(more)
        for story in self._cutter.cut(more):
            self.handed_on += 1
            if story.is_filed(DISCARD_SIZE):
                self.sent += 1
                if not self._files.take(story.sha256):
                    self._stories.add(story.sha256, now, f"{story.sha256[:12]} {story.first_words()}")

    def _give_up(self, until: float) -> list[str]:
        missing, unexpected = self._stories.older_than(until), self._files.older_than(until)
        self.missing += len(missing)
        self.unexpected += len(unexpected)
        faults = [f"feed {self.feed.number}: missing, {story}" for story in missing]
        return faults + [f"feed {self.feed.number}: unexpected, {file}" for file in unexpected]
