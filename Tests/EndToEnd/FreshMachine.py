#!/usr/bin/env python3
"""What the scripts do that build the tree and install what that needs, tried out on a small tree
and with stand-ins for the system's programs."""

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


project = """
cmake_minimum_required(VERSION 3.25)
project(Small LANGUAGES NONE)
option(KORVANE_BUILD_TESTS "" ON)

function(add_product name)
    add_custom_command(OUTPUT ${name} DEPENDS ${PROJECT_SOURCE_DIR}/${name}.txt
        COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/${name}.txt ${name}
        COMMAND ${CMAKE_COMMAND} -E echo made ${name})
    add_custom_target(${name}-target ALL DEPENDS ${name})
endfunction()

add_product(program)
if(KORVANE_BUILD_TESTS)
    find_file(NEEDED needed.txt PATHS ${PROJECT_SOURCE_DIR} NO_DEFAULT_PATH REQUIRED)
    add_product(tests)
endif()
"""

presets = """{
  "version": 6,
  "configurePresets": [
    { "name": "release", "generator": "Ninja", "binaryDir": "${sourceDir}/build/${presetName}" }
  ],
  "buildPresets": [ { "name": "release", "configurePreset": "release" } ]
}"""


class Build(ScratchTree):
    def setUp(self):
        super().setUp()
        self.copyScript("build")
        (self.tree / "CMakeLists.txt").write_text(project)
        (self.tree / "CMakePresets.json").write_text(presets)
        (self.tree / "needed.txt").touch()
        for name in ("program", "tests"):
            (self.tree / f"{name}.txt").write_text(f"the {name}\n")

    def build(self, *arguments, tree=None):
        done = self.start([(tree or self.tree) / "Scripts" / "build", *arguments])
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)
        return done.stderr

    def product(self, name="program", tree=None):
        return (tree or self.tree) / "build" / "release" / name

    def made(self, tree=None):
        """What the last build made."""
        log = ((tree or self.tree) / "build" / "release" / "build.log").read_text()
        return [line for line in log.splitlines() if line.startswith("made ")]

    def test_a_moved_tree_is_built_again(self):
        self.build("release")
        moved = self.folder / "moved"
        self.tree.rename(moved)
        (moved / "program.txt").write_text("changed\n")

        self.build("release", tree=moved)

        self.assertEqual(self.product(tree=moved).read_text(), "changed\n")
        self.assertFalse(self.tree.exists())

    def test_a_copied_tree_builds_its_own_sources(self):
        self.build("release")
        copy = self.folder / "copy"
        shutil.copytree(self.tree, copy, symlinks=True)
        (copy / "program.txt").write_text("the copy's\n")

        self.build("release", tree=copy)

        self.assertEqual(self.product(tree=copy).read_text(), "the copy's\n")
        self.assertEqual(self.product().read_text(), "the program\n")
        for name in ("build.ninja", "CMakeCache.txt"):
            text = (copy / "build" / "release" / name).read_text()
            self.assertNotIn(f"{self.tree}/", text, f"in {name}")

    def test_a_link_to_the_tree_is_the_same_tree(self):
        self.build("release")
        link = self.folder / "link"
        link.symlink_to(self.tree)

        self.build("release", tree=link)

        self.assertEqual(self.made(), [])

    def test_without_tests_nothing_is_missed_that_only_they_need(self):
        (self.tree / "needed.txt").unlink()

        self.build("--without-tests", "release")

        self.assertTrue(self.product().exists())
        self.assertFalse(self.product("tests").exists())

    def test_the_tests_join_what_was_built_without_them_and_stay(self):
        self.build("--without-tests", "release")
        self.assertEqual(self.made(), ["made program"])

        self.build("release")
        self.assertEqual(self.made(), ["made tests"])

        self.build("--without-tests", "release")
        self.assertEqual(self.made(), [])
        self.assertTrue(self.product("tests").exists())
        self.build("release")
        self.assertEqual(self.made(), [])

    def test_without_tests_it_builds_also_where_they_have_lost_what_they_need(self):
        self.build("release")
        (self.tree / "needed.txt").unlink()
        (self.tree / "CMakePresets.json").write_text(presets + "\n")

        self.build("--without-tests", "release")

        (self.tree / "needed.txt").touch()
        self.build("release")
        self.assertTrue(self.product("tests").exists())

    def test_what_is_missing_is_told_and_found_once_it_is_there(self):
        (self.tree / "needed.txt").unlink()

        failed = self.start([self.tree / "Scripts" / "build", "release"])

        self.assertEqual(failed.returncode, 1)
        self.assertIn("Could not find NEEDED", failed.stderr)
        self.assertTrue(failed.stderr.endswith(
            "Building Korvane failed: cmake --preset release\n"), failed.stderr)
        (self.tree / "needed.txt").touch()
        self.build("release")
        self.assertTrue(self.product("tests").exists())

    def test_progress_is_told_in_few_lines_and_not_when_there_is_nothing_to_do(self):
        for number in range(40):
            (self.tree / f"part{number}.txt").touch()
        (self.tree / "CMakeLists.txt").write_text(
            project + "foreach(number RANGE 39)\nadd_product(part${number})\nendforeach()\n")

        said = self.build("release").splitlines()

        self.assertEqual(said[1:], [f"Building Korvane: {number} of 42"
                                    for number in (11, 21, 32, 42)])
        self.assertEqual(self.build("release"), "")

    def test_a_failure_shows_what_the_tools_said_and_no_progress(self):
        self.build("release")
        (self.tree / "program.txt").unlink()

        failed = self.start([self.tree / "Scripts" / "build", "release"])

        self.assertEqual(failed.returncode, 1)
        self.assertIn("program.txt", failed.stderr)
        self.assertNotIn("[0/", failed.stderr)
        self.assertTrue(failed.stderr.endswith(
            "Building Korvane failed: cmake --build --preset release\n"), failed.stderr)


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
