#!/usr/bin/env python3
"""Runs a simulated station: two wire feeds without hardware, played into the real server, and checked at the end.

The station stands in build/demo. Real wire copy comes down two pseudo-terminals with the noise of real lines between the
stories; the server cuts it, the sample story tools file it. A separate script works out from the bytes of the line which story
files must be there. Beside the feeds the station has an audio wall, which must be the same at the end. Exit code 0: all there
and nothing else; 1: something is missing, unexpected or wrong; 2: it can't run here.
"""

from __future__ import annotations

import argparse
import datetime
import signal
import sys
from collections.abc import Callable
from pathlib import Path

from demo_parts import sound, sound_server
from demo_parts.checks import (
    RunTimes,
    Totals,
    check_bounce,
    check_daily_tools,
    check_status,
    check_stories,
    daily_tools_due,
)
from demo_parts.filed import everything_filed, filed_files
from demo_parts.programs import wait_until
from demo_parts.recordings import check_recordings
from demo_parts.screen import choose_screen, has_display
from demo_parts.station import DISCARD_SIZE, DemoError, Feed, clear_folder, make_feeds
from demo_parts.station_run import START_SECONDS, StationRun
from demo_parts.status import tell
from demo_parts.wire import Wire, gap_over

ROOT = Path(__file__).resolve().parent.parent
# Of the whole length, what goes into starting, checking and ending.
OVERHEAD_SECONDS = 5
# How long after its time the copy may still be on its way before the demo gives up.
GRACE_SECONDS = 30
# A picture taken with so many stories filed on each feed shows the copy coming in.
STORIES_FOR_PICTURE = 10


