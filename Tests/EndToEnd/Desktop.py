"""A desktop session for the tests, looked at in the way that a dock or a task list does."""

import dataclasses
import os
import pathlib
import re
import signal
import subprocess
import time

runInDesktop = pathlib.Path(__file__).resolve().parent / "run-in-desktop"
sessionVariables = ["DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR",
                    "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "GDK_BACKEND", "NO_AT_BRIDGE",
                    "GTK_A11Y", "DESKTOP_SESSION_TAG"]
panelVariables = ["PANEL_PID", "PANEL_COMMAND"]


@dataclasses.dataclass(frozen=True)
class Window:
    identifier: str
    process: int
    names: tuple  # WM_CLASS: the instance part and the class part


class Desktop:
    """The session lasts until close(), and `user` is logged in to it until then."""

    def __init__(self, user, wrapper=(), options=()):
        """`wrapper` is a command that the session is started through; `options` are those of
        run-in-desktop."""
        self.user = user
        names = sessionVariables + (panelVariables if "--panel" in options else [])
        tell = 'for name; do eval "printf \'%s\\n\' \\"\\$$name\\""; done; read -r end'
        self._process = user.start(*wrapper, runInDesktop, *options, "sh", "-c", tell, "sh",
                                   *names, seconds=500, stdin=subprocess.PIPE)
        values = [self._process.stdout.readline().rstrip("\n") for _ in names]
        if "" in values:
            raise AssertionError(f"no desktop session: {self._process.communicate()[1]}")
        user.session = dict(zip(names, values))

    def close(self):
        """Ends the session and whatever is left in it."""
        self.user.session = {}
        _, errors = self._process.communicate()
        # The command that waits for a line ends with 1, for there is none.
        if self._process.returncode != 1:
            raise AssertionError(f"the session ended with {self._process.returncode}: {errors}")

    def windows(self):
        listed = self._xprop("-root", "_NET_CLIENT_LIST")
        found = [self._window(identifier) for identifier in re.findall("0x[0-9a-f]+", listed)]
        return [window for window in found if window]

    def _window(self, identifier):
        shown = self._xprop("-id", identifier, "WM_CLASS", "_NET_WM_PID")
        process = re.search(r"^_NET_WM_PID\(CARDINAL\) = (\d+)$", shown, re.MULTILINE)
        names = re.search(r'^WM_CLASS\(STRING\) = "(.*)", "(.*)"$', shown, re.MULTILINE)
        # One that has been closed since it was listed has neither.
        return Window(identifier, int(process[1]), names.groups()) if process and names else None

    def titleOf(self, window):
        shown = self._xprop("-id", window.identifier, "_NET_WM_NAME")
        return shown.partition(" = ")[2].strip()

    def ownerOf(self, window):
        """What xprop tells of the window that this one asks something on behalf of."""
        return self._xprop("-id", window.identifier, "WM_TRANSIENT_FOR")

    def _xprop(self, *arguments):
        return subprocess.run(["timeout", "20", "xprop", *arguments], capture_output=True,
                              text=True, env=self.user.environment()).stdout

    def entryOf(self, window):
        """The desktop entry that docks show the window under, as they are told by BAMF."""
        application = self._askBamf("/org/ayatana/bamf/matcher",
                                    "matcher.ApplicationForXid", int(window.identifier, 16))
        if not application:
            return None
        return self._askBamf(application, "application.DesktopFile")

    def _askBamf(self, path, method, *arguments):
        answer = self.user.run("gdbus", "call", "--session", "--dest", "org.ayatana.bamf",
                               "--object-path", path, "--method", f"org.ayatana.bamf.{method}",
                               *arguments)
        return re.fullmatch(r"\('(.*)',\)\n", answer)[1]

    def windowsOf(self, processes):
        """The windows of the programs that each of `processes`, name -> Popen, has started."""
        found = {name: [] for name in processes}
        for window in self.windows():
            ancestors = ancestorsOf(window.process)
            for name, process in processes.items():
                if process.pid in ancestors:
                    found[name].append(window)
        return found

    def awaitWindows(self, processes):
        """Returns windowsOf when every one has a window; tells what went wrong when one ends."""

        def everyWindow():
            found = self.windowsOf(processes)
            for name, windows in found.items():
                if not windows and processes[name].poll() is not None:
                    output, errors = processes[name].communicate()
                    raise AssertionError(f"{name} ended with {processes[name].returncode} and "
                                         f"without a window: {output}{errors}")
            return found if all(found.values()) else None

        return awaitCondition(everyWindow, lambda: f"windows: {self.windowsOf(processes)}")


def awaitCondition(condition, describe, seconds=60):
    """What `condition` returns once that is true; fails with what `describe` tells."""
    last = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > last:
            raise AssertionError(f"not after {seconds} seconds; {describe()}")
        time.sleep(0.05)


def ancestorsOf(process):
    """The process itself and all above it that are still there."""
    found = []
    while process > 1:
        found.append(process)
        try:
            status = pathlib.Path(f"/proc/{process}/stat").read_text()
        except OSError:
            break
        process = int(status.rpartition(")")[2].split()[1])
    return found


def endOwners(windows):
    """Asks the programs that own the windows to end, and waits until they have.

    A signal to everybody would hit helpers of browsers that take it for a crash.
    """
    owners = {window.process for some in windows.values() for window in some}
    for owner in owners:
        os.kill(owner, signal.SIGTERM)
    awaitCondition(lambda: not any(map(isRunning, owners)),
                   lambda: f"processes {owners} do not all end")


def endPrograms(processes, windows):
    """Ends the windows' owners, and waits for those who have started them."""
    endOwners(windows)
    for name, process in processes.items():
        awaitCondition(lambda: process.poll() is not None, lambda: f"{name} does not end")


def processOf(user, program):
    """A process of the session itself."""
    tag = f"DESKTOP_SESSION_TAG={user.session['DESKTOP_SESSION_TAG']}".encode()
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if (folder / "comm").read_text().strip() == program and \
                    tag in (folder / "environ").read_bytes().split(b"\0"):
                return int(folder.name)
        except OSError:
            continue
    raise AssertionError(f"the session has no {program}")


def isRunning(process):
    try:
        status = pathlib.Path(f"/proc/{process}/stat").read_text()
    except OSError:
        return False
    return status.rpartition(")")[2].split()[0] != "Z"
