"""What the end-to-end tests share: a user of their own, and the built programs.

CMake hands over KORVANE and KORVANE_RUNNER, the programs to be tested, in the environment.
"""

import hashlib
import os
import pathlib
import pwd
import shutil
import stat
import subprocess
import tempfile

sharedFolders = ["Downloads", "Documents", "Desktop"]
baseDirectories = {
    "XDG_CONFIG_HOME": ".config",
    "XDG_DATA_HOME": ".local/share",
    "XDG_STATE_HOME": ".local/state",
    "XDG_CACHE_HOME": ".cache",
}


class User:
    """A user in a temporary folder: a home with files in it, and an account of the same uid.

    The home is what CFFIXED_USER_HOME, HOME and the base directories name. The account's home,
    which programs learn from the user database, is another folder, and stays empty: a program
    that goes round the variables is found out by what it leaves there.
    """

    def __init__(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="korvane-test-")).resolve()
        self.home = self.root / "home"
        self.accountHome = self.root / "account"
        self.temporary = self.root / "tmp"
        self.session = {}  # what a desktop session tells its programs
        for folder in (self.home, self.accountHome, self.temporary):
            folder.mkdir(mode=0o700)
        for name in sharedFolders:
            (self.home / name).mkdir()
            (self.home / name / "note.txt").write_text(f"The user's own {name}\n")
        for name in baseDirectories.values():
            (self.home / name).mkdir(parents=True)
            (self.home / name / "settings").write_text("the user's own\n")
        self._writeUserDatabase()

    def _writeUserDatabase(self):
        entry = f"tester:x:{os.getuid()}:{os.getgid()}:Tester:{self.accountHome}:/bin/sh\n"
        (self.root / "passwd").write_text(entry)
        (self.root / "group").write_text(f"tester:x:{os.getgid()}:\n")

    def environment(self):
        kept = {name: os.environ[name] for name in ("PATH", "LSAN_OPTIONS", "ASAN_OPTIONS",
                                                    "UBSAN_OPTIONS") if name in os.environ}
        home = {name: str(self.home / folder) for name, folder in baseDirectories.items()}
        return {
            **kept,
            **home,
            "LANG": "C.UTF-8",
            "HOME": str(self.home),
            "CFFIXED_USER_HOME": str(self.home),
            "TMPDIR": str(self.temporary),
            "LD_PRELOAD": "libnss_wrapper.so",
            "NSS_WRAPPER_PASSWD": str(self.root / "passwd"),
            "NSS_WRAPPER_GROUP": str(self.root / "group"),
            **self.session,
        }

    def start(self, *command, seconds=120, stdin=subprocess.DEVNULL):
        """Starts a program that is ended after `seconds`, with all that it started."""
        limited = ["timeout", "--kill-after=10", str(seconds), *map(str, command)]
        return subprocess.Popen(limited, env=self.environment(), cwd=self.root, stdin=stdin,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def run(self, *command, status=0):
        """The standard output of a program that has to end with `status`."""
        process = self.start(*command)
        output, errors = process.communicate()
        if process.returncode != status:
            raise AssertionError(f"{command} ended with {process.returncode}, not {status}\n"
                                 f"{output}{errors}")
        return output

    def korvane(self, *arguments, status=0):
        return self.run(os.environ["KORVANE"], *arguments, status=status)

    def remove(self):
        shutil.rmtree(self.root)


def contents(folder, leavingOut=()):
    """Every item below `folder` with its kind, mode, size, time and content, links not followed.

    `leavingOut` names items by their paths in the folder; what lies in them is left out, too.
    """
    leftOut = {os.path.join(folder, name) for name in leavingOut}
    found = {}
    for path, folders, files in os.walk(folder):
        folders[:] = [name for name in folders if os.path.join(path, name) not in leftOut]
        for name in folders + files:
            item = pathlib.Path(path, name)
            found[str(item.relative_to(folder))] = _describe(item)
    return found


def changes(before, after):
    """What differs between two results of contents(): path -> what was there, and what is."""
    return {path: (before.get(path), after.get(path)) for path in before.keys() | after.keys()
            if before.get(path) != after.get(path)}


def _describe(item):
    info = item.lstat()
    if stat.S_ISLNK(info.st_mode):
        return ("link", os.readlink(item))
    if stat.S_ISDIR(info.st_mode):
        return ("folder", stat.S_IMODE(info.st_mode))
    if stat.S_ISREG(info.st_mode):
        digest = hashlib.sha256(item.read_bytes()).hexdigest()
        return ("file", stat.S_IMODE(info.st_mode), info.st_size, info.st_mtime_ns, digest)
    return ("other", info.st_mode)


def realAccountHome():
    """The home that the machine's own user database gives to whoever runs the tests."""
    return pathlib.Path(pwd.getpwuid(os.getuid()).pw_dir)
