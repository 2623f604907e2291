"""Tests with instances that have names of their own on the session's bus: what is started in them,
services for their programs, and a look at the bus from the inside and from the outside."""

import itertools
import json
import os
import pathlib
import signal
import socket

from BusPeer import BusPeer
from Desktop import ancestorsOf, awaitCondition, isRunning
from Instances import SharingDesktop
from StatusItems import descendants

letters = "app.korvane.test.Letters"  # a name that programs of the tests ask for
post = "app.korvane.test.Post"        # an interface of theirs
_numbers = itertools.count(1)

# Does what it is told over the socket that its argument names: runs commands and ends. Tells its
# environment first, and every signal that it is sent.
_agent = """#!/usr/bin/env python3
import json, os, signal, socket, subprocess, sys

def tell(**what):
    os.write(connection.fileno(), json.dumps(what).encode() + b"\\n")

def note(number, frame):
    tell(signal=signal.Signals(number).name)

connection = socket.socket(socket.AF_UNIX)
connection.connect(sys.argv[1])
for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGUSR1):
    signal.signal(number, note)
tell(pid=os.getpid(), environment=dict(os.environ))
for line in connection.makefile("r"):
    order = json.loads(line)
    if "end" in order:
        print("the last words", flush=True)
        sys.exit(order["end"])
    done = subprocess.run(order["run"], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=100)
    tell(status=done.returncode, output=done.stdout, errors=done.stderr)
"""

# Owns the name in its second argument, and answers to it as GIO does. Leaves its process and its
# environment in a file of its home that the name names, and first runs the rest as a command.
_service = """#!/usr/bin/python3
import json, os, pathlib, subprocess, sys
from gi.repository import Gio, GLib

name = sys.argv[1]
told = {"pid": os.getpid(), "environment": dict(os.environ), "folder": os.getcwd()}
subprocess.run(sys.argv[2:], check=True) if sys.argv[2:] else None
def acquired(connection, name):
    file = pathlib.Path(os.environ["HOME"], name + ".json")
    file.with_suffix(".new").write_text(json.dumps(told))
    file.with_suffix(".new").rename(file)
Gio.bus_own_name(Gio.BusType.SESSION, name, Gio.BusNameOwnerFlags.NONE, None, acquired,
                 lambda *_: os._exit(9))
GLib.MainLoop().run()
"""


class OwnNamesTests(SharingDesktop):
    """Each test has instances of its own."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.app = cls.user.korvane("adopt", writeProgram(cls.user, "agent", _agent)).rstrip("\n")

    def setUp(self):
        self.outside = self.peer(self.user.session["DBUS_SESSION_BUS_ADDRESS"])

    def peer(self, address, **more):
        """A program on the bus at this address."""
        made = BusPeer(address, **more)
        self.addCleanup(made.close)
        return made

    def instance(self, *options, app=None, name=None):
        """One of the agent, or of an application that is given its arguments."""
        made = BusInstance(self.user, app or self.app, options, name)
        self.addCleanup(made.end)
        return made

    def started(self, *options, **environment):
        """The agent in a new instance."""
        return self.instance(*options).start(**environment)

    def startedApart(self, *options, **environment):
        """The agent in a new instance that has names of its own."""
        agent = self.started(*options, **environment)
        self.assertApart(agent)
        return agent

    def inside(self, agent, **more):
        """A program on the bus of an agent's instance."""
        return self.peer(agent.address, **more)

    def assertApart(self, agent):
        """What looks the same inside as outside tells nothing of an agent on the session's bus."""
        self.assertNotEqual(agent.address, self.user.session["DBUS_SESSION_BUS_ADDRESS"])


def writeProgram(user, name, text):
    """An executable file with this text."""
    file = user.root / "programs" / name
    file.parent.mkdir(exist_ok=True)
    file.write_text(text)
    file.chmod(0o755)
    return file


def writeService(user, name, command=None, data=None):
    """A service that programs of tests can have started; `command` is run in its place, or by the
    program that owns the name, first, when it is a list. `data` is the folder of an instance."""
    program = writeProgram(user, "service", _service)
    if not isinstance(command, str):
        command = " ".join(map(str, [program, name, *(command or [])]))
    folder = (data or user.home / ".local" / "share") / "dbus-1" / "services"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / f"{name}.service").write_text(f"[D-BUS Service]\nName={name}\nExec={command}\n")


def serviceIn(home, name):
    """What the service has left in this home, once it is there."""
    file = pathlib.Path(home, f"{name}.json")
    awaitCondition(file.exists, lambda: f"{name} has left nothing in {home}")
    return json.loads(file.read_text())


