"""The server at work in its simulated station, and the programs around it: what is started here is ended here, and no more."""

from __future__ import annotations

import datetime
from collections.abc import Callable
from pathlib import Path

from . import sound, sound_server
from .carts import DemoWall
from .programs import Program, wait_until
from .screen import Screen
from .station import AUDIO_RATE, DemoError, Feed, free_address, write_settings
from .status import StatusTerminal
from .wire import BounceReader, Wire

START_SECONDS = 30


class StationRun:
    def __init__(self, folder: Path, feeds: list[Feed], server: Path) -> None:
        self.folder = folder
        self.feeds = feeds
        self._server_program = server
        self.wires: list[Wire] = []
        self.bounces: dict[int, BounceReader] = {}
        self.terminals: dict[int, StatusTerminal] = {}
        self.screen = Screen(folder)
        self.server: Program | None = None
        self.sound_server: sound_server.SoundServer | None = None
        self.faults: list[str] = []

    def start_sound(self) -> dict[int, str]:
        """The device of each sound card's number: an output of a sound server of the station's own."""
        outputs = {feed.sound_card: sound.output_of(feed) for feed in self.feeds}
        self.sound_server = sound_server.SoundServer(self.folder, outputs.values(), AUDIO_RATE)
        return {card: sound_server.input_of(output) for card, output in outputs.items()}

    def set_up_station(
        self, inputs: dict[int, str], make_wire: Callable[[Feed], Wire], hear: Callable[[Feed, str], None]
    ) -> None:
        """In an empty folder. `hear` is called with each line of a feed's status port."""
        address = free_address(self.feeds)
        self.wall = DemoWall(self.folder, self.feeds)
        self.home = write_settings(self.folder, self.feeds, address, self.wall.locations, inputs)
        for feed in self.feeds:
            if feed.bounced:
                self.bounces[feed.number] = BounceReader(feed.bounce_link)
                self.bounces[feed.number].start()
            if feed.wired:
                self.wires.append(make_wire(feed))
            self.terminals[feed.number] = StatusTerminal(feed, address, lambda line, feed=feed: hear(feed, line))

    def start_server(self) -> None:
        self.started = datetime.datetime.now()
        environment = self.screen.environment() | {"VORDA_HOME": str(self.home)}
        if self.sound_server is not None:
            environment |= self.sound_server.environment()
        self.server = Program([str(self._server_program)], self.folder / "server.log", environment)
        for terminal in self.terminals.values():
            if not wait_until(lambda: not self.server.runs() or terminal.connect(), START_SECONDS):
                raise DemoError(f"the server does not listen on its status ports: see {self.server.log}")
            if not wait_until(lambda: not self.server.runs() or terminal.greeted(), START_SECONDS):
                raise DemoError("the status port takes a client but sends no status")
        if not self.server.runs():
            raise DemoError(f"the server ended at its start: see {self.server.log}")
        self.ready = datetime.datetime.now()

    def still_playing(self) -> bool:
        return self.server.runs() and all(wire.program.runs() for wire in self.wires)

    def end_server(self) -> None:
        """Asks it to end, and takes its exit code."""
        code = self.server.end()
        if code != 0:
            ended = "did not end when asked to" if code is None else f"ended with exit code {code}"
            self.faults.append(f"the server {ended}: see {self.server.log}")

    def end_everything(self) -> None:
        if self.server is not None and self.server.runs():
            self.server.end()
        for wire in self.wires:
            wire.end()
        for bounce in self.bounces.values():
            bounce.end()
        if self.sound_server is not None:
            self.sound_server.end()
        self.screen.end()
