#!/usr/bin/env python3
"""What an installed tree offers: the programs, and the library for a program of another project.

CMake hands over BUILD_FOLDER and CXX, the compiler that made the library, in the environment.
"""

import os
import pathlib
import re
import shlex
import shutil
import unittest

from EndToEnd import User

source = pathlib.Path(__file__).resolve().parents[2]
examples = source / "Documentation" / "Examples"
example = examples / "consumer"


class Installation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.user = User()
        cls.addClassCleanup(cls.user.remove)
        installed = cls.user.root / "installed"
        cls.user.run("cmake", "--install", os.environ["BUILD_FOLDER"], "--prefix", installed)
        # Nobody may depend on where the tree was first.
        cls.prefix = cls.user.root / "moved"
        installed.rename(cls.prefix)
        cls.example = cls.user.root / "example"
        shutil.copytree(example, cls.example)

    def runConsumer(self, program, name):
        """Lets the example make an instance, starts that, and returns what the example printed."""
        folder = self.user.root / f"applications of {name}"
        runner = self.prefix / "lib" / "korvane" / "korvane-runner"
        output = self.user.run(program, runner, folder, name, "/bin/echo", "hello", "world")

        self.user.run(folder / f"{name}.app" / "Contents" / "MacOS" / "runner")
        home = self.user.home / "KorvaneInstances" / name
        self.assertEqual((home / "korvane-instance.log").read_text(), "hello world\n")
        self.assertEqual(output, f'made {folder}/{name}.app\n{name}: {home}\n')

    def packageFlags(self, *options, package="ambrel"):
        (packages,) = self.prefix.rglob("pkgconfig")
        return shlex.split(self.user.run("env", f"PKG_CONFIG_PATH={packages}", "pkg-config",
                                         *options, package))

    def runManagerExample(self, program):
        """Lets the example make, list and delete an instance, and checks what it says."""
        runner = self.prefix / "lib" / "korvane" / "korvane-runner"
        lines = self.user.run(program, runner, "/bin/echo", "hello").splitlines()

        bundle = self.user.home / "Applications" / "Example.app"
        self.assertIn(f"Example: {bundle}", lines)
        self.assertRegex(lines[-2], r"^\d{6,} bytes would go$")
        self.assertEqual(lines[-1], "deleted")
        self.assertFalse(bundle.exists())
        self.assertFalse((self.user.home / "KorvaneInstances" / "Example").exists())

    def includeFolders(self, flags):
        folders = {pathlib.Path(flag[2:]) for flag in flags if flag.startswith("-I")}
        return {folder.resolve() for folder in folders}

    def test_a_cmake_project_finds_it_and_builds_against_it_alone(self):
        build = self.user.root / "build"

        self.user.run("cmake", "-G", "Ninja", "-S", self.example, "-B", build,
                      f"-DCMAKE_PREFIX_PATH={self.prefix}", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
                      f"-DCMAKE_CXX_COMPILER={os.environ['CXX']}")
        self.user.run("cmake", "--build", build)

        self.runConsumer(build / "consumer", "With CMake")
        commands = (build / "compile_commands.json").read_text()
        self.assertIn(str(self.prefix / "include"), commands)
        self.assertNotIn(str(source), commands)

    def test_a_compiler_and_pkg_config_are_enough(self):
        flags = self.packageFlags("--cflags", "--libs")
        program = self.user.root / "consumer"

        self.user.run(os.environ["CXX"], "-std=c++20", self.example / "main.cpp", "-o", program,
                      *flags)

        self.runConsumer(program, "With pkg-config")
        self.assertEqual(self.includeFolders(flags), {self.prefix / "include"})

    def test_the_manager_is_a_library_for_another_front_end_with_cmake(self):
        build = self.user.root / "build of the manager's example"

        self.user.run("cmake", "-G", "Ninja", "-S", examples / "manager", "-B", build,
                      f"-DCMAKE_PREFIX_PATH={self.prefix}",
                      f"-DCMAKE_CXX_COMPILER={os.environ['CXX']}")
        self.user.run("cmake", "--build", build)

        self.runManagerExample(build / "manager")

    def test_the_manager_is_a_library_for_another_front_end_with_pkg_config(self):
        flags = self.packageFlags("--cflags", "--libs", package="korvanemanager")
        program = self.user.root / "manager"

        self.user.run(os.environ["CXX"], "-std=c++20", examples / "manager" / "main.cpp", "-o",
                      program, *flags)

        self.runManagerExample(program)

    def test_pkg_config_asked_to_derive_the_prefix_gives_the_same_folders(self):
        for name, folder in {"includedir": "include", "libdir": "lib"}.items():
            (given,) = self.packageFlags("--define-prefix", f"--variable={name}")
            self.assertTrue(pathlib.Path(given).resolve().is_relative_to(self.prefix / folder))

    def test_every_public_header_can_be_included_first_and_none_is_internal(self):
        headers = sorted(self.prefix.glob("include/**/*.h"))
        names = [str(header.relative_to(self.prefix / "include")) for header in headers]

        self.assertIn("Ambrel/Wrapper/WrapperFactory.h", names)
        self.assertIn("Ambrel/Platform/UserPlaces.h", names)
        internal = r"Ambrel/(Formats|Home)/.*|.*/(Posix|Linux)/.*|.*(FileSystem|Utf8)\.h"
        self.assertEqual([name for name in names if re.fullmatch(internal, name)], [])
        for name in names:
            file = self.user.root / "header.cpp"
            file.write_text(f"#include <{name}>\n")
            self.user.run(os.environ["CXX"], "-std=c++20", "-fsyntax-only",
                          f"-I{self.prefix}/include", f"-I{self.prefix}/include/korvane", file)

    def test_nothing_installed_tells_where_it_was_built(self):
        for file in self.prefix.rglob("*"):
            if file.suffix in (".cmake", ".pc", ".h"):
                self.assertNotIn(str(source), file.read_text(), f"in {file}")

    def test_the_manual_and_the_completions_are_written_and_installed(self):
        share = self.prefix / "share"
        for name in ("bash-completion/completions/korvane", "zsh/site-functions/_korvane",
                     "fish/vendor_completions.d/korvane.fish", "man/man1/korvane.1"):
            text = (share / name).read_text()
            self.assertIn("unregister", text, f"in {name}")
            self.assertIn("shareUserFolders", text, f"in {name}")
        self.assertEqual(re.findall("@.*@", (share / "man/man1/korvane.1").read_text()), [])

    def test_every_command_has_a_page_of_the_manual(self):
        pages = self.prefix / "share" / "man" / "man1"
        help = self.user.run(self.prefix / "bin" / "korvane", "--help")
        commands = re.findall("^  ([a-z]+(?: [a-z]+)?)(?:, [a-z]+)?  +[A-Z]", help, re.MULTILINE)
        self.assertIn("create app", commands)
        for command in commands:
            page = pages / f"korvane-{command.replace(' ', '-')}.1"
            shown = self.user.run("env", "MANPAGER=cat", "MANWIDTH=80", "man", "--warnings",
                                  f"--manpath={self.prefix}/share/man", page.stem)
            self.assertIn(f"korvane {command}", shown)

    def test_what_was_installed_can_be_taken_away_again(self):
        prefix = self.user.root / "passing"
        (prefix / "bin").mkdir(parents=True)
        (prefix / "bin" / "other").write_text("another's")
        self.user.run("cmake", "--install", os.environ["BUILD_FOLDER"], "--prefix", prefix)
        self.assertTrue((prefix / "bin" / "korvane").exists())

        self.user.run("cmake", "--build", os.environ["BUILD_FOLDER"], "--target", "uninstall")

        left = sorted(str(file.relative_to(prefix)) for file in prefix.rglob("*"))
        self.assertEqual(left, ["bin", "bin/other"])

    def test_the_installed_manager_finds_the_installed_runner(self):
        bundle = self.user.run(self.prefix / "bin" / "korvane", "create", "command", "Hello",
                               "/bin/echo", "hello").rstrip("\n")

        self.user.run(self.prefix / "bin" / "korvane", "run", "Hello")
        runner = pathlib.Path(bundle) / "Contents" / "MacOS" / "runner"
        installed = self.prefix / "lib" / "korvane" / "korvane-runner"
        self.assertEqual(runner.read_bytes(), installed.read_bytes())

    def test_the_installed_manager_finds_the_installed_profiles(self):
        profiles = self.prefix / "share" / "korvane" / "profiles"
        names = {file.name for file in profiles.iterdir()}
        sources = source / "Sources" / "Manager" / "Programs" / "Linux" / "Profiles"
        self.assertEqual(names, {file.name for file in sources.iterdir()})

        entries = self.user.home / ".local" / "share" / "applications"
        entries.mkdir(parents=True, exist_ok=True)
        (entries / "xterm.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=XTerm\nExec=/bin/true\n")
        manager = self.prefix / "bin" / "korvane"
        self.user.run(manager, "adopt", "xterm")
        said = self.user.run(manager, "inspect", "XTerm")
        self.assertIn(str(profiles / "xterm.json"), said)


if __name__ == "__main__":
    unittest.main()
