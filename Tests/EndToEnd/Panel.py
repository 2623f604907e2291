"""The panel of a session as a person has it: icons at its right end, and menus below them."""

import dataclasses
import os
import re
import signal
import subprocess
import time

from Desktop import awaitCondition, isRunning

_sizeOfSlot = 32
_rowsFromTop = {"heading": 16}
_rowsFromBottom = {"Show": 42, "Quit": 17}


@dataclasses.dataclass(frozen=True)
class Area:
    x: int
    y: int
    width: int
    height: int


class Picture:
    """A part of the screen as it was at one time."""

    def __init__(self, width, data):
        self.width = width
        self.height = len(data) // width // 3
        self._data = data

    def colour(self, x, y):
        place = 3 * (y * self.width + x)
        return tuple(self._data[place:place + 3])

    def colours(self):
        """How many pixels have each colour."""
        found = {}
        for place in range(0, len(self._data), 3):
            colour = tuple(self._data[place:place + 3])
            found[colour] = found.get(colour, 0) + 1
        return found


class Panel:
    def __init__(self, user):
        self._user = user
        self._process = int(user.session["PANEL_PID"])
        self._started = None

    def end(self, number=signal.SIGKILL):
        """Ends it, and returns when the bus knows that."""
        if self._started:
            self._started.send_signal(number)
            self._started.communicate()
            self._started = None
        else:
            os.kill(self._process, number)
            # Another one would take it for its own self until it has ended.
            awaitCondition(lambda: not isRunning(self._process), lambda: "the panel does not end")
        awaitCondition(lambda: not self.isThere(), lambda: "the panel's part does not end")

    def start(self, **environment):
        """Starts another one in place of one that was ended."""
        self._started = subprocess.Popen(
            [self._user.session["PANEL_COMMAND"]],
            env={**self._user.environment(), **environment}, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        awaitCondition(self.isThere, lambda: f"no panel: {self._started.poll()}")

    def restart(self):
        self.end(signal.SIGTERM)
        self.start()

    def close(self):
        """Ends one that was started in place of the session's own."""
        if self._started:
            self.end()

    def setDark(self, isDark):
        """How items look that come from now on."""
        self._user.run("xfconf-query", "-c", "xfce4-panel", "-p", "/panels/dark-mode", "-n",
                       "-t", "bool", "-s", "true" if isDark else "false")

    def isThere(self):
        """Whether there is a panel that shows items."""
        command = ["gdbus", "call", "--session", "--dest", "org.kde.StatusNotifierWatcher",
                   "--object-path", "/StatusNotifierWatcher", "--method",
                   "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierWatcher",
                   "IsStatusNotifierHostRegistered"]
        asked = subprocess.run(["timeout", "20", *command], env=self._user.environment(),
                               capture_output=True, text=True)
        return "true" in asked.stdout

    def awaitIcons(self, count):
        """Where they are, then: the panel has no window for them now and then."""
        def tray():
            area = self._tray()
            return area if area.width // _sizeOfSlot == count else None
        return awaitCondition(tray, lambda: f"not {count} icons: {self._tray()}")

    def count(self):
        """How many icons it shows now."""
        return self._tray().width // _sizeOfSlot

    def slots(self, count=1):
        """The places of the icons from left to right, once there are as many as `count`."""
        tray = self.awaitIcons(count)
        return [Area(tray.x + tray.width - _sizeOfSlot * (count - number), tray.y, _sizeOfSlot,
                     tray.height) for number in range(count)]

    def _tray(self):
        return next(iter(self._windows(None)), Area(0, 0, 0, 0))

    def point(self, area):
        self._xdotool("mousemove", str(area.x + area.width // 2), str(area.y + area.height // 2))

    def pointAway(self):
        self._xdotool("mousemove", "20", "500")

    def openMenu(self, slot=None, button=1):
        """Clicks on an icon, the only one when none is given."""
        self.point(slot or self.slots()[0])
        self._xdotool("click", str(button))
        return Menu(self, self._await("POPUP_MENU"))

    def awaitToolTip(self, slot=None):
        slot = slot or self.slots()[0]
        pointed = 0

        # The panel starts to wait when the pointer moves over an icon, which one that has just come
        # may be too late for.
        def shown():
            nonlocal pointed
            if time.monotonic() > pointed + 3:
                self.pointAway()
                self.point(slot)
                pointed = time.monotonic()
            return self._windows("TOOLTIP")
        return awaitCondition(shown, lambda: "there is no tool tip")[0]

    def hasToolTip(self):
        return bool(self._windows("TOOLTIP"))

    def hasMenu(self):
        return bool(self._windows("POPUP_MENU") + self._windows("DROPDOWN_MENU"))

    def press(self, *keys):
        self._xdotool("key", "--clearmodifiers", *keys)

    def clickAt(self, x, y):
        self._xdotool("mousemove", str(x), str(y), "click", "1")

    def picture(self, area):
        file = self._user.temporary / "picture.rgb"
        crop = f"{area.width}x{area.height}+{area.x}+{area.y}"
        self._user.run("import", "-window", "root", "-crop", crop, "+repage", "-depth", "8",
                       f"rgb:{file}")
        data = file.read_bytes()
        file.unlink()
        return Picture(area.width, data)

    def _await(self, kind):
        found = awaitCondition(lambda: self._windows(kind), lambda: f"there is no {kind} window")
        return found[0]

    def _windows(self, kind):
        """The windows of the program that shows the items that are of a kind; None is the one in
        the panel."""
        listed = subprocess.run(["timeout", "20", "xdotool", "search", "--onlyvisible", "--class",
                                 "wrapper-2.0"], env=self._user.environment(), capture_output=True,
                                text=True).stdout.split()
        return [area for window in listed if (area := self._areaOf(window, kind))]

    def _areaOf(self, window, kind):
        told = subprocess.run(["timeout", "20", "xwininfo", "-id", window],
                              env=self._user.environment(), capture_output=True, text=True).stdout
        values = dict(re.findall(r"^ +([A-Z].*?): +(\S+)$", told, re.MULTILINE))
        if values.get("Map State") != "IsViewable":
            return None  # it has been closed since it was listed
        kinds = subprocess.run(["timeout", "20", "xprop", "-id", window, "_NET_WM_WINDOW_TYPE"],
                               env=self._user.environment(), capture_output=True, text=True).stdout
        isIn = f"_TYPE_{kind}" in kinds if kind else values["Override Redirect State"] == "no"
        area = Area(*(int(values[name]) for name in ("Absolute upper-left X",
                                                     "Absolute upper-left Y", "Width", "Height")))
        return area if isIn and area.width > 10 else None

    def _xdotool(self, *words):
        self._user.run("timeout", "20", "xdotool", *words)


class Menu:
    """An item's open menu."""

    def __init__(self, panel, area):
        self._panel = panel
        self.area = area

    def rowOf(self, row):
        """How far below the menu's upper edge the middle of "heading", "Show" or "Quit" is."""
        if row in _rowsFromTop:
            return _rowsFromTop[row]
        return self.area.height - _rowsFromBottom[row]

    def click(self, row):
        self._panel.clickAt(self.area.x + self.area.width // 2, self.area.y + self.rowOf(row))

    def picture(self):
        return self._panel.picture(self.area)

    def close(self):
        self._panel.press("Escape")
        awaitCondition(lambda: not self._panel.hasMenu(), lambda: "the menu does not close")
