#!/usr/bin/env python3
"""Windows of programs that a desktop brings to the front, on an X server with a window manager."""

import os
import pathlib
import re
import signal
import subprocess
import unittest

from Desktop import awaitCondition, isRunning, processOf
from Instances import InDesktop

caller = pathlib.Path(os.environ["BUILD_FOLDER"], "Tests", "korvane-test-windows")


class OnX11(InDesktop):
    def setUp(self):
        super().setUp()
        self.windows = {}
        self.processes = {}
        self.caller = self.user.start(caller, stdin=subprocess.PIPE)
        self.addCleanup(self.endCaller)

    def endCaller(self):
        """Lets the caller end, for which it waits for nothing."""
        if self.caller.returncode is None:
            _, errors = self.caller.communicate()
            self.assertEqual((self.caller.returncode, errors), (0, ""))

    def open(self, *titles):
        """Opens a window for each, above those that there are, each with a process of its own."""
        for title in titles:
            process = self.start("sh", "-c", f"echo $$; exec xterm -T {title} -e sleep 600")
            self.processes[title] = int(process.stdout.readline())
            self.windows[title] = awaitCondition(
                lambda: self.find(title), lambda: f"the window {title} does not come")
            awaitCondition(lambda: self.active() == title, lambda: f"{title} is not active")

    def find(self, title):
        found = re.findall(rf"^(0x[0-9a-f]+) .* {title}$", self.ask("wmctrl", "-l"), re.MULTILINE)
        return int(found[0], 16) if found else None

    def ask(self, *command):
        return subprocess.run(["timeout", "20", *command], capture_output=True, text=True,
                              env=self.user.environment()).stdout

    def do(self, *command):
        self.user.run(*command)

    def titles(self, property):
        listed = self.ask("xprop", "-root", property)
        names = {window: title for title, window in self.windows.items()}
        return [names.get(int(window, 16)) for window in re.findall("0x[0-9a-f]+", listed)]

    def stacking(self):
        return self.titles("_NET_CLIENT_LIST_STACKING")

    def active(self):
        return (self.titles("_NET_ACTIVE_WINDOW") or [None])[0]

    def number(self, title, property):
        told = self.ask("xprop", "-id", str(self.windows[title]), property)
        found = re.search(r"= (?:0x)?(\d+)$", told, re.MULTILINE)
        return int(found[1]) if found else None

    def isMinimised(self, title):
        return "window state: Iconic" in self.ask("xprop", "-id", str(self.windows[title]),
                                                  "WM_STATE")

    def minimise(self, title):
        self.do("xdotool", "windowminimize", str(self.windows[title]))
        awaitCondition(lambda: self.isMinimised(title), lambda: f"{title} is not minimised")

    def bring(self, *titles):
        """Calls for the windows of these; the call has returned then, and may not be done."""
        processes = [self.processes[title] for title in titles]
        self.caller.stdin.write(" ".join(map(str, processes)) + "\n")
        self.caller.stdin.flush()
        self.assertEqual(self.caller.stdout.readline(), "called\n")

    def awaitFront(self, *order):
        """Until these are on top, in this order, and the last of them is active."""
        awaitCondition(lambda: self.stacking()[-len(order):] == list(order)
                       and self.active() == order[-1],
                       lambda: f"the order is {self.stacking()}, {self.active()} is active")

    def test_windows_of_several_processes_come_in_the_order_in_which_they_lie(self):
        self.open("first", "other", "second", "another")

        self.bring("second", "first")

        self.awaitFront("other", "another", "first", "second")

    def test_minimised_windows_come_back(self):
        self.open("first", "second", "other")
        self.minimise("first")
        self.minimise("second")
        self.minimise("other")

        self.bring("first", "second")

        awaitCondition(lambda: not self.isMinimised("first") and not self.isMinimised("second"),
                       lambda: "they are still minimised")
        awaitCondition(lambda: self.active() in ("first", "second"), lambda: self.active())
        self.assertTrue(self.isMinimised("other"))

    def test_windows_come_from_other_desktops_and_those_on_all_stay_on_all(self):
        everywhere = 0xFFFFFFFF
        self.open("first", "sticky", "other")
        for title, desktop in (("first", "2"), ("other", "1")):
            self.do("wmctrl", "-i", "-r", str(self.windows[title]), "-t", desktop)
            awaitCondition(lambda: self.number(title, "_NET_WM_DESKTOP") == int(desktop),
                           lambda: f"{title} has not gone")
        self.do("xdotool", "set_desktop_for_window", str(self.windows["sticky"]), "-1")
        awaitCondition(lambda: self.number("sticky", "_NET_WM_DESKTOP") == everywhere,
                       lambda: "it is not sticky")

        self.bring("first", "sticky")

        self.awaitFront("first", "sticky")
        self.assertEqual({title: self.number(title, "_NET_WM_DESKTOP") for title in self.windows},
                         {"first": 0, "sticky": everywhere, "other": 1})
        self.assertIn("_NET_CURRENT_DESKTOP(CARDINAL) = 0",
                      self.ask("xprop", "-root", "_NET_CURRENT_DESKTOP"))

    def test_a_window_that_tells_no_process_or_another_is_known_by_its_connection(self):
        self.open("silent", "lying", "other")
        self.do("xprop", "-id", str(self.windows["silent"]), "-remove", "_NET_WM_PID")
        self.do("xprop", "-id", str(self.windows["lying"]), "-f", "_NET_WM_PID", "32c",
                "-set", "_NET_WM_PID", "1")

        self.bring("silent", "lying")

        self.awaitFront("other", "silent", "lying")

    def test_a_window_that_somebody_else_has_connected_for_is_known_by_what_it_tells(self):
        self.open("passed-on", "other")
        self.processes["passed-on"] = 2_000_000_000
        self.do("xprop", "-id", str(self.windows["passed-on"]), "-f", "_NET_WM_PID", "32c",
                "-set", "_NET_WM_PID", "2000000000")

        self.bring("passed-on")

        self.awaitFront("other", "passed-on")

    def test_a_window_manager_that_tells_no_order_is_asked_for_all_windows(self):
        self.open("first", "other")
        self.do("xprop", "-root", "-remove", "_NET_CLIENT_LIST_STACKING")

        self.bring("first")

        self.awaitFront("other", "first")

    def test_a_process_without_windows_changes_nothing(self):
        self.open("first", "other")
        self.processes["nobody"] = self.caller.pid

        self.bring("nobody")
        self.bring("other")  # after which the one before is over

        self.awaitFront("first", "other")

    def test_a_window_manager_that_has_gone_is_no_error(self):
        self.open("first", "other")
        manager = processOf(self.user, "openbox")
        os.kill(manager, signal.SIGKILL)
        awaitCondition(lambda: not isRunning(manager), lambda: "the window manager does not end")

        self.bring("first")
        self.bring("other")

        self.endCaller()

    def test_a_server_that_does_not_answer_holds_up_neither_the_call_nor_the_end(self):
        self.open("first", "other")
        server = processOf(self.user, "Xvfb")
        os.kill(server, signal.SIGSTOP)
        try:
            self.bring("first")
            self.bring("other")
            self.bring("first")
            self.endCaller()
        finally:
            os.kill(server, signal.SIGCONT)

    def test_a_server_that_answers_later_is_asked_for_the_last_that_was_wanted(self):
        self.open("first", "second", "other")
        server = processOf(self.user, "Xvfb")
        os.kill(server, signal.SIGSTOP)
        try:
            self.bring("first")
            self.bring("second")
        finally:
            os.kill(server, signal.SIGCONT)

        self.awaitFront("second")


if __name__ == "__main__":
    unittest.main()
