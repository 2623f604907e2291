#!/usr/bin/env python3
"""Pages that post more than anybody can read, or texts that are too long for it."""

import pathlib
import unittest

from Desktop import awaitCondition
from WebInstances import WebTests

post = "const post = what => webkit.messageHandlers.korvane.postMessage(what);"


class Floods(WebTests):
    """After each of them the host does all that it did before."""

    def begin(self, flood):
        """An instance whose page starts the flood with a click, and its memory before that."""
        self.site.page("/", f"""
            {post}
            addEventListener('click', async () => {{ {flood}; new Notification('The end'); }});
            addEventListener('load', () => report('ready'));""")
        instance = self.startedAt()
        self.site.awaitReport()
        instance.linesUntil("badge: cleared")
        self.before = memoryOf(instance.pid())
        instance.click()
        return instance

    def awaitFlood(self, instance, line):
        """Waits for each ten thousand of the hundred thousand lines: a machine may be slow, but it
        goes on."""
        for number in range(10_000, 100_001, 10_000):
            instance.linesUntil(line.format(number))

    def assertAsBefore(self, instance):
        self.site.page("/", "new Notification('After')", title="After")
        instance.press("F5")
        instance.awaitTitle("After")
        instance.awaitBanner("After")
        awaitCondition(lambda: memoryOf(instance.pid()) < 1.5 * self.before,
                       lambda: f"KiB before: {self.before}, after: {memoryOf(instance.pid())}")
        self.assertEqual(instance.end()[:2], (0, ""))

    def test_of_a_hundred_thousand_messages_each_has_its_line_and_few_have_a_signal(self):
        instance = self.begin("""
            for (let count = 1; count <= 100000; ++count) post({type: 'badge', payload: {count}})
            """)
        self.awaitFlood(instance, "badge: {}")
        instance.awaitBanner("The end")

        self.assertEqual(instance.linesUntil("notify: The end — "),
                         ["badge: cleared", *[f"badge: {count}" for count in range(1, 100001)]])
        instance.awaitBadge(100000)
        self.assertLess(len(instance.badges()), 2000)
        self.assertAsBefore(instance)

    def test_a_hundred_thousand_notifications_have_their_lines_and_end(self):
        instance = self.begin("""
            for (let number = 1; number <= 100000; ++number) new Notification(number)""")
        self.awaitFlood(instance, "notify: {} — ")

        self.assertEqual(instance.linesUntil("notify: The end — "),
                         ["badge: cleared",
                          *[f"notify: {number} — " for number in range(1, 100001)]])
        self.assertAsBefore(instance)

    def test_a_text_of_a_hundred_megabytes_ends_as_a_short_one(self):
        instance = self.begin("""
            const long = 'x'.repeat(100e6);
            new Notification('Long', {body: long});
            new Notification(long);
            document.title = long;
            post({type: long, payload: long});
            post({type: 'title', payload: {title: long + '(8)'}})""")

        instance.awaitBanner("The end")
        for banner in instance.banners():
            self.assertLess(len(banner.summary) + len(banner.body), 1e6)
        self.assertLess((instance.home / "korvane-instance.log").stat().st_size, 300e6)
        self.assertAsBefore(instance)


def memoryOf(process):
    """The proportional share of memory in KiB."""
    told = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text()
    return int(next(line.split()[1] for line in told.splitlines() if line.startswith("Pss:")))


if __name__ == "__main__":
    unittest.main()
