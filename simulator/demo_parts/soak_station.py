"""The station of the long run: four feeds whose ranges of carts are small, and what is said on them. Three have lines: the server
has four ports, and the last one is that to which the first line is passed on."""

from __future__ import annotations

import datetime
from pathlib import Path

from .station import Feed

# Carts in the range, and how many are cleared ahead: the rotation with room, with little, with more than the range's half, and
# without clearing. None of them comes round to the same item in the same cart: 7 items, and 11, 8, 19 and 6 carts a turn.
RANGES = ((12, 3), (9, 2), (20, 10), (6, 0))
NAMES = ("Weather wire", "Second weather wire", "Third weather wire", "Studio line")
LINES = 3
# Silence ahead of a story, in milliseconds.
STORY_GAP = 800

# Two and a half to six seconds each.
ITEMS = (
    "Gale warning for the western coast. Winds of fifty knots are expected.",
    "The harbour master has closed the outer basin until further notice.",
    "Flood watch in the valley. The river stands at four metres and rises slowly, the water board says tonight.",
    "Schools in three districts stay closed tomorrow, the council has decided.",
    "The ferry timetable changes on Sunday.  The first boat leaves at six, the last one an hour before midnight.",
    "Fire at the paper mill. Nobody was hurt, the fire chief told reporters this morning.",
    "The council votes on the tramway extension on Thursday evening, after two years of hearings.",
)


def make_feeds(folder: Path, data: Path) -> list[Feed]:
    day = datetime.date.today()
    framings = (("soh-etx", 3), ("soh-eot", 4))
    feeds = []
    for number, (carts, clear) in enumerate(RANGES, 1):
        framing, end = framings[(number - 1) % 2]
        name = NAMES[number - 1]
        line = (number, name, framing, 1, end, number, folder, data / framing, number == 1, day)
        feeds.append(Feed(*line, carts, clear, number <= LINES))
    return feeds


def texts_of(feed: Feed) -> list[str]:
    """The items that are said on the feed; on no other the same."""
    return [f"Line {feed.number}. {text}" for text in ITEMS]
