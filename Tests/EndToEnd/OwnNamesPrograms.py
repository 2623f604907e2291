#!/usr/bin/env python3
"""Programs that hand a second start over to the first: the user's own copy and two instances."""

import os
import unittest

from Desktop import awaitCondition, isRunning
from Instances import InDesktop
from OwnNames import letters, writeProgram

# An application as GLib makes them: the first start stays, and a later one tells it what to open.
# Writes into its home what it was told, and by which process.
_letters = """#!/usr/bin/python3
import os, sys
from gi.repository import Gio

def note(*words):
    with open(os.path.join(os.environ["HOME"], "letters.txt"), "a") as file:
        print(os.getpid(), *words, file=file)

def opened(application, files, count, hint):
    note("opened", *[file.get_path() for file in files])

application = Gio.Application(application_id=sys.argv[1], flags=Gio.ApplicationFlags.HANDLES_OPEN)
action = Gio.SimpleAction.new("quit")
action.connect("activate", lambda *_: (note("quits"), application.quit()))
application.add_action(action)
application.connect("startup", lambda *_: (note("started"), application.hold()))
application.connect("activate", lambda *_: note("activated"))
application.connect("open", opened)
sys.exit(application.run([sys.argv[0], *sys.argv[2:]]))
"""


class OneByOne(InDesktop):
    """Starts after which there is something to see."""

    names = ["One", "Two"]

    def setUp(self):
        super().setUp()
        self.program = writeProgram(self.user, "letters", _letters)
        entries = self.user.home / ".local" / "share" / "applications"
        entries.mkdir(parents=True, exist_ok=True)
        (entries / f"{letters}.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=Letters\nMimeType=text/plain;\n"
            f"Exec={self.program} {letters} %U\n")
        app = self.adopt(letters)
        for name in self.names:
            self.create(name, app, "--open-with")

    def notes(self, copy):
        """What a copy has written: its process, and what it was told."""
        home = self.user.home if copy == "own" else self.home(copy)
        file = home / "letters.txt"
        lines = [line.split(" ", 1) for line in file.read_text().splitlines()] \
            if file.exists() else []
        return {int(process) for process, _ in lines}, [told for _, told in lines]

    def begin(self, copy, *words):
        if copy == "own":
            return self.start(self.program, letters, *words)
        return self.start(os.environ["KORVANE"], "run", copy)

    def beginAndAwait(self, copy):
        process = self.begin(copy)
        awaitCondition(lambda: self.notes(copy)[1] == ["started", "activated"]
                       or process.poll() is not None,
                       lambda: f"{copy} has {self.notes(copy)}")
        self.assertEqual(self.notes(copy)[1], ["started", "activated"],
                         f"{copy} ended with {process.poll()}")
        return process

    def awaitNotes(self, copy, *expected):
        """Until a copy has written this; a start that hands over to it does not wait for it."""
        awaitCondition(lambda: self.notes(copy)[1] == list(expected),
                       lambda: f"{copy} has {self.notes(copy)}, not {expected}")

    def test_each_start_opens_a_copy_of_its_own_and_a_second_reaches_it(self):
        for order in (["own", "One", "Two"], ["Two", "One", "own"]):
            with self.subTest(order):
                starts = {copy: self.beginAndAwait(copy) for copy in order}

                for copy in order:
                    second = self.begin(copy)
                    self.assertEqual(second.communicate(), ("", ""))
                    self.assertEqual(second.returncode, 0)
                    self.awaitNotes(copy, "started", "activated", "activated")
                    self.assertEqual(len(self.notes(copy)[0]), 1)

                self.assertEqual([start.poll() for start in starts.values()], [None] * 3)
                self.endAll(starts)

    def endAll(self, starts):
        for copy, start in starts.items():
            for process in self.notes(copy)[0]:
                os.kill(process, 15)
            start.communicate()
            home = self.user.home if copy == "own" else self.home(copy)
            (home / "letters.txt").unlink()

    def test_a_file_is_opened_by_the_copy_that_it_was_given_to(self):
        for copy in ["own", *self.names]:
            self.beginAndAwait(copy)
        letter = self.user.home / "Documents" / "note.txt"

        self.begin("own", letter).communicate()
        self.start("gio", "launch", self.show("One")["desktopEntry"], letter)
        awaitCondition(lambda: self.notes("One")[1][2:], lambda: "One is told nothing")

        self.awaitNotes("own", "started", "activated", f"opened {letter}")
        self.assertEqual(self.notes("Two")[1][2:], [])
        [told] = self.notes("One")[1][2:]
        self.assertEqual(os.path.realpath(told.removeprefix("opened ")), str(letter))

    def test_an_action_of_the_users_reaches_the_users_copy(self):
        starts = {copy: self.beginAndAwait(copy) for copy in ["own", *self.names]}

        self.user.run("gapplication", "action", letters, "quit")

        self.assertEqual(starts["own"].communicate(), ("", ""))
        self.assertEqual(self.notes("own")[1][2:], ["quits"])
        for name in self.names:
            self.assertIsNone(starts[name].poll())
            self.assertEqual(self.notes(name)[1][2:], [])

    def test_an_instance_outlives_the_users_copy_and_the_user_has_a_new_one_then(self):
        starts = {copy: self.beginAndAwait(copy) for copy in ["own", "One"]}
        self.user.run("gapplication", "action", letters, "quit")
        starts.pop("own").communicate()
        (self.user.home / "letters.txt").unlink()

        self.beginAndAwait("own")

        self.assertIsNone(starts["One"].poll())
        self.assertEqual(self.notes("One")[1][2:], [])

    def test_entries_of_instances_are_started_and_not_called(self):
        entry = self.user.home / ".local" / "share" / "applications" / f"{letters}.desktop"
        entry.write_text(entry.read_text() + "DBusActivatable=true\n")
        app = self.adopt(letters)
        self.create("Three", app)

        self.assertNotEqual(self.desktopEntry("Three").get("DBusActivatable"), "true")
        self.beginAndAwait("own")
        self.beginAndAwait("Three")


