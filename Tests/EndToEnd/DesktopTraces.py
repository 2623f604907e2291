#!/usr/bin/env python3
"""Every file that instances in a desktop session write outside their homes, each with its reason.

The whole session is watched, so that what services write on behalf of an instance is seen, too.
"""

import os
import re
import unittest

import DesktopInstances
import FileTrace
from Desktop import awaitCondition, endOwners
from Instances import InDesktop

# HOME is the user's own home, TMPDIR and RUNTIME the folders of those variables, SESSION the one
# that the session keeps its own files in. Everything else is a path as it is.
explained = {
    r"HOME/\.local/share/Trash(/files|/info)?":
        "made for a user who has no trash yet, as a place for what an instance throws away",
    r"(TMPDIR|/dev/shm)/\.?org\.chromium\.Chromium\.[^/]*(/Singleton\w+)?":
        "Chromium's memory shared by its processes, and the socket of each data folder",
    r"TMPDIR/firefox-esr(/(\.parentlock|lock))?":
        "a lock that Firefox holds while it looks for its profile",
    r"TMPDIR/remote-settings-startup-bundle-":
        "Firefox's, soon removed",
    r"TMPDIR/xterm[^/]*(/index\.theme)?":
        "xterm's theme for its pointers, removed when it ends",
    r"/dev/(null|tty|ptmx|pts/ptmx|pts/\d+|urandom|dri/\w+|udmabuf)":
        "devices",
    r"/proc/(self|\d+)/.*":
        "what a process says of itself to the kernel",
    r"RUNTIME/dconf(/user)?":
        "touched by the bus's accessibility service, which belongs to no instance",
    r"RUNTIME/gvfsd?(/.*)?":
        "of the file services that the bus starts where they are installed, and no instance's",
    r"RUNTIME/korvane(/bus(/[0-9a-f]{16}(/(socket|ending|bus(\.new)?))?)?)?":
        "the socket of an instance's bus, which nobody else may open, and where the user's is",
    r"RUNTIME(/(bus|dbus-1(/services)?))?":
        "the folder of the session's sockets, and its bus",
    r"SESSION(/(display|authority(-[cln])?|bus\.conf|(own|services)(/.*)?|[\w-]+\.log))?":
        "the session's own",
    r"/tmp/\.X11-unix(/X\d+)?|/tmp/\.t?X\d+-lock|(TMPDIR|/tmp|/var/lib/xkb)/server-\d+\.xkm":
        "the X server's",
}


class FilesOutsideTheHomes(InDesktop):
    def sessionWrapper(self):
        self.traces = self.user.root / "traces"
        self.traces.mkdir()
        return FileTrace.command(self.traces)

    def startAll(self, programs):
        processes = {}
        for program in programs:
            name = "Second " + program.__name__
            self.create(name, self.adopt(program.entry),
                        *[f"--add-arg={argument}" for argument in program.arguments])
            processes[name] = self.start(*FileTrace.command(self.traces), os.environ["KORVANE"],
                                         "run", name)
        return processes

    def awaitData(self, programs):
        for program in programs:
            home = self.home("Second " + program.__name__)
            for file in program.dataFiles:
                awaitCondition((home / file).exists, lambda: f"{home / file} is missing")

    def readable(self, path):
        for folder, word in self.places.items():
            if path == folder or path.startswith(folder + "/"):
                return word + path[len(folder):]
        return path

    def test_each_has_its_reason(self):
        self.checkFilesOf([program for program in DesktopInstances.programs
                           if program is not DesktopInstances.KeePassXC])

    @unittest.skipUnless(os.geteuid() == 0, "KeePassXC lets nobody but root look into it")
    def test_each_of_KeePassXC_has_its_reason(self):
        self.checkFilesOf([DesktopInstances.KeePassXC])

    def checkFilesOf(self, programs):
        runtime = self.user.session["XDG_RUNTIME_DIR"]
        self.places = {str(self.user.home): "HOME", str(self.user.temporary): "TMPDIR",
                       runtime: "RUNTIME", os.path.dirname(runtime): "SESSION"}

        processes = self.startAll(programs)
        windows = self.desktop.awaitWindows(processes)
        self.awaitData(programs)
        endOwners(windows)
        self.endSession()

        written = FileTrace.writtenPaths(self.traces)
        for name in processes:
            home = f"{self.home(name)}/"
            inside = [path for path in written if path.startswith(home)]
            self.assertNotEqual(inside, [], f"what {name} wrote in its home was seen")
            for path in inside:
                del written[path]
        unexplained = {self.readable(path): programs for path, programs in written.items()
                       if not any(re.fullmatch(pattern, self.readable(path))
                                  for pattern in explained)}
        self.assertEqual(unexplained, {})


if __name__ == "__main__":
    unittest.main()
