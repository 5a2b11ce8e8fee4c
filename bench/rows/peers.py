"""Other recorders that begin and end by the level, on the same sound as a feed: what our figures stand beside."""

from __future__ import annotations

import math
import shutil
import subprocess
from collections.abc import Mapping
from pathlib import Path

from . import sound
from .row import MeasureError
from .station import AUDIO_RATE, Program, Station


def need_sox() -> None:
    help_text = subprocess.run(["sox", "--help"], capture_output=True, text=True, check=False).stdout if shutil.which("rec") else ""
    if not any(line.startswith("AUDIO DEVICE DRIVERS:") and "pulseaudio" in line for line in help_text.splitlines()):
        raise MeasureError("there is no sox that can hear the sound server: install sox and libsox-fmt-pulse")


def start_sox(station: Station, feed: int, file: Path) -> Program:
    """sox that records what a feed hears, from its level on and as long as it lasts."""
    environment = station.environment() | {"AUDIODRIVER": "pulseaudio", "AUDIODEV": sound.input_of(sound.output_of(feed))}
    silence = ["silence", 1, f"{sound.START_SECONDS}.0", f"{sound.LEVEL}%", 1, f"{sound.END_SECONDS}.0", f"{sound.LEVEL}%"]
    return Program([shutil.which("rec"), "-q", "-r", AUDIO_RATE, "-c", 1, "-b", 16, file, *silence], environment)


def has_liquidsoap() -> bool:
    """Whether a liquidsoap is installed that can hear the sound server."""
    program = shutil.which("liquidsoap")
    return bool(program) and subprocess.run([program, "-h", "input.pulseaudio"], capture_output=True, check=False).returncode == 0


_LIQUIDSOAP_SETTINGS = f"""\
settings.init.allow_root.set(true)
settings.log.stdout.set(false)
settings.log.file.set(false)
settings.frame.audio.samplerate.set({AUDIO_RATE})
settings.frame.audio.channels.set(1)
"""


def start_liquidsoap(station: Station, files: Mapping[int, Path]) -> Program:
    """One liquidsoap that records what all these feeds hear into `files`, while it isn't silent."""
    threshold = f"{20 * math.log10(sound.LEVEL / 100):.1f}"
    feeds = [
        f'heard{feed} = input.pulseaudio(device="{sound.input_of(sound.output_of(feed))}", fallible=true)\n'
        f"loud{feed} = blank.strip(start_blank=true, max_blank={sound.END_SECONDS}., min_noise={sound.START_SECONDS}., "
        f"threshold={threshold}, heard{feed})\n"
        f'output.file(fallible=true, %wav(stereo=false, samplesize=16, samplerate={AUDIO_RATE}), "{file}", loud{feed})\n'
        for feed, file in files.items()
    ]
    script = station.folder / "recorder.liq"
    script.write_text(_LIQUIDSOAP_SETTINGS + "".join(feeds), encoding="ascii")
    return Program([shutil.which("liquidsoap"), script], station.environment())
