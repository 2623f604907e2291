#!/usr/bin/env python3
"""Real programs in a real desktop session: two instances and the user's own copy at once."""

import os
import unittest

from Desktop import awaitCondition, endPrograms
from EndToEnd import changes, contents, sharedFolders
from Instances import InDesktop, placesOfTheManager

instances = ["Work", "Private"]

# A user who never threw anything away has no trash yet. It is made, so that what an instance throws
# away does not vanish with the instance.
trashOfTheUser = {f".local/share/{folder}": (None, ("folder", 0o700))
                  for folder in ["Trash", "Trash/files", "Trash/info"]}


class ThreeCopies:
    """The test; a class for each program says what it is and how it is started."""

    arguments = []
    ownArguments = []  # for the user's own copy

    def test_each_has_windows_data_and_a_name_of_its_own(self):
        before = contents(self.user.home, leavingOut=placesOfTheManager)
        app = self.adopt(self.entry)
        for name in instances:
            self.create(name, app, *[f"--add-arg={argument}" for argument in self.arguments])

        copies = self.startInstances()
        self.desktop.awaitWindows(copies)
        self.awaitData()
        after = contents(self.user.home, leavingOut=placesOfTheManager)
        self.assertEqual(changes(before, after), trashOfTheUser)
        self.assertEqual(contents(self.user.accountHome), {})

        # Whoever comes second is the one who would be handed over to the first.
        copies["own"] = self.startOwn()
        self.checkAndEnd(copies)
        copies = {"own": self.startOwn()}
        self.desktop.awaitWindows(copies)
        self.checkAndEnd({**copies, **self.startInstances()})

    def startInstances(self):
        return {name: self.startInstance(name) for name in instances}

    def startOwn(self):
        return self.start(self.program, *self.ownArguments)

    def checkAndEnd(self, copies):
        windows = self.desktop.awaitWindows(copies)
        seen = [window.identifier for some in windows.values() for window in some]
        self.assertEqual(len(seen), len(set(seen)), "a window belongs to one copy alone")
        names = {copy: {name for window in some for name in window.names}
                 for copy, some in windows.items()}
        for instance in instances:
            expected = self.desktopEntry(instance)["StartupWMClass"]
            for window in windows[instance]:
                self.assertIn(expected, window.names)
            for copy in copies.keys() - {instance}:
                self.assertNotIn(expected, names[copy])
        self.checkDock(windows)
        endPrograms(copies, windows)

    def checkDock(self, windows):
        """A dock that knows entries by StartupWMClass shows each copy under its own."""
        entries = {name: self.show(name)["desktopEntry"] for name in instances}
        for copy, some in windows.items():
            for window in some:
                expected = entries.get(copy, self.entry)
                awaitCondition(lambda: self.desktop.entryOf(window) == expected,
                               lambda: f"{copy} is shown under {self.desktop.entryOf(window)}")

    def awaitData(self):
        for name in instances:
            for file in self.dataFiles:
                awaitCondition((self.home(name) / file).exists,
                               lambda: f"{self.home(name) / file} is missing: {self.log(name)}")
            for folder in sharedFolders:
                link = self.home(name) / folder
                self.assertEqual(os.readlink(link), str(self.user.home / folder))


class FromTheMenu(InDesktop):
    """What a click on the entry does, also where the wrapper's path has white space."""

    def test_an_entry_starts_its_instance(self):
        app = self.adopt("/usr/share/applications/org.xfce.mousepad.desktop")
        for name in ["Work", "My second one"]:
            self.create(name, app)
            # The instance would hold on to the pipes that the output is read from.
            self.user.run("sh", "-c", 'gio launch "$1" >/dev/null 2>&1', "sh",
                          self.show(name)["desktopEntry"])

            expected = self.desktopEntry(name)["StartupWMClass"]
            awaitCondition(lambda: any(expected in window.names
                                       for window in self.desktop.windows()),
                           lambda: f"{self.desktop.windows()}, not {expected}")


class OpenedFromTheDesktop(InDesktop):
    """What a click on a file does, with openers of several desktops."""

    openers = {"gio": ["gio", "open"], "XFCE": ["xdg-open"],
               "none": ["env", "XDG_CURRENT_DESKTOP=", "xdg-open"]}

    def test_a_file_reaches_the_instance_that_is_offered_for_it(self):
        app = self.adopt("/usr/share/applications/org.xfce.mousepad.desktop")
        self.create("My letters", app, "--open-with")
        entry = self.show("My letters")["desktopEntry"]
        self.user.run("xdg-mime", "default", os.path.basename(entry), "text/plain")
        expected = self.desktopEntry("My letters")["StartupWMClass"]

        for name, opener in self.openers.items():
            letter = self.user.home / "Documents" / f"a letter of {name}.txt"
            letter.write_text("Dear reader\n")
            self.start(*opener, letter)

            def titles():
                return [self.desktop.titleOf(window) for window in self.desktop.windows()
                        if expected in window.names]
            awaitCondition(lambda: any(letter.name in title for title in titles()),
                           lambda: f"{name}: {titles()}, {self.desktop.windows()}, "
                                   f"{self.log('My letters')}")


class Chromium(ThreeCopies, InDesktop):
    entry = "/usr/share/applications/chromium.desktop"
    program = "/usr/bin/chromium"
    arguments = [*(["--no-sandbox"] if os.geteuid() == 0 else []), "--no-first-run",
                 "--disable-gpu", "--disable-background-networking",
                 "--disable-component-update", "--disable-sync", "about:blank"]
    ownArguments = arguments
    dataFiles = ["KorvaneData/Local State", "KorvaneData/Default/Preferences"]


class FirefoxEsr(ThreeCopies, InDesktop):
    entry = "/usr/share/applications/firefox-esr.desktop"
    program = "/usr/lib/firefox-esr/firefox-esr"
    arguments = ["about:blank"]
    ownArguments = arguments
    dataFiles = ["FirefoxProfile/prefs.js"]


class Mousepad(ThreeCopies, InDesktop):
    entry = "/usr/share/applications/org.xfce.mousepad.desktop"
    program = "/usr/bin/mousepad"
    dataFiles = [".config/glib-2.0/settings/keyfile"]


class KeePassXC(ThreeCopies, InDesktop):
    entry = "/usr/share/applications/org.keepassxc.KeePassXC.desktop"
    program = "/usr/bin/keepassxc"
    dataFiles = [".config/keepassxc/keepassxc.ini"]


class XTerm(ThreeCopies, InDesktop):
    entry = "/usr/share/applications/debian-xterm.desktop"
    program = "/usr/bin/xterm"
    arguments = ["-e", "sh", "-c", "echo here >>~/what-the-shell-wrote; exec sleep 100"]
    dataFiles = ["what-the-shell-wrote"]


class GnomeTextEditor(ThreeCopies, InDesktop):
    entry = "/usr/share/applications/org.gnome.TextEditor.desktop"
    program = "/usr/bin/gnome-text-editor"
    dataFiles = [".config/enchant"]


programs = [Chromium, FirefoxEsr, GnomeTextEditor, KeePassXC, Mousepad, XTerm]

if __name__ == "__main__":
    unittest.main()
