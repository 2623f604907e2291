"""Tests with status items: instances of small programs, their items as panels are told of them, and
a user who is logged in to a desktop with a real panel."""

import itertools
import json
import os
import pathlib
import signal

from BusClient import BusClient, BusError
from Desktop import awaitCondition
from Instances import SharingDesktop
from Panel import Panel

watcher = "org.kde.StatusNotifierWatcher"
itemInterface = "org.kde.StatusNotifierItem"
menuInterface = "com.canonical.dbusmenu"
_bus = "org.freedesktop.DBus"
_numbers = itertools.count(1)

# Writes every signal that it is sent into the log, and ends with the status that it reads.
_recorder = """#!/usr/bin/env python3
import os, signal, sys

def note(number, frame):
    print(signal.Signals(number).name, flush=True)

for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
    signal.signal(number, note)
print("ready", flush=True)
with open(sys.argv[1]) as orders:
    sys.exit(int(orders.readline()))
"""


class StatusItemTests(SharingDesktop):
    """Each test has instances of its own."""

    desktopOptions = ["--panel"]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.bus = BusClient(cls.user.session["DBUS_SESSION_BUS_ADDRESS"])
        cls.addClassCleanup(cls.bus.close)
        cls.panel = Panel(cls.user)
        cls.addClassCleanup(cls.panel.close)

    def instance(self, *command, options=("--menu-bar",), **configuration):
        """An instance that runs the command."""
        made = ProgramInstance(self.user, command, options, **configuration)
        self.addCleanup(made.end)
        return made

    def started(self, *command, **configuration):
        """An instance that runs the command, and its item."""
        made = self.instance(*command, **configuration)
        made.start()
        return made, self.itemOf(made)

    def recording(self, **configuration):
        """An instance of a program that writes what signals it is sent into the log."""
        program = self.program(_recorder)
        orders = pathlib.Path(f"{program}.orders")
        os.mkfifo(orders)
        made = self.instance(program, orders, **configuration)
        made.orders = orders
        return made

    def startedRecording(self, **configuration):
        made = self.recording(**configuration)
        made.start()
        item = self.itemOf(made)
        made.awaitLog("ready\n")
        return made, item

    def program(self, text):
        """An executable file with this text."""
        file = self.user.root / "programs" / f"program-{next(_numbers)}"
        file.parent.mkdir(exist_ok=True)
        file.write_text(text)
        file.chmod(0o755)
        return file

    def itemOf(self, instance):
        return awaitItem(self.bus, instance)

    def assertNoItems(self):
        awaitNoItems(self.bus, self.panel)


def awaitItem(bus, instance):
    """The item of an instance that runs, once it has one."""
    return awaitCondition(
        lambda: next(iter(itemsOf(bus, instance.pid())), None) or instance.assertRuns(),
        lambda: f"{instance.name} has no item among {registeredItems(bus)}")


def awaitNoItems(bus, panel):
    awaitCondition(lambda: not registeredItems(bus),
                   lambda: f"there are still {registeredItems(bus)}")
    panel.awaitIcons(0)


def registeredItems(bus):
    """What the panel shows, as the watcher tells it; nothing where there is no watcher."""
    try:
        [items] = bus.ask(watcher, "/StatusNotifierWatcher", f"{_bus}.Properties", "Get", "ss",
                          watcher, "RegisteredStatusNotifierItems")
    except BusError:
        return []
    return items


def itemsOf(bus, process):
    """The items of a process."""
    found = []
    for told in registeredItems(bus):
        name, slash, path = told.partition("/")
        try:
            [owner] = bus.ask(_bus, "/", _bus, "GetConnectionUnixProcessID", "s", name)
        except BusError:
            continue  # it has ended since it was listed
        if owner == process:
            found.append(Item(bus, name, slash + path))
    return found


