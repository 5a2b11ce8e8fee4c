#!/usr/bin/env python3
"""Runs the benchmarks, each beside its baseline, and prints one table.

Ours and the baseline take turns, and medians are compared, so that a busy machine weighs on both alike. Exit code 0, also
when a reach is missed; 1 when something can't be measured.
"""

from __future__ import annotations

import argparse
import json
import os
import platform
import subprocess
import sys
import tempfile
from pathlib import Path

from rows import audio, audio_gate, audio_loss, audio_use
from rows import display, end_code, filter_and_cut, full_speed, idle, start, steady_pace, wall
from rows.row import Bench, MeasureError, Row

MODULES = (filter_and_cut, end_code, full_speed, steady_pace, display, idle, start, wall, audio, audio_use, audio_gate, audio_loss)
HEADINGS = ["row", "figure", "baseline", "compared", "reach", ""]


def machine(build: Path) -> dict[str, object]:
    cpu = next((line.split(":", 1)[1].strip() for line in _lines("/proc/cpuinfo") if line.startswith("model name")), "unknown")
    return {
        "processor": cpu,
        "cores": os.cpu_count(),
        "kernel": platform.release(),
        "qt": _qt_version(build),
        "load": round(os.getloadavg()[0], 2),
    }


def _lines(path: str) -> list[str]:
    return Path(path).read_text(encoding="utf-8", errors="replace").splitlines()


def _qt_version(build: Path) -> str:
    """That of the library which the server loads."""
    libraries = subprocess.run(["ldd", str(build / "bin" / "vdserver")], capture_output=True, text=True, check=False).stdout
    path = next((line.split()[2] for line in libraries.splitlines() if "libQt6Core" in line), "")
    return Path(path).resolve().name.partition(".so.")[2] or "unknown"


def print_table(rows: list[Row]) -> None:
    table = [HEADINGS, *(row.texts() for row in rows)]
    widths = [max(len(line[column]) for line in table) for column in range(len(HEADINGS))]
    for line in table:
        print("  ".join(text.ljust(width) for text, width in zip(line, widths)).rstrip())
    for row in rows:
        if row.note:
            print(f"  {row.name}: {row.note}")


def measure(bench: Bench, name_holds: str) -> tuple[list[Row], bool]:
    rows, failed = [], False
    for module in MODULES:
        if name_holds not in module.NAME:
            continue
        print(f"measuring: {module.NAME}, about {_spoken(module.lasts(bench))}", file=sys.stderr, flush=True)
        try:
            rows += module.measure(bench)
        except (MeasureError, OSError) as error:
            print(f"bench: {module.NAME} can't be measured: {error}", file=sys.stderr)
            failed = True
    return rows, failed


def _spoken(seconds: float) -> str:
    return f"{seconds:.0f} seconds" if seconds < 100 else f"{seconds / 60:.0f} minutes"


def main() -> int:
    parser = argparse.ArgumentParser(description="The benchmarks, each beside its baseline.")
    names = ", ".join(module.NAME for module in MODULES)
    parser.add_argument("filter", nargs="?", default="", help=f"only subjects whose name holds this: {names}")
    parser.add_argument("--build", type=Path, required=True, help="the folder of a release build")
    parser.add_argument("--json", type=Path, help="write all figures and samples to this file")
    parser.add_argument("--quick", action="store_true", help="few repetitions: shows that all runs; not for quoting")
    parser.add_argument("--long", action="store_true", help="idle for ten minutes, record for ten and for thirty")
    parser.add_argument("--folder", type=Path, help="where the files of a run lie; otherwise stories in memory, the rest in /tmp")
    options = parser.parse_args()
    if options.folder:
        tempfile.tempdir = str(options.folder.resolve(strict=True))
    description = machine(options.build)
    print("{processor}, {cores} cores, Linux {kernel}, Qt {qt}; load at the start {load}".format(**description), flush=True)
    rows, failed = measure(Bench(options.build.resolve(), options.quick, options.long, options.folder), options.filter)
    print_table(rows)
    if options.json:
        report = {"machine": description, "quick": options.quick, "long": options.long, "rows": [row.as_json() for row in rows]}
        options.json.write_text(json.dumps(report, indent=1), encoding="utf-8")
    return 1 if failed or not rows else 0


if __name__ == "__main__":
    sys.exit(main())
