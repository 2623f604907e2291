#!/usr/bin/env python3
"""One site that does all that a site does, in two instances at once, as a person starts them."""

import json
import os
import unittest

from Desktop import awaitCondition
from WebInstances import WebTests, launcher, notifications, wholeLines

titles = 1000


class Everything(WebTests):
    names = ["One", "Other"]

    def setUp(self):
        super().setUp()
        # In a turn of its own each title is seen.
        self.site.page("/", f"""
            const visits = Number(localStorage.getItem('visits') ?? 0) + 1;
            localStorage.setItem('visits', visits);
            addEventListener('load', async () => {{
                const answer = await Notification.requestPermission();
                new Notification('Visit ' + visits, {{body: '<b>bold</b> & <i>' + answer}});
                for (let count = 1; count <= {titles}; ++count) {{
                    document.title = `(${{count}}) Inbox`;
                    await new Promise(done => setTimeout(done));
                }}
                new Notification('All titles');
                report(visits);
            }});""", title="Inbox")
        self.shown = {}
        for name in self.names:
            self.user.korvane("create", "web", name, self.site.url(), "--runner",
                              os.environ["KORVANE_RUNNER"])
            self.addCleanup(self.user.korvane, "delete", name, "--data", "--yes")
            self.addCleanup(self.stop, name)
            self.shown[name] = self.show(name)

    def show(self, name):
        return json.loads(self.user.korvane("show", name, "--json"))

    def stop(self, name):
        if self.show(name)["running"]:
            self.user.korvane("stop", name)

    def start(self):
        """One by the manager, the other by its entry in the menu."""
        self.user.korvane("open", self.names[0])
        self.user.run("sh", "-c", 'gio launch "$0" >/dev/null 2>&1',
                      self.shown[self.names[1]]["desktopEntry"])

    def banners(self, name):
        return [tuple(sent.body[3:5]) for sent in self.bus.messages(notifications, "Notify")
                if sent.kind == self.bus.call and
                sent.body[6].get("desktop-entry") == self.shown[name]["desktopId"]]

    def badges(self, name):
        uri = f"application://{self.shown[name]['desktopId']}.desktop"
        return [properties.get("count") for told, properties in
                (sent.body for sent in self.bus.messages(launcher, "Update"))
                if told == uri and properties["count-visible"]]

    def assertTold(self, name, visits):
        log = os.path.join(self.shown[name]["home"], "korvane-instance.log")
        banner = f"notify: Visit {visits} — <b>bold</b> & <i>granted"
        counts = [f"badge: {count}" for count in range(1, titles + 1)]
        expected = ["badge: cleared", banner, *counts, "notify: All titles — "]

        def lines():
            return wholeLines(log).splitlines() if os.path.isfile(log) else []
        awaitCondition(lambda: len(lines()) >= visits * len(expected),
                       lambda: f"{len(lines())} lines")
        told = lines()[(visits - 1) * len(expected):]
        self.assertEqual(sorted(told), sorted(expected))
        self.assertEqual([line for line in told if line.startswith("badge: ")],
                         ["badge: cleared", *counts])
        # As text, also where the server would format it.
        shown = (f"Visit {visits}", "&lt;b&gt;bold&lt;/b&gt; &amp; &lt;i&gt;granted")
        awaitCondition(lambda: shown in self.banners(name), lambda: str(self.banners(name)))
        awaitCondition(lambda: self.badges(name)[-1:] == [titles], lambda: self.badges(name)[-3:])
        self.assertLess(len(self.badges(name)), visits * titles)

    def visitTwice(self):
        for visits in [1, 2]:
            self.start()
            self.site.awaitReport(2 * visits)
            self.assertEqual(self.site.reports[-2:], [visits, visits])
            for name in self.names:
                self.assertTold(name, visits)
            for name in self.names:
                self.user.korvane("stop", name)

    def test_on_X11(self):
        self.visitTwice()

    def test_on_Wayland(self):
        display = "korvane-everything"
        compositor = self.user.start("weston", "--backend=headless-backend.so", "--no-config",
                                     "--idle-time=0", f"--socket={display}")
        self.addCleanup(compositor.communicate)
        self.addCleanup(compositor.terminate)
        session = dict(self.user.session)
        self.addCleanup(lambda: (self.user.session.clear(), self.user.session.update(session)))
        socket = os.path.join(session["XDG_RUNTIME_DIR"], display)
        awaitCondition(lambda: os.path.exists(socket), lambda: "no compositor")
        self.user.session.update(WAYLAND_DISPLAY=display, XDG_SESSION_TYPE="wayland",
                                 GDK_BACKEND="wayland")

        self.visitTwice()


if __name__ == "__main__":
    unittest.main()
