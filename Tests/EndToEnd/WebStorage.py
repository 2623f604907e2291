#!/usr/bin/env python3
"""Where the data of a web instance lie, what comes back the next time, and how an instance ends."""

import os
import shutil
import signal
import threading
import unittest

from Desktop import awaitCondition
from EndToEnd import changes, contents
from WebInstances import WebTests, descendants

# What each kind of storage holds under "visits"; null or the like where there is nothing.
remembered = """
    async function remembered() {
        const database = await openedDatabase();
        const inDatabase = await new Promise(done => {
            database.transaction('visits').objectStore('visits').get(1).onsuccess =
                event => done(event.target.result ?? null);
        });
        const cached = await (await caches.open('visits')).match('/visits');
        return {cookie: document.cookie, local: localStorage.getItem('visits'),
                database: inDatabase, cache: cached ? await cached.text() : null};
    }
    function openedDatabase() {
        return new Promise(done => {
            const request = indexedDB.open('visits', 1);
            request.onupgradeneeded = () => request.result.createObjectStore('visits');
            request.onsuccess = () => done(request.result);
        });
    }
    async function remember(value) {
        document.cookie = `visits=${value}; Max-Age=100000`;
        localStorage.setItem('visits', value);
        const transaction = (await openedDatabase()).transaction('visits', 'readwrite');
        transaction.objectStore('visits').put(value, 1);
        await new Promise(done => { transaction.oncomplete = done; });
        await (await caches.open('visits')).put('/visits', new Response(value));
    }"""
nothing = {"cookie": "", "local": None, "database": None, "cache": None}


def everywhere(value):
    return {"cookie": f"visits={value}", "local": value, "database": value, "cache": value}


class Data(WebTests):
    def setUp(self):
        super().setUp()
        self.site.page("/", remembered + """
            (async () => {
                const before = await remembered();
                const value = new URLSearchParams(location.search).get('write');
                await remember(value);
                await report([value, before]);
            })();""")

    def visit(self, instance, value):
        """What the page finds before it writes the value."""
        before = len(self.site.reports)
        instance.configuration["url"] = self.site.url(f"/?write={value}")
        instance.start()
        written, found = self.site.awaitReport(before + 1)
        self.assertEqual(written, value)
        return found

    def test_whatever_a_page_stores_is_there_the_next_time(self):
        instance = self.instance()
        self.assertEqual(self.visit(instance, "first"), nothing)
        self.assertEqual(instance.end()[:2], (0, ""))

        self.assertEqual(self.visit(instance, "second"), everywhere("first"))
        instance.end(signal.SIGKILL)

    def test_two_instances_of_a_site_at_once_know_nothing_of_each_other(self):
        one, other = self.instance(), self.instance()

        self.assertEqual(self.visit(one, "one"), nothing)
        self.assertEqual(self.visit(other, "other"), nothing)
        for instance in (one, other):
            self.assertEqual(instance.end()[:2], (0, ""))

        self.assertEqual(self.visit(one, "-"), everywhere("one"))
        self.assertEqual(self.visit(other, "-"), everywhere("other"))

    def test_everything_lies_in_the_instances_home(self):
        instance = self.instance()
        before = self.outsideTheInstances()

        self.visit(instance, "kept")
        instance.window()
        instance.end()

        self.assertEqual(changes(before, self.outsideTheInstances()), {})
        self.assertNotEqual(list(instance.home.iterdir()), [])

    def outsideTheInstances(self):
        return contents(self.user.root, leavingOut=["home/KorvaneInstances", "wrappers"])

    def test_a_home_with_a_tilde_is_below_the_users_own_home_once(self):
        instance = self.instance(instanceHome="~/Some where/else")
        instance.home = self.user.home / "Some where" / "else"

        self.visit(instance, "kept")
        instance.linesUntil("badge: cleared")
        instance.end()

        self.assertEqual(self.visit(instance, "-"), everywhere("kept"))
        self.assertEqual([path for path in instance.home.rglob("*") if path.name in
                          ("Some where", "else", "~", "KorvaneInstances")], [])

    def test_an_absolute_home_may_lie_anywhere(self):
        place = self.user.root / "far away"
        instance = self.instance(instanceHome=str(place))
        instance.home = place

        self.visit(instance, "kept")
        instance.linesUntil("badge: cleared")
        instance.end()

        self.assertEqual(self.visit(instance, "-"), everywhere("kept"))
        shutil.rmtree(place, ignore_errors=True)

    def test_of_the_users_base_directories_none_is_used(self):
        instance = self.instance()
        elsewhere = self.user.root / "elsewhere"
        elsewhere.mkdir()
        self.addCleanup(shutil.rmtree, elsewhere)
        instance.start(XDG_DATA_HOME=str(elsewhere), XDG_CACHE_HOME=str(elsewhere),
                       XDG_CONFIG_HOME=str(elsewhere), XDG_STATE_HOME=str(elsewhere))
        instance.window()
        instance.end()

        self.assertEqual(list(elsewhere.rglob("*")), [])

    def test_the_log_is_continued_and_not_replaced(self):
        instance = self.instance()
        instance.home.mkdir(parents=True)
        log = instance.home / "korvane-instance.log"
        log.write_text("an older line\n")

        self.visit(instance, "kept")
        instance.linesUntil("badge: cleared")
        instance.end()

        self.assertEqual(log.read_text(), "an older line\nbadge: cleared\n")

    def test_a_log_that_cannot_be_written_changes_nothing(self):
        instance = self.instance()
        (instance.home / "korvane-instance.log").mkdir(parents=True)

        self.visit(instance, "kept")
        self.assertEqual(instance.end()[:2], (0, ""))

        self.assertEqual(self.visit(instance, "-"), everywhere("kept"))

    def test_a_home_that_cannot_be_made_keeps_no_page_from_showing(self):
        self.site.page("/plain", title="Shown all the same")
        (self.user.root / "in the way").touch()
        instance = self.instance(self.site.url("/plain"),
                                 instanceHome=str(self.user.root / "in the way" / "home"))
        instance.start()

        instance.awaitTitle("Shown all the same")
        self.assertEqual(instance.end()[0], 0)
        self.assertFalse((self.user.home / ".local/share/web").exists())


