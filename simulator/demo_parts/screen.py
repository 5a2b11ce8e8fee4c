"""Where the server shows its window: the user's display, one of the demo's own, or none."""

from __future__ import annotations

import os
import select
import shutil
import subprocess
from pathlib import Path

from .programs import Program, wait_until
from .station import DemoError

WINDOW_TITLE = "Halvorn Vorda Server"
SIZE = "1280x960x24"
PICTURE_TOOLS = {"Xvfb": "xvfb", "openbox": "openbox", "import": "imagemagick", "xdotool": "xdotool"}


def has_display() -> bool:
    """Whether the user sees windows here."""
    shown = os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY")
    return bool(shown) and not os.environ.get("QT_QPA_PLATFORM", "").startswith("offscreen")


class Screen:
    """No screen at all: windows are drawn in memory."""

    def __init__(self, folder: Path) -> None:
        self._pictures = folder / "pictures"

    def environment(self) -> dict[str, str]:
        return os.environ | {"QT_QPA_PLATFORM": "offscreen"}

    def window(self) -> str:
        """The number of the server's window; "" while there is none, or where nobody can tell."""
        return ""

    def save_picture(self, name: str) -> Path | None:
        return None

    def end(self) -> None:
        pass

    def _find_window(self) -> str:
        command = ["xdotool", "search", "--onlyvisible", "--name", WINDOW_TITLE]
        found = subprocess.run(command, env=self.environment(), capture_output=True, text=True, check=False)
        return next(iter(found.stdout.split()), "")

    def _import(self, window: str, name: str) -> Path | None:
        picture = self._pictures / f"{name}.png"
        command = ["import", "-silent", "-window", window, str(picture)]
        saved = subprocess.run(command, env=self.environment(), capture_output=True, check=False).returncode == 0
        return picture if saved and picture.exists() else None


class NoDisplay(Screen):
    """The server finds no display, as on a machine without a desktop: it answers its boxes and tells them in its log."""

    def environment(self) -> dict[str, str]:
        unwanted = ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")
        return {name: value for name, value in os.environ.items() if name not in unwanted}


class UserScreen(Screen):
    """The user's display. Pictures show the server's window alone, not what else is on the screen."""

    def __init__(self, folder: Path, pictures: bool) -> None:
        super().__init__(folder)
        tools = all(shutil.which(tool) for tool in ("import", "xdotool"))
        self._can_save = pictures and tools and bool(os.environ.get("DISPLAY"))

    def environment(self) -> dict[str, str]:
        return dict(os.environ)

    def window(self) -> str:
        return self._find_window() if self._can_save else ""

    def save_picture(self, name: str) -> Path | None:
        window = self.window()
        return self._import(window, name) if window else None


class VirtualScreen(Screen):
    """A display in memory with a window manager, on the first free display number."""

    def __init__(self, folder: Path) -> None:
        super().__init__(folder)
        missing = [package for tool, package in PICTURE_TOOLS.items() if not shutil.which(tool)]
        if missing:
            raise DemoError(f"pictures need more programs: apt-get install {' '.join(missing)}, or say --no-pictures")
        self._home = folder / "screen"
        self._home.mkdir()
        self._programs: list[Program] = []
        try:
            self._display = self._start_display()
            self._start_window_manager()
        except DemoError:
            self.end()
            raise

    def environment(self) -> dict[str, str]:
        environment = os.environ | {"DISPLAY": self._display, "QT_QPA_PLATFORM": "xcb"}
        environment.pop("WAYLAND_DISPLAY", None)
        return environment

    def window(self) -> str:
        return self._find_window()

    def save_picture(self, name: str) -> Path | None:
        return self._import("root", name)

    def end(self) -> None:
        for program in reversed(self._programs):
            program.end()

    def _start_display(self) -> str:
        read_end, write_end = os.pipe()
        command = ["Xvfb", "-displayfd", str(write_end), "-screen", "0", SIZE, "-nolisten", "tcp", "-noreset"]
        self._programs.append(Program(command, self._home / "xvfb.log", pass_fds=(write_end,)))
        os.close(write_end)
        with os.fdopen(read_end) as numbers:
            number = numbers.readline().strip() if select.select([numbers], [], [], 20)[0] else ""
        if not number:
            raise DemoError(f"Xvfb did not start: see {self._home / 'xvfb.log'}, or say --no-pictures")
        return f":{number}"

    def _start_window_manager(self) -> None:
        ready = self._home / "openbox.ready"
        own = {"HOME": str(self._home), "XDG_CONFIG_HOME": str(self._home), "XDG_CACHE_HOME": str(self._home)}
        command = ["openbox", "--sm-disable", "--startup", f"touch {ready}"]
        self._programs.append(Program(command, self._home / "openbox.log", self.environment() | own))
        if not wait_until(ready.exists, 20):
            raise DemoError(f"openbox did not start: see {self._home / 'openbox.log'}, or say --no-pictures")


def choose_screen(folder: Path, pictures: bool) -> Screen:
    if has_display():
        return UserScreen(folder, pictures)
    return VirtualScreen(folder) if pictures else Screen(folder)
