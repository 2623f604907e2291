#!/usr/bin/env python3
"""What a page finds in place of the engine's notifications and badges, and what comes of it: told
by the page, by the instance's log, by the bus and by the window's title."""

import unittest

from Desktop import awaitCondition
from WebInstances import Banner, WebTests
from WebPages import PageTests

class Permission(PageTests):
    def test_notifications_are_granted_without_a_question(self):
        told = self.reported("""(async () => {
            const heard = [];
            const answer = Notification.requestPermission(word => heard.push(word));
            const heardAtOnce = [...heard];
            return [Notification.permission, heardAtOnce, answer instanceof Promise, await answer,
                    await Notification.requestPermission(),
                    await Notification.requestPermission("no function"), heard];
        })()""")

        self.assertEqual(told, ["granted", ["granted"], True, "granted", "granted", "granted",
                                ["granted"]])

    def test_the_property_can_be_written_and_configured(self):
        told = self.reported("""(async () => {
            const {value, ...rest} = Object.getOwnPropertyDescriptor(window, "Notification");
            return [typeof value, rest];
        })()""")

        self.assertEqual(told, ["function", {"writable": True, "configurable": True,
                                             "enumerable": False}])


class Notifications(PageTests):
    def test_a_notification_is_logged_and_shown_under_the_instances_name(self):
        log = self.logOf("new Notification('New mail', {body: 'From Ada'})")

        self.assertEqual(log, ["notify: New mail — From Ada"])
        self.assertEqual(self.started.awaitBanner("New mail"), Banner("New mail", "From Ada"))
        [sent] = [sent.body for sent in self.started.notifications() if sent.body[3] == "New mail"]
        application, replaced, icon, _, _, actions, hints, _ = sent
        self.assertEqual((application, replaced, actions), (self.started.name, 0, []))
        self.assertNotEqual(icon, "")
        self.assertEqual(hints["desktop-entry"], self.started.identifier)
        self.assertIn("sound-name", hints)

    def test_without_a_title_the_display_name_stands_in(self):
        log = self.logOf("""
            new Notification();
            new Notification('');
            new Notification(null, {body: 'null'});
            new Notification('', {body: 'empty'})""")

        name = self.started.name
        self.assertEqual(log, [f"notify: {name} — ", f"notify: {name} — ",
                               f"notify: {name} — null", f"notify: {name} — empty"])
        self.assertEqual(self.banners(),
                         [Banner(name, ""), Banner(name, ""), Banner(name, "null"),
                          Banner(name, "empty")])

    def test_whatever_a_page_gives_is_made_a_text(self):
        log = self.logOf("""
            new Notification(7, {body: 8.5});
            new Notification({toString() { return 'an object'; }}, {body: ['a', 'list']});
            new Notification('no options', undefined);
            new Notification('no body', {tag: 'x', icon: 'y', silent: true})""")

        self.assertEqual(log, ["notify: 7 — 8.5", "notify: an object — a,list",
                               "notify: no options — ", "notify: no body — "])

    def test_the_object_looks_like_a_notification_whose_methods_do_nothing(self):
        told = self.reported("""(async () => {
            const made = new Notification('Title', {body: 'Body'});
            const heard = [];
            const listener = event => heard.push(event.type);
            made.onshow = made.onerror = listener;
            return [made instanceof Notification, made.title, made.body,
                    made.addEventListener('show', listener) === undefined,
                    made.removeEventListener('show', listener) === undefined,
                    made.close() === undefined, heard,
                    ['onclick', 'onclose'].map(name => made[name])];
        })()""")

        self.assertEqual(told, [True, "Title", "Body", True, True, True, [], [None, None]])

    def test_a_closed_notification_stays_a_banner(self):
        log = self.logOf("new Notification('Closed', {body: 'at once'}).close()")

        self.assertEqual(log, ["notify: Closed — at once"])
        self.assertEqual(self.banners(), [Banner("Closed", "at once")])
        self.assertEqual([sent.member for sent in self.bus.messages(
            "org.freedesktop.Notifications", "CloseNotification")], [])

    def test_banners_come_in_the_order_of_the_page(self):
        self.logOf("for (let number = 0; number < 40; ++number) new Notification(`No ${number}`)")

        self.assertEqual([banner.summary for banner in self.banners()],
                         [f"No {number}" for number in range(40)])


class Badges(PageTests):
    def test_each_value_of_the_badging_interface_has_its_line(self):
        values = {"5": "5", "0": None, "": None, "-2": None, "2.5": None, "NaN": None,
                  "Infinity": None, "-Infinity": None, "1e300": None, "'7'": None, "null": None,
                  "true": None, "({})": None, "[3]": None, "3n": None, "-0": None, "3.0": "3",
                  "undefined": None, "250": "250", "2 ** 53": "9007199254740992",
                  "1e18": "1000000000000000000", "2 ** 63": None, "5e-324": None}

        log = self.logOf("".join(f"navigator.setAppBadge({value});" for value in values))

        self.assertEqual(log, [f"badge: {label or 'cleared'}" for label in values.values()])

    def test_the_functions_return_promises_of_nothing(self):
        told = self.reported("""(async () => [
            navigator.setAppBadge(1) instanceof Promise, navigator.clearAppBadge() instanceof
            Promise, await navigator.setAppBadge('x') === undefined,
            await navigator.clearAppBadge() === undefined])()""")

        self.assertEqual(told, [True, True, True, True])

    def test_a_new_page_does_not_bring_the_title_count_back(self):
        self.logOf("navigator.clearAppBadge()")

        self.assertEqual(self.logAfterTheStart("", title="(3) Inbox"), ["badge: cleared"])


