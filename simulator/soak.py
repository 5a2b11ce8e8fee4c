#!/usr/bin/env python3
"""Runs the simulated station for long: four feeds, on each of them item after item and wire copy over and over.

About 400 items come in an hour on each feed, and 3,700 stories on each of three lines: what a busy day brings, ten times over. The
ranges of carts are so small that they turn round every minute or two. Each item is looked for in its cart before the next is said:
its sound, its record, what the feed's configuration and the index cart say of it, and every other cart of the range, which must be
as it was or cleared. Each story must be filed. The server's memory, descriptors and processor time are watched. A line a minute;
Ctrl+C ends it with the report so far.

Exit code 0: all there and the memory as it was; 1: something is missing or wrong, or the memory has grown by a megabyte or more
after the first five minutes (a tenth of a shorter run), or descriptors stay open; 2: it can't run here.
"""

from __future__ import annotations

import argparse
import datetime
import os
import signal
import sys
import threading
import time
from functools import partial
from pathlib import Path

from demo_parts import sound, sound_server
from demo_parts.checks import RunTimes, check_bounce, check_daily_tools, check_status
from demo_parts.programs import wait_until
from demo_parts.screen import NoDisplay
from demo_parts.soak_feed import SoakFeed
from demo_parts.soak_station import STORY_GAP, make_feeds, texts_of
from demo_parts.station import DemoError, Feed, clear_folder
from demo_parts.station_run import StationRun
from demo_parts.status import tell
from demo_parts.story_ledger import GRACE_SECONDS, StoryLedger
from demo_parts.usage import MEGABYTE, Usage, sample_of
from demo_parts.wire import Wire

ROOT = Path(__file__).resolve().parent.parent
LOOK_SECONDS = 2.0
MINUTE = 60
# The end of the item that is being said when time is up.
LAST_ITEM_SECONDS = 60
NO_DISPLAY = "no display: running without windows; messages appear here and are answered at once"


