#!/usr/bin/env python3
"""Makes an audio wall: numbered carts with titles and audio, and the ten lists that every station reads.

FOLDER gets Carts1.lst to Carts10.lst with a record for each of the carts 1 to 9999, empty where no cart was asked for, and the
carts' own files ORVnnnnn.WAV. It must not hold a wall already: nothing is ever written over. The same words make the same wall,
byte for byte. What a server's INI has to say to use it is printed at the end.

  wall.py /srv/wall                                     sixty carts with a few seconds of tone each
  wall.py /srv/wall --carts 1-40,1001,9990-9999 --seconds 2-8 --texts 1-5
  wall.py /srv/wall --link 12=D:\\AUDIO\\BULLETIN.WAV     cart 12 plays a file that lies elsewhere
  wall.py /srv/wall --no-audio --filler 50000           a crowded directory, to measure in
"""

from __future__ import annotations

import argparse
import os
import re
import sys
from pathlib import Path

from cart_audio import RATE, SPEAKER, can_speak, seconds_of, write_speech, write_tone
from cart_record import CODE_PAGE, LAST_CART, LISTS, LOCATIONS, CartRecord, list_bytes, part_of, recorded

# Of one, two and three fields' length, some of them full to the last letter.
TITLES = (
    "Harbour interview",
    "Weather 0600",
    "Traffic: north ring closed until noon",
    "Council vote on the tramway extension, reporter's cut",
    "Café owner on the market square, long version for the weekend",
    "Court: first day",
    "Fire at the paper mill, voice of the fire chief, 2nd take",
    "Bulletin jingle, dry",
    "Sports: cup round up",
    "Mayor on flood barriers, full interview as it was recorded",
    "School closures list",
    "Ferry timetable, spoken by the harbour's office",
)
LONGEST_CART = 3600  # seconds
BELONGS_TO_A_WALL = re.compile(r"(carts\d+\.lst|orv\d{5}\..*)", re.IGNORECASE)


class WallError(Exception):
    """The wall can't be made; its text says why."""


def title_of(cart: int) -> str:
    """A newsroom's title, with the cart's number, so that no two are the same."""
    return f"{cart} {TITLES[cart % len(TITLES)]}"


class Wall:
    """A wall that is being made: carts are added one by one, and the lists come last."""

    def __init__(self, folder: Path, folder_per_part: bool = False, individual: bool = False) -> None:
        self._individual = individual  # a file of its own for each cart's record, besides the list
        names = [folder / f"PART{part}" if folder_per_part else folder for part in range(1, LOCATIONS + 1)]
        self.folders = names  # by part, from part 1 on
        for place in dict.fromkeys(names):
            place.mkdir(parents=True, exist_ok=True)
            if found := next((name for name in os.listdir(place) if BELONGS_TO_A_WALL.fullmatch(name)), None):
                raise WallError(f"{place} holds a wall already ({found}): name another folder")
        self.records: dict[int, bytes] = {}

    def file(self, cart: int, extension: str) -> Path:
        return self.folders[part_of(cart) - 1] / f"ORV{cart:05}.{extension}"

    def add(self, cart: int, record: CartRecord) -> None:
        """A record alone."""
        self.records[cart] = record.encoded()
        if self._individual:
            self.file(cart, "LST").write_bytes(self.records[cart])

    def add_tone(self, cart: int, seconds: float, title: str | None = None, rate: int = RATE) -> None:
        length = write_tone(self.file(cart, "WAV"), cart, seconds, rate)
        self.add(cart, recorded(title or title_of(cart), length))

    def add_speech(self, cart: int, title: str | None = None) -> None:
        title = title or title_of(cart)
        self.add(cart, recorded(title, write_speech(self.file(cart, "WAV"), title)))

    def add_link(self, cart: int, target: str, seconds: float, title: str | None = None) -> None:
        """A cart whose audio lies elsewhere; it is as long as that file, where it can be read here, or `seconds`."""
        self.file(cart, "FLK").write_bytes(f"{target}\r\n".encode(CODE_PAGE))
        real = Path(target)
        length = seconds_of(real) if real.is_absolute() and real.is_file() else seconds
        self.add(cart, recorded(title or title_of(cart), length))

    def add_text(self, cart: int, text: str | None = None) -> None:
        lines = text or f"{title_of(cart)}\r\n\r\nIntro for cart {cart}, to be read before it.\r\n"
        self.file(cart, "TXT").write_bytes(lines.encode(CODE_PAGE, "replace"))

    def add_unlisted(self, cart: int, seconds: float) -> None:
        """Audio that somebody has put there by hand: its record says that the cart is empty."""
        write_tone(self.file(cart, "WAV"), cart, seconds)

    def add_strays(self) -> None:
        """Further files of the first and the last cart, one of them in lower case, and files of no cart."""
        self.file(min(self.records), "BAK").write_bytes(b"kept by hand\r\n")
        last = self.file(max(self.records), "ann")
        last.with_name(last.name.lower()).write_bytes(b"a remark\r\n")
        for name in ("Thumbs.db", "READ ME.TXT", "ORV10000.WAV", "ORV123.WAV"):
            (self.folders[0] / name).write_bytes(b"no cart's\r\n")

    def fill(self, count: int) -> None:
        """So many empty files of no cart, in each of the wall's directories."""
        for folder in dict.fromkeys(self.folders):
            directory = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
            try:
                for number in range(1, count + 1):
                    os.close(os.open(f"FILL{number:07}.WAV", os.O_CREAT | os.O_EXCL | os.O_WRONLY, 0o644, dir_fd=directory))
            finally:
                os.close(directory)

    def write_lists(self) -> None:
        for part in range(1, LISTS + 1):
            (self.folders[part - 1] / f"Carts{part}.lst").write_bytes(list_bytes(part, self.records))

    def locations(self) -> dict[str, Path]:
        """The keys of a server INI's section FileLocations."""
        return {f"Carts{part}": folder.absolute() for part, folder in enumerate(self.folders, 1)}


