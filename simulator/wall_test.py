"""A wall's files, byte for byte: the bytes are worked out by hand."""

import contextlib
import io
import os
import stat
import struct
import tempfile
import unittest
import wave
from pathlib import Path
from unittest import mock

import wall
from cart_record import CartRecord, recorded
from wall import Wall, WallError

BLANK = bytes.fromhex(
    "20" * 60  # three titles
    + "0F000080"  # the colour of a button's face
    + "12000080"  # and that of the text on it
    + "0000"  # 68: the small flag
    + "00" * 142  # 70: what others keep there
    + "00" * 40
    + "00" * 10  # 252: whole numbers of others
    + "00000000" * 3  # 262: both marks and the countdown
    + "000080BF"  # 274: length, -1
    + "00000000" * 2  # 278: play from, to
    + "000080BF"  # 286: play length, -1
    + "00" * 10  # 290: the tail
)


class WallFiles(unittest.TestCase):
    def setUp(self) -> None:
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = Path(place.name) / "wall"

    def names(self, folder: Path | None = None) -> list[str]:
        return sorted(path.name for path in (folder or self.folder).iterdir())

    def record(self, part: int, number: int) -> bytes:
        data = (self.folder / f"Carts{part}.lst").read_bytes()
        return data[300 * (number - 1) : 300 * number]

    def run_command(self, *words: str) -> tuple[int, str]:
        said = io.StringIO()
        with contextlib.redirect_stdout(said), contextlib.redirect_stderr(said):
            try:
                code = wall.main([str(self.folder), *words])
            except SystemExit as end:
                code = end.code
        return code, said.getvalue()


class RecordTest(unittest.TestCase):
    def test_of_an_empty_cart(self) -> None:
        self.assertEqual(len(BLANK), 300)
        self.assertEqual(CartRecord().encoded(), BLANK)

    def test_of_a_cart_with_audio(self) -> None:
        # 0 to 19, 20 to 39, 40 to 59; 2.5 s are 00 00 20 40 as a float.
        expected = bytearray(BLANK)
        expected[0:60] = b"Mayor on flood barri" b"ers, full interview " b"as recorded         "
        expected[266:278] = bytes.fromhex("00002040" * 3)  # second mark, countdown, length
        expected[282:290] = bytes.fromhex("00002040" * 2)  # play to, play length
        self.assertEqual(recorded("Mayor on flood barriers, full interview as recorded", 2.5).encoded(), expected)

    def test_title_of_seventy_letters_keeps_sixty(self) -> None:
        self.assertEqual(CartRecord("x" * 70).encoded(), b"x" * 60 + BLANK[60:])

    def test_title_has_a_byte_for_each_letter(self) -> None:
        self.assertEqual(CartRecord("Café €5 \u4e2d").encoded()[:20], b"Caf\xe9 \x805 ?".ljust(20))

    def test_colours_of_their_own(self) -> None:
        record = CartRecord(back_color=0x0000FF, fore_color=0xFFFFFF).encoded()
        self.assertEqual(record[60:68], bytes.fromhex("FF000000" "FFFFFF00"))


class ListTest(WallFiles):
    def test_ten_lists_of_a_thousand_records_the_last_of_which_ends_with_cart_9999(self) -> None:
        keys = wall.make_empty_wall(self.folder)
        self.assertEqual(self.names(), sorted(f"Carts{part}.lst" for part in range(1, 11)))
        for part in range(1, 10):
            self.assertEqual((self.folder / f"Carts{part}.lst").read_bytes(), BLANK * 1000)
        self.assertEqual((self.folder / "Carts10.lst").stat().st_size, 299700)
        self.assertEqual((self.folder / "Carts10.lst").read_bytes(), BLANK * 999)
        self.assertEqual(keys, {f"Carts{part}": self.folder for part in range(1, 12)})

    def test_cart_stands_at_its_number_in_the_list_of_its_thousand(self) -> None:
        made = Wall(self.folder)
        places = {1: (1, 1), 1000: (1, 1000), 1001: (2, 1), 9000: (9, 1000), 9001: (10, 1), 9999: (10, 999)}
        for cart in places:
            made.add(cart, recorded(f"this is {cart}", 1))
        made.write_lists()
        for cart, (part, number) in places.items():
            self.assertEqual(self.record(part, number)[:20], f"this is {cart}".encode().ljust(20))
        self.assertEqual(self.record(1, 2), BLANK)
        self.assertEqual((self.folder / "Carts10.lst").stat().st_size, 299700)

    def test_folder_for_each_part(self) -> None:
        code, said = self.run_command("--folder-per-part", "--carts", "1000,1001", "--seconds", "0.1")
        self.assertEqual(code, 0)
        self.assertEqual(self.names(self.folder / "PART1"), ["Carts1.lst", "ORV01000.WAV"])
        self.assertEqual(self.names(self.folder / "PART2"), ["Carts2.lst", "ORV01001.WAV"])
        self.assertEqual(self.names(self.folder / "PART11"), [])
        self.assertIn(f"\nCarts2={self.folder}/PART2\n", said)
        self.assertIn(f"\nCarts11={self.folder}/PART11\n", said)


