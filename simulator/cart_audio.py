"""Audio for carts: tones, each cart at its own pitch, or the title spoken. WAV files of 16 bits, one channel."""

from __future__ import annotations

import array
import functools
import math
import shutil
import subprocess
import sys
import wave
from pathlib import Path

RATE = 44100
LOUDNESS = 8000
LOWEST_PITCH = 220  # Hz
PITCHES = 40
PITCH_STEP = 15
SPEAKER = "espeak-ng"


def write_tone(path: Path, cart: int, seconds: float, rate: int = RATE) -> float:
    """Answers how long it has become, in seconds."""
    period = round(rate / (LOWEST_PITCH + cart % PITCHES * PITCH_STEP))
    frames = round(seconds * rate)
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, rate, frames, "NONE", ""))
        file.writeframes((_period(period) * (frames // period + 1))[: 2 * frames])
    return frames / rate


@functools.cache
def _period(length: int) -> bytes:
    samples = array.array("h", (round(LOUDNESS * math.sin(2 * math.pi * at / length)) for at in range(length)))
    if sys.byteorder == "big":
        samples.byteswap()
    return samples.tobytes()


def can_speak() -> bool:
    return shutil.which(SPEAKER) is not None


def write_speech(path: Path, text: str) -> float:
    subprocess.run([SPEAKER, "-w", str(path), "--", text], check=True, stdin=subprocess.DEVNULL)
    return seconds_of(path)


def seconds_of(path: Path) -> float:
    with wave.open(str(path), "rb") as file:
        return file.getnframes() / file.getframerate()
