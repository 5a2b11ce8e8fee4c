"""A station in a folder of its own, with pseudo-terminals for lines, and the programs that run in it."""

from __future__ import annotations

import json
import os
import pty
import shutil
import signal
import socket
import sys
import tempfile
import termios
import time
import tty
from collections.abc import Mapping
from dataclasses import dataclass, field
from pathlib import Path

from .row import MeasureError

sys.path.append(str(Path(__file__).resolve().parents[2] / "simulator"))
import process_usage  # noqa: E402  (found by the line above)
from wall import make_empty_wall  # noqa: E402

STATUS_PORT = 6960
AUDIO_RATE = 44100
START_CODE = b"\x01"
END_CODE = b"\x03"
START_SECONDS = 30
SCREEN = {"screens": [{"name": "screen", "x": 0, "y": 0, "width": 1920, "height": 1080}]}


@dataclass(frozen=True)
class Audio:
    """What the feeds of a station hear. Feed n has sound card n; carts from 9000 + 100 n on are its own."""

    inputs: Mapping[int, str]  # the device of each sound card
    keys: Mapping[str, object]  # of section AudioCapture
    environment: Mapping[str, str] = field(default_factory=dict)
    wall: Mapping[str, Path] | None = None  # where the wall's parts lie; none: an empty one in the station's folder


class Station:
    """The settings of a server with so many feeds, in `folder` or where temporary files lie. A context: the folder and the lines
    go with it."""

    def __init__(self, feeds: int, tools: Path, folder: Path | None = None, audio: Audio | None = None) -> None:
        self.folder = Path(tempfile.mkdtemp(prefix="vorda-bench-", dir=folder))
        self._audio = audio
        self.port = STATUS_PORT + (1 if audio else 0)  # that of feed 1
        self.address = _free_address(self.port)
        self.lines = [Line() for _ in range(feeds)]
        self.stamps = StampSocket(self.folder / "stamps")
        self.names = NamePipe(self.folder / "names")
        self.ticks = self.folder / "ticks"
        self.configurations = [self._write_feed(number) for number in range(1, feeds + 1)]
        ports = {f"Com{number}": line.device for number, line in enumerate(self.lines, 1)}
        sections = {"SerialPorts": ports, "StatusPort": {"Address": self.address}, "Program": {"Directory": tools}}
        _write_ini(self.folder / "platform.ini", sections | ({"WaveIn": audio.inputs} if audio else {}))
        server: dict[str, dict[str, object]] = {
            f"WireFeed{number}": {"NewsPath": configuration.parent, "CapturePort": number, "SoundCard": number if audio else 0}
            for number, configuration in enumerate(self.configurations, 1)
        }
        wall = audio.wall if audio and audio.wall else make_empty_wall(self.folder / "wall")
        _write_ini(self.folder / "vdServer.INI", server | {"FileLocations": wall})

    def __enter__(self) -> Station:
        return self

    def __exit__(self, *_) -> None:
        for line in self.lines:
            line.close()
        self.stamps.close()
        self.names.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _write_feed(self, number: int) -> Path:
        news = self.folder / f"news{number}"
        news.mkdir()
        sections = {
            "General": {"Name": f"Line {number}"},
            "TextData": {"Settings": "115200,n,8,1", "HandShaking": 0},
            "StoryDelimiters": {"StartChar": START_CODE[0], "EndChar": END_CODE[0]},
        }
        if self._audio:
            carts = {"IndexCartNumber": index_cart(number), "StartCartNumber": first_cart(number)}
            sections["AudioCapture"] = carts | {"EndCartNumber": first_cart(number) + 19} | self._audio.keys
            sections["RecordAudioFormat"] = {"Format": 1, "Channels": 1, "SampleRate": AUDIO_RATE}
        _write_ini(news / "vorda.ini", sections)
        return news / "vorda.ini"

    def environment(self) -> dict[str, str]:
        unwanted = ("DISPLAY", "WAYLAND_DISPLAY", "VORDA_HOME")
        inherited = {name: value for name, value in os.environ.items() if name not in unwanted}
        ours = {
            "VORDA_HOME": self.folder,
            "QT_QPA_PLATFORM": "offscreen",
            "VORDA_BENCH_SOCKET": self.stamps.path,
            "VORDA_BENCH_PIPE": self.names.path,
            "VORDA_BENCH_TICKS": self.ticks,
        }
        inherited |= self._audio.environment if self._audio else {}
        return inherited | {name: str(value) for name, value in ours.items()}

    def start_server(self, server: Path, *words: object, screen: Path | None = None) -> Program:
        """The server, up and listening."""
        environment = self.environment()
        if screen:
            environment["QT_QPA_PLATFORM"] = f"offscreen:configfile={screen}"
        program = Program([server, *words], environment)
        program.wait_for_port(self.address, self.port)
        return program

    def start_on_screen(self, server: Path, *words: object) -> Program:
        """The server on a screen on which its windows find room."""
        screen = self.folder / "screen.json"
        screen.write_text(json.dumps(SCREEN))
        return self.start_server(server, *words, screen=screen)


