#!/usr/bin/env python3
"""The check that includes go one way, on small trees."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

script = pathlib.Path(__file__).resolve().parents[2] / "Scripts" / "layers.py"


class Layers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for name in ("Ambrel/Base/Path.h", "Ambrel/Platform/Text.h", "Ambrel/Launch/Launcher.h",
                     "Ambrel/Platform/Posix/Retry.h", "Ambrel/Platform/Linux/Lazy.h",
                     "Manager/Operations/Create.h", "korvane/Verbs/AllVerbs.h",
                     "korvane/Verbs/OpenVerb.h", "korvane-runner/Hosts.h"):
            self.write(f"Sources/{name}")

    def write(self, name, *included):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("#pragma once\n\n" + "".join(f'#include "{one}"\n' for one in included))

    def check(self):
        result = subprocess.run([sys.executable, "-B", script, self.root], capture_output=True,
                                text=True, check=False)
        self.assertEqual(result.stderr, "")
        return result.returncode, result.stdout.splitlines()

    def assertAllowed(self, name, included):
        self.write(name, included)
        self.assertEqual(self.check(), (0, []))

    def assertRefused(self, name, included, why):
        self.write(name, included)
        self.assertEqual(self.check(), (1, [f"{name}:3: includes {included}, but {why}"]))

    def test_a_room_may_include_itself_and_what_lies_below_it(self):
        self.assertAllowed("Sources/Ambrel/Launch/Check.cpp", "Ambrel/Launch/Launcher.h")
        self.assertAllowed("Sources/Ambrel/Launch/Check.cpp", "Ambrel/Base/Path.h")
        self.assertAllowed("Sources/Manager/Rules/Names.cpp", "Ambrel/Launch/Launcher.h")
        self.assertAllowed("Sources/korvane-runner/main.cpp", "korvane-runner/Hosts.h")

    def test_a_planted_include_that_goes_up_a_room_is_found(self):
        self.assertRefused("Sources/Ambrel/Base/Path.cpp", "Ambrel/Launch/Launcher.h",
                           "Ambrel/Base lies below Launch")

    def test_a_planted_include_that_goes_up_a_floor_is_found(self):
        self.assertRefused("Sources/Ambrel/Web/Badge.cpp", "Manager/Operations/Create.h",
                           "Ambrel stands on nothing")
        self.write("Sources/Ambrel/Web/Badge.cpp")
        self.assertRefused("Sources/Manager/Base/Notice.h", "korvane/Verbs/OpenVerb.h",
                           "Manager stands on Ambrel")

    def test_an_include_in_angle_brackets_counts_as_well(self):
        source = self.root / "Sources/Ambrel/Base/Path.cpp"
        source.write_text("#include <vector>\n#include <Ambrel/Launch/Launcher.h>\n")
        self.assertEqual(self.check(), (1, ["Sources/Ambrel/Base/Path.cpp:2: includes "
                                            "Ambrel/Launch/Launcher.h, but Ambrel/Base lies below "
                                            "Launch"]))

    def install(self, *headers):
        names = "".join(f"\n        {header}" for header in headers)
        (self.root / "Sources/Ambrel/CMakeLists.txt").write_text(
            f"install_library(Ambrel NAME Ambrel FOLDER Ambrel\n    HEADERS{names})\n")

    def test_a_header_that_is_installed_includes_none_that_is_not(self):
        self.install("Launch/Launcher.h")
        self.assertRefused("Sources/Ambrel/Launch/Launcher.h", "Ambrel/Base/Path.h",
                           "that is not installed with it")
        self.install("Launch/Launcher.h", "Base/Path.h")
        self.assertEqual(self.check(), (0, []))

    def test_a_header_that_is_to_be_installed_has_to_be_there(self):
        self.install("Base/Gone.h")
        self.assertEqual(self.check(), (1, ["Sources/Ambrel/Base/Gone.h: is to be installed, and "
                                            "is not there"]))

    def test_the_runner_knows_nothing_of_the_manager(self):
        self.assertRefused("Sources/korvane-runner/main.cpp", "Manager/Operations/Create.h",
                           "korvane-runner stands on Ambrel")

    def test_what_is_one_systems_is_known_to_its_backend_alone(self):
        self.assertAllowed("Sources/Ambrel/Platform/Linux/Png.cpp", "Ambrel/Platform/Linux/Lazy.h")
        self.assertRefused("Sources/Ambrel/Launch/Check.cpp", "Ambrel/Platform/Linux/Lazy.h",
                           "only files in Linux may know of that system")

    def test_what_backends_share_is_theirs_alone(self):
        self.assertAllowed("Sources/Ambrel/Platform/Linux/Png.cpp",
                           "Ambrel/Platform/Posix/Retry.h")
        self.assertRefused("Sources/Ambrel/Launch/Check.cpp", "Ambrel/Platform/Posix/Retry.h",
                           "only backends may include what backends share")

    def test_no_verb_includes_the_list_of_verbs(self):
        self.assertAllowed("Sources/korvane/main.cpp", "korvane/Verbs/AllVerbs.h")
        self.assertAllowed("Sources/korvane/Verbs/AllVerbs.cpp", "korvane/Verbs/AllVerbs.h")
        self.assertRefused("Sources/korvane/Verbs/OpenVerb.cpp", "korvane/Verbs/AllVerbs.h",
                           "only a main includes the list of its room")

    def test_a_file_in_no_room_is_found(self):
        self.write("Sources/Ambrel/Support/Odd.h")

        self.assertEqual(self.check(), (1, ["Sources/Ambrel/Support/Odd.h: lies in no known room"]))

    def test_the_tests_of_a_floor_know_nothing_of_the_floors_above(self):
        self.write("Tests/Ambrel/PathTests.cpp", "Manager/Operations/Create.h")

        self.assertEqual(self.check(), (1, ["Tests/Ambrel/PathTests.cpp:3: includes "
                                            "Manager/Operations/Create.h, which is none of "
                                            "Ambrel's business"]))

    def test_an_empty_tree_is_no_clean_one(self):
        result = subprocess.run([sys.executable, "-B", script, self.root / "nowhere"],
                                capture_output=True, text=True, check=False)

        self.assertEqual(result.returncode, 1)


if __name__ == "__main__":
    unittest.main()
