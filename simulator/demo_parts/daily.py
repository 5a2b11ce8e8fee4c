"""Which of the two daily tools the clock allows, and whether it was these that ran.

The server looks every two seconds, once a date for each tool: the expiry tool may start while the seconds past the hour are
below 1500, the index tool while they are above 1800, both counted in whole seconds, rounded.
"""

from __future__ import annotations

import datetime
from dataclasses import dataclass
from pathlib import Path

DROP = "ItemDrop"
ROLL = "ItemRoll"
# Seconds past the hour between which a tool may start, before rounding.
WINDOWS = {DROP: (-0.5, 1499.5), ROLL: (1800.5, 3599.5)}
# A window that is open for this long is certain to have been seen.
CERTAIN_SECONDS = 5.0
# Clocks of two programs, read one after the other.
SLACK_SECONDS = 1.0
# A started tool writes its line a little later, at the lowest priority.
LOG_SECONDS = 15.0

Moment = datetime.datetime


@dataclass(frozen=True)
class Bounds:
    """How often a tool may and must have run."""

    least: int
    most: int


def bounds(tool: str, started: Moment, ready: Moment, ended: Moment) -> Bounds:
    """The server was started at `started`, its feeds were certain to run at `ready`, it was asked to end at `ended`."""
    slack = datetime.timedelta(seconds=SLACK_SECONDS)
    certain: dict[datetime.date, float] = {}
    possible: set[datetime.date] = set()
    for opens, closes in _openings(tool, started, ended):
        # A window may reach over midnight by its rounding; it belongs to the date in which it is open.
        date = (opens + slack).date()
        length = (min(closes, ended) - max(opens, ready)).total_seconds()
        certain[date] = max(certain.get(date, 0.0), length)
        if opens - slack < ended and started < closes + slack:
            possible.add(date)
    return Bounds(sum(length >= CERTAIN_SECONDS for length in certain.values()), len(possible))


def _openings(tool: str, started: Moment, ended: Moment) -> list[tuple[Moment, Moment]]:
    first, last = WINDOWS[tool]
    openings = []
    hour = started.replace(minute=0, second=0, microsecond=0) - datetime.timedelta(hours=1)
    while hour < ended + datetime.timedelta(hours=1):
        openings.append((hour + datetime.timedelta(seconds=first), hour + datetime.timedelta(seconds=last)))
        hour += datetime.timedelta(hours=1)
    return openings


def runs_in_log(stories: Path, tool: str) -> list[Moment]:
    """When the tool ran, as its own lines in the feed's log tell."""
    try:
        lines = (stories / "tools.log").read_text(encoding="ascii").splitlines()
    except FileNotFoundError:
        return []
    words = [line.split(" ", 3) for line in lines]
    return [Moment.fromisoformat(f"{word[1]} {word[2]}") for word in words if word[0] == tool]


def allowed_at(tool: str, logged: Moment) -> bool:
    """Whether a line of this time can come from a start inside the tool's window."""
    past_hour = logged.minute * 60 + logged.second
    first, last = WINDOWS[tool]
    # The line before the hour's end belongs to a window that opens a half second before the hour.
    candidates = (past_hour, past_hour - 3600, past_hour + 3600)
    return any(first - SLACK_SECONDS <= second <= last + LOG_SECONDS for second in candidates)
