"""Filtering and cutting 16 MB in memory, against one bare pass over the same bytes."""

from __future__ import annotations

import json
import subprocess

from .row import Bench, MeasureError, Row, ratio_row

NAME = "filter and cut"
REACH = 1.5


def lasts(bench: Bench) -> float:
    return bench.times(25, 7) * 0.4


def measure(bench: Bench) -> list[Row]:
    command = [
        str(bench.program("FilterAndCut")),
        "--benchmark_format=json",
        f"--benchmark_repetitions={bench.times(25, 7)}",
        "--benchmark_min_time=0.1",
        "--benchmark_enable_random_interleaving=true",
    ]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    if run.returncode != 0:
        raise MeasureError(f"FilterAndCut: {run.stderr.strip()}")
    # The processor's time: others who wait for the processor as well don't belong to it.
    times = {"FilterAndCut": [], "BarePass": []}
    for entry in json.loads(run.stdout)["benchmarks"]:
        if entry.get("error_occurred"):
            raise MeasureError(f"FilterAndCut: {entry['error_message']}")
        if entry["run_type"] == "iteration":
            times[entry["run_name"]].append(entry["cpu_time"])
    return [ratio_row(f"{NAME}, 16 MB in 4 KB arrivals", "ms", times["FilterAndCut"], times["BarePass"], REACH)]
