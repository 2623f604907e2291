"""Tests with instances of web sites: a user who is logged in to a desktop with a notification
server, a site, and wrappers that are laid out by hand, so that any configuration can be tried."""

import dataclasses
import functools
import html
import itertools
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys

from BusMonitor import BusMonitor
from Desktop import awaitCondition
from Instances import SharingDesktop
from WebSite import Port, Site

notifications = "org.freedesktop.Notifications"
launcher = "com.canonical.Unity.LauncherEntry"
_numbers = itertools.count(1)


@dataclasses.dataclass(frozen=True)
class Banner:
    summary: str
    body: str  # as it is sent: a server that knows markup is sent markup


class WebTests(SharingDesktop):
    """Each test has a site and instances of its own."""

    desktopOptions = ["--notifications"]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if not sandboxWorks():
            print(f"{cls.__name__}: bwrap cannot work here, the engine runs without its sandbox",
                  file=sys.stderr)
            cls.user.session["WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS"] = "1"
        cls.bus = BusMonitor(cls.user, f"interface='{notifications}'",
                             f"type='signal',interface='{launcher}'")
        cls.addClassCleanup(cls.bus.close)

    def setUp(self):
        self.site = self.newSite()

    def newSite(self, certificate=None, port=0):
        site = Site(certificate, port)
        self.addCleanup(site.close)
        return site

    @classmethod
    def newInstance(cls, url=None, **configuration):
        return WebInstance(cls.user, cls.desktop, cls.bus, url, **configuration)

    def instance(self, url=None, **configuration):
        made = self.newInstance(url, **configuration)
        self.addCleanup(made.end)
        return made

    def startedAt(self, path="/", **configuration):
        """An instance of the site's page, which has been asked for."""
        instance = self.instance(self.site.url(path), **configuration)
        number = len(self.site.requestsOf(path)) + 1
        instance.start()
        self.site.awaitRequests(path, instance, number)
        return instance

    def startedAtPort(self, address):
        """A port that never answers, and an instance that has connected to it.

        The number of the port goes into the address where {} stands.
        """
        port = Port()
        self.addCleanup(port.close)
        instance = self.instance(address.format(port.number))
        instance.start()
        awaitCondition(lambda: port.heard, lambda: "nobody connects")
        return port, instance


@functools.cache
def sandboxWorks():
    probe = ["bwrap", "--ro-bind", "/", "/", "--proc", "/proc", "--dev", "/dev", "--unshare-all",
             "/bin/true"]
    return subprocess.run(probe, capture_output=True).returncode == 0


