#!/usr/bin/env python3
"""Instances of sites that the manager makes and starts: from the menu, by its commands, and by
whoever copies the runner."""

import configparser
import json
import os
import pathlib
import unittest

from Desktop import awaitCondition
from WebInstances import WebTests, launcher, notifications


class Started(WebTests):
    def setUp(self):
        super().setUp()
        self.site.page("/", """
            const count = Number(localStorage.getItem('visits') ?? 0) + 1;
            localStorage.setItem('visits', count);
            navigator.setAppBadge(count);
            new Notification('Visit', {body: String(count)});
            addEventListener('load', () => report(count));""", title="Visits")

    def create(self, name, url, *arguments):
        made = json.loads(self.user.korvane("create", "web", name, url, "--json", "--runner",
                                            os.environ["KORVANE_RUNNER"], *arguments))
        self.addCleanup(self.user.korvane, "delete", name, "--data", "--yes")
        return json.loads(self.user.korvane("show", name, "--json")) | {"made": made}

    def windowsOf(self, shown):
        return [window for window in self.desktop.windows()
                if shown["desktopId"] in window.names]

    def awaitWindow(self, shown, title="Visits"):
        awaitCondition(lambda: any(self.desktop.titleOf(window) == f'"{title}"'
                                   for window in self.windowsOf(shown)),
                       lambda: f"windows: {self.desktop.windows()}")
        [window] = self.windowsOf(shown)
        return window

    def close(self, shown):
        for window in self.windowsOf(shown):
            self.user.run("wmctrl", "-i", "-c", window.identifier)
        awaitCondition(lambda: not self.show(shown["name"])["running"], lambda: "it still runs")

    def leaveRunning(self, *command):
        """What the command starts keeps no pipe that anybody waits for."""
        self.user.run("sh", "-c", 'exec "$@" >/dev/null 2>&1', "sh", *command)

    def show(self, name):
        return json.loads(self.user.korvane("show", name, "--json"))

    def test_it_is_started_by_open_and_from_the_menu_with_the_same_data(self):
        shown = self.create("My mail", self.site.url())
        starts = [lambda: self.user.korvane("open", "My mail"),
                  lambda: self.leaveRunning("gio", "launch", shown["desktopEntry"]),
                  lambda: self.leaveRunning(
                      "setsid", "--fork",
                      pathlib.Path(shown["bundle"]) / "Contents" / "MacOS" / "runner")]
        for number, start in enumerate(starts, 1):
            start()

            self.assertEqual(self.site.awaitReport(number), number)
            self.awaitWindow(shown)
            self.assertTrue(self.show("My mail")["running"])
            self.close(shown)

        log = pathlib.Path(shown["home"]) / "korvane-instance.log"
        self.assertEqual(log.read_text(), "".join(
            f"badge: {number}\nnotify: Visit — {number}\nbadge: {number}\n"
            for number in (1, 2, 3)))

    def test_run_waits_for_it_and_ends_with_its_status(self):
        shown = self.create("Waiting", self.site.url())
        process = self.user.start(os.environ["KORVANE"], "run", "Waiting")
        self.addCleanup(process.communicate)
        self.site.awaitReport()
        self.awaitWindow(shown)

        self.close(shown)

        process.communicate()
        self.assertEqual(process.returncode, 0)

    def test_all_its_names_on_the_desktop_are_one(self):
        for identifier in ["app.korvane.instance.one", "org.example.7seven.Übung", "9.x.y"]:
            shown = self.create(identifier, self.site.url(), "--bundle-id", identifier)
            number = len(self.site.reports)
            self.user.korvane("open", identifier)
            self.site.awaitReport(number + 1)
            self.awaitWindow(shown)
            entry = configparser.RawConfigParser(interpolation=None)
            entry.read(shown["desktopEntry"])

            uri = f"application://{shown['desktopId']}.desktop"
            awaitCondition(lambda: uri in [sent.body[0] for sent in self.bus.messages(launcher)],
                           lambda: f"{uri} not in {self.bus.messages(launcher)[-3:]}")

            # It comes after the server has told what it can.
            def hints():
                return [sent.body[6].get("desktop-entry") for sent in
                        self.bus.messages(notifications, "Notify") if sent.kind == self.bus.call]
            awaitCondition(lambda: shown["desktopId"] in hints(), lambda: f"banners of {hints()}")
            self.assertEqual(entry["Desktop Entry"]["StartupWMClass"], shown["desktopId"])
            self.assertEqual(os.path.basename(shown["desktopEntry"]),
                             f"{shown['desktopId']}.desktop")
            self.close(shown)

    def test_two_instances_at_once_count_for_themselves(self):
        one, other = self.create("One", self.site.url()), self.create("Other", self.site.url())
        self.user.korvane("open", "One", "Other")
        self.site.awaitReport(2)

        self.awaitWindow(one)
        self.awaitWindow(other)

        self.assertEqual(self.site.reports, [1, 1])
        self.close(one)
        self.close(other)

    def test_what_is_no_address_is_refused_with_the_reason(self):
        for address in ["", "  ", "http://", "http://a b/", "https://host:port/", "1http://x/"]:
            with self.subTest(address=address):
                process = self.user.start(os.environ["KORVANE"], "create", "web", "Refused",
                                          address, "--runner", os.environ["KORVANE_RUNNER"])
                output, errors = process.communicate()

                self.assertEqual((process.returncode, output), (1, ""))
                self.assertRegex(errors, r"\Akorvane: .+\.\n\Z")
                self.assertEqual(json.loads(self.user.korvane("list", "--json")), [])


if __name__ == "__main__":
    unittest.main()
