"""Sound for a station's feeds: a sound server of the bench's own, and what is played on it."""

from __future__ import annotations

import array
import math
import os
import random
import re
import subprocess
import tempfile
import threading
import time
from collections.abc import Callable, Iterable, Iterator
from contextlib import ExitStack
from itertools import repeat
from pathlib import Path

from .row import MeasureError
from .station import AUDIO_RATE, Audio, Program, Station, first_cart

# Found by the line in station.py.
from demo_parts.sound_server import SoundServer, can_run, input_of
from demo_parts.station import DemoError

FEEDS = 4
# Never as quiet as this is what the loud sound is.
LEVEL = 3
START_SECONDS = 1
END_SECONDS = 1
KEYS = {"AudioActivationLevel": LEVEL, "AudioStartDuration": START_SECONDS, "AudioEndDuration": END_SECONDS}
PATIENCE_SECONDS = 60
HEADER_BYTES = 44
SAMPLE_BYTES = 2
# What a player has ahead of the sound server.
PLAYER_MILLISECONDS = 4000
# In large pieces, so that what is heard comes in the even pieces of a sound card.
REFILL_MILLISECONDS = 1000


def output_of(feed: int) -> str:
    return f"feed{feed}"


def wait_for(condition: Callable[[], bool], what: str, seconds: float = PATIENCE_SECONDS) -> None:
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            raise MeasureError(f"waited in vain until {what}")
        time.sleep(0.02)


class Sound:
    """The sound server. A context: what is played ends with it."""

    def __init__(self, feeds: int = FEEDS) -> None:
        if not can_run():
            raise MeasureError("there is no sound server: install pulseaudio and pulseaudio-utils")
        self._ends = ExitStack()
        folder = Path(self._ends.enter_context(tempfile.TemporaryDirectory(prefix="vorda-bench-")))
        try:
            self._server = SoundServer(folder, [output_of(feed) for feed in range(1, feeds + 1)], AUDIO_RATE)
        except DemoError:
            self._ends.close()
            raise MeasureError("the sound server did not start") from None
        self._ends.callback(self._server.end)
        self._feeds = feeds

    def __enter__(self) -> Sound:
        return self

    def __exit__(self, *_) -> None:
        self._ends.close()

    def environment(self) -> dict[str, str]:
        return self._server.environment()

    def audio(self, **keys: object) -> Audio:
        """For a station of as many feeds as there are outputs."""
        inputs = {feed: input_of(output_of(feed)) for feed in range(1, self._feeds + 1)}
        return Audio(inputs, KEYS | keys, self.environment())

    def streams(self) -> int:
        """How many streams take sound in."""
        command = ["pactl", "list", "short", "source-outputs"]
        asked = subprocess.run(command, env=os.environ | self.environment(), capture_output=True, check=True)
        return len(asked.stdout.splitlines())

    def play(self, feed: int, pieces: Iterable[bytes]) -> Player:
        """Begins to play, and goes on until there are no more pieces."""
        return self._ends.enter_context(Player(output_of(feed), pieces, os.environ | self.environment()))

    def play_everywhere(self, pieces: Callable[[], Iterable[bytes]]) -> list[Player]:
        return [self.play(feed, pieces()) for feed in range(1, self._feeds + 1)]


class Player:
    """Samples of 16 bits on their way to an output; a context."""

    def __init__(self, output: str, pieces: Iterable[bytes], environment: dict[str, str]) -> None:
        command = ["pacat", "--playback", "--raw", "--format=s16le", f"--rate={AUDIO_RATE}", "--channels=1"]
        command += [f"--latency-msec={PLAYER_MILLISECONDS}", f"--process-time-msec={REFILL_MILLISECONDS}", f"--device={output}"]
        self._process = subprocess.Popen(command, env=environment, stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self._feeder = threading.Thread(target=self._feed, args=(pieces,), daemon=True)
        self._feeder.start()

    def __enter__(self) -> Player:
        return self

    def __exit__(self, *_) -> None:
        self._process.kill()
        self._process.wait()
        self._feeder.join()

    def _feed(self, pieces: Iterable[bytes]) -> None:
        try:
            with self._process.stdin as player:
                for piece in pieces:
                    player.write(piece)
        except BrokenPipeError:
            pass

    def ended(self) -> bool:
        """Whether all has been heard."""
        if self._process.poll() not in (None, 0):
            raise MeasureError("a player has failed")
        return self._process.returncode == 0


def loud_sound() -> Iterator[bytes]:
    """Noise without an end that comes and goes like speech, so that each tick has another level, and never falls silent."""
    noise = random.Random(1)
    samples = array.array("h")
    for place in range(10 * AUDIO_RATE):
        seconds = place / AUDIO_RATE
        loudness = 4000 + 6000 * (1 + math.sin(2 * math.pi * seconds)) * (1 + math.sin(2 * math.pi * 3.1 * seconds)) / 2
        samples.append(int(noise.uniform(-loudness, loudness)))
    return repeat(samples.tobytes())


def recording_of(station: Station, feed: int) -> Path:
    """The first one that a feed makes."""
    return station.folder / "wall" / f"ORV{first_cart(feed):05}.WAV"


def samples_of(file: Path) -> bytes:
    return file.read_bytes()[HEADER_BYTES:]


def is_under_way(file: Path) -> bool:
    """Whether a second of sound has been recorded."""
    return file.exists() and file.stat().st_size > HEADER_BYTES + SAMPLE_BYTES * AUDIO_RATE


def await_recordings(files: Iterable[Path]) -> None:
    wait_for(lambda: all(map(is_under_way, files)), "all was being recorded")


def last_recorded(station: Station, feed: int) -> int:
    """The cart of the feed's last recording that has ended."""
    found = re.search(r"^LastRecordedCartNumber=(\d+)", station.configurations[feed - 1].read_text(), re.MULTILINE)
    return int(found[1]) if found else 0


def await_findings(station: Station, server: Program, count: int, seconds: float = PATIENCE_SECONDS) -> list[int]:
    """The numbers that a server of the bench's writes down, one a line."""

    def lines() -> list[str]:
        return station.ticks.read_text(encoding="ascii").splitlines(keepends=True) if station.ticks.exists() else []

    wait_for(lambda: not server.runs() or sum(line.endswith("\n") for line in lines()) >= count, f"{server.name} had measured", seconds)
    if len(lines()) < count:
        raise MeasureError(f"{server.name} has ended")
    return [int(line) for line in lines()[:count]]
