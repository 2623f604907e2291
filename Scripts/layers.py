#!/usr/bin/env python3
"""layers.py [ROOT]

Checks that includes go one way through the rooms of Sources, from later ones to earlier ones, that
the tests of a floor know nothing of the floors above it, and that headers which are installed
include none that are not. Prints a line for each include that does not, and ends with 1 when there
is one.
"""

import pathlib
import re
import sys

# Each floor's rooms, lowest first. A room is a folder of its floor; "" is the floor itself, where
# its main and what ties the rooms together lie.
ROOMS = {
    "Ambrel": ["Base", "Graphics", "Platform", "Formats", "Instance", "Application", "Home", "Icon",
               "Wrapper", "Launch", "Web"],
    "Manager": ["Base", "Files", "Rules", "Programs", "Desktop", "Operations"],
    "korvane": ["Output", "CommandLine", "Verbs", "Documents", ""],
    "korvane-runner": ["Desktop", "StatusItem", "Web", "Bus", ""],
}

# The floors below each floor.
BELOW = {
    "Ambrel": [],
    "Manager": ["Ambrel"],
    "korvane": ["Ambrel", "Manager"],
    "korvane-runner": ["Ambrel"],
}

# Folders of one system, and those that hold what such folders share.
SYSTEMS = {"Linux", "MacOS"}
SHARED = {"Posix"}

# What lists all files of a room is included by a main alone.
LISTS = {"korvane/Verbs/AllVerbs.h"}

INSTALLED = re.compile(r"^install_library\(.*?\bHEADERS\b([^)]*)\)", re.MULTILINE | re.DOTALL)
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)


class Place:
    """Where a file lies: its floor, its room and the system's folder in it, if any."""

    def __init__(self, path):
        parts = path.split("/")
        self.path = path
        self.floor = parts[0]
        self.room = parts[1] if len(parts) > 2 else ""
        self.folders = set(parts[2:-1])
        self.systems = self.folders & SYSTEMS

    @property
    def isKnown(self):
        return self.room in ROOMS.get(self.floor, [])

    @property
    def rank(self):
        return ROOMS[self.floor].index(self.room)


def complaint(source, target):
    """What is wrong with `source` including `target`, or None."""
    if target.floor != source.floor:
        if target.floor not in BELOW[source.floor]:
            return f"{source.floor} stands on {' and '.join(BELOW[source.floor]) or 'nothing'}"
    elif target.rank > source.rank:
        return f"{source.floor}/{source.room or 'main'} lies below {target.room or 'main'}"
    if target.systems - source.systems:
        return f"only files in {'/'.join(sorted(target.systems))} may know of that system"
    if target.folders & SHARED and not source.folders & (SHARED | SYSTEMS):
        return "only backends may include what backends share"
    isMain = source.path.endswith("/main.cpp")
    if target.path in LISTS and not isMain and source.path != target.path[:-1] + "cpp":
        return "only a main includes the list of its room"
    return None


def codeBelow(folder):
    return sorted(file for file in folder.rglob("*") if file.suffix in (".h", ".cpp", ".mm"))


def includes(file):
    """What the file includes of the project's own, each with its line."""
    text = file.read_text(encoding="utf-8")
    for match in INCLUDE.finditer(text):
        yield match[1], text.count("\n", 0, match.start(1)) + 1


def findingsInTests(root):
    for floor, below in BELOW.items():
        for file in codeBelow(root / "Tests" / floor):
            for name, line in includes(file):
                if not (root / "Sources" / name).is_file():
                    continue
                if Place(name).floor not in [floor, *below]:
                    yield (f"{file.relative_to(root)}:{line}: includes {name}, "
                           f"which is none of {floor}'s business")


def installedHeaders(sources):
    """The names of the headers that are installed, as they are included."""
    for floor in ROOMS:
        lists = sources / floor / "CMakeLists.txt"
        found = INSTALLED.search(lists.read_text(encoding="utf-8")) if lists.is_file() else None
        yield from (f"{floor}/{name}" for name in (found[1].split() if found else []))


def findingsInInstalled(root):
    sources = root / "Sources"
    installed = set(installedHeaders(sources))
    for header in sorted(installed):
        file = sources / header
        if not file.is_file():
            yield f"Sources/{header}: is to be installed, and is not there"
            continue
        for name, line in includes(file):
            if (sources / name).is_file() and name not in installed:
                yield (f"Sources/{header}:{line}: includes {name}, "
                       f"but that is not installed with it")


def findings(root):
    sources = root / "Sources"
    files = codeBelow(sources)
    if not files:
        yield f"{sources}: no source files"
    for file in files:
        name = file.relative_to(sources).as_posix()
        source = Place(name)
        if not source.isKnown:
            yield f"Sources/{name}: lies in no known room"
            continue
        for included, line in includes(file):
            # What is generated while building lies in no room and includes nothing of ours.
            if not (sources / included).is_file():
                continue
            target = Place(included)
            wrong = complaint(source, target) if target.isKnown else "that lies in no known room"
            if wrong:
                yield f"Sources/{name}:{line}: includes {included}, but {wrong}"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")
    found = [*findings(root), *findingsInInstalled(root), *findingsInTests(root)]
    for line in found:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