class Line:
    """A pseudo-terminal. Its far end stays open here, too, so that no byte is lost while the server starts."""

    def __init__(self) -> None:
        self.near, self._far = pty.openpty()
        tty.setraw(self._far, termios.TCSANOW)
        self.device = os.ttyname(self._far)

    def send(self, data: bytes) -> None:
        os.write(self.near, data)

    def close(self) -> None:
        os.close(self.near)
        os.close(self._far)


class StampSocket:
    """Where the story tool says when it began."""

    def __init__(self, path: Path) -> None:
        self.path = path
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(str(path))

    def receive(self, seconds: float) -> int | None:
        """Nanoseconds of the monotonic clock; None when no tool has begun in that time."""
        self._socket.settimeout(seconds)
        try:
            return int.from_bytes(self._socket.recv(8), "little")
        except TimeoutError:
            return None

    def close(self) -> None:
        self._socket.close()


class NamePipe:
    """Where the story tool says which story it was given."""

    def __init__(self, path: Path) -> None:
        self.path = path
        os.mkfifo(path)
        self._pipe = os.open(path, os.O_RDWR | os.O_NONBLOCK)
        self._rest = b""

    def receive(self) -> list[str]:
        """The names of the stories that have come since the last time."""
        try:
            self._rest += os.read(self._pipe, 1 << 16)
        except BlockingIOError:
            return []
        *names, self._rest = self._rest.split(b"\n")
        return [name.decode("ascii") for name in names]

    def close(self) -> None:
        os.close(self._pipe)


class Program:
    """A started program; a context that ends it."""

    def __init__(self, command: list[object], environment: dict[str, str]) -> None:
        words = [str(word) for word in command]
        quiet = [(os.POSIX_SPAWN_OPEN, number, os.devnull, os.O_RDWR, 0) for number in (0, 1, 2)]
        self.name = Path(words[0]).name
        self.began = time.monotonic()
        self.process = os.posix_spawn(words[0], words, environment, file_actions=quiet)
        self._ended = False

    def __enter__(self) -> Program:
        return self

    def __exit__(self, *_) -> None:
        if not self.runs():
            return
        os.kill(self.process, signal.SIGTERM)
        deadline = time.monotonic() + 5
        while self.runs():
            if time.monotonic() > deadline:
                os.kill(self.process, signal.SIGKILL)
                os.waitpid(self.process, 0)
                self._ended = True
                return
            time.sleep(0.005)

    def runs(self) -> bool:
        self._ended = self._ended or os.waitpid(self.process, os.WNOHANG)[0] != 0
        return not self._ended

    def wait_for_port(self, address: str, port: int) -> float:
        """Seconds from its start until the port took a connection."""
        deadline = self.began + START_SECONDS
        while True:
            with socket.socket() as probe:
                if probe.connect_ex((address, port)) == 0:
                    return time.monotonic() - self.began
            if time.monotonic() > deadline or not self.runs():
                raise MeasureError(f"{self.name} did not come up")
            time.sleep(0.0002)

    def resident(self) -> int:
        """Resident bytes."""
        return process_usage.resident(self.process)

    def proportional(self) -> int:
        """Resident bytes, with what is shared divided among those who share it."""
        return _field(Path(f"/proc/{self.process}/smaps_rollup"), "Pss:") * 1024

    def processor_seconds(self) -> float:
        """What it has used of the processors, without the programs it has started."""
        return process_usage.processor_seconds(self.process)


def _field(file: Path, name: str) -> int:
    return next(int(line.split()[1]) for line in file.read_text().splitlines() if line.startswith(name))


def index_cart(feed: int) -> int:
    return 9000 + 100 * feed


def first_cart(feed: int) -> int:
    return index_cart(feed) + 1


def _free_address(port: int) -> str:
    """A loopback address whose status port nobody has: another server may run on this machine."""
    for offset in range(254):
        address = f"127.0.1.{1 + (os.getpid() + offset) % 254}"
        with socket.socket() as probe:
            probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            try:
                probe.bind((address, port))
                return address
            except OSError:
                continue
    raise MeasureError("the status port is taken on every loopback address")


def _write_ini(path: Path, sections: dict[str, dict[str, object]]) -> None:
    lines = []
    for name, keys in sections.items():
        lines += [f"[{name}]", *(f"{key}={value}" for key, value in keys.items()), ""]
    path.write_text("\r\n".join(lines), encoding="ascii", newline="")