class CartFilesTest(WallFiles):
    def test_audio_is_as_long_as_its_record_says(self) -> None:
        self.assertEqual(self.run_command("--carts", "1-3", "--seconds", "1-2", "--rate", "8000")[0], 0)
        for cart, seconds in ((1, 1.0), (2, 2.0), (3, 1.0)):
            with wave.open(str(self.folder / f"ORV{cart:05}.WAV"), "rb") as file:
                self.assertEqual(file.getparams()[:4], (1, 2, 8000, 8000 * seconds))
                loudest = max(abs(sample) for (sample,) in struct.iter_unpack("<h", file.readframes(8000)))
            self.assertGreater(loudest, 7900)
            self.assertEqual(self.record(1, cart)[274:278], struct.pack("<f", seconds))

    def test_same_words_make_the_same_wall(self) -> None:
        words = ("--carts", "1-5", "--seconds", "0.2", "--texts", "2", "--strays", "--individual")
        self.run_command(*words)
        first = {path.name: path.read_bytes() for path in self.folder.iterdir()}
        self.folder.rename(self.folder.with_name("first"))
        self.run_command(*words)
        self.assertEqual({path.name: path.read_bytes() for path in self.folder.iterdir()}, first)

    def test_link_is_one_line_and_has_no_audio_beside_it(self) -> None:
        links = {12: "D:\\AUDIO\\X.WAV", 13: "\\\\PLAYOUT\\AUDIO\\X.WAV"}
        words = [word for cart, target in links.items() for word in ("--link", f"{cart}={target}")]
        self.assertEqual(self.run_command("--carts", "1", "--seconds", "2", *words)[0], 0)
        for cart, target in links.items():
            self.assertEqual((self.folder / f"ORV{cart:05}.FLK").read_bytes(), target.encode() + b"\r\n")
            self.assertFalse((self.folder / f"ORV{cart:05}.WAV").exists())
            self.assertEqual(self.record(1, cart)[274:278], struct.pack("<f", 2))

    def test_link_to_audio_that_is_there_is_as_long_as_that(self) -> None:
        made = Wall(self.folder)
        made.add_tone(1, 0.5)
        made.add_link(2, str(made.file(1, "WAV")), seconds=9)
        made.write_lists()
        self.assertEqual(self.record(1, 2)[274:278], struct.pack("<f", 0.5))

    def test_individual_file_holds_the_record_of_the_list(self) -> None:
        self.run_command("--carts", "1001", "--no-audio", "--individual")
        self.assertEqual(self.names()[-1:], ["ORV01001.LST"])
        self.assertEqual((self.folder / "ORV01001.LST").read_bytes(), self.record(2, 1))

    def test_unlisted_audio_has_an_empty_record(self) -> None:
        self.run_command("--carts", "1", "--unlisted", "2", "--seconds", "0.1")
        self.assertTrue((self.folder / "ORV00002.WAV").exists())
        self.assertEqual(self.record(1, 2), BLANK)

    def test_strays_stand_beside_their_carts(self) -> None:
        self.run_command("--carts", "3-5", "--no-audio", "--strays")
        others = [name for name in self.names() if not name.endswith(".lst")]
        self.assertEqual(others, ["ORV00003.BAK", "ORV10000.WAV", "ORV123.WAV", "READ ME.TXT", "Thumbs.db", "orv00005.ann"])

    def test_filler_belongs_to_no_cart(self) -> None:
        self.run_command("--no-audio", "--filler", "1000")
        self.assertEqual(len(self.names()), 1010)
        self.assertFalse([name for name in self.names() if name.upper().startswith("ORV")])

    def test_speech_is_as_long_as_its_record_says(self) -> None:
        tools = self.folder.with_name("tools")
        tools.mkdir()
        Wall(self.folder).add_tone(9, 0.25)
        spoken = tools / "spoken.wav"
        (self.folder / "ORV00009.WAV").rename(spoken)
        speaker = tools / "espeak-ng"
        speaker.write_text(f'#!/bin/sh\n[ "$1 $3" = "-w --" ] && cp {spoken} "$2" && printf %s "$4" > {tools}/said\n')
        speaker.chmod(speaker.stat().st_mode | stat.S_IXUSR)
        with mock.patch.dict(os.environ, {"PATH": f"{tools}:{os.environ['PATH']}"}):
            self.assertEqual(self.run_command("--carts", "4", "--speech")[0], 0)
        self.assertEqual((tools / "said").read_text(), "4 Café owner on the market square, long version for the weekend")
        self.assertEqual(self.record(1, 4)[274:278], struct.pack("<f", 0.25))


class RefusalTest(WallFiles):
    def test_standing_wall_is_left_alone(self) -> None:
        for name in ("Carts3.lst", "CARTS10.LST", "orv00007.wav"):
            self.folder.mkdir(exist_ok=True)
            (self.folder / name).write_bytes(b"somebody's")
            with self.assertRaises(WallError):
                Wall(self.folder)
            self.assertEqual(self.run_command()[0], 2)
            self.assertEqual(self.names(), [name])
            (self.folder / name).unlink()

    def test_words_that_make_no_wall(self) -> None:
        for words in (
            *(("--carts", numbers) for numbers in ("0", "10000", "5-3", "a", "-", "")),
            *(("--seconds", seconds) for seconds in ("0", "3-2", "a", "nan", "inf")),
            *(("--link", link) for link in ("12", "12=", "=X.WAV", "0=X.WAV")),
            ("--filler", "-1"),
            ("--rate", "0"),
            ("--carts", "1-5", "--unlisted", "5"),
        ):
            with self.subTest(words=words):
                self.assertEqual(self.run_command(*words)[0], 2)
        self.assertFalse(self.folder.exists())

    def test_speech_where_nobody_can_speak(self) -> None:
        with mock.patch.dict(os.environ, {"PATH": "/nowhere"}):
            code, said = self.run_command("--speech")
        self.assertEqual(code, 2)
        self.assertIn("apt-get install espeak-ng", said)


if __name__ == "__main__":
    unittest.main()
