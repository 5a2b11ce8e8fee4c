"""A row of the table."""

from __future__ import annotations

import statistics
from dataclasses import dataclass, field
from pathlib import Path


class MeasureError(Exception):
    """A row can't be measured; its text says why."""


@dataclass(frozen=True)
class Bench:
    """Where the programs lie and how often things are repeated."""

    build: Path
    quick: bool
    long: bool = False
    # Where stations lie; None where the row likes best.
    folder: Path | None = None

    @property
    def server(self) -> Path:
        return self.build / "bin" / "vdserver"

    def program(self, name: str) -> Path:
        return self.build / "bin" / "bench" / name

    def times(self, usual: int, quick: int) -> int:
        return quick if self.quick else usual


@dataclass
class Row:
    """`value` is what the reach is about: a ratio or a difference to the baseline, or the figure itself. Without a reach the
    row only informs."""

    name: str
    unit: str
    figure: float
    baseline: float | None
    value: float
    value_unit: str
    reach: float | None
    note: str = ""
    samples: dict[str, list[float]] = field(default_factory=dict)

    @property
    def reached(self) -> bool | None:
        return None if self.reach is None else self.value <= self.reach

    def texts(self) -> list[str]:
        verdict = {None: "", True: "reached", False: "MISSED"}[self.reached]
        reach = "" if self.reach is None else f"at most {self.reach:g} {self.value_unit}"
        baseline = "" if self.baseline is None else f"{_short(self.baseline)} {self.unit}"
        figure, compared = f"{_short(self.figure)} {self.unit}", f"{_short(self.value)} {self.value_unit}"
        return [self.name, figure, baseline, compared, reach, verdict]

    def as_json(self) -> dict[str, object]:
        return {**self.__dict__, "reached": self.reached}


def _short(value: float) -> str:
    return f"{value:.0f}" if abs(value) >= 1000 else f"{value:.3g}"


def ratio_row(name: str, unit: str, ours: list[float], baseline: list[float], reach: float | None) -> Row:
    """Medians of runs that took turns, and how many times the baseline's ours is."""
    figure, base = statistics.median(ours), statistics.median(baseline)
    return Row(name, unit, figure, base, figure / base, "times", reach, samples={"ours": ours, "baseline": baseline})


def difference_row(name: str, unit: str, ours: list[float], baseline: list[float], reach: float | None) -> Row:
    """Medians of runs that took turns, and how much more ours is than the baseline's."""
    figure, base = statistics.median(ours), statistics.median(baseline)
    return Row(name, unit, figure, base, figure - base, f"{unit} more", reach, samples={"ours": ours, "baseline": baseline})
