"""A sound server of one's own: null sinks whose monitors are the feeds' inputs. No hardware, no user's server touched."""

from __future__ import annotations

import os
import shutil
import subprocess
from collections.abc import Iterable
from pathlib import Path

from .programs import Program, wait_until
from .station import DemoError

START_SECONDS = 20


def can_run() -> bool:
    return all(shutil.which(program) for program in ("pulseaudio", "pactl", "paplay"))


def input_of(output: str) -> str:
    """The device that hears what an output plays."""
    return f"{output}.monitor"


class SoundServer:
    """Outputs by their names, one channel each. `rate` is that of what is played and recorded: it comes through bit by bit."""

    def __init__(self, folder: Path, outputs: Iterable[str], rate: int) -> None:
        self._folder = folder / "sound"
        for directory in ("runtime", "state", "config"):
            (self._folder / directory).mkdir(parents=True, mode=0o700)
        (self._folder / "start.pa").write_text(self._script(outputs, rate), encoding="ascii")
        command = ["pulseaudio", "-n", "-F", str(self._folder / "start.pa"), "--daemonize=no", "--use-pid-file=no"]
        command += ["--exit-idle-time=-1", "--realtime=no", "--high-priority=no", "--log-level=warning"]
        self._program = Program(command, self._folder / "server.log", os.environ | self.environment() | self._home())
        if not wait_until(lambda: not self._program.runs() or self._answers(), START_SECONDS) or not self._program.runs():
            self.end()
            raise DemoError(f"the sound server did not start: see {self._program.log}, or say --sound file")

    def environment(self) -> dict[str, str]:
        """What a program's environment needs to find this server and no other."""
        places = {f"PULSE_{name}_PATH": str(self._folder / name.lower()) for name in ("RUNTIME", "STATE", "CONFIG")}
        return places | {"PULSE_SERVER": f"unix:{self._socket()}"}

    def play(self, output: str, sound: Path) -> None:
        """Returns when the last sample has been heard."""
        command = ["paplay", f"--device={output}", str(sound)]
        # Not in the terminal's group: Ctrl+C must not end a sound in its middle.
        subprocess.run(command, env=os.environ | self.environment(), check=True, capture_output=True, process_group=0)

    def end(self) -> None:
        self._program.end()

    def _socket(self) -> Path:
        return self._folder / "socket"

    def _home(self) -> dict[str, str]:
        return {"HOME": str(self._folder), "XDG_CONFIG_HOME": str(self._folder / "config"), "DBUS_SESSION_BUS_ADDRESS": ""}

    def _answers(self) -> bool:
        asked = subprocess.run(["pactl", "info"], env=os.environ | self.environment(), capture_output=True, check=False)
        return asked.returncode == 0

    def _script(self, outputs: Iterable[str], rate: int) -> str:
        lines = [f"load-module module-native-protocol-unix socket={self._socket()} auth-anonymous=1 auth-cookie-enabled=0"]
        for output in outputs:
            # Without norewinds the first block may come two seconds late.
            lines.append(f"load-module module-null-sink sink_name={output} rate={rate} channels=1 norewinds=1")
        return "\n".join([*lines, ""])
