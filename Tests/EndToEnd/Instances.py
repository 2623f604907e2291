"""Tests with instances, of a user who may be logged in to a desktop session."""

import configparser
import json
import os
import pathlib
import unittest

from Desktop import Desktop
from EndToEnd import User

# Where the manager puts what it makes. It lies there on behalf of the user.
placesOfTheManager = ["KorvaneInstances", "Applications", ".local/share/applications",
                      ".local/share/icons", ".local/share/korvane"]


class WithInstances(unittest.TestCase):
    def setUp(self):
        self.user = User()
        self.addCleanup(self.user.remove)

    def adopt(self, program):
        return self.user.korvane("adopt", program).rstrip("\n")

    def create(self, name, app, *arguments):
        made = self.user.korvane("create", "app", name, app, "--json", "--runner",
                                 os.environ["KORVANE_RUNNER"], *arguments)
        return json.loads(made)

    def runInstance(self, name, status=0):
        """Runs one that ends by itself, and returns all that it has printed since it was made."""
        self.user.korvane("run", name, status=status)
        return self.log(name)

    def home(self, name):
        return self.user.home / "KorvaneInstances" / name

    def log(self, name):
        log = self.home(name) / "korvane-instance.log"
        return log.read_text(errors="replace") if log.exists() else ""

    def show(self, name):
        return json.loads(self.user.korvane("show", name, "--json"))

    def desktopEntry(self, name):
        entry = configparser.RawConfigParser(interpolation=None)
        entry.optionxform = str  # keys keep their capital letters
        entry.read_string(pathlib.Path(self.show(name)["desktopEntry"]).read_text())
        return entry["Desktop Entry"]


class InDesktop(WithInstances):
    def setUp(self):
        super().setUp()
        self._started = []
        self.desktop = Desktop(self.user, self.sessionWrapper())
        self.addCleanup(self.endSession)

    def sessionWrapper(self):
        """A command that the session is started through."""
        return []

    def endSession(self):
        """Ends the session with whatever is left in it; nothing happens the second time."""
        if self.desktop:
            self.desktop.close()
            self.desktop = None
        while self._started:
            self._started.pop().communicate()

    def start(self, *command):
        process = self.user.start(*command)
        self._started.append(process)
        return process

    def startInstance(self, name):
        return self.start(os.environ["KORVANE"], "run", name)


class SharingDesktop(unittest.TestCase):
    """The tests of a class share one user and one session: it takes longer than most of them."""

    desktopOptions = []  # those of run-in-desktop

    @classmethod
    def prepareUser(cls):
        """What the user has before the session is there, such as services."""

    @classmethod
    def setUpClass(cls):
        cls.user = User()
        cls.addClassCleanup(cls.user.remove)
        cls.prepareUser()
        cls.desktop = Desktop(cls.user, options=cls.desktopOptions)
        cls.addClassCleanup(cls.desktop.close)
