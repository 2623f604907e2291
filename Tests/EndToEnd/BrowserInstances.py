#!/usr/bin/env python3
"""Debian's own browsers, adopted, as two instances that run at once.

The page that they visit counts in localStorage how often it was visited: an instance that kept
its data in somebody else's folder would go on from somebody else's count, or forget its own.
"""

import os
import re
import unittest

from EndToEnd import User, contents, realAccountHome, sharedFolders
from VisitCounter import VisitCounter

instances = ["Work", "Private"]

# Where browsers and the libraries below them keep things; none may come into being in the home of
# the person who runs the tests. Items that are there already may be in use at this moment.
browserTraces = [
    ".config/chromium", ".cache/chromium", ".mozilla", ".cache/mozilla", ".config/mozilla",
    ".pki", ".cache/mesa_shader_cache", ".cache/fontconfig", ".config/dconf", ".cache/dconf",
    ".nv", ".local/share/mime", ".local/share/applications", "KorvaneInstances",
]


class TwoInstances:
    """The tests; a class for each browser says what it is and how it is started."""

    def setUp(self):
        self.user = User()
        self.addCleanup(self.user.remove)
        self.counter = VisitCounter(meeting=len(instances))
        self.addCleanup(self.counter.close)

    def test_each_remembers_its_own_visits_and_the_users_home_stays_as_it_was(self):
        self.requireSeparateAccount()
        self.createInstances()
        self.makeTrash()
        traces = self.missingTraces()
        before = contents(self.user.home, leavingOut=["KorvaneInstances"])

        first = self.runAllAtOnce()
        second = self.runAllAtOnce()

        self.assertEqual(first, {name: 1 for name in instances})
        self.assertEqual(second, {name: 2 for name in instances})
        self.checkOutput()
        self.checkProfiles()
        after = contents(self.user.home, leavingOut=["KorvaneInstances"])
        self.assertEqual(before, after)
        self.assertEqual(contents(self.user.accountHome), {})
        self.assertEqual(self.missingTraces(), traces)

    def makeTrash(self):
        """The first start makes it where the user has none: that is no doing of the browser's."""
        for name in ("files", "info"):
            (self.user.home / ".local/share/Trash" / name).mkdir(parents=True)

    def requireSeparateAccount(self):
        entry = self.user.run("getent", "passwd", os.getuid())
        self.assertEqual(entry.split(":")[5], str(self.user.accountHome))

    def missingTraces(self):
        return [trace for trace in browserTraces if not (realAccountHome() / trace).exists()]

    def createInstances(self):
        app = self.user.korvane("adopt", self.desktopEntry).rstrip("\n")
        for name in instances:
            arguments = [*self.arguments(name), self.counter.address(name)]
            self.user.korvane("create", "app", name, app, "--runner",
                              os.environ["KORVANE_RUNNER"],
                              *[f"--add-arg={argument}" for argument in arguments])

    def runAllAtOnce(self):
        processes = {name: self.user.start(os.environ["KORVANE"], "run", name)
                     for name in instances}
        ended = {name: (*process.communicate(), process.returncode)
                 for name, process in processes.items()}
        for name, (_, errors, status) in ended.items():
            self.assertEqual(status, 0, f"{name}: {errors}{self.log(name)}")
        return self.counter.takeReports()

    def home(self, name):
        return self.user.home / "KorvaneInstances" / name

    def log(self, name):
        log = self.home(name) / "korvane-instance.log"
        return log.read_text(errors="replace") if log.exists() else "no log"

    def checkOutput(self):
        """What a browser that shows its page has to show; others have their reports alone."""

    def checkProfiles(self):
        for name in instances:
            home = self.home(name)
            for file in self.profileFiles:
                self.assertTrue((home / file).is_file(), f"{home / file} is missing")
            for folder in sharedFolders:
                self.assertEqual(os.readlink(home / folder), str(self.user.home / folder))


class Chromium(TwoInstances, unittest.TestCase):
    desktopEntry = "/usr/share/applications/chromium.desktop"
    profileFiles = ["KorvaneData/Local State", "KorvaneData/Default/Preferences"]

    def arguments(self, name):
        asRoot = ["--no-sandbox"] if os.geteuid() == 0 else []
        return [*asRoot, "--headless=new", "--disable-gpu", "--disable-quic", "--no-first-run",
                "--disable-background-networking", "--disable-component-update",
                "--disable-sync", "--virtual-time-budget=10000", "--dump-dom"]

    def checkOutput(self):
        for name in instances:
            shown = re.findall(r'<p id="visits">visits: (\d+)</p>', self.log(name))
            self.assertEqual(shown, ["1", "2"], f"the pages that {name} dumped")


class FirefoxEsr(TwoInstances, unittest.TestCase):
    desktopEntry = "/usr/share/applications/firefox-esr.desktop"
    profileFiles = ["FirefoxProfile/prefs.js", "FirefoxProfile/webappsstore.sqlite"]

    def arguments(self, name):
        # It dumps no page, but ends by itself when it has taken a picture of one.
        return ["--headless", "--screenshot", str(self.user.root / f"{name}.png")]


if __name__ == "__main__":
    unittest.main()