class OneBadge(WebTests):
    def test_a_badge_is_shown_and_cleared_again(self):
        self.site.page("/", """
            addEventListener('load', () => navigator.setAppBadge(5));
            addEventListener('click', () => navigator.clearAppBadge());""")
        instance = self.startedAt()
        instance.awaitBadge(5)

        instance.click()

        instance.awaitBadge(None)
        self.assertEqual(instance.end()[:2], (0, ""))  # with the log's last lines written
        self.assertEqual(instance.lines(), ["badge: cleared", "badge: 5", "badge: cleared"])

    def test_a_page_that_has_used_the_interface_owns_the_badge(self):
        self.site.page("/", """addEventListener('load', async () => {
            const later = () => new Promise(done => setTimeout(done));
            navigator.clearAppBadge();
            document.title = '(9) Mail';
            await later();
            navigator.setAppBadge(2);
            document.title = '(10) Mail';
            await later();
            new Notification('The end'); });""", title="(4) Mail")

        lines = self.startedAt().linesUntil("notify: The end — ")

        self.assertEqual(lines, ["badge: 4", "badge: cleared", "badge: cleared", "badge: 2",
                                 "badge: 2"])

    def test_a_badge_ends_with_its_instance(self):
        self.site.page("/", "navigator.setAppBadge(120)")
        instance = self.startedAt()
        instance.awaitBadge(120)

        self.assertEqual(instance.end()[:2], (0, ""))

        instance.awaitBadge(None)


class Titles(PageTests):
    later = "await new Promise(done => setTimeout(done));"

    def test_the_count_in_the_title_is_the_badge(self):
        titles = {"(3) Inbox": 3, "Inbox [12]": 12, "( 99+ ) Chat": 99, "(2) [5]": 2,
                  "(x) [4]": 4, "(99999999999999999999) [2]": 2, "[99999999999999999999]": None,
                  "(0) Inbox": None, "no count": None, "(-3)": None, "(3": None, "[7 + ]": None,
                  "(9223372036854775807)": 9223372036854775807}

        log = self.logAfterTheStart("".join(f"document.title = '{title}';{self.later}"
                                            for title in titles), title="Start")

        self.assertEqual(log, ["badge: cleared", *[f"badge: {count or 'cleared'}"
                                                   for count in titles.values()]])

    def test_every_way_to_change_the_title_is_seen(self):
        log = self.logAfterTheStart(f"""
            const title = document.querySelector('title');
            document.title = '(2)';{self.later}
            title.textContent = '(3)';{self.later}
            title.firstChild.data = '(4)';{self.later}
            title.firstChild.nodeValue = '(5)';{self.later}
            title.replaceChildren('(6)');{self.later}
            title.append(' more');{self.later}
            title.innerHTML = '(7)';{self.later}
            title.replaceChildren();{self.later}""", title="(1)")

        self.assertEqual(log, ["badge: 1", "badge: 2", "badge: 3", "badge: 4", "badge: 5",
                               "badge: 6", "badge: 6", "badge: 7", "badge: cleared"])

    def test_changes_of_one_turn_are_told_once(self):
        log = self.logAfterTheStart(f"""
            for (let number = 1; number <= 100; ++number) document.title = `(${{number}})`;
            {self.later}""", title="Start")

        self.assertEqual(log, ["badge: cleared", "badge: 100"])

    def test_a_thousand_titles_have_a_thousand_lines(self):
        log = self.logAfterTheStart("""
            for (let number = 1; number <= 1000; ++number) {
                document.title = `(${number}) Mail`;
                await null;
            }""", title="Start")

        self.assertEqual(log, ["badge: cleared", *[f"badge: {number}"
                                                   for number in range(1, 1001)]])
        self.started.awaitBadge(1000)

    def test_a_new_title_element_is_not_watched(self):
        log = self.logAfterTheStart(f"""
            const other = document.createElement('title');
            other.textContent = '(8)';
            document.querySelector('title').replaceWith(other);{self.later}
            document.title = '(9)';{self.later}""", title="(1)")

        self.assertEqual(log, ["badge: 1"])

    def test_a_page_without_a_title_element_tells_an_empty_one_once(self):
        log = self.logAfterTheStart(f"document.title = '(9)';{self.later}")

        self.assertEqual(log, ["badge: cleared"])

    def test_a_page_without_a_title_leaves_the_windows_title(self):
        self.logOf("", title="Before")
        self.started.awaitTitle("Before")

        # The window would be titled when the page is shown, which comes after it is loaded.
        self.visit("""addEventListener('pageshow', () => setTimeout(() => {
            new Notification(theEnd); follow(); }));""")
        self.linesOfThePage()

        self.assertEqual(self.started.title(), "Before")

    def test_titles_of_any_script_and_odd_ones_are_shown(self):
        for title in ["Привет — 日本語 🙂", "&lt;b&gt; &amp; %s", "x" * 5000]:
            self.logOf("", title=title)
            shown = title.replace("&lt;", "<").replace("&gt;", ">").replace("&amp;", "&")
            awaitCondition(lambda: self.started.title()[:200] == shown[:200],
                           lambda: f"not {shown[:200]!r} but {self.started.title()!r}")

    def test_the_window_is_titled_when_a_page_has_been_loaded_and_not_with_each_change(self):
        self.logOf("", title="(4) First")
        self.started.awaitTitle("(4) First")

        self.visit("""addEventListener('load', async () => {
            await report('loaded');
            await fetch('/next');
            document.title = '(5) Third';
            await null;
            new Notification(theEnd);
            follow(); });""", title="(4) Second")
        self.started.awaitTitle("(4) Second")
        self.site.nextPages.put("go on")
        lines = self.linesOfThePage()

        self.assertEqual((lines[-1], self.started.title()), ("badge: 5", "(4) Second"))


if __name__ == "__main__":
    unittest.main()