class Item:
    """What a panel learns of an item, and does to it."""

    def __init__(self, bus, name, path):
        self._bus = bus
        self.name = name
        self.path = path

    def properties(self):
        return self._ask(self.path, f"{_bus}.Properties", "GetAll", "s", itemInterface)[0]

    def ask(self, member, signature="", *arguments):
        return self._ask(self.path, itemInterface, member, signature, *arguments)

    def askMenu(self, member, signature="", *arguments):
        return self._ask(self.properties()["Menu"], menuInterface, member, signature, *arguments)

    def menuProperties(self):
        return self._ask(self.properties()["Menu"], f"{_bus}.Properties", "GetAll", "s",
                         menuInterface)[0]

    def _ask(self, *words):
        return self._bus.ask(self.name, *words)

    def entries(self):
        """The menu's entries from top to bottom: the number and the properties of each."""
        _, (_, _, children) = self.askMenu("GetLayout", "iias", 0, -1, [])
        return [(number, properties) for number, properties, _ in children]

    def numberOf(self, label):
        """The number of the entry with this label, as a person sees it."""
        shown = {properties.get("label", "").replace("__", "_"): number
                 for number, properties in self.entries()}
        return shown[label]

    def choose(self, label):
        """Chooses an entry as panels do."""
        self.click(self.numberOf(label))

    def click(self, number):
        self.askMenu("Event", "isvu", number, "clicked", ("i", 0), 0)

    def isThere(self):
        return f"{self.name}{self.path}" in registeredItems(self._bus)


class ProgramInstance:
    """An instance of a command; of its configuration what is given is replaced."""

    def __init__(self, user, command, options, **configuration):
        self._user = user
        self._process = None
        self._given = f"Item {next(_numbers)}"
        self.name = configuration.get("displayName", self._given)
        made = user.korvane("create", "command", self._given, "--runner",
                            os.environ["KORVANE_RUNNER"], *options, *command)
        self.bundle = pathlib.Path(made.rstrip("\n"))
        self.resources = self.bundle / "Contents" / "Resources"
        self.executable = self.bundle / "Contents" / "MacOS" / "runner"
        self.home = user.home / "KorvaneInstances" / self._given
        file = self.resources / "instance.json"
        self.configuration = json.loads(file.read_text()) | configuration
        file.write_text(json.dumps(self.configuration))

    def start(self, *wrapper, **environment):
        """`wrapper` is a command that becomes the runner; a variable that is None is taken away."""
        taken = [f"--unset={name}" for name, value in environment.items() if value is None]
        given = [f"{name}={value}" for name, value in environment.items() if value is not None]
        self._process = self._user.start("env", *taken, *given, *wrapper, self.executable)

    def run(self, *wrapper, **environment):
        """The status, standard output and standard error of one that ends by itself."""
        self.start(*wrapper, **environment)
        return self.ended()

    def pid(self):
        return awaitCondition(lambda: childrenOf(self._process.pid) or self.assertRuns(),
                              lambda: f"no runner below {self._process.pid}")[0]

    def programPid(self):
        """Of the program that the runner has started."""
        return awaitCondition(lambda: childrenOf(self.pid()) or self.assertRuns(),
                              lambda: f"no program below {self.pid()}")[0]

    def isRunning(self):
        return self._process.poll() is None

    def assertRuns(self):
        if not self.isRunning():
            raise AssertionError(f"{self.name} has ended: {self.ended()}, {self.log()}")

    def signal(self, number):
        os.kill(self.pid(), number)

    def finish(self, status):
        """Lets a recording program end."""
        with open(self.orders, "w") as orders:
            orders.write(f"{status}\n")

    def ended(self):
        awaitCondition(lambda: not self.isRunning(), lambda: f"{self.name} does not end")
        process, self._process = self._process, None
        output, errors = process.communicate()
        return process.returncode, output, errors

    def end(self):
        """Ends what may be left of it."""
        if not self._process:
            return
        for process in descendants(self._process.pid):
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        self.ended()

    def log(self):
        file = self.home / "korvane-instance.log"
        return file.read_text(errors="replace") if file.exists() else ""

    def awaitLog(self, text):
        awaitCondition(lambda: self.log() == text or (self._process and self.assertRuns()),
                       lambda: f"the log of {self.name} is {self.log()!r} and not {text!r}")


def childrenOf(process):
    found = []
    for file in pathlib.Path(f"/proc/{process}/task").glob("*/children"):
        try:
            found += map(int, file.read_text().split())
        except OSError:
            pass  # it has ended meanwhile
    return found


def descendants(process):
    found = []
    for child in childrenOf(process):
        found += [child, *descendants(child)]
    return found
