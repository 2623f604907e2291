#!/usr/bin/env python3
"""The picture of an item: the icon of its wrapper, whatever that really holds, or another one."""

import os
import pathlib
import signal
import struct
import unittest
import zlib

from Desktop import awaitCondition
from Panel import Area
from StatusItemPictures import IconTests, blue, green, isNear, pixmapsOf, red, sizes
from StatusItems import Item, registeredItems


class Pictures(IconTests):
    def test_the_icon_is_sent_in_four_sizes_with_its_colours(self):
        instance, item = self.startedRecording(options=["--menu-bar", "--icon", self.quarters])

        self.assertShowsQuarters(item)

        slot = self.panel.slots()[0]
        for _, *colour in (red, green, blue):
            awaitCondition(lambda: self.countOf(colour, slot) >= 100,
                           lambda: f"{colour} in {self.panel.picture(slot).colours()}")
        self.finish(instance)

    def test_a_file_that_is_another_picture_than_its_name_says_is_shown(self):
        for kind in ["png", "tiff", "webp"]:
            with self.subTest(kind):
                instance = self.recording()
                self.user.run("convert", self.quarters, f"{kind}:{self.iconOf(instance)}")
                instance.start()
                self.assertShowsQuarters(self.itemOf(instance))
                instance.awaitLog("ready\n")
                self.finish(instance)

    @staticmethod
    def iconOf(instance):
        file = instance.resources / "AppIcon.icns"
        file.unlink(missing_ok=True)
        return file

    def test_a_picture_that_is_small_or_not_square_is_shown_whole(self):
        for size in ["16x16", "1x1", "512x64", "64x512"]:
            with self.subTest(size):
                instance = self.recording()
                self.user.run("convert", "-size", size, "xc:red", f"png:{self.iconOf(instance)}")
                instance.start()
                pixmaps = pixmapsOf(self.itemOf(instance))
                self.assertEqual([pixmap.width for pixmap in pixmaps], sizes)
                for pixmap in pixmaps:
                    self.assertTrue(isNear(pixmap.at(0.5, 0.5), red), f"{pixmap.at(0.5, 0.5)}")
                instance.awaitLog("ready\n")
                self.finish(instance)

    def test_without_an_icon_that_can_be_read_there_is_a_drawn_one(self):
        whole = self.quarters.read_bytes()
        damages = {
            "no file": lambda file: None,
            "an empty file": lambda file: file.write_bytes(b""),
            "no picture": lambda file: file.write_bytes(b"icns" + b"\xff" * 1000),
            "a cut picture": lambda file: file.write_bytes(whole[:60]),
            "a folder": lambda file: file.mkdir(),
            "a link to itself": lambda file: file.symlink_to(file.name),
            "a pipe": lambda file: os.mkfifo(file),
            "more pixels than anybody has memory for": lambda file: file.write_bytes(
                picture(100_000, 100_000, b"")),
        }
        for kind, damage in damages.items():
            with self.subTest(kind):
                instance = self.recording()
                damage(self.iconOf(instance))
                instance.start()
                self.assertIsSomething(self.itemOf(instance))
                instance.awaitLog("ready\n")
                self.finish(instance)

    def test_a_very_large_picture_holds_nothing_up(self):
        instance = self.recording()
        self.iconOf(instance).write_bytes(picture(9000, 9000, bytes(9001) * 9000))
        instance.start()
        pixmaps = pixmapsOf(self.itemOf(instance))
        self.assertEqual([pixmap.width for pixmap in pixmaps], sizes)
        instance.awaitLog("ready\n")
        self.finish(instance)

    def test_without_an_icon_file_an_application_shows_its_own(self):
        app = self.user.korvane("adopt", "org.xfce.mousepad").rstrip("\n")
        bundle = pathlib.Path(self.user.korvane(
            "create", "app", "Editor", app, "--menu-bar", "--runner",
            os.environ["KORVANE_RUNNER"]).rstrip("\n"))
        (bundle / "Contents" / "Resources" / "AppIcon.icns").unlink()
        plain, plainItem = self.startedRecording()
        (plain.resources / "AppIcon.icns").unlink(missing_ok=True)
        drawn = [pixmap.pixels() for pixmap in pixmapsOf(plainItem)]
        self.finish(plain)

        self.user.korvane("open", "Editor")
        pixmaps = pixmapsOf(self.onlyItem())

        self.assertNotEqual([pixmap.pixels() for pixmap in pixmaps], drawn)
        file = self.user.root / "mousepad.rgba"
        self.user.run("convert", "-background", "none",
                      "/usr/share/icons/hicolor/48x48/apps/org.xfce.mousepad.png",
                      "-resize", "44x44!", "-depth", "8", f"rgba:{file}")
        data = file.read_bytes()
        distance = 0
        for place, (alpha, *colour) in enumerate(pixmaps[-1].pixels()):
            *expected, opacity = data[4 * place:4 * place + 4]
            distance += sum(abs(part * alpha - of * opacity) / 255
                            for part, of in zip(colour, expected, strict=True))
        self.assertLess(distance / 3 / 44 / 44, 25, "that is another picture")
        self.user.korvane("stop", "Editor")
        self.assertNoItems()

    def onlyItem(self):
        told = awaitCondition(lambda: registeredItems(self.bus), lambda: "there is no item")
        name, slash, path = told[0].partition("/")
        return Item(self.bus, name, slash + path)

    def test_a_panel_of_twice_the_size_draws_it_sharply(self):
        self.panel.end(signal.SIGTERM)
        self.panel.start(GDK_SCALE="2")
        self.addCleanup(self.panel.restart)
        instance, _ = self.startedRecording(options=["--menu-bar", "--icon", self.quarters])

        top = Area(0, 0, 1280, 66)
        # A quarter of 44 pixels by 44; one of 36 by 36 has 324.
        awaitCondition(lambda: self.countOf(red[1:], top) >= 400,
                       lambda: f"{self.panel.picture(top).colours()}")
        self.finish(instance)


def picture(width, height, rows):
    """A grey PNG of this size, whatever its rows hold."""
    def chunk(kind, data):
        check = struct.pack(">I", zlib.crc32(kind + data))
        return struct.pack(">I", len(data)) + kind + data + check
    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(rows, 1)) + chunk(b"IEND", b""))


if __name__ == "__main__":
    unittest.main()
