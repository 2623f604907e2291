#!/usr/bin/env python3
"""What the script at the top of the tree shows when it is started without arguments."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

root = pathlib.Path(__file__).resolve().parents[2]


class Demonstration(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="korvane-test-")
        self.addCleanup(folder.cleanup)
        self.temporary = pathlib.Path(folder.name).resolve()

    def demonstrate(self):
        # The program under test rather than one that the script at the top would build first.
        command = ["timeout", "--kill-after=10", "60", root / "Scripts" / "demonstrate",
                   os.environ["KORVANE"]]
        return subprocess.run(command, env={**os.environ, "TMPDIR": str(self.temporary)},
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)

    def test_it_shows_two_instances_with_homes_counts_and_logs_of_their_own(self):
        done = self.demonstrate()

        self.assertEqual((done.returncode, done.stderr), (0, ""))
        table = [re.split(r"\s{2,}", line.strip()) for line in done.stdout.splitlines()[2:]]
        shared = "Downloads Documents Desktop (with letter.txt)"
        self.assertEqual(table, [
            ["Instance", "Its home", "Starts", "Shared with the user", "Its log"],
            ["First", "~/KorvaneInstances/First", "2", shared,
             "~/KorvaneInstances/First/korvane-instance.log"],
            ["Second", "~/KorvaneInstances/Second", "1", shared,
             "~/KorvaneInstances/Second/korvane-instance.log"],
        ])
        self.assertEqual(list(self.temporary.iterdir()), [], "it cleans up behind itself")


class ScriptAtTheTop(unittest.TestCase):
    def test_it_hands_its_arguments_and_its_output_over(self):
        # Everything is built by now, so that this only finds that nothing is to be done.
        shown = subprocess.run(["timeout", "--kill-after=10", "60", root / "run", "--help"],
                               stdin=subprocess.DEVNULL, capture_output=True, text=True)
        expected = subprocess.run([os.environ["KORVANE"], "--help"], capture_output=True,
                                  text=True)

        self.assertEqual(shown.returncode, 0)
        self.assertEqual(shown.stdout, expected.stdout)


if __name__ == "__main__":
    unittest.main()