class WebInstance:
    def __init__(self, user, desktop, bus, url, **configuration):
        number = next(_numbers)
        self._user = user
        self._desktop = desktop
        self._bus = bus
        self._process = None
        self.name = configuration.get("displayName", f"Site {number}")
        self.identifier = f"app.korvane.instance.site-{number}"
        self.home = user.home / "KorvaneInstances" / f"Site {number}"
        self.configuration = {
            "kind": "web", "displayName": self.name, "bundleId": self.identifier,
            "instanceHome": f"~/KorvaneInstances/Site {number}", **configuration}
        if url is not None:
            self.configuration["url"] = url
        self.program = user.root / "wrappers" / f"{number}.app" / "Contents" / "MacOS" / "runner"

    def write(self):
        self.program.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(os.environ["KORVANE_RUNNER"], self.program)
        file = self.program.parents[1] / "Resources" / "instance.json"
        file.parent.mkdir(exist_ok=True)
        file.write_text(json.dumps(self.configuration))

    def start(self, *wrapper, **environment):
        """A variable that is None is taken away."""
        self.write()
        taken = [f"--unset={name}" for name, value in environment.items() if value is None]
        given = [f"{name}={value}" for name, value in environment.items() if value is not None]
        self._process = self._user.start(*wrapper, "env", *taken, *given, self.program)

    def run(self, *wrapper, **environment):
        """The status, standard output and standard error of one that ends by itself."""
        self.start(*wrapper, **environment)
        return self.ended()

    def ended(self):
        awaitCondition(lambda: self._process.poll() is not None,
                       lambda: f"{self.name} does not end")
        process, self._process = self._process, None
        output, errors = process.communicate()
        return process.returncode, output, errors

    def end(self, number=signal.SIGTERM):
        """What ended() tells after the signal; nothing happens when it does not run.

        On standard error the engine may complain of what was still being loaded.
        """
        if not self._process:
            return None
        if self._process.poll() is None:
            try:
                os.kill(self.pid(), number)
            except (OSError, AssertionError):
                self._process.terminate()
        return self.ended()

    def assertRuns(self):
        if self._process.poll() is not None:
            raise AssertionError(f"{self.name} has ended: {self.ended()}")

    def pid(self):
        """Of the runner itself, which others may have started."""
        return awaitCondition(
            lambda: next((child for child in descendants(self._process.pid)
                          if _programOf(child) == str(self.program)), None),
            lambda: f"no runner below {self._process.pid}")

    def windows(self):
        """Those with pages, and none that ask something on behalf of another."""
        self._desktop.awaitWindows({self.name: self._process})
        return self._windowsWhoseOwnerIs("not found")

    def questions(self):
        """The windows that do."""
        return self._windowsWhoseOwnerIs("window id")

    def _windowsWhoseOwnerIs(self, told):
        # Of a window that has been closed since it was listed neither is told.
        return [window for window in self._desktop.windowsOf({"": self._process})[""]
                if told in self._desktop.ownerOf(window)]

    def window(self):
        """The only window."""
        windows = self.windows()
        if len(windows) != 1:
            raise AssertionError(f"not one window: {windows}")
        return windows[0]

    def title(self):
        return self._desktop.titleOf(self.window())[1:-1]

    def awaitTitle(self, title):
        awaitCondition(lambda: self.title() == title,
                       lambda: f"the title is {self.title()!r} and not {title!r}")

    def log(self):
        file = self.home / "korvane-instance.log"
        return wholeLines(file) if file.is_file() else ""

    def lines(self):
        return self.log().split("\n")[:-1]

    def linesUntil(self, last, first=None):
        """The lines of the log before `last`, and after `first`, as soon as that is written."""
        awaitCondition(lambda: last in self.lines() or self._process and self.assertRuns(),
                       lambda: f"no line {last!r} in {self.log()[-2000:]!r}")
        lines = self.lines()
        lines = lines[:lines.index(last)]
        return lines[lines.index(first) + 1:] if first else lines

    def banners(self):
        return [Banner(*sent.body[3:5]) for sent in self.notifications()]

    def notifications(self):
        return [sent for sent in self._bus.messages(notifications, "Notify")
                if sent.kind == BusMonitor.call and sent.body[6].get("desktop-entry") ==
                self.identifier]

    def awaitBanner(self, summary):
        """The banner of this title, as it is shown to a person who cannot see markup."""
        found = awaitCondition(
            lambda: next((banner for banner in self.banners() if banner.summary == summary), None),
            lambda: f"no banner {summary!r} in {self.banners()}")
        return Banner(found.summary, html.unescape(found.body))

    def badges(self):
        """The numbers that docks have been told one after another; None where there is none."""
        told = [sent.body for sent in self._bus.messages(launcher, "Update")]
        return [properties.get("count") if properties["count-visible"] else None
                for uri, properties in told if uri == f"application://{self.identifier}.desktop"]

    def awaitBadge(self, badge):
        awaitCondition(lambda: self.badges()[-1:] == [badge],
                       lambda: f"the badge is not {badge}: {self.badges()}")

    def press(self, *keys):
        self._xdotool("windowactivate", "--sync", str(int(self.window().identifier, 16)),
                      "key", "--clearmodifiers", *keys)

    def type(self, text):
        self._xdotool("type", "--clearmodifiers", text)

    def click(self, button=1, x=580, y=390):
        window = str(int(self.window().identifier, 16))
        self._xdotool("windowactivate", "--sync", window,
                      "mousemove", "--window", window, str(x), str(y), "click", str(button))

    def close(self):
        """What a click on the window's cross does."""
        self._user.run("wmctrl", "-i", "-c", self.window().identifier)

    def frame(self):
        """The place of the window's content on the screen, and its size."""
        told = self._user.run("xwininfo", "-id", self.window().identifier)
        values = dict(line.strip().rsplit(": ", 1) for line in told.splitlines() if ": " in line)
        return tuple(int(values[name]) for name in ("Absolute upper-left X",
                                                    "Absolute upper-left Y", "Width", "Height"))

    def awaitPicture(self):
        """Waits until there is more in the window than a few colours."""
        awaitCondition(lambda: self._colours() > 8,
                       lambda: f"colours in the window: {self._colours()}")

    def awaitEmptiness(self):
        """Waits until there is nothing in the window."""
        awaitCondition(lambda: self._colours() == 1,
                       lambda: f"colours in the window: {self._colours()}")

    def _colours(self):
        return int(self._user.run("import", "-window", self.window().identifier, "-format", "%k",
                                  "info:"))

    def _xdotool(self, *words):
        self._user.run("timeout", "20", "xdotool", *words)


def wholeLines(file):
    """What a file holds to which more is being written, which may stop amid a character."""
    held = pathlib.Path(file).read_bytes()
    return held[:held.rfind(b"\n") + 1].decode()


def descendants(process):
    """The processes that the process has started, and theirs."""
    found = []
    for file in pathlib.Path(f"/proc/{process}/task").glob("*/children"):
        try:
            children = [int(word) for word in file.read_text().split()]
        except OSError:
            continue
        for child in children:
            found += [child, *descendants(child)]
    return found


def _programOf(process):
    try:
        return os.readlink(f"/proc/{process}/exe")
    except OSError:
        return None


def pressAnywhere(user, *keys):
    """In whatever window has the focus: a question may have one of its own."""
    user.run("timeout", "20", "xdotool", "key", "--clearmodifiers", *keys)
