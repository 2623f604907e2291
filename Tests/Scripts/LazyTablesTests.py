#!/usr/bin/env python3
"""LazyTablesTests.py CMAKE CC NM

The step of the build that collects what objects call of libraries that are opened late, on small
objects and libraries.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

cmake, compiler, nm = sys.argv[1:4]
script = pathlib.Path(__file__).resolve().parents[2] / "cmake" / "WriteLazyTables.cmake"


class LazyTables(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.library("first", "void shared(void) {} void firstOnly(void) {} int firstData = 1;")
        self.library("second", "void shared(void) {} void secondOnly(void) {} "
                               "void _Z5namedv(void) {}")

    def call(self, *words):
        return subprocess.run([str(word) for word in words], cwd=self.root, capture_output=True,
                              text=True, check=False)

    def require(self, *words):
        result = self.call(*words)
        self.assertEqual(result.returncode, 0, result.stderr)

    def library(self, name, code):
        (self.root / f"{name}.c").write_text(code)
        self.require(compiler, "-shared", "-fPIC", "-o", f"lib{name}.so", f"{name}.c")

    def objects(self, *codes):
        """An archive with an object for each of the codes."""
        (self.root / "objects.a").unlink(missing_ok=True)
        for number, code in enumerate(codes):
            (self.root / f"{number}.c").write_text(code)
            self.require(compiler, "-fPIC", "-c", f"{number}.c")
            self.require("ar", "rcs", "objects.a", f"{number}.o")

    def write(self):
        (self.root / "settings.cmake").write_text(
            f'set(objects "{self.root}/objects.a")\nset(nm "{nm}")\n'
            f'set(tables "First;Second")\nset(folder "{self.root}")\n'
            f'set(libraries_First "{self.root}/libfirst.so")\nset(soname_First "first.so.1")\n'
            f'set(libraries_Second "{self.root}/libsecond.so;{self.root}/libfirst.so")\n'
            f'set(soname_Second "second.so.2")\n')
        return self.call(cmake, "-P", script, self.root / "settings.cmake")

    def stubs(self, name):
        lines = (self.root / f"Lazy{name}.S").read_text().splitlines()
        return [line.split()[1].rstrip(",") for line in lines if line.startswith("STUB ")]

    def names(self, name):
        lines = (self.root / f"Lazy{name}.cpp").read_text().splitlines()
        return [line.strip().strip('",') for line in lines if line.strip().endswith('",')]

    def assertCollected(self, first, second):
        result = self.write()
        self.assertEqual(result.returncode, 0, result.stderr)
        for name, expected in (("First", first), ("Second", second)):
            self.assertEqual(self.stubs(name), expected)
            self.assertEqual(self.names(name), expected)

    def test_a_name_goes_to_the_first_table_whose_library_has_it(self):
        self.objects("void shared(void); void firstOnly(void); void secondOnly(void);"
                     "void a(void) { shared(); firstOnly(); secondOnly(); }",
                     "void shared(void); void b(void) { shared(); }")
        self.assertCollected(["firstOnly", "shared"], ["secondOnly"])

    def test_a_function_whose_address_is_taken_is_collected(self):
        self.objects("void secondOnly(void); void (*pointer)(void) = secondOnly;")
        self.assertCollected([], ["secondOnly"])

    def test_what_the_objects_or_nobody_has_is_left_to_the_linker(self):
        self.objects("void shared(void); void nobodys(void); void _Z5namedv(void);"
                     "void a(void) { shared(); nobodys(); _Z5namedv(); }", "void shared(void) {}")
        self.assertCollected([], [])

    def test_data_of_a_library_fails_the_build_with_its_name(self):
        self.objects("extern int firstData; int a(void) { return firstData; }")
        result = self.write()
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("firstData is data of a library", " ".join(result.stderr.split()))

    def test_objects_that_cannot_be_read_fail_the_build(self):
        (self.root / "objects.a").write_text("no archive")
        self.assertNotEqual(self.write().returncode, 0)

    def test_what_has_not_changed_is_not_written_again(self):
        self.objects("void shared(void); void a(void) { shared(); }")
        self.assertCollected(["shared"], [])
        before = (self.root / "LazyFirst.S").stat().st_mtime_ns
        self.objects("void shared(void); void a(void) { shared(); shared(); }")
        self.assertCollected(["shared"], [])
        self.assertEqual((self.root / "LazyFirst.S").stat().st_mtime_ns, before)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