class Mousepad(InDesktop):
    """A program that Debian ships, which keeps to one copy, with windows."""

    entry = "/usr/share/applications/org.xfce.mousepad.desktop"

    def test_three_copies_have_their_windows_and_second_starts_reach_them(self):
        app = self.adopt(self.entry)
        for name in ("One", "Two"):
            self.create(name, app)
        copies = {"own": self.start("mousepad")}
        self.desktop.awaitWindows(copies)
        for name in ("One", "Two"):
            copies[name] = self.startInstance(name)
            self.desktop.awaitWindows(copies)
        windows = self.desktop.windowsOf(copies)
        for name in ("One", "Two"):
            expected = self.desktopEntry(name)["StartupWMClass"]
            self.assertEqual([expected in window.names for window in windows[name]], [True])

        seconds = {"own": self.start("mousepad"), "One": self.startInstance("One")}
        for copy, second in seconds.items():
            awaitCondition(lambda: second.poll() is not None,
                           lambda: f"the second start of {copy} is a copy of its own")
            self.assertEqual(second.returncode, 0)
        # Another tab, which the window is called after then.
        expected = {"own": ["Untitled 2"], "One": ["Untitled 2"], "Two": ["Untitled 1"]}
        awaitCondition(lambda: self.shownIn(copies) == expected,
                       lambda: f"the windows show {self.shownIn(copies)}")

        now = self.desktop.windowsOf(copies)
        owners = {copy: {window.process for window in some} for copy, some in now.items()}
        self.assertEqual(owners, {copy: {window.process for window in some}
                                  for copy, some in windows.items()})
        self.assertEqual(len(now["Two"]), 1)
        self.assertEqual([process.poll() for process in copies.values()], [None] * 3)
        self.assertTrue(all(isRunning(process) for some in owners.values() for process in some))

    def shownIn(self, copies):
        """What the windows of each copy show, by their titles."""
        return {copy: [self.desktop.titleOf(window).strip('"').partition(" - ")[0]
                       for window in some]
                for copy, some in self.desktop.windowsOf(copies).items()}


if __name__ == "__main__":
    unittest.main()
