"""The windows of a session as its window manager has them."""

import re
import subprocess

from Desktop import awaitCondition

onEveryDesktop = 0xFFFFFFFF


class Screen:
    def __init__(self, user):
        self._user = user

    def window(self, title):
        """The number of the window of this title, as soon as it is there."""
        return awaitCondition(
            lambda: next((window for window in self.stacking()
                          if self._tell("WM_NAME", window) == f'"{title}"'), None),
            lambda: f"no window {title!r} among {self.stacking()}")

    def stacking(self):
        """From the lowest to the highest, without the panel, which is above all."""
        return [window for window in re.findall("0x[0-9a-f]+",
                                                self._tell("_NET_CLIENT_LIST_STACKING"))
                if "_DOCK" not in self._tell("_NET_WM_WINDOW_TYPE", window)]

    def active(self):
        return next(iter(re.findall("0x[0-9a-f]+", self._tell("_NET_ACTIVE_WINDOW"))), None)

    def desktop(self, window=None):
        """That of a window, or the current one."""
        return int(self._tell("_NET_WM_DESKTOP", window) if window
                   else self._tell("_NET_CURRENT_DESKTOP"))

    def isMinimised(self, window):
        return "_NET_WM_STATE_HIDDEN" in self._tell("_NET_WM_STATE", window)

    def minimise(self, window):
        self._user.run("timeout", "20", "xdotool", "windowminimize", str(int(window, 16)))
        awaitCondition(lambda: self.isMinimised(window), lambda: f"{window} is not minimised")

    def move(self, window, desktop):
        """To the desktop of this number, or to every one: -1."""
        self._user.run("timeout", "20", "xdotool", "set_desktop_for_window", window, str(desktop))
        awaitCondition(lambda: self.desktop(window) == desktop % (onEveryDesktop + 1),
                       lambda: f"{window} is at desktop {self.desktop(window)}")

    def raiseWindow(self, window):
        self._user.run("wmctrl", "-i", "-a", window)
        self.awaitOnTop([window])

    def awaitOnTop(self, windows):
        """Until these are above all others, in this order, and the last one has the focus."""
        awaitCondition(
            lambda: self.stacking()[-len(windows):] == windows and self.active() == windows[-1],
            lambda: f"{self.stacking()}, {self.active()} active; expected at the end: {windows}")

    def change(self, window, *words):
        self._user.run("xprop", "-id", window, *words)

    def _tell(self, name, window=None):
        """What a property holds, as xprop writes it."""
        of = ["-id", window] if window else ["-root"]
        told = subprocess.run(["timeout", "20", "xprop", *of, name], capture_output=True, text=True,
                              env=self._user.environment()).stdout
        return told.partition("= " if " = " in told else "# ")[2].strip()
