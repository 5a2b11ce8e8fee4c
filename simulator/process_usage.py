"""What a running program uses of the machine, as the system tells it."""

from __future__ import annotations

import os
import time
from pathlib import Path


def resident(process: int) -> int:
    """Resident bytes."""
    return int(Path(f"/proc/{process}/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def processor_seconds(process: int) -> float:
    """What it has used of the processors, without the programs it has started."""
    # The number of a process's clock, as the C library works it out.
    return time.clock_gettime((~process << 3) | 2)


def descriptors(process: int) -> int:
    """How many files, lines and connections it has open."""
    return len(os.listdir(f"/proc/{process}/fd"))
