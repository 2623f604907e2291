#!/usr/bin/env python3
"""What is shown of a run of ctest, with a ctest of its own."""

import pathlib
import subprocess
import tempfile
import unittest

script = pathlib.Path(__file__).resolve().parents[2] / "Scripts" / "report-tests"


class ReportTests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.log = self.folder / "test.log"

    def report(self, tests, *options):
        lines = []
        for name, command in tests.items():
            lines.append(f'add_test([[{name}]] "/bin/sh" "-c" [[{command}]])')
            lines.append(f"set_tests_properties([[{name}]] PROPERTIES SKIP_RETURN_CODE 77)")
        (self.folder / "CTestTestfile.cmake").write_text("\n".join(lines) + "\n")
        said = subprocess.run(["ctest", "--output-on-failure", "--parallel", "4", *options],
                              cwd=self.folder, capture_output=True, text=True, check=False)
        done = subprocess.run([script, self.log], input=said.stdout + said.stderr,
                              capture_output=True, text=True, check=False)
        self.assertEqual(done.stderr, "")
        self.assertEqual(self.log.read_text(), said.stdout + said.stderr)
        return done.returncode, done.stdout

    def test_what_passes_is_one_line(self):
        self.assertEqual(self.report({"one": "echo said", "two: it's so": "true"}),
                         (0, "All 2 tests passed.\n"))

    def test_what_fails_is_shown_in_full_and_nothing_else(self):
        status, shown = self.report({
            "good": "echo of no interest",
            "bad": "echo first; echo '  7/9 is no result'; echo '   last'; exit 3",
            "worse": "echo 'another sec'; kill -KILL $$",
        })

        self.assertEqual(status, 0)
        for line in ("first", "  7/9 is no result", "   last", "another sec"):
            self.assertIn(f"{line}\n", shown)
        self.assertNotIn("of no interest", shown)
        self.assertIn(f"2 of 3 tests failed; all output is in {self.log}\n", shown)
        self.assertEqual(shown.count("***"), 2)

    def test_what_is_skipped_is_named(self):
        status, shown = self.report({"good": "true", "elsewhere only": "exit 77"})

        self.assertEqual(status, 0)
        self.assertIn("elsewhere only", shown)
        self.assertIn("1 of 2 tests passed, 1 skipped.\n", shown)

    def test_what_keeps_ctest_from_testing_is_shown(self):
        status, shown = self.report({"good": "true"}, "--no-tests=error", "-R", "nothing")

        self.assertEqual(status, 1)
        self.assertIn("No tests were found", shown)


if __name__ == "__main__":
    unittest.main()
