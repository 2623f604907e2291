#!/usr/bin/env python3
"""How an instance with an item ends: by Quit and by itself, with the status that it would have
without an item."""

import os
import pathlib
import signal
import unittest

from Desktop import awaitCondition
from StatusItems import StatusItemTests, registeredItems


class ByQuit(StatusItemTests):
    def test_the_program_is_ended_by_TERM_and_the_runner_has_its_status(self):
        without = self.instance("/bin/sleep", "1000", options=())
        without.start()
        os.kill(without.programPid(), signal.SIGTERM)
        instance, item = self.started("/bin/sleep", "1000")

        item.choose(f"Quit {instance.name}")

        self.assertEqual(instance.ended(), without.ended())
        self.assertEqual(instance.log(), "")
        self.assertNoItems()

    def test_a_click_on_the_last_row_does_the_same(self):
        instance, _ = self.startedRecording()

        self.panel.openMenu().click("Quit")

        instance.awaitLog("ready\nSIGTERM\n")
        instance.finish(42)
        self.assertEqual(instance.ended(), (42, "", ""))
        self.panel.pointAway()
        self.assertNoItems()

    def test_a_program_that_asks_first_keeps_its_item_until_it_ends(self):
        instance, item = self.startedRecording()
        for number in range(1, 4):
            item.choose(f"Quit {instance.name}")
            instance.awaitLog("ready\n" + "SIGTERM\n" * number)
            self.assertTrue(item.isThere())
            self.assertTrue(instance.isRunning())
        self.assertEqual(len(self.panel.slots()), 1)

        instance.finish(7)

        self.assertEqual(instance.ended(), (7, "", ""))
        self.assertEqual(instance.log(), "ready\n" + "SIGTERM\n" * 3)
        self.assertNoItems()

    def test_a_stopped_program_is_not_ended_by_force(self):
        instance, item = self.startedRecording()
        program = instance.programPid()
        os.kill(program, signal.SIGSTOP)

        item.choose(f"Quit {instance.name}")
        item.choose(f"Quit {instance.name}")
        item.entries()  # told after what was chosen has been done
        self.assertEqual(instance.log(), "ready\n")
        self.assertTrue(item.isThere())
        os.kill(program, signal.SIGCONT)

        instance.awaitLog("ready\nSIGTERM\n")
        instance.finish(3)
        self.assertEqual(instance.ended(), (3, "", ""))

    def test_what_the_program_has_started_is_left_alone(self):
        pidFile = self.user.root / "helper"
        program = self.program(f"#!/bin/sh\nsleep 1000 &\necho $! >'{pidFile}.new'\n"
                               f"mv '{pidFile}.new' '{pidFile}'\nwait\n")
        instance, item = self.started(program)
        awaitCondition(pidFile.exists, lambda: "the helper is not started")
        helper = int(pidFile.read_text())

        item.choose(f"Quit {instance.name}")

        instance.ended()
        self.assertNoItems()
        # While a process becomes another program it has no command line.
        awaitCondition(lambda: "sleep" in pathlib.Path(f"/proc/{helper}/cmdline").read_text(),
                       lambda: "the helper is not left alone")
        os.kill(helper, signal.SIGKILL)

    def test_whoever_asks_is_answered_also_when_the_runner_ends_of_it(self):
        for member, signature, arguments in [
                ("Event", "isvu", lambda quit: (quit, "clicked", ("i", 0), 0)),
                ("EventGroup", "a(isvu)", lambda quit: ([(quit, "clicked", ("i", 0), 0)],))]:
            for _ in range(10):
                instance, item = self.started("/bin/sleep", "1000")
                quit = item.numberOf(f"Quit {instance.name}")
                item.askMenu(member, signature, *arguments(quit))  # throws when nobody answers
                instance.ended()


