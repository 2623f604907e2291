#!/usr/bin/env python3
"""The item of an instance in a real panel: its tool tip, and its menu by the panel's protocol and
by the mouse."""

import unittest

from BusClient import BusError
from BusMonitor import BusMonitor
from Desktop import awaitCondition
from StatusItems import StatusItemTests, menuInterface

# Names that something on the way might take for something else.
oddNames = {
    "underlines": "_a __b___ c_", "ampersands": "Tom & Jerry &amp; co", "markup": "<b>bold</b> <a",
    "emoji": "Mail 📬🏴‍☠️", "right to left": "דואר بريد", "300 characters": "Long " * 60,
    "one blank": " ", "a quote": "it's \"so\" \\ %s %n", "combining": "e\u0301\u0323" * 5,
    "right to left override": "a\u202eb", "a new line": "first\nsecond", "a tab": "a\tb"}


class TheItem(StatusItemTests):
    def test_it_tells_what_the_instance_is(self):
        instance, item = self.startedRecording()

        told = item.properties()

        self.assertEqual(told["Category"], "ApplicationStatus")
        self.assertEqual(told["Status"], "Active")
        self.assertEqual(told["Title"], instance.name)
        self.assertEqual(told["ToolTip"][2:], (instance.name, ""))
        self.assertEqual(told["ItemIsMenu"], True)
        self.assertNotEqual(told["Id"], "")

    def test_its_menu_has_a_heading_a_separator_Show_and_Quit(self):
        instance, item = self.startedRecording()

        entries = [properties for _, properties in item.entries()]

        self.assertEqual(entries, [
            {"label": instance.name, "enabled": False},
            {"type": "separator"},
            {"label": f"Show {instance.name}"},
            {"label": f"Quit {instance.name}", "shortcut": [["Control", "q"]]}])

    def test_every_name_is_shown_as_it_stands(self):
        for kind, name in oddNames.items():
            with self.subTest(kind):
                self.assertShown(name)

    def assertShown(self, name):
        instance, item = self.startedRecording(displayName=name)
        try:
            told = item.properties()
            labels = [properties.get("label") for _, properties in item.entries()]
            # An underline marks the key of an entry, and two are one that is shown.
            label = name.replace("_", "__")
            self.assertEqual(labels, [label, None, f"Show {label}", f"Quit {label}"])
            self.assertEqual((told["Title"], *told["ToolTip"][2:]), (name, name, ""))
            self.panel.openMenu().close()
            self.panel.pointAway()
            item.choose(f"Quit {name}")
            instance.awaitLog("ready\nSIGTERM\n")
            instance.finish(0)
            self.assertEqual(instance.ended(), (0, "", ""))
        finally:
            instance.end()
            self.assertNoItems()

    def test_two_instances_have_items_of_their_own(self):
        first, itemOfFirst = self.startedRecording()
        second, itemOfSecond = self.startedRecording()

        self.assertNotEqual(itemOfFirst.properties()["Id"], itemOfSecond.properties()["Id"])
        self.assertEqual(len(self.panel.slots(2)), 2)
        itemOfSecond.choose(f"Quit {second.name}")
        second.awaitLog("ready\nSIGTERM\n")
        second.finish(0)
        second.ended()

        self.assertEqual(len(self.panel.slots(1)), 1)
        self.assertEqual(first.log(), "ready\n")
        self.assertEqual(itemOfFirst.properties()["Title"], first.name)
        first.finish(0)
        self.assertEqual(first.ended(), (0, "", ""))