class BusInstance:
    """An instance of the agent, which can be started more than once."""

    def __init__(self, user, app, options, name=None):
        self._user = user
        self._agents = []
        self._starts = []
        number = next(_numbers)
        self.name = name or f"Bus {number}"
        self._path = user.root / f"{number}.socket"
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(str(self._path))
        self._listener.listen(100)
        self._listener.settimeout(0)
        made = json.loads(user.korvane("create", "app", self.name, app, "--json", "--runner",
                                       os.environ["KORVANE_RUNNER"], f"--add-arg={self._path}",
                                       *options))
        self.home = pathlib.Path(made["home"])
        self.executable = pathlib.Path(made["bundle"], "Contents", "MacOS", "runner")

    def begin(self, *command, **environment):
        """A start by `command`, or by the runner itself. A variable that is None is taken away."""
        taken = [f"--unset={name}" for name, value in environment.items() if value is None]
        given = [f"{name}={value}" for name, value in environment.items() if value is not None]
        self._starts.append(self._user.start("env", *taken, *given,
                                             *(command or [self.executable])))

    def start(self, *command, **environment):
        self.begin(*command, **environment)
        return self.agent()

    def run(self):
        """A start by the manager, which waits for the end."""
        return self.start(os.environ["KORVANE"], "run", self.name)

    def agent(self):
        """The one that a start has led to."""
        def connection():
            try:
                return self._listener.accept()[0]
            except BlockingIOError:
                last = self._starts[-1]
                if last.poll() is None:
                    return None
                raise AssertionError(f"{self.name} has ended: {last.communicate()}") from None
        made = Agent(awaitCondition(connection, lambda: f"{self.name} tells nothing"),
                     self._starts, str(self._user.root))
        self._agents.append(made)
        return made

    def end(self):
        for agent in self._agents:
            agent.kill()
        for process in self._starts:
            if not process.stdout.closed:
                process.communicate()
        self._listener.close()


class Agent:
    """A program that runs in an instance and does what it is told."""

    def __init__(self, connection, starts, mark):
        """`mark` is in the environment of whatever may be ended."""
        connection.settimeout(100)
        self._connection = connection
        self._lines = connection.makefile("r")
        self._mark = mark
        told = self._next()
        self.pid = told["pid"]
        self.environment = told["environment"]
        self.address = self.environment.get("DBUS_SESSION_BUS_ADDRESS")
        above = ancestorsOf(self.pid)
        self._process = next(start for start in starts if start.pid in above)
        # From its parent to the process that was started here.
        self._above = above[1:above.index(self._process.pid) + 1]
        self._left = []

    def parent(self):
        return self._above[0]

    def runner(self):
        """What was started, and passes signals and the status on."""
        return next(process for process in reversed(self._above)
                    if os.readlink(f"/proc/{process}/exe").endswith("/runner"))

    def begin(self, *command):
        """Lets it run a command, for which finish() waits."""
        self._order(run=[str(word) for word in command])

    def finish(self, status=0):
        done = self._next()
        if done["status"] != status:
            raise AssertionError(f"the command ended with {done}")
        return done["output"]

    def run(self, *command, status=0):
        """The output of a command that has to end with `status`."""
        self.begin(*command)
        return self.finish(status)

    def awaitSignal(self):
        return self._next()["signal"]

    def leave(self, status=0):
        """Lets it end with this status."""
        self._left = descendants(self._process.pid)
        self._order(end=status)

    def ended(self):
        """The status of the start, its output and its errors."""
        output, errors = self._process.communicate()
        return self._process.returncode, output, errors

    def isRunning(self):
        return self._process.poll() is None

    def kill(self):
        """Ends what may be left of it, and of what it has started."""
        left = {*self._left, *self._above, self.pid}
        for process in list(left):
            left.update(descendants(process))
        for process in left:
            if self._isOfTheTests(process):
                _kill(process)
        self._lines.close()
        self._connection.close()

    def _isOfTheTests(self, process):
        """Whether it is not another one that has got its number since."""
        try:
            environment = pathlib.Path(f"/proc/{process}/environ").read_bytes()
        except OSError:
            return False
        return self._mark.encode() in environment

    def _order(self, **what):
        self._connection.sendall(json.dumps(what).encode() + b"\n")

    def _next(self):
        line = self._lines.readline()
        if not line:
            raise AssertionError("the agent has ended")
        return json.loads(line)


def _kill(process):
    try:
        os.kill(process, signal.SIGKILL)
    except ProcessLookupError:
        pass


def awaitEnd(process):
    awaitCondition(lambda: not isRunning(process), lambda: f"{process} does not end")