class ByTheProgram(StatusItemTests):
    def assertEndsAsWithoutItem(self, *command, status=None):
        without = self.instance(*command, options=()).run()
        instance = self.instance(*command)
        self.assertEqual(instance.run(), without)
        if status is not None:
            self.assertEqual(without[0], status)
        self.assertNoItems()

    def test_a_program_that_ends_before_there_can_be_an_item_gives_its_status(self):
        self.assertEndsAsWithoutItem("/bin/true", status=0)
        self.assertEndsAsWithoutItem("/bin/false", status=1)
        self.assertEndsAsWithoutItem("/bin/sh", "-c", "exit 255", status=255)
        self.assertEndsAsWithoutItem("/bin/sh", "-c", "kill -SEGV $$")

    def test_at_every_moment_of_the_start_an_end_is_noticed(self):
        for number in range(60):
            with self.subTest(number):
                instance = self.instance("/bin/sh", "-c", f"sleep {number / 1000}; exit 5")
                self.assertEqual(instance.run(), (5, "", ""))
        self.assertNoItems()

    def test_a_program_that_cannot_be_started_is_told_as_without_an_item(self):
        program = self.program("#!/no/such/interpreter\n")
        self.assertEndsAsWithoutItem(program)

    def test_an_end_by_itself_takes_the_item_away(self):
        instance, item = self.startedRecording()

        instance.finish(13)

        self.assertEqual(instance.ended(), (13, "", ""))
        self.assertFalse(item.isThere())
        self.assertEqual(instance.log(), "ready\n")
        self.assertNoItems()

    def test_an_end_by_a_signal_gives_the_status_that_it_gives_without_an_item(self):
        for number in (signal.SIGKILL, signal.SIGSEGV, signal.SIGTERM, signal.SIGHUP):
            without = self.instance("/bin/sleep", "1000", options=())
            without.start()
            os.kill(without.programPid(), number)
            instance, _ = self.started("/bin/sleep", "1000")

            os.kill(instance.programPid(), number)

            self.assertEqual(instance.ended(), without.ended(), number)
            self.assertNoItems()

    def test_an_open_menu_closes_when_the_program_ends(self):
        instance, _ = self.startedRecording()
        self.panel.openMenu()

        instance.finish(0)

        self.assertEqual(instance.ended(), (0, "", ""))
        self.panel.pointAway()
        awaitCondition(lambda: not self.panel.hasMenu(), lambda: "the menu is still open")
        self.assertNoItems()


class TheManager(StatusItemTests):
    def states(self):
        return {line.split("  ")[0]: line for line in
                self.user.korvane("list").splitlines()[1:]}

    def test_it_lists_and_stops_an_instance_with_an_item(self):
        instance, item = self.started("/bin/sleep", "1000")
        self.assertIn("running", self.states()[instance.name])

        self.user.korvane("stop", instance.name)

        instance.ended()
        self.assertNotIn("running", self.states()[instance.name])
        self.assertNoItems()

    def test_it_opens_one(self):
        instance = self.recording()

        self.user.korvane("open", instance.name)

        instance.awaitLog("ready\n")
        self.assertEqual(len(self.panel.slots()), 1)
        self.panel.openMenu().click("Quit")
        instance.awaitLog("ready\nSIGTERM\n")
        instance.finish(0)
        self.panel.pointAway()
        self.assertNoItems()

    def test_many_starts_and_ends_leave_nothing_behind(self):
        folder = pathlib.Path(self.user.session["XDG_RUNTIME_DIR"])
        before = set(folder.iterdir())
        for template in ([], ["--menu-bar-template"]):
            instance = self.recording(options=["--menu-bar", *template])
            for number in range(20):
                instance.start()
                item = self.itemOf(instance)
                instance.awaitLog("ready\n" * (number + 1))
                item.properties()
                instance.finish(0)
                self.assertEqual(instance.ended(), (0, "", ""))
            self.assertEqual(set(folder.iterdir()), before)
        self.assertNoItems()
        self.assertEqual(registeredItems(self.bus), [])


if __name__ == "__main__":
    unittest.main()
