#!/usr/bin/env python3
"""What a Wayland compositor is told of an instance's windows: the desktop id, where programs let
themselves be told."""

import os
import re
import signal
import unittest

from Desktop import awaitCondition
from Instances import InDesktop


class ApplicationIds(InDesktop):
    def setUp(self):
        super().setUp()
        display = "korvane-test"
        self.compositor = self.start("weston", "--backend=headless-backend.so", "--no-config",
                                     "--idle-time=0", f"--socket={display}")
        socket = os.path.join(self.user.session["XDG_RUNTIME_DIR"], display)
        awaitCondition(lambda: os.path.exists(socket), lambda: "no compositor")
        # What programs say to the compositor comes on their standard error.
        self.user.session.update(WAYLAND_DISPLAY=display, WAYLAND_DEBUG="1",
                                 XDG_SESSION_TYPE="wayland", GDK_BACKEND="wayland")

    def applicationId(self, entry, *arguments):
        self.create("Work", self.adopt(entry), *arguments)
        # A browser may crash on its own account; what it is called is asked of one that does not.
        attempts = 3
        for attempt in range(1, attempts + 1):
            instance = self.startInstance("Work")

            def told():
                names = re.findall(r'set_app_id\("(.*)"\)', self.log("Work"))
                return names or (["nothing"] if instance.poll() is not None else None)

            names = set(awaitCondition(told, lambda: "it names no window"))
            crashed = names == {"nothing"} and instance.returncode == signal.SIGSEGV
            if not crashed or attempt == attempts:
                break
            print(f"{entry} crashed at attempt {attempt}; the compositor is "
                  f"{'there' if self.compositor.poll() is None else 'gone'}")
        self.assertNotEqual(names, {"nothing"}, f"{entry} ended with {instance.returncode}, the "
                            f"compositor with {self.compositor.poll()}: {self.log('Work')[-4000:]}")
        return names

    def test_of_a_GTK_3_program_it_is_the_desktop_id(self):
        self.assertEqual(self.applicationId("org.xfce.mousepad"), {"app.korvane.instance.work"})

    def test_of_chromium_it_is_the_desktop_id(self):
        asRoot = ["--add-arg=--no-sandbox"] if os.geteuid() == 0 else []
        told = self.applicationId("chromium", "--add-arg=--ozone-platform=wayland", *asRoot,
                                  "--add-arg=--no-first-run", "--add-arg=--disable-gpu")
        self.assertEqual(told, {"app.korvane.instance.work"})

    def test_of_firefox_it_is_the_desktop_id(self):
        # Straight to the compositor: between them the browser has a proxy of its own otherwise.
        told = self.applicationId("firefox-esr", "--env", "MOZ_ENABLE_WAYLAND=1",
                                  "--env", "MOZ_DISABLE_WAYLAND_PROXY=1")
        self.assertEqual(told, {"app.korvane.instance.work"})

    def test_a_GTK_4_program_says_its_own(self):
        self.assertEqual(self.applicationId("org.gnome.TextEditor"), {"org.gnome.TextEditor"})


if __name__ == "__main__":
    unittest.main()
