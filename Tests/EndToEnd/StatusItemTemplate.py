#!/usr/bin/env python3
"""Items with a template image: drawn in the colour of the panel's text, from files of their own."""

import os
import pathlib
import signal
import unittest

from Desktop import awaitCondition
from StatusItemPictures import IconTests, isNear, pixmapsOf, red, sizes

textOfLightPanel, textOfDarkPanel = (0x2E, 0x34, 0x36), (0xEE, 0xEE, 0xEC)


class Templates(IconTests):
    options = ["--menu-bar", "--menu-bar-template"]

    def setUp(self):
        self.folder = pathlib.Path(self.user.session["XDG_RUNTIME_DIR"])
        self.before = set(self.folder.iterdir())

    def new(self):
        return set(self.folder.iterdir()) - self.before

    def template(self, **environment):
        instance = self.recording(options=[*self.options, "--icon", self.left])
        instance.start(**environment)
        item = self.itemOf(instance)
        instance.awaitLog("ready\n")
        return instance, item

    def assertDrawnIn(self, text):
        slot = self.panel.slots()[0]

        def drawn():
            picture = self.panel.picture(slot)
            return picture.colour(10, 10), picture.colour(10, 22), picture.colour(22, 10)
        whole, _, background = awaitCondition(lambda: drawn() if drawn()[0] == text else None,
                                              lambda: f"drawn are {drawn()}, not {text}")
        half = drawn()[1]
        expected = tuple((part + of) // 2 for part, of in zip(whole, background))
        self.assertTrue(isNear(half, expected), f"{half} is not between {whole} and {background}")
        for red, green, blue in self.panel.picture(slot).colours():
            self.assertLess(max(red, green, blue) - min(red, green, blue), 24)

    def test_it_is_drawn_in_the_colour_of_the_panels_text(self):
        self.addCleanup(self.panel.setDark, False)
        for isDark, text in [(False, textOfLightPanel), (True, textOfDarkPanel)]:
            self.panel.setDark(isDark)
            instance, _ = self.template()
            self.assertDrawnIn(text)
            self.finish(instance)

    def test_others_keep_their_colours_on_a_dark_panel(self):
        self.addCleanup(self.panel.setDark, False)
        self.panel.setDark(True)
        instance, _ = self.startedRecording(options=["--menu-bar", "--icon", self.left])
        slot = self.panel.slots()[0]
        awaitCondition(lambda: isNear(self.panel.picture(slot).colour(10, 10), red[1:]),
                       lambda: f"{self.panel.picture(slot).colours()}")
        self.finish(instance)
        self.assertEqual(self.new(), set())

    def test_panels_that_do_not_look_for_files_are_sent_a_grey_one(self):
        instance, item = self.template()
        pixmaps = pixmapsOf(item)
        self.assertEqual([pixmap.width for pixmap in pixmaps], sizes)
        for pixmap in pixmaps:
            for alpha, *colour in pixmap.pixels():
                if alpha:
                    self.assertEqual(len(set(colour)), 1)
            opacities = [pixmap.at(*place)[0] for place in [(.25, .25), (.25, .75), (.75, .5)]]
            self.assertTrue(isNear(opacities, (255, 128, 0)), opacities)
            self.assertTrue(60 < pixmap.at(.25, .25)[1] < 200, "it is seen on black and on white")
        self.finish(instance)

    def test_its_files_lie_in_a_private_folder_and_go_with_it(self):
        instance, item = self.template()
        self.panel.slots()
        path = pathlib.Path(item.properties()["IconThemePath"])
        self.assertTrue(path.is_relative_to(self.folder))
        [folder] = [one for one in self.new() if path.is_relative_to(one)]
        self.assertEqual(folder.stat().st_mode & 0o777, 0o700)

        self.finish(instance)

        self.assertEqual(self.new(), set())

    def test_what_a_killed_runner_left_goes_at_the_next_start_of_any(self):
        running, _ = self.template()
        killed, item = self.template()
        left = item.properties()["IconThemePath"]
        killed.signal(signal.SIGKILL)
        killed.ended()
        self.assertTrue(os.path.isdir(left))

        instance, _ = self.template()

        awaitCondition(lambda: not os.path.exists(left), lambda: f"{left} is still there")
        # What runs meanwhile keeps its files: another panel finds them.
        self.panel.end()
        self.panel.start()
        for slot in self.panel.slots(2):
            awaitCondition(lambda: self.panel.picture(slot).colour(10, 10) == textOfLightPanel,
                           lambda: f"{self.panel.picture(slot).colours()}")
        running.finish(0)
        running.ended()
        self.finish(instance)
        self.assertEqual(self.new(), set())

    def test_where_there_is_no_room_for_files_the_grey_one_is_shown(self):
        file = self.user.root / "no-folder"
        file.write_text("")
        for folder in [None, "", "relative", "/no/such/folder", str(file), "/proc"]:
            with self.subTest(folder):
                instance, item = self.template(XDG_RUNTIME_DIR=folder)
                self.assertEqual([pixmap.width for pixmap in pixmapsOf(item)], sizes)
                slot = self.panel.slots()[0]
                awaitCondition(lambda: isNear(self.panel.picture(slot).colour(10, 10),
                                              pixmapsOf(item)[1].at(.25, .25)[1:]),
                               lambda: f"{self.panel.picture(slot).colours()}")
                self.finish(instance)
        self.assertFalse((self.user.root / "relative").exists())


if __name__ == "__main__":
    unittest.main()
