"""A terminal on a feed's status port: passes its lines on and counts them."""

from __future__ import annotations

import re
import socket
import threading
from collections import Counter
from collections.abc import Callable

from .station import Feed

PRINTING = threading.Lock()
STORY_LINE = "Processed New Story"
FIRST_LINE = "Status Information:"
STAMP = re.compile(r".*?\d\d:\d\d:\d\d ")


def tell(text: str) -> None:
    with PRINTING:
        print(text, flush=True)


class StatusTerminal(threading.Thread):
    """`hear` is called with each line, date and time included, on the terminal's own thread."""

    def __init__(self, feed: Feed, address: str, hear: Callable[[str], None]) -> None:
        super().__init__(daemon=True)
        self._feed = feed
        self._address = address
        self._socket: socket.socket | None = None
        self._hear = hear
        self._counts: Counter[str] = Counter()

    def connect(self) -> bool:
        """Tries once; the server may not listen yet."""
        try:
            self._socket = socket.create_connection((self._address, self._feed.status_port), timeout=2)
        except OSError:
            return False
        self._socket.settimeout(None)
        self.start()
        return True

    def run(self) -> None:
        try:
            with self._socket.makefile("r", encoding="cp1252", errors="replace", newline="\r\n") as stream:
                for line in stream:
                    self._hear(line.rstrip("\r\n"))
                    self._counts[_text_of(line)] += 1
        except OSError:
            pass  # the server has gone

    def greeted(self) -> bool:
        return self.count(FIRST_LINE) > 0

    def stories(self) -> int:
        return self.count(STORY_LINE)

    def count(self, text: str) -> int:
        return self._counts[text]


def _text_of(line: str) -> str:
    """Without the date and the time ahead of it."""
    return STAMP.sub("", line.rstrip("\r\n"), count=1)
