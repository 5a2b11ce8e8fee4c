"""The simulated station: its folder, its settings, its feeds."""

from __future__ import annotations

import datetime
import os
import shutil
import socket
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

MARK = ".vorda-demo"
BAUD = 115200
DISCARD_SIZE = 70
STATUS_PORT = 6960
FEED_CARTS = 9000
NEWS_DRIVE = "N"
AUDIO_RATE = 22050
AUDIO_LEVEL = 5
AUDIO_START_SECONDS = 1
AUDIO_END_SECONDS = 2
EXPIRED_DAYS = 20
FRESH_DAYS = 5


class DemoError(Exception):
    """The demo can't go on; its text says why and what to do."""


@dataclass(frozen=True)
class Feed:
    number: int
    name: str
    framing: str
    start: int
    end: int
    sound_card: int
    folder: Path
    copy: Path
    bounced: bool
    day: datetime.date  # of the start; it stays, also over midnight
    carts: int = 99  # in its range
    clear_carts: int = 10  # ahead of a recording
    wired: bool = True  # has a line; the ports behind the lines are those that the lines are passed on to

    @property
    def news(self) -> Path:
        return self.folder / f"news{self.number}"

    @property
    def stories(self) -> Path:
        return self.news / "Stories"

    @property
    def link(self) -> Path:
        return self.folder / "lines" / f"wire{self.number}"

    @property
    def bounce_link(self) -> Path:
        return self.folder / "lines" / f"bounce{self.number}"

    @property
    def sent(self) -> Path:
        return self.folder / f"wire{self.number}.sent"

    @property
    def plan(self) -> Path:
        return self.folder / f"wire{self.number}.plan"

    @property
    def index_cart(self) -> int:
        """The cart ahead of those that it records into; the demo's wall leaves a hundred to each feed."""
        return FEED_CARTS + 100 * self.number

    @property
    def start_cart(self) -> int:
        return self.index_cart + 1

    @property
    def end_cart(self) -> int:
        return self.index_cart + self.carts

    @property
    def status_port(self) -> int:
        return STATUS_PORT + self.sound_card

    def dated_folder(self, days_ago: int) -> Path:
        return self.stories / (self.day - datetime.timedelta(days=days_ago)).isoformat()


def make_feeds(folder: Path, data: Path) -> list[Feed]:
    day = datetime.date.today()
    return [
        Feed(1, "Weather wire SOH-ETX", "soh-etx", 1, 3, 1, folder, data / "soh-etx", True, day),
        Feed(2, "Weather wire SOH-EOT", "soh-eot", 1, 4, 2, folder, data / "soh-eot", False, day),
    ]


def clear_folder(folder: Path, keep: bool) -> None:
    """Makes the folder empty; one of an earlier run is removed, or set aside when `keep` is set."""
    if folder.exists():
        if any(folder.iterdir()) and not (folder / MARK).exists():
            raise DemoError(f"{folder} holds something else than a demo: name another with --folder")
        if keep:
            folder.rename(next(name for name in _names_aside(folder) if not name.exists()))
        else:
            shutil.rmtree(folder)
    folder.mkdir(parents=True)
    (folder / MARK).touch()


def _names_aside(folder: Path) -> Iterator[Path]:
    number = 1
    while True:
        yield folder.with_name(f"{folder.name}-{number}")
        number += 1


def free_address(feeds: list[Feed]) -> str:
    """A loopback address whose status ports nobody has taken: another server, or another demo, may run on this machine."""
    for offset in range(254):
        address = f"127.0.0.{1 + (os.getpid() + offset) % 254}"
        if all(_is_free(address, feed.status_port) for feed in feeds):
            return address
    raise DemoError("the status ports are taken on every loopback address: end the other servers first")


def _is_free(address: str, port: int) -> bool:
    with socket.socket() as probe:
        probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        try:
            probe.bind((address, port))
        except OSError:
            return False
    return True


def write_settings(folder: Path, feeds: list[Feed], address: str, wall: dict[str, Path], inputs: dict[int, str]) -> Path:
    """Writes all that the server reads; `wall` says where the parts of its wall lie, `inputs` which device a sound card's
    number means. The answer is its VORDA_HOME."""
    home = folder / "home"
    for directory in (home, folder / "lines", folder / "pictures"):
        directory.mkdir()
    lines = sum(feed.wired for feed in feeds)
    ports = {f"Com{feed.number}": feed.link for feed in feeds if feed.wired}
    ports |= {f"Com{lines + feed.number}": feed.bounce_link for feed in feeds if feed.bounced}
    # A drive letter, as stations write their paths: what the windows show is the same wherever the demo runs.
    settings = {"SerialPorts": ports, "Drives": {NEWS_DRIVE: folder}, "StatusPort": {"Address": address}}
    _write_ini(home / "platform.ini", settings | {"WaveIn": inputs})
    server: dict[str, dict[str, object]] = {f"WireFeed{feed.number}": _server_keys(feed, lines) for feed in feeds}
    _write_ini(home / "vdServer.INI", server | {"FileLocations": wall, "Audio": {"AllowAudioFileLinking": 1}})
    for feed in feeds:
        feed.news.mkdir()
        _write_ini(feed.news / "vorda.ini", _feed_sections(feed))
        _plant_old_stories(feed)
    return home


def _server_keys(feed: Feed, lines: int) -> dict[str, object]:
    return {
        "NewsPath": f"{NEWS_DRIVE}:\\{feed.news.name}",
        "ConfigFile": "vorda.ini",
        "CapturePort": feed.number if feed.wired else 0,
        "BouncePort": lines + feed.number if feed.bounced else 0,
        "SoundCard": feed.sound_card,
    }


def _feed_sections(feed: Feed) -> dict[str, dict[str, object]]:
    return {
        "General": {"Name": feed.name},
        "Categories": {"Name1": "Weather", "Code1": "w", "Expiry1": 10, "UnknownCategory": 1},
        "StoryDelimiters": {"StartChar": feed.start, "EndChar": feed.end},
        "TextData": {"Settings": f"{BAUD},n,8,1", "HandShaking": 0, "DiscardFileSize": DISCARD_SIZE},
        "AudioCapture": {
            "IndexCartNumber": feed.index_cart,
            "StartCartNumber": feed.start_cart,
            "EndCartNumber": feed.end_cart,
            "ClearCartCount": feed.clear_carts,
            "AudioActivationLevel": AUDIO_LEVEL,
            "AudioStartDuration": AUDIO_START_SECONDS,
            "AudioEndDuration": AUDIO_END_SECONDS,
        },
        "RecordAudioFormat": {"Format": 1, "Channels": 1, "SampleRate": AUDIO_RATE},
    }


def _plant_old_stories(feed: Feed) -> None:
    """Two folders of earlier days: the expiry tool has to remove the one and to spare the other."""
    for days in (EXPIRED_DAYS, FRESH_DAYS):
        feed.dated_folder(days).mkdir(parents=True)
        (feed.dated_folder(days) / "120000-1-planted.txt").write_bytes(b"filed on an earlier day\r\n")


def _write_ini(path: Path, sections: dict[str, dict[str, object]]) -> None:
    lines = []
    for name, keys in sections.items():
        lines += [f"[{name}]", *(f"{key}={value}" for key, value in keys.items()), ""]
    path.write_text("\r\n".join(lines), encoding="ascii", newline="")
