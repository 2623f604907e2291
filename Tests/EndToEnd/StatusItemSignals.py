#!/usr/bin/env python3
"""Signals to an instance with an item, and with what the program is started: all as without one."""

import os
import pty
import signal
import unittest

from Desktop import awaitCondition
from StatusItems import StatusItemTests

# No shell, which would change them: the signals that are blocked and ignored, the descriptors, and
# what is in the environment.
_tell = """#!/usr/bin/env python3
import os, re
print(re.findall("^(Sig(?:Blk|Ign):.*)$", open("/proc/self/status").read(), re.MULTILINE))
for number in range(256):
    if os.path.exists(f"/proc/self/fd/{number}"):
        print(number, os.readlink(f"/proc/self/fd/{number}"))
for name, value in sorted(os.environ.items()):
    print(name, value)
"""
_forwarded = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)


class Signals(StatusItemTests):
    def test_signals_to_the_runner_reach_the_program_and_end_nothing(self):
        for options in ((), ("--menu-bar",)):
            with self.subTest(options):
                instance = self.recording(options=options)
                instance.start()
                instance.awaitLog("ready\n")
                expected = "ready\n"
                for number in _forwarded:
                    instance.signal(number)
                    expected += f"{number.name}\n"
                    instance.awaitLog(expected)
                instance.finish(11)
                self.assertEqual(instance.ended(), (11, "", ""))

    def test_one_that_ends_the_program_ends_the_runner_as_without_an_item(self):
        for number in _forwarded:
            without = self.instance("/bin/sleep", "1000", options=())
            without.start()
            without.programPid()
            without.signal(number)
            instance, _ = self.started("/bin/sleep", "1000")

            instance.signal(number)

            self.assertEqual(instance.ended(), without.ended(), number)
        self.assertNoItems()

    def test_a_hang_up_that_whoever_starts_it_ignores_is_taken_as_without_an_item(self):
        logs = []
        for options in ((), ("--menu-bar",)):
            instance = self.recording(options=options)
            instance.start("nohup")
            instance.awaitLog("ready\n")
            instance.signal(signal.SIGHUP)
            instance.signal(signal.SIGTERM)
            awaitCondition(lambda: "SIGTERM" in instance.log(), instance.log)
            logs.append(instance.log())
            instance.finish(8)
            self.assertEqual(instance.ended()[0], 8)
        self.assertEqual(*logs)

    def test_an_interrupt_from_the_terminal_reaches_the_program_once(self):
        """The terminal sends it to runner and program alike."""
        for options in ((), ("--menu-bar",)):
            instance = self.recording(options=options)
            runner, terminal = pty.fork()
            if runner == 0:
                os.execve(instance.executable, [str(instance.executable)],
                          self.user.environment())
            instance.awaitLog("ready\n")
            self.panel.awaitIcons(len(options))
            os.write(terminal, b"\x03")
            awaitCondition(lambda: "SIGINT" in instance.log(), instance.log)
            # A second one would come before what is sent after it.
            os.kill(runner, signal.SIGHUP)
            instance.awaitLog("ready\nSIGINT\nSIGHUP\n")
            instance.finish(3)
            self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(runner, 0)[1]), 3)
            self.assertEqual(instance.log(), "ready\nSIGINT\nSIGHUP\n")
            os.close(terminal)

    def test_without_standard_streams_nothing_is_taken_for_them(self):
        instance = self.recording()
        instance.start("sh", "-c", 'exec "$0" <&- >&- 2>&-')
        instance.awaitLog("ready\n")
        item = self.itemOf(instance)
        for number in range(3):
            self.assertNotIn("socket", os.readlink(f"/proc/{instance.pid()}/fd/{number}"))
        item.choose(f"Quit {instance.name}")
        instance.awaitLog("ready\nSIGTERM\n")
        instance.finish(2)
        self.assertEqual(instance.ended(), (2, "", ""))

    def test_the_program_is_started_as_without_an_item(self):
        """With the same signals and descriptors, though the runner waits in another way."""
        tell = self.program(_tell)
        logs = []
        for options in ((), ("--menu-bar",)):
            instance = self.instance(tell, options=options)
            instance.run()
            logs.append(instance.log().replace(instance.name, "NAME").replace(
                instance.configuration["bundleId"], "ID"))
        self.assertNotEqual(logs[0], "")
        self.assertEqual(*logs)

    def test_an_end_of_children_that_nobody_waits_for_is_not_missed(self):
        """Whoever starts the runner may ignore SIGCHLD, which is inherited."""
        instance = self.recording()
        instance.start("env", "--ignore-signal=CHLD")
        self.itemOf(instance)
        instance.awaitLog("ready\n")

        instance.finish(6)

        self.assertEqual(instance.ended(), (6, "", ""))

    def test_a_runner_that_is_killed_leaves_the_program_and_no_item(self):
        instance, item = self.startedRecording()
        program = instance.programPid()

        instance.signal(signal.SIGKILL)

        instance.ended()
        self.assertNoItems()
        os.kill(program, signal.SIGTERM)
        instance.awaitLog("ready\nSIGTERM\n")
        os.kill(program, signal.SIGKILL)


if __name__ == "__main__":
    unittest.main()
