"""Tests with the pictures of items: the pixels that panels are sent, and what a panel draws."""

from StatusItems import StatusItemTests

sizes = [18, 22, 36, 44]
red, green, blue, paleWhite = (255, 255, 0, 0), (255, 0, 255, 0), (255, 0, 0, 255), \
    (128, 255, 255, 255)
_quarters = {(0.25, 0.25): red, (0.75, 0.25): green, (0.25, 0.75): blue, (0.75, 0.75): paleWhite}


class Pixmap:
    """One of an item's pictures: alpha, red, green and blue of each pixel."""

    def __init__(self, width, height, data):
        self.width = width
        self.height = height
        self._data = bytes(data)

    def at(self, x, y):
        """The pixel in a place that is told in parts of the width and height."""
        place = 4 * (int(y * self.height) * self.width + int(x * self.width))
        return tuple(self._data[place:place + 4])

    def pixels(self):
        return [tuple(self._data[place:place + 4]) for place in range(0, len(self._data), 4)]


def pixmapsOf(item):
    return [Pixmap(*told) for told in item.properties()["IconPixmap"]]


def isNear(colour, other, distance=12):
    return all(abs(part - of) <= distance for part, of in zip(colour, other, strict=True))


class IconTests(StatusItemTests):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.quarters = cls.draw("quarters.png", "rectangle 0,0 127,127", "red",
                                "rectangle 128,0 255,127", "lime", "rectangle 0,128 127,255",
                                "blue",
                                "rectangle 128,128 255,255", "rgba(255,255,255,0.5)")
        # Nothing at the right: that is where a picture differs from its background.
        cls.left = cls.draw("left.png", "rectangle 0,0 127,127", "red", "rectangle 0,128 127,255",
                            "rgba(0,0,255,0.5)")

    @classmethod
    def draw(cls, name, *shapes):
        file = cls.user.root / name
        words = [word for shape, colour in zip(shapes[::2], shapes[1::2])
                 for word in ("-fill", colour, "-draw", shape)]
        cls.user.run("convert", "-size", "256x256", "xc:none", *words, f"PNG32:{file}")
        return file

    def assertShowsQuarters(self, item):
        pixmaps = pixmapsOf(item)
        self.assertEqual([(pixmap.width, pixmap.height) for pixmap in pixmaps],
                         [(size, size) for size in sizes])
        for pixmap in pixmaps:
            for place, colour in _quarters.items():
                self.assertTrue(isNear(pixmap.at(*place), colour),
                                f"{pixmap.at(*place)} at {place} of {pixmap.width}")

    def assertIsSomething(self, item):
        """A picture in every size, that a person can see."""
        pixmaps = pixmapsOf(item)
        self.assertEqual([(pixmap.width, pixmap.height) for pixmap in pixmaps],
                         [(size, size) for size in sizes])
        for pixmap in pixmaps:
            opaque = [pixel for pixel in pixmap.pixels() if pixel[0] > 200]
            self.assertGreater(len(opaque), pixmap.width * pixmap.height / 5)
            self.assertGreater(len(set(opaque)), 1, "a picture of one colour")

    def finish(self, instance):
        instance.finish(0)
        self.assertEqual(instance.ended(), (0, "", ""))
        self.assertEqual(instance.log(), "ready\n")
        self.assertNoItems()

    def countOf(self, colour, area):
        """How many pixels of the screen have about this colour."""
        return sum(count for drawn, count in self.panel.picture(area).colours().items()
                   if isNear(drawn, colour))
