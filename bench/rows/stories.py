"""Stories of 200 bytes: made, sent down the lines, and looked at when they lie in the news directories."""

from __future__ import annotations

import json
import shutil
import subprocess
import time
from collections import Counter
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

from .row import Bench, MeasureError, Row
from .station import END_CODE, START_CODE, Program, Station

LENGTH = 200
# Line ends as the display's filter leaves them, so that a story's file holds what went down the line.
COPY = b"BULLETIN - IMMEDIATE BROADCAST REQUESTED\r\nFROST ADVISORY IN EFFECT UNTIL 9 AM\r\n"
# Where the files lie unless another folder is asked for: in memory, so that neither side waits for a disk or for what the disk
# has gone through before. As many as a run makes need room there.
MEMORY = Path("/dev/shm")
ROOM = 1 << 30
# How long the story tool may be silent before the stories that are still missing count as lost.
SILENCE_SECONDS = 15
# How often the pipe of the tool is looked at: a tool waits when some thousand names are in it.
LOOK_SECONDS = 0.005


def text(number: int) -> bytes:
    """The story of that number; no other is the same."""
    return (b"%06d " % number + COPY * 3)[: LENGTH - 2] + b"\r\n"


def station(bench: Bench, feeds: int) -> Station:
    """A station with the tool that says which story it was given."""
    roomy = MEMORY.is_dir() and shutil.disk_usage(MEMORY).free > ROOM
    return Station(feeds, bench.program("naming"), MEMORY if roomy and not bench.folder else bench.folder)


def file_system(folder: Path) -> str:
    """The kind of the file system there."""
    words = ["stat", "--file-system", "--format=%T", str(folder)]
    return subprocess.run(words, capture_output=True, text=True, check=True).stdout.strip()


@dataclass
class Stories:
    """So many stories in a file, as they go down a line."""

    path: Path
    count: int

    def words(self) -> list[str]:
        """How the programs that read the file are told of it."""
        return [str(self.path), str(LENGTH + 2)]


def make(folder: Path, count: int) -> Stories:
    path = folder / "stories.raw"
    path.write_bytes(b"".join(START_CODE + text(number) + END_CODE for number in range(count)))
    return Stories(path, count)


class Source:
    """What sends them down the station's lines; a context. A pace of 0 is as fast as the line takes them."""

    def __init__(self, bench: Bench, place: Station, stories: Stories, per_second: int) -> None:
        descriptors = [line.near for line in place.lines]
        command = [str(bench.program("StorySource")), *stories.words(), str(per_second), *map(str, descriptors)]
        self._process = subprocess.Popen(command, pass_fds=descriptors, stdout=subprocess.PIPE)

    def __enter__(self) -> Source:
        return self

    def __exit__(self, *_) -> None:
        # It waits for ever for a line that nobody reads.
        self._process.kill()
        self._process.wait()
        self._process.stdout.close()

    def report(self) -> dict[str, int]:
        """What it has to say at its end."""
        report = self._process.communicate()[0]
        if self._process.returncode != 0:
            raise MeasureError("the stories did not go into the line")
        return json.loads(report)


def await_tools(
    place: Station, program: Program, count: int, meanwhile: Callable[[], None] = lambda: None
) -> tuple[list[str], float]:
    """The names that the tools of so many stories say, and the moment of the last one. Fewer when no more come."""
    names, last = [], time.monotonic()
    while len(names) < count:
        runs = program.runs()
        if more := place.names.receive():
            names += more
            last = time.monotonic()
        elif not runs or time.monotonic() - last > SILENCE_SECONDS:
            break
        meanwhile()
        time.sleep(LOOK_SECONDS)
    return names, last


def lost_row(name: str, place: Station, count: int, told: list[str]) -> Row:
    """How many stories are not there once, whole, and handed once to a tool; what is there besides counts as well. To be called
    when nothing writes any more."""
    times_told = Counter(told + place.names.receive())
    whole: set[int] = set()
    strange = 0
    for configuration in place.configurations:
        for path in configuration.parent.glob("VOR*"):
            number = _story_in(path, count)
            if number is None or number in whole or times_told.pop(path.name, 0) != 1:
                strange += 1
            else:
                whole.add(number)
    counts = {"not whole": count - len(whole), "files too many": strange, "starts of the tool too many": times_told.total()}
    # One fault may show in each of them.
    wrong = max(counts.values())
    note = ", ".join(f"{number} {what}" for what, number in counts.items()) if wrong else ""
    return Row(name, "stories", wrong, None, wrong, "stories", 0, note)


def _story_in(path: Path, count: int) -> int | None:
    """The number of the story that the file holds, to the byte."""
    held = path.read_bytes()
    number = int(held[:6]) if held[:6].isdigit() else count
    return number if number < count and held == text(number) else None
