#!/usr/bin/env python3
"""What the script does that installs packages, with stand-ins for the system's programs."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

scripts = pathlib.Path(__file__).resolve().parents[2] / "Scripts"


class ScratchTree(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="korvane-test-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.tree = self.folder / "tree"
        (self.tree / "Scripts").mkdir(parents=True)

    def copyScript(self, name):
        shutil.copy(scripts / name, self.tree / "Scripts" / name)

    def start(self, command, environment=None):
        """Without a terminal, so that nobody can be asked."""
        return subprocess.run(["timeout", "--kill-after=10", "120", *map(str, command)],
                              env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, start_new_session=True)


tools = ["cat", "dirname", "env", "grep", "head", "mkdir", "sed", "sh", "sort", "timeout", "tr"]
standIns = {
    "id": "echo 1000",
    "dpkg-query": "exit 1",
    "sudo": 'echo asked >>"$CALLS/sudo"; [ "$1" != -n ] || shift; exec "$@"',
    "apt-get": 'echo "$*" >>"$CALLS/apt-get"',
}


class InstallDependencies(ScratchTree):
    """As an ordinary user of a machine where nothing is installed."""

    def setUp(self):
        super().setUp()
        self.copyScript("install-dependencies")
        self.programs = self.folder / "bin"
        self.calls = self.folder / "calls"
        for folder in (self.programs, self.calls):
            folder.mkdir()
        for name in tools:
            (self.programs / name).symlink_to(shutil.which(name))
        for name, script in standIns.items():
            self.standIn(name, script)

    def standIn(self, name, script):
        file = self.programs / name
        file.write_text(f"#!/bin/sh\n{script}\n")
        file.chmod(0o755)

    def install(self):
        environment = {"PATH": str(self.programs), "CALLS": str(self.calls)}
        return self.start([self.tree / "Scripts" / "install-dependencies", "build"], environment)

    def callsOf(self, name):
        file = self.calls / name
        return file.read_text().splitlines() if file.exists() else []

    def failure(self):
        """The sentence that ends a failure, after what is to be installed."""
        done = self.install()
        self.assertNotEqual(done.returncode, 0)
        (*_, sentence) = done.stderr.splitlines()
        self.assertLessEqual(len(done.stderr.splitlines()), 2, done.stderr)
        self.assertTrue(sentence.startswith("Korvane needs packages that are missing here, and "),
                        sentence)
        return sentence

    def test_root_is_asked_for_once_and_nothing_but_the_packages_is_told(self):
        done = self.install()

        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        self.assertIn(" ninja-build ", done.stderr)
        self.assertEqual(self.callsOf("sudo"), ["asked"])
        update, install = self.callsOf("apt-get")
        self.assertTrue(update.endswith("update"))
        self.assertIn(" ninja-build ", install)

    def test_nothing_is_asked_for_where_nothing_is_missing(self):
        self.standIn("dpkg-query", "echo installed")

        done = self.install()

        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(self.callsOf("sudo"), [])

    def test_without_anybody_to_ask_for_root_it_ends_with_a_sentence(self):
        for name, script in {"sudo that wants a password": "echo a password is required >&2; exit 1",
                             "no sudo": None}.items():
            with self.subTest(name):
                if script:
                    self.standIn("sudo", script)
                else:
                    (self.programs / "sudo").unlink()
                    # It would read a password from whatever standard input is.
                    self.standIn("su", "exec cat")

                self.assertIn("only root can install them", self.failure())
                self.assertEqual(self.callsOf("apt-get"), [])

    def test_an_archive_that_is_out_of_reach_is_told_with_the_log(self):
        self.standIn("apt-get", 'echo "E: Failed to fetch http://x  Could not resolve \'x\'" >&2\n'
                                "exit 100")

        self.assertTrue(self.failure().endswith(
            f"cannot be downloaded from the archive of packages (see {self.tree}/build/apt.log)."))

    def test_a_failure_of_apt_is_told_with_its_reason_and_the_log(self):
        self.standIn("apt-get", '[ "$2" = update ] && exit 0\n'
                                'echo "noise"; echo "E: Unable to locate package g++" >&2; exit 100')

        self.assertTrue(self.failure().endswith(
            f'apt-get failed with "Unable to locate package g++" (see {self.tree}/build/apt.log).'))
        self.assertIn("noise", (self.tree / "build" / "apt.log").read_text())

    def test_a_list_of_packages_that_could_not_be_renewed_does_no_harm(self):
        self.standIn("apt-get", '[ "$2" != update ] || exit 100')

        self.assertEqual(self.install().returncode, 0)


if __name__ == "__main__":
    unittest.main()