class Demo(StationRun):
    def __init__(self, options: argparse.Namespace) -> None:
        super().__init__(options.folder, make_feeds(options.folder, ROOT / "tests" / "data" / "wire"), options.server)
        self.options = options

    def run(self) -> int:
        try:
            self.set_up()
            self.start_server()
            self.play()
            self.await_stories()
            self.finish()
        finally:
            self.end_everything()
        return self.report()

    def set_up(self) -> None:
        clear_folder(self.folder, self.options.keep)
        self.items = {feed.number: sound.make_items(self.folder, feed, sound.ITEMS[feed.number]) for feed in self.feeds}
        self.set_up_station(self.make_inputs(), self.make_wire, lambda feed, line: tell(f"{feed.number} | {line}"))
        self.screen = choose_screen(self.folder, self.options.pictures)

    def make_wire(self, feed: Feed) -> Wire:
        drop = self.options.drop if feed.number == 1 else 0
        return Wire(self.options.build / "bin" / "vdwire", feed, gap_over(feed, self.options.seconds - OVERHEAD_SECONDS), drop)

    def make_inputs(self) -> dict[int, str]:
        """The device of each sound card's number: a sink of the demo's sound server, or a file that plays."""
        if self.options.sound == "server":
            return self.start_sound()
        programmes = {feed.number: self.folder / "items" / f"programme{feed.number}.wav" for feed in self.feeds}
        for number, programme in programmes.items():
            sound.write_programme(programme, self.items[number])
        return {feed.sound_card: f"file:{programmes[feed.number]}" for feed in self.feeds}

    def play(self) -> None:
        tell(f"The server runs. Wire copy comes for about {self.options.seconds} s; here are its status lines.")
        for wire in self.wires:
            wire.begin()
        if self.sound_server is not None:
            for feed in self.feeds:
                sound.Announcer(feed, self.items[feed.number], self.sound_server, self.terminals[feed.number]).start()

    def await_stories(self) -> None:
        limit = self.options.seconds + GRACE_SECONDS
        self.wait_for(self.well_under_way, limit, "the first stories")
        self.wait_for(self.recording_everywhere, GRACE_SECONDS, "a recording on each feed")
        self.save_picture("receiving")
        self.wait_for(lambda: all(wire.has_sent_all() for wire in self.wires), limit, "the end of the wire copy")
        self.wait_for(self.all_arrived, GRACE_SECONDS, "the last stories")
        self.wait_for(lambda: sound.all_recorded(self.feeds, self.terminals.get), GRACE_SECONDS, "the last recording")
        due = self.times()
        self.wait_for(lambda: all(daily_tools_due(feed, due) for feed in self.feeds), GRACE_SECONDS, "the daily tools")
        self.save_picture("frame")

    def wait_for(self, condition: Callable[[], bool], seconds: float, what: str) -> None:
        """Waits, but not for a server or a line that has ended."""
        if not wait_until(lambda: condition() or not self.still_playing(), seconds):
            tell(f"Time is up: {what} did not come.")

    def well_under_way(self) -> bool:
        return all(len(filed_files(feed)) >= STORIES_FOR_PICTURE for feed in self.feeds)

    def recording_everywhere(self) -> bool:
        return all(sound.is_recording(terminal) for terminal in self.terminals.values())

    def all_arrived(self) -> bool:
        if any(len(bounce.received) < self.feed(number).sent.stat().st_size for number, bounce in self.bounces.items()):
            return False
        told = all(not check_status(feed, self.terminals[feed.number]) for feed in self.feeds)
        return told and all(everything_filed(feed) for feed in self.feeds)

    def feed(self, number: int) -> Feed:
        return self.feeds[number - 1]

    def save_picture(self, name: str) -> None:
        if not self.options.pictures or not self.server.runs():
            return
        if has_display() and not self.screen.window():
            return
        if not has_display() and not wait_until(self.screen.window, START_SECONDS):
            self.faults.append("the server shows no window")
        picture = self.screen.save_picture(name)
        if picture is None:
            self.faults.append(f"the picture {name} could not be saved")
        else:
            tell(f"Picture: {picture}")

    def times(self) -> RunTimes:
        return RunTimes(self.started, self.ready, datetime.datetime.now())

    def finish(self) -> None:
        """Lets the user look on if there is a window, then ends the server and takes its exit code."""
        if has_display() and self.server.runs():
            self.verdict_so_far()
            tell("Close the window to end the demo.")
            self.server.process.wait()
        asked = self.server.runs()
        self.end_server()
        if not asked and not has_display() and self.server.process.returncode == 0:
            self.faults.append(f"the server ended by itself: see {self.server.log}")

    def verdict_so_far(self) -> None:
        totals = Totals()
        for feed in self.feeds:
            check_stories(feed, totals)
        tell(f"So far: {totals.sent} stories sent, {totals.missing} missing, {totals.unexpected} unexpected.")

    def report(self) -> int:
        totals = Totals()
        times = self.times()
        for feed in self.feeds:
            self.faults += check_stories(feed, totals)
            self.faults += check_status(feed, self.terminals[feed.number])
            self.faults += check_daily_tools(feed, times)
            if feed.bounced:
                self.faults += check_bounce(feed, bytes(self.bounces[feed.number].received))
            self.faults += check_recordings(feed, self.items[feed.number], self.folder / "wall")
        changes = self.wall.changes()
        self.faults += changes
        tell("")
        for wire in self.wires:
            tell(f"Line {wire.feed.number}: {wire.summary()}")
        tell(f"Stories: {totals.sent} sent, {totals.filed} filed, {totals.missing} missing, {totals.unexpected} unexpected")
        tell(f"({totals.discarded} pieces of fewer than {DISCARD_SIZE} bytes were discarded by the tool, as its configuration says;")
        tell(" what came behind the last story is still open, in a file of its own.)")
        tell(f"Recordings: {sum(map(len, self.items.values()))} items said, {self.recorded()} recordings ended")
        tell(f"Wall: {self.wall.carts} carts in {len(self.wall.files)} files, {len(changes) or 'none'} changed")
        for fault in self.faults:
            tell(f"WRONG: {fault}")
        if self.faults:
            tell(f"What the server said is in {self.folder}/server.log, what the lines carried in {self.folder}/wire*.sent,")
            tell(f"what is filed in {self.folder}/news*/Stories. expected_stories.py tells what a line must give.")
            return 1
        tell(f"All is well. The stories lie in {self.folder}/news*/Stories.")
        return 0

    def recorded(self) -> int:
        return sum(sound.recordings(terminal) for terminal in self.terminals.values())


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, required=True, help="build directory, whose bin holds the programs")
    parser.add_argument("--seconds", type=int, default=20, help="about how long it takes (default 20)")
    parser.add_argument("--drop", type=int, default=0, metavar="N", help="leave out story N of feed 1: must be noticed")
    parser.add_argument("--no-pictures", dest="pictures", action="store_false", help="save no pictures")
    parser.add_argument("--keep", action="store_true", help="set an earlier run's folder aside instead of removing it")
    parser.add_argument("--folder", type=Path, default=ROOT / "build" / "demo", help="the station's folder")
    sounds = "server" if sound_server.can_run() else "file"
    help_text = "where the feeds' sound comes from: a sound server of the demo's own, or files (default here: %(default)s)"
    parser.add_argument("--sound", choices=("server", "file"), default=sounds, help=help_text)
    parser.add_argument("--server", type=Path, help="another server than the build directory's")
    options = parser.parse_args()
    options.build = options.build.resolve()
    options.folder = options.folder.resolve()
    options.server = (options.server or options.build / "bin" / "vdserver").resolve()
    if " " in f"{options.folder}{options.server}":
        parser.error("the story tools can't be started where a path has a blank: build elsewhere, or use --folder")
    return options


def main() -> int:
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        return Demo(parse_options()).run()
    except DemoError as problem:
        tell(f"demo: {problem}")
        return 2
    except KeyboardInterrupt:
        tell("demo: interrupted")
        return 130


if __name__ == "__main__":
    sys.exit(main())