class Endings(WebTests):
    """Whatever ends an instance, the status is 0 and nothing that was written is lost."""

    def setUp(self):
        super().setUp()
        self.site.page("/", """
            addEventListener('click', () => {
                const value = String(Number(localStorage.getItem('clicks') ?? 0) + 1);
                localStorage.setItem('clicks', value);
                document.cookie = `clicks=${value}; Max-Age=100000`;
                new Notification(`Click ${value}`);
                report(['click', value]);
                let moments = 0;
                setInterval(() => new Notification(`Moment ${++moments}`), 40);
            });
            addEventListener('load', () =>
                report(['load', localStorage.getItem('clicks'), document.cookie]));""")

    def assertNothingIsLostBy(self, end):
        instance = self.startedAt()
        self.assertEqual(self.site.awaitReport(1), ["load", None, ""])
        instance.click()
        self.site.awaitReport(2)
        # What a page says to the instance and to its site goes two ways.
        instance.awaitBanner("Click 1")

        end(instance)
        self.assertEqual(instance.ended()[:2], (0, ""))

        # There is always a line that waits to be written. What has a banner was heard of.
        lines = instance.lines()
        moments = [f"notify: Moment {number} — " for number in range(1, len(lines) - 1)]
        self.assertEqual(lines, ["badge: cleared", "notify: Click 1 — ", *moments])
        shown = [f"notify: {banner.summary} — " for banner in instance.banners()]
        self.assertEqual([line for line in shown if line not in lines], [])
        instance.start()
        self.assertEqual(self.site.awaitReport(3), ["load", "1", "clicks=1"])

    def test_the_windows_cross(self):
        self.assertNothingIsLostBy(lambda instance: instance.close())

    def test_control_and_Q(self):
        self.assertNothingIsLostBy(lambda instance: instance.press("ctrl+q"))

    def test_SIGTERM(self):
        self.assertNothingIsLostBy(lambda instance: os.kill(instance.pid(), signal.SIGTERM))

    def test_SIGINT(self):
        self.assertNothingIsLostBy(lambda instance: os.kill(instance.pid(), signal.SIGINT))

    def test_SIGHUP(self):
        self.assertNothingIsLostBy(lambda instance: os.kill(instance.pid(), signal.SIGHUP))

    def test_a_signal_before_the_page_has_loaded(self):
        self.site.pages["/"].until = self.newEvent()
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            instance = self.startedAt()

            self.assertEqual(instance.end(number)[:2], (0, ""))

    def newEvent(self):
        event = threading.Event()
        self.addCleanup(event.set)
        return event

    def test_a_page_that_never_stops_does_not_keep_the_window(self):
        self.site.page("/busy", "report('busy').then(() => { while (true); });")
        for number, end in enumerate([lambda instance: instance.close(),
                                      lambda instance: os.kill(instance.pid(), signal.SIGTERM)], 1):
            instance = self.startedAt("/busy")
            self.site.awaitReport(number)
            instance.window()

            end(instance)

            # The engine may say of its process that it had to be stopped.
            self.assertEqual(instance.ended()[:2], (0, ""))

    def test_a_page_that_asks_before_it_is_left_does_not_withstand_a_signal(self):
        self.site.page("/stay", """
            addEventListener('beforeunload', event => {
                event.preventDefault(); event.returnValue = 'x'; });
            addEventListener('click', () => report('clicked'));
            addEventListener('load', () => report('loaded'));""")
        instance = self.startedAt("/stay")
        self.site.awaitReport(1)
        instance.click()
        self.site.awaitReport(2)

        self.assertEqual(instance.end()[:2], (0, ""))

    def test_all_helper_processes_end_too(self):
        instance = self.startedAt()
        self.site.awaitReport()
        helpers = descendants(instance.pid())
        self.assertNotEqual(helpers, [])

        instance.end()

        awaitCondition(lambda: not any(os.path.exists(f"/proc/{helper}") for helper in helpers),
                       lambda: f"of {helpers} some are left")


if __name__ == "__main__":
    unittest.main()