class ByTheProtocol(StatusItemTests):
    def setUp(self):
        self.running, self.item = self.startedRecording()
        self.addCleanup(self.assertStillServes)

    def assertStillServes(self):
        self.item.choose(f"Quit {self.running.name}")
        self.running.awaitLog("ready\nSIGTERM\n")
        self.running.finish(9)
        self.assertEqual(self.running.ended(), (9, "", ""))

    def assertRefused(self, member, *arguments):
        with self.assertRaises(BusError) as refused:
            self.item.askMenu(member, *arguments)
        self.assertNotIn("NoReply", refused.exception.name)

    def test_heading_separator_and_the_menu_itself_cannot_be_chosen(self):
        for number in [0] + [number for number, _ in self.item.entries()[:2]]:
            try:
                self.item.click(number)
            except BusError:
                pass  # to be refused is as good as to be ignored

    def test_only_a_click_chooses(self):
        quit = self.item.numberOf(f"Quit {self.running.name}")
        for event in ["hovered", "opened", "closed", "", "CLICKED", "clicked ", "x" * 100_000]:
            self.item.askMenu("Event", "isvu", quit, event, ("s", "clicked"), 0)

    def test_entries_that_are_not_there_are_refused(self):
        for number in [5, 99, -1, 2**31 - 1, -2**31]:
            self.assertRefused("Event", "isvu", number, "clicked", ("i", 0), 0)
            self.assertRefused("GetLayout", "iias", number, -1, [])
            self.assertRefused("GetProperty", "is", number, "label")
            self.assertRefused("EventGroup", "a(isvu)", [(number, "clicked", ("i", 0), 0)])
        self.assertRefused("GetProperty", "is", 1, "no-such-property")

    def test_of_several_events_those_that_have_an_entry_count(self):
        quit = self.item.numberOf(f"Quit {self.running.name}")

        [unknown] = self.item.askMenu("EventGroup", "a(isvu)", [
            (99, "clicked", ("i", 0), 0), (quit, "hovered", ("i", 0), 0),
            (1, "clicked", ("i", 0), 0)])

        self.assertEqual(unknown, [99])

    def test_a_layout_is_as_deep_as_it_is_asked_for_and_has_what_is_asked_for(self):
        revision, (root, properties, children) = self.item.askMenu("GetLayout", "iias", 0, 0, [])
        self.assertEqual((root, children), (0, []))
        self.assertEqual(properties["children-display"], "submenu")

        again, (_, _, children) = self.item.askMenu("GetLayout", "iias", 0, 1, ["enabled"])
        self.assertEqual(again, revision)
        self.assertEqual([told for _, told, _ in children], [{"enabled": False}, {}, {}, {}])

        number = children[3][0]
        _, (root, properties, children) = self.item.askMenu("GetLayout", "iias", number, -1, [])
        self.assertEqual((root, children), (number, []))
        self.assertEqual(properties["label"], f"Quit {self.running.name}")

    def test_properties_are_told_one_by_one_and_in_groups(self):
        heading, separator, show, quit = [number for number, _ in self.item.entries()]

        [label] = self.item.askMenu("GetProperty", "is", show, "label")
        self.assertEqual(label, f"Show {self.running.name}")
        [group] = self.item.askMenu("GetGroupProperties", "aias", [separator, quit, 99], [])
        self.assertEqual(dict(group), {
            separator: {"type": "separator"},
            quit: {"label": f"Quit {self.running.name}", "shortcut": [["Control", "q"]]}})
        [group] = self.item.askMenu("GetGroupProperties", "aias", [], ["enabled"])
        self.assertEqual({number: told for number, told in group if told},
                         {heading: {"enabled": False}})

    def test_nothing_changes_before_the_menu_is_shown(self):
        self.assertEqual(self.item.askMenu("AboutToShow", "i", 0), (False,))
        self.assertEqual(self.item.askMenu("AboutToShowGroup", "ai", [0, 99]), ([], [99]))
        told = self.item.menuProperties()
        self.assertEqual((told["Version"], told["Status"]), (3, "normal"))

    def test_what_makes_no_sense_is_refused(self):
        for member, *arguments in [("Event",), ("Event", "s", "Quit"), ("GetLayout", "i", 0),
                                   ("Explode",), ("EventGroup", "ai", [4])]:
            self.assertRefused(member, *arguments)
        with self.assertRaises(BusError):
            self.item.ask("Activate", "s", "here")
        for member, *arguments in [("ContextMenu", "ii", 1, 2), ("SecondaryActivate", "ii", 1, 2),
                                   ("Scroll", "is", 120, "vertical")]:
            try:
                self.item.ask(member, *arguments)
            except BusError as error:
                self.assertNotIn("NoReply", error.name)

    def test_many_questions_at_once_are_answered(self):
        menu = self.item.properties()["Menu"]
        for _ in range(50):
            # The bus lets nobody wait for more than a hundred answers.
            for _ in range(20):
                self.bus.send(self.item.name, menu, menuInterface, "GetLayout", "iias", 0, -1, [])
                self.bus.send(self.item.name, menu, menuInterface, "Event", "isvu", 1, "clicked",
                              ("i", 0), 0)
            self.assertEqual(len(self.item.entries()), 4)