class Soak(StationRun):
    def __init__(self, options: argparse.Namespace) -> None:
        super().__init__(options.folder, make_feeds(options.folder, ROOT / "tests" / "data" / "wire"), options.server)
        self.options = options
        self.screen = NoDisplay(self.folder)
        self.length = options.hours * 3600
        self.interrupted = threading.Event()
        self.time_is_up = threading.Event()
        self.announcers: list[SoakFeed] = []
        self.reporting = threading.Lock()

    def run(self) -> int:
        try:
            self.set_up()
            self.start_server()
            self.play()
            self.watch()
            self.finish()
        finally:
            self.end_everything()
        return self.report()

    def set_up(self) -> None:
        clear_folder(self.folder, self.options.keep)
        items = {feed.number: sound.make_items(self.folder, feed, texts_of(feed)) for feed in self.feeds}
        inputs = self.start_sound()
        self.log = (self.folder / "status.log").open("w", encoding="utf-8")
        self.set_up_station(inputs, self.make_wire, self.hear)
        for feed in self.feeds:
            terminal = self.terminals[feed.number]
            announcer = SoakFeed(feed, items[feed.number], self.sound_server, terminal, self.time_is_up, self.wrong)
            self.announcers.append(announcer)
        self.ledgers = [StoryLedger(feed) for feed in self.feeds if feed.wired]

    def make_wire(self, feed: Feed) -> Wire:
        return Wire(self.options.build / "bin" / "vdwire", feed, STORY_GAP, rounds=0)

    def hear(self, feed: Feed, line: str) -> None:
        with self.reporting:
            self.log.write(f"{feed.number} | {line}\n")
            self.log.flush()

    def wrong(self, fault: str) -> None:
        with self.reporting:
            self.faults.append(fault)
        tell(f"{datetime.datetime.now():%H:%M:%S} WRONG: {fault}")

    def play(self) -> None:
        length = f"{len(self.feeds)} feeds for {self.length / 60:g} minutes"
        tell(f"The server runs, process {self.server.process.pid}; {length}, a line a minute.")
        for number in (signal.SIGINT, signal.SIGTERM):
            signal.signal(number, self.interrupt)
        self.usage = Usage(partial(sample_of, self.server.process.pid), self.length)
        for wire in self.wires:
            wire.begin()
        for announcer in self.announcers:
            announcer.start()

    def interrupt(self, number: int, _: object) -> None:
        """The first one ends the run in its order, the second one at once."""
        self.interrupted.set()
        signal.signal(number, signal.default_int_handler)

    def watch(self) -> None:
        began = told = time.monotonic()
        while time.monotonic() - began < self.length and not self.interrupted.wait(LOOK_SECONDS):
            if not self.still_playing():
                self.wrong("the server or a line has ended")
                return
            self.usage.look()
            for ledger in self.ledgers:
                self.tell_wrong(ledger.look())
            if time.monotonic() - told >= MINUTE:
                told += MINUTE
                self.tell_minute()

    def tell_wrong(self, faults: list[str]) -> None:
        for fault in faults:
            self.wrong(fault)

    def tell_minute(self) -> None:
        now = self.usage.last
        tell(
            f"{round(now.seconds / MINUTE):3} min: {self.total('said')} items said, {self.total('recorded')} in their carts;"
            f" {self.sum_of('sent')} stories sent, {self.sum_of('filed')} filed;"
            f" {now.resident / MEGABYTE:.2f} MB, {now.descriptors} descriptors,"
            f" {self.usage.share_since(now.seconds - MINUTE):.2f} % of a core"
        )

    def total(self, name: str) -> int:
        return sum(getattr(announcer, name) for announcer in self.announcers)

    def sum_of(self, name: str) -> int:
        return sum(getattr(ledger, name) for ledger in self.ledgers)

    def finish(self) -> None:
        """Lets the last items and stories come in, and ends the server."""
        if self.interrupted.is_set():
            tell("Interrupted; the last items and stories are waited for.")
        self.time_is_up.set()
        for wire in self.wires:
            wire.hold()
        for announcer in self.announcers:
            announcer.join(LAST_ITEM_SECONDS)
            if announcer.is_alive():
                self.wrong(f"feed {announcer.feed.number}: the last item does not end")
        if self.server.runs():
            wait_until(self.all_arrived, GRACE_SECONDS)
            self.usage.look()
            self.asked = datetime.datetime.now()
            self.end_server()
        else:
            self.asked = datetime.datetime.now()

    def all_arrived(self) -> bool:
        for ledger in self.ledgers:
            self.tell_wrong(ledger.look())
        told = all(self.terminals[ledger.feed.number].stories() >= ledger.handed_on for ledger in self.ledgers)
        return told and all(ledger.balanced() for ledger in self.ledgers) and self.bounced()

    def bounced(self) -> bool:
        return all(
            len(self.bounces[feed.number].received) >= feed.sent.stat().st_size for feed in self.feeds if feed.bounced
        )

    def check_end(self) -> None:
        times = RunTimes(self.started, self.ready, self.asked)
        for ledger in self.ledgers:
            self.tell_wrong(ledger.close())
            self.tell_wrong(check_status(ledger.feed, self.terminals[ledger.feed.number]))
        for feed in self.feeds:
            self.tell_wrong(check_daily_tools(feed, times))
            if feed.bounced:
                self.tell_wrong(check_bounce(feed, bytes(self.bounces[feed.number].received)))
        self.tell_wrong(self.wall.changes())
        self.tell_wrong(self.usage.faults())
        for line in self.server.said().splitlines():
            if not line.endswith(NO_DISPLAY):
                self.wrong(f"the server said: {line}")

    def report(self) -> int:
        tell("")
        self.check_end()
        usage = self.usage
        minutes = usage.last.seconds / MINUTE
        tell(f"{minutes:.1f} minutes, load of the machine now {os.getloadavg()[0]:.1f}")
        wrong = f"{self.total('wrong')} wrong, {self.total('missing')} missing"
        tell(f"Items: {self.total('said')} said, {self.total('recorded')} in their carts as they were said, {wrong}")
        for announcer in self.announcers:
            tell(self.summary(announcer))
        filed = f"{self.sum_of('missing')} missing, {self.sum_of('unexpected')} unexpected"
        tell(f"Stories: {self.sum_of('sent')} sent, {self.sum_of('filed')} filed, {filed}")
        tell(
            f"Memory: {usage.base.resident / MEGABYTE:.2f} MB after {usage.base.seconds / MINUTE:.1f} minutes,"
            f" {usage.last.resident / MEGABYTE:.2f} MB at the end: {usage.grown() / MEGABYTE:+.2f} MB;"
            f" highest {usage.highest().resident / MEGABYTE:.2f} MB at minute {usage.highest().seconds / MINUTE:.1f}"
        )
        tell(f"Descriptors: {usage.base.descriptors} then, {usage.last.descriptors} at the end")
        share = usage.share_since(0)
        tell(f"Processor: {0.6 * share:.2f} s a minute, {share:.2f} % of a core, without the story tools")
        if self.faults:
            tell(f"{len(self.faults)} faults. What the server, its ports and the lines said is in {self.folder}.")
            return 1
        tell("All is well.")
        return 0

    def summary(self, announcer: SoakFeed) -> str:
        feed, timings = announcer.feed, announcer.timings
        turns = f"feed {feed.number}: {announcer.said} items, its {feed.carts} carts turned {announcer.rotation.turns} times"
        if not timings:
            return f"  {turns}"
        begins = [timing.begin for timing in timings]
        ends = [timing.end for timing in timings]
        when = f"begun {min(begins):.2f} to {max(begins):.2f} s, ended {min(ends):.2f} to {max(ends):.2f} s behind the sound"
        return f"  {turns}; {when}"


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, required=True, help="build directory, whose bin holds the programs")
    parser.add_argument("--hours", type=float, default=1, help="how long it takes, fractions too (default 1)")
    parser.add_argument("--keep", action="store_true", help="set an earlier run's folder aside instead of removing it")
    parser.add_argument("--folder", type=Path, default=ROOT / "build" / "soak", help="the station's folder")
    parser.add_argument("--server", type=Path, help="another server than the build directory's")
    options = parser.parse_args()
    options.build = options.build.resolve()
    options.folder = options.folder.resolve()
    options.server = (options.server or options.build / "bin" / "vdserver").resolve()
    if not options.hours > 0:
        parser.error("--hours: more than 0")
    if " " in f"{options.folder}{options.server}":
        parser.error("the story tools can't be started where a path has a blank: build elsewhere, or use --folder")
    return options


def main() -> int:
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    options = parse_options()
    if not sound_server.can_run():
        tell("soak: it needs a sound server: apt-get install pulseaudio pulseaudio-utils")
        return 2
    try:
        return Soak(options).run()
    except DemoError as problem:
        tell(f"soak: {problem}")
        return 2
    except KeyboardInterrupt:
        tell("soak: interrupted")
        return 130


if __name__ == "__main__":
    sys.exit(main())
