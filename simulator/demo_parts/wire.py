"""The lines of the demo: the wire simulator on each feed, and the reader behind the bounce port."""

from __future__ import annotations

import os
import select
import signal
import subprocess
import threading
import tty
from pathlib import Path

from .programs import Program, wait_until
from .station import BAUD, DemoError, Feed

BYTES_PER_SECOND = BAUD / 10


class Wire:
    """A simulator that waits with its first byte until `begin`. `gap` is the silence ahead of each story in milliseconds; 0 rounds
    are played until it ends."""

    def __init__(self, program: Path, feed: Feed, gap: int, drop: int = 0, rounds: int = 1) -> None:
        self.feed = feed
        command = [str(program), "--pty", str(feed.link), "--framing", feed.framing, "--settings", f"{BAUD},n,8,1"]
        command += ["--noise", "--seed", str(feed.number), "--gap", str(gap), "--loop", str(rounds)]
        command += ["--sent", str(feed.sent), "--plan", str(feed.plan), "--on-enter", "--stay", "--verbose"]
        command += ["--drop", str(drop)] if drop else []
        log = feed.folder / f"wire{feed.number}.log"
        self.program = Program([*command, str(feed.copy)], log, stdin=subprocess.PIPE)
        if not wait_until(lambda: feed.link.is_symlink() or not self.program.runs(), 10) or not self.program.runs():
            raise DemoError(f"the wire simulator did not make its line: see {log}")

    def begin(self) -> None:
        try:
            self.program.process.stdin.write(b"\n")
            self.program.process.stdin.flush()
        except BrokenPipeError as error:
            raise DemoError(f"the wire simulator has ended: see {self.program.log}") from error

    def has_sent_all(self) -> bool:
        return "bytes a second" in self.program.said()

    def hold(self) -> None:
        """Not a byte more goes, and the line stays: what has gone can still be read."""
        self.program.process.send_signal(signal.SIGSTOP)

    def end(self) -> None:
        if self.program.runs():
            self.program.process.send_signal(signal.SIGTERM)
            self.program.process.send_signal(signal.SIGCONT)
        self.program.end()

    def summary(self) -> str:
        return next(reversed(self.program.said().strip().splitlines()), "nothing")


def gap_over(feed: Feed, seconds: float) -> int:
    """The gap that spreads the copy over so many seconds."""
    sizes = [file.stat().st_size for file in feed.copy.iterdir()]
    spare = seconds - sum(sizes) / BYTES_PER_SECOND
    return max(0, int(1000 * spare / (len(sizes) - 1)))


class BounceReader(threading.Thread):
    """What hangs on the bounce port: takes everything that the server passes on."""

    def __init__(self, link: Path) -> None:
        super().__init__(daemon=True)
        # The far end stays open here, too, so that nothing is lost when the server comes late or goes early.
        self._near, self._far = os.openpty()
        tty.setraw(self._far)
        link.symlink_to(os.ttyname(self._far))
        self._link = link
        self._ended = threading.Event()
        self.received = bytearray()

    def run(self) -> None:
        while not self._ended.is_set():
            if select.select([self._near], [], [], 0.1)[0]:
                self.received += os.read(self._near, 65536)

    def end(self) -> None:
        self._ended.set()
        self.join()
        self._link.unlink(missing_ok=True)
        os.close(self._near)
        os.close(self._far)