class ByTheMouse(StatusItemTests):
    def setUp(self):
        self.running, self.item = self.startedRecording()

    def assertStillRuns(self):
        self.assertTrue(self.running.isRunning())
        self.assertEqual(self.running.log(), "ready\n")

    def finish(self):
        self.running.finish(0)
        self.assertEqual(self.running.ended(), (0, "", ""))
        self.panel.pointAway()
        self.assertNoItems()

    def test_both_buttons_open_the_menu(self):
        for button in (1, 3):
            self.panel.openMenu(button=button).close()
        self.assertStillRuns()
        self.finish()

    def test_a_click_on_the_heading_or_the_separator_does_nothing(self):
        monitor = BusMonitor(self.user, f"interface='{menuInterface}'")
        self.addCleanup(monitor.close)
        menu = self.panel.openMenu()
        middle = menu.area.x + menu.area.width // 2
        for y in (menu.rowOf("heading"), menu.rowOf("Show") - 13):
            self.panel.clickAt(middle, menu.area.y + y)
        self.assertTrue(self.panel.hasMenu(), "a click there leaves the menu as it is")
        self.assertStillRuns()

        menu.click("Quit")

        self.running.awaitLog("ready\nSIGTERM\n")

        def clicked():
            return [(event[0], event[1]) for message in monitor.messages(menuInterface)
                    if message.member in ("Event", "EventGroup") and message.kind == monitor.call
                    for event in (message.body[0] if message.member == "EventGroup"
                                  else [message.body])]
        self.assertEqual(awaitCondition(clicked, lambda: "the bus has shown no click"),
                         [(self.item.numberOf(f"Quit {self.running.name}"), "clicked")])
        self.finish()

    def test_the_heading_is_grey_and_the_key_of_Quit_is_shown(self):
        menu = self.panel.openMenu()
        # Nothing is highlighted when the pointer is not in the menu.
        self.panel.pointAway()
        # The window is there before anything is drawn in it, and all of it is drawn at once.
        def drawn():
            picture = menu.picture()
            return picture if len(picture.colours()) > 8 else None
        picture = awaitCondition(drawn, lambda: "nothing is drawn in the menu")

        def darkest(row, left=0, right=picture.width):
            return min(sum(picture.colour(x, y))
                       for y in range(menu.rowOf(row) - 8, menu.rowOf(row) + 8)
                       for x in range(left + 2, right - 2))
        right = picture.width - 60
        background = sum(picture.colour(picture.width - 4, menu.rowOf("heading")))
        self.assertGreater(darkest("heading", right=right), darkest("Quit", right=right) + 150)
        self.assertLess(darkest("Quit", left=right), background - 150, "no key is drawn")
        self.assertEqual(darkest("Show", left=right + 10), background, "Show has no key")
        menu.close()
        self.finish()

    def test_the_tool_tip_is_the_name(self):
        self.finish()
        width = 0
        # Each is wider than the one before, unless something in it was taken for markup.
        for name in ["i", "a & b", "W" * 20, "&" * 30, "<b>" * 20]:
            instance, _ = self.startedRecording(displayName=name)
            awaitCondition(lambda: self.panel.awaitToolTip().width > width,
                           lambda: f"{name} has a tool tip of {self.panel.awaitToolTip()}")
            width = self.panel.awaitToolTip().width
            self.panel.pointAway()
            awaitCondition(lambda: not self.panel.hasToolTip(), lambda: "the tool tip stays")
            instance.finish(0)
            self.assertEqual(instance.ended(), (0, "", ""))
            self.assertNoItems()


if __name__ == "__main__":
    unittest.main()