def make_empty_wall(folder: Path) -> dict[str, Path]:
    """Ten lists of empty carts, as a new server wants to find them; the answer is the keys of section FileLocations."""
    wall = Wall(folder)
    wall.write_lists()
    return wall.locations()


def cart_numbers(text: str) -> list[int]:
    """The numbers in a text such as 1-40,1001, in their order."""
    numbers: set[int] = set()
    for piece in text.split(","):
        first, _, last = piece.partition("-")
        try:
            found = range(int(first), int(last or first) + 1)
        except ValueError:
            found = range(0)
        if not found or found[0] < 1 or found[-1] > LAST_CART:
            raise argparse.ArgumentTypeError(f"{piece!r} is neither a cart number from 1 to {LAST_CART} nor two of them, as 1-40")
        numbers.update(found)
    return sorted(numbers)


def lengths(text: str) -> tuple[float, float]:
    first, _, last = text.partition("-")
    try:
        shortest, longest = float(first), float(last or first)
    except ValueError:
        shortest, longest = 0.0, 0.0
    if not 0 < shortest <= longest <= LONGEST_CART:
        raise argparse.ArgumentTypeError(f"{text!r} is neither a number of seconds up to {LONGEST_CART} nor two of them, as 2-8")
    return shortest, longest


def link(text: str) -> tuple[int, str]:
    number, _, target = text.partition("=")
    if not target or not number.isdecimal():
        raise argparse.ArgumentTypeError(f"{text!r} is no link: a cart number, =, and the full name of an audio file")
    return cart_numbers(number)[0], target


def count(text: str) -> int:
    if not text.isdecimal():
        raise argparse.ArgumentTypeError(f"{text!r} is no count")
    return int(text)


def parse_options(arguments: list[str]) -> argparse.Namespace:
    as_written = argparse.RawDescriptionHelpFormatter
    parser = argparse.ArgumentParser(prog="wall.py", description=__doc__, formatter_class=as_written)
    parser.add_argument("folder", type=Path, metavar="FOLDER", help="where the wall comes to stand; made if it isn't there")
    parser.add_argument("--carts", type=cart_numbers, default="1-60", metavar="N-N,N", help="which carts hold audio (1-60)")
    parser.add_argument("--folder-per-part", action="store_true", help="PART1 to PART11 in FOLDER: a thousand carts in each")
    parser.add_argument("--individual", action="store_true", help="each cart's record in an ORVnnnnn.LST of its own as well")
    audio = parser.add_argument_group("audio")
    audio.add_argument("--seconds", type=lengths, default="2-5", metavar="N or N-N", help="how long a cart is (default 2-5)")
    audio.add_argument("--rate", type=count, default=RATE, metavar="HZ", help=f"samples a second (default {RATE})")
    audio.add_argument("--speech", action="store_true", help=f"the title spoken, instead of a tone; needs {SPEAKER}")
    audio.add_argument("--no-audio", action="store_true", help="records only, no WAV files")
    more = parser.add_argument_group("further files")
    more.add_argument("--link", type=link, action="append", default=[], metavar="N=FILE", help="cart N plays FILE (ORVnnnnn.FLK)")
    more.add_argument("--texts", type=cart_numbers, default=[], metavar="N-N,N", help="carts that have a text (ORVnnnnn.TXT)")
    more.add_argument("--unlisted", type=cart_numbers, default=[], metavar="N-N,N", help="carts with audio but an empty record")
    more.add_argument("--strays", action="store_true", help="files that don't belong there, as real walls have them")
    more.add_argument("--filler", type=count, default=0, metavar="N", help="so many empty files of no cart in each directory")
    options = parser.parse_args(arguments)
    if options.speech and not can_speak():
        parser.error(f"nobody here can speak: apt-get install {SPEAKER}, or leave out --speech")
    if options.rate < 1000:
        parser.error("--rate: at least 1000 samples a second")
    if clash := set(options.unlisted) & ({number for number, _ in options.link} | set(options.carts)):
        parser.error(f"cart {min(clash)} is to have a record and to have none: name it with --unlisted or the others")
    return options


def make(options: argparse.Namespace) -> Wall:
    shortest, longest = options.seconds
    wall = Wall(options.folder, options.folder_per_part, options.individual)
    links = dict(options.link)
    for at, cart in enumerate(sorted({*options.carts, *links})):
        # A second more from cart to cart, and from the longest back to the shortest.
        seconds = shortest + at % (int(longest - shortest) + 1)
        if cart in links:
            wall.add_link(cart, links[cart], seconds)
        elif options.no_audio:
            wall.add(cart, recorded(title_of(cart), seconds))
        elif options.speech:
            wall.add_speech(cart)
        else:
            wall.add_tone(cart, seconds, rate=options.rate)
    for cart in options.texts:
        wall.add_text(cart)
    for cart in options.unlisted:
        wall.add_unlisted(cart, shortest)
    if options.strays:
        wall.add_strays()
    wall.fill(options.filler)
    wall.write_lists()
    return wall


def main(arguments: list[str]) -> int:
    options = parse_options(arguments)
    try:
        wall = make(options)
    except (WallError, OSError) as problem:
        print(f"wall: {problem}", file=sys.stderr)
        return 2
    print(f"{len(wall.records)} carts in {options.folder}. In the server's INI:\n\n[FileLocations]")
    for key, folder in wall.locations().items():
        print(f"{key}={folder}")
    print(f"\n[Audio]\nAllowAudioFileLinking={int(bool(options.link))}\nUseIndividualCartListFiles={int(options.individual)}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
