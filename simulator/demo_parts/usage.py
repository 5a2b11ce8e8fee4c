"""What the server uses over a long run, looked at again and again, and whether its memory has grown."""

from __future__ import annotations

import time
from collections.abc import Callable
from dataclasses import dataclass

import process_usage

MEGABYTE = 1 << 20
MOST_GROWTH = MEGABYTE
# What happens for the first time takes memory once.
SETTLE_SECONDS = 300
SETTLE_SHARE = 0.1


@dataclass(frozen=True)
class Sample:
    seconds: float  # since the first one
    resident: int  # bytes
    descriptors: int
    processor: float  # seconds


def settled_after(length: float) -> float:
    """How many seconds of a run don't count."""
    return min(SETTLE_SECONDS, SETTLE_SHARE * length)


def sample_of(process: int, seconds: float) -> Sample:
    used = process_usage.processor_seconds(process)
    return Sample(seconds, process_usage.resident(process), process_usage.descriptors(process), used)


class Usage:
    def __init__(self, sample: Callable[[float], Sample], length: float) -> None:
        self._sample = sample
        self._settled = settled_after(length)
        self._began = time.monotonic()
        self.samples = [sample(0)]

    def look(self, now: float | None = None) -> None:
        self.samples.append(self._sample((time.monotonic() if now is None else now) - self._began))

    @property
    def last(self) -> Sample:
        return self.samples[-1]

    @property
    def base(self) -> Sample:
        """The first one that counts; the last of all in a run that was cut short before it."""
        return next((sample for sample in self.samples if sample.seconds >= self._settled), self.last)

    def grown(self) -> int:
        """Bytes, from the base to the end."""
        return self.last.resident - self.base.resident

    def highest(self) -> Sample:
        return max(self.samples, key=lambda sample: sample.resident)

    def share_since(self, seconds: float) -> float:
        """Per cent of a core that it has used since that moment."""
        first = next(sample for sample in reversed(self.samples) if sample.seconds <= seconds)
        passed = self.last.seconds - first.seconds
        return 100 * (self.last.processor - first.processor) / passed if passed > 0 else 0.0

    def faults(self) -> list[str]:
        faults = []
        if self.grown() >= MOST_GROWTH:
            faults.append(f"the server's memory has grown by {self.grown() / MEGABYTE:.2f} MB since minute {self.base.seconds / 60:.1f}")
        before = max(sample.descriptors for sample in self.samples if sample.seconds <= self.base.seconds)
        if self.last.descriptors > before:
            faults.append(f"the server has {self.last.descriptors} descriptors open, {before} at most while it settled")
        return faults
