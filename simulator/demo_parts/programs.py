"""Programs that the demo starts, and ends again: these and no others."""

from __future__ import annotations

import ctypes
import os
import signal
import subprocess
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any

from .station import DemoError

LOOK_SECONDS = 0.02
PR_SET_PDEATHSIG = 1
LIBC = ctypes.CDLL(None)


def wait_until(condition: Callable[[], bool], seconds: float) -> bool:
    """Waits until the condition holds; False when it still doesn't after so many seconds."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(LOOK_SECONDS)
    return True


def _end_with_demo() -> None:
    """In the child: a demo that is killed leaves nothing behind."""
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


class Program:
    """A started program whose output goes to a log file."""

    def __init__(self, command: list[str], log: Path, environment: dict[str, str] | None = None, **options: Any) -> None:
        self.name = Path(command[0]).name
        self.log = log
        with log.open("wb") as output:
            try:
                self.process = subprocess.Popen(
                    command,
                    stdout=output,
                    stderr=subprocess.STDOUT,
                    env=environment or dict(os.environ),
                    preexec_fn=_end_with_demo,
                    # Ctrl+C is for the demo, which ends its programs in their order.
                    process_group=0,
                    **options,
                )
            except OSError as error:
                raise DemoError(f"{command[0]} can't be started: {error.strerror}") from error

    def runs(self) -> bool:
        return self.process.poll() is None

    def wait(self, seconds: float) -> int | None:
        """Its exit code; None when it still runs after so many seconds."""
        try:
            return self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            return None

    def end(self, seconds: float = 10) -> int | None:
        """Asks it to end, and answers its exit code; None when it did not listen and had to be killed."""
        if self.runs():
            self.process.send_signal(signal.SIGTERM)
        code = self.wait(seconds)
        if code is None:
            self.process.kill()
            self.process.wait()
        return code

    def said(self) -> str:
        return self.log.read_text(encoding="utf-8", errors="replace")
