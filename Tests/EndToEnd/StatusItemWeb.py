#!/usr/bin/env python3
"""The item of an instance of a web site: Show brings its window to the front, and Quit ends it."""

import signal
import unittest

from BusClient import BusClient
from Desktop import awaitCondition
from Panel import Panel
from Screen import Screen
from StatusItems import awaitItem, awaitNoItems, itemsOf
from WebInstances import WebTests


class WebItems(WebTests):
    desktopOptions = ["--notifications", "--panel"]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.client = BusClient(cls.user.session["DBUS_SESSION_BUS_ADDRESS"])
        cls.addClassCleanup(cls.client.close)
        cls.panel = Panel(cls.user)
        cls.addClassCleanup(cls.panel.close)
        cls.screen = Screen(cls.user)

    def setUp(self):
        super().setUp()
        self.site.page("/", "addEventListener('load', () => report('loaded'));", title="Inbox")

    def shown(self, **configuration):
        """An instance whose page is loaded, its item and its window."""
        instance = self.startedAt("/", menuBarIcon=True, **configuration)
        instance.awaitTitle("Inbox")
        return instance, self.itemOf(instance), instance.window().identifier

    def itemOf(self, instance):
        return awaitItem(self.client, instance)

    def assertNoItems(self):
        awaitNoItems(self.client, self.panel)

    def other(self):
        """A window of another program, above all others."""
        process = self.user.start("sh", "-c", "exec xterm -T Another -e sleep 100 2>/dev/null")
        self.addCleanup(process.communicate)
        self.addCleanup(process.terminate)
        window = self.screen.window("Another")
        self.screen.raiseWindow(window)
        return window

    def quit(self, instance, item):
        item.choose(f"Quit {instance.name}")
        status, output, _ = instance.ended()
        self.assertEqual((status, output), (0, ""))
        self.assertNoItems()

    def test_the_item_is_that_of_a_program(self):
        instance, item, _ = self.shown(displayName="My <b>mail & co</b>_")

        told = item.properties()
        labels = [properties.get("label") for _, properties in item.entries()]

        name = instance.name
        self.assertEqual((told["Title"], *told["ToolTip"][2:]), (name, name, ""))
        self.assertEqual(labels, [f"{name}_", None, f"Show {name}_", f"Quit {name}_"])
        self.assertEqual([pixmap[0] for pixmap in told["IconPixmap"]], [18, 22, 36, 44])
        self.quit(instance, item)

    def test_without_being_asked_for_there_is_none(self):
        instance = self.startedAt("/")
        instance.awaitTitle("Inbox")
        self.assertEqual(itemsOf(self.client, instance.pid()), [])
        self.assertEqual(instance.end()[0], 0)

    def test_Show_brings_the_window_to_the_front(self):
        instance, item, window = self.shown()
        other = self.other()

        item.choose(f"Show {instance.name}")
        self.screen.awaitOnTop([other, window])

        self.screen.raiseWindow(other)
        self.screen.minimise(window)
        item.choose(f"Show {instance.name}")
        self.screen.awaitOnTop([other, window])
        self.assertFalse(self.screen.isMinimised(window))

        self.screen.raiseWindow(other)
        self.panel.openMenu().click("Show")
        self.screen.awaitOnTop([other, window])
        self.panel.pointAway()
        self.quit(instance, item)

    def test_Show_brings_the_window_from_another_desktop(self):
        instance, item, window = self.shown()
        self.screen.move(window, 2)
        here = self.screen.desktop()
        other = self.other()

        item.choose(f"Show {instance.name}")

        awaitCondition(lambda: self.screen.desktop(window) == here == self.screen.desktop(),
                       lambda: f"{self.screen.desktop(window)}, {self.screen.desktop()}")
        self.screen.awaitOnTop([other, window])
        self.quit(instance, item)

    def test_a_click_on_Quit_ends_it_with_status_0(self):
        instance, _, _ = self.shown()
        instance.linesUntil("badge: cleared")  # written a moment after the page is there

        self.panel.openMenu().click("Quit")

        status, output, _ = instance.ended()
        self.assertEqual((status, output, instance.log()), (0, "", "badge: cleared\n"))
        self.panel.pointAway()
        self.assertNoItems()

    def test_Quit_ends_a_page_that_asks_or_says_something(self):
        # Only a page that has been shown tells its title.
        for number, script in enumerate(["onpageshow = () => setTimeout(() => alert('stay'))",
                                         "onbeforeunload = event => event.preventDefault()",
                                         "onpageshow = () => setTimeout(() => { for (;;); })"]):
            with self.subTest(script):
                path = f"/{number}"
                self.site.page(path, script, title="Busy")
                instance = self.startedAt(path, menuBarIcon=True)
                instance.awaitTitle("Busy")
                self.quit(instance, self.itemOf(instance))

    def test_the_item_goes_with_the_window(self):
        instance, item, _ = self.shown()
        instance.close()
        self.assertEqual(instance.ended()[0], 0)
        self.assertFalse(item.isThere())
        self.assertNoItems()

    def test_a_signal_ends_it_with_its_item(self):
        instance, _, _ = self.shown()
        self.assertEqual(instance.end(signal.SIGTERM)[0], 0)
        self.assertNoItems()

    def test_the_item_comes_back_with_the_panel(self):
        instance, item, window = self.shown()
        self.panel.end()
        instance.assertRuns()
        self.panel.start()
        self.panel.slots()
        other = self.other()

        self.panel.openMenu().click("Show")

        self.screen.awaitOnTop([other, window])
        self.panel.pointAway()
        self.quit(instance, item)

    def test_without_a_bus_a_site_is_shown_as_ever(self):
        instance = self.instance(self.site.url("/"), menuBarIcon=True)
        instance.start(DBUS_SESSION_BUS_ADDRESS=None, XDG_RUNTIME_DIR=str(self.user.root / "none"))
        instance.awaitTitle("Inbox")
        self.assertEqual(instance.end()[0], 0)

    def test_two_sites_have_items_of_their_own(self):
        first, itemOfFirst, windowOfFirst = self.shown()
        second, itemOfSecond, windowOfSecond = self.shown()
        self.assertNotEqual(itemOfFirst.properties()["Id"], itemOfSecond.properties()["Id"])
        self.panel.slots(2)

        itemOfFirst.choose(f"Show {first.name}")
        self.screen.awaitOnTop([windowOfSecond, windowOfFirst])
        itemOfSecond.choose(f"Show {second.name}")
        self.screen.awaitOnTop([windowOfFirst, windowOfSecond])

        itemOfSecond.choose(f"Quit {second.name}")
        self.assertEqual(second.ended()[0], 0)
        first.assertRuns()
        self.quit(first, itemOfFirst)


if __name__ == "__main__":
    unittest.main()
