"""A terminal on a feed's status port: shows its lines and counts the stories."""

from __future__ import annotations

import socket
import threading

from .station import Feed

PRINTING = threading.Lock()
STORY_LINE = "Processed New Story"
FIRST_LINE = "Status Information:"


class StatusTerminal(threading.Thread):
    def __init__(self, feed: Feed, address: str) -> None:
        super().__init__(daemon=True)
        self._feed = feed
        self._address = address
        self._socket: socket.socket | None = None
        self.lines: list[str] = []

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
                    self.lines.append(line.rstrip("\r\n"))
                    with PRINTING:
                        print(f"{self._feed.number} | {self.lines[-1]}", flush=True)
        except OSError:
            pass  # the server has gone

    def greeted(self) -> bool:
        return any(line.endswith(FIRST_LINE) for line in self.lines)

    def stories(self) -> int:
        return self.count(STORY_LINE)

    def count(self, ending: str) -> int:
        return sum(line.endswith(ending) for line in self.lines)
