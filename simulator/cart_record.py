"""The record that a cart has in the list of its part: 300 bytes, field by field, and where in the list it lies."""

from __future__ import annotations

import struct
from dataclasses import dataclass

LAST_CART = 9999
CARTS_A_PART = 1000
LISTS = 10
LOCATIONS = 11  # one more than there are lists: the last belongs to the format, though no cart falls into it
RECORD_SIZE = 300
CODE_PAGE = "cp1252"
TITLE_FIELD = 20
EMPTY = -1.0  # the audio length of a cart that holds nothing
SYSTEM_BUTTON_FACE = 0x8000000F
SYSTEM_BUTTON_TEXT = 0x80000012

# Three title fields, back and fore colour, the small flag, 142 + 40 + 10 bytes for others, seven times in seconds, a tail.
LAYOUT = struct.Struct("<20s20s20s II h 142s 5d 5h 7f 10s")


@dataclass(frozen=True)
class CartRecord:
    """As it stands, the record of an empty cart."""

    title: str = ""
    back_color: int = SYSTEM_BUTTON_FACE
    fore_color: int = SYSTEM_BUTTON_TEXT
    mark_start: float = 0.0
    mark_end: float = 0.0
    countdown_mark: float = 0.0
    audio_length: float = EMPTY
    play_start: float = 0.0
    play_end: float = 0.0
    play_length: float = EMPTY

    def encoded(self) -> bytes:
        text = self.title.encode(CODE_PAGE, "replace").ljust(3 * TITLE_FIELD)
        titles = (text[at : at + TITLE_FIELD] for at in range(0, 3 * TITLE_FIELD, TITLE_FIELD))
        times = (self.mark_start, self.mark_end, self.countdown_mark, self.audio_length)
        play = (self.play_start, self.play_end, self.play_length)
        nobody_knows = (0, b"", *(0.0,) * 5, *(0,) * 5)
        return LAYOUT.pack(*titles, self.back_color, self.fore_color, *nobody_knows, *times, *play, b"")


def recorded(title: str, seconds: float) -> CartRecord:
    """The record of a cart with so much audio, played from its beginning to its end."""
    return CartRecord(
        title, mark_end=seconds, countdown_mark=seconds, audio_length=seconds, play_end=seconds, play_length=seconds
    )


def part_of(cart: int) -> int:
    return (cart - 1) // CARTS_A_PART + 1


def records_in(part: int) -> int:
    """How many records the part's list has: the last one ends with the last cart."""
    return min(CARTS_A_PART, LAST_CART - CARTS_A_PART * (part - 1))


def list_bytes(part: int, records: dict[int, bytes]) -> bytes:
    """The whole list of a part, with the records of those carts that have one."""
    first = CARTS_A_PART * (part - 1) + 1
    blank = CartRecord().encoded()
    return b"".join(records.get(cart, blank) for cart in range(first, first + records_in(part)))
