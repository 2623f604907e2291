#!/usr/bin/env python3
"""What a person sees of a page that cannot be shown, and of a machine on which none could be."""

import os
import pathlib
import shutil
import signal
import subprocess
import unittest

from Desktop import ancestorsOf, awaitCondition
from WebInstances import WebTests, descendants, sandboxWorks
from WebSite import Site, selfSignedCertificate

failed = "runner: failed to launch instance — "


class PlainPages(WebTests):
    """The page with the reason has a link to the address, which Tab and Return lead to."""

    def tryAgainUntil(self, instance, condition, describe):
        def pressed():
            instance.click(x=20, y=20)  # beside the text: the keys are for the page
            instance.press("Tab", "Return")
        awaitCondition(lambda: condition() or pressed(), describe)

    def test_a_site_that_comes_back_is_there_after_trying_again(self):
        port = freePort()
        instance = self.instance(f"http://127.0.0.1:{port}/")
        instance.start()
        instance.window()
        site = self.newSite(port=port)
        site.page("/", "navigator.setAppBadge(2)", title="Back again")

        self.tryAgainUntil(instance, lambda: site.requestsOf("/"), lambda: "it is not asked again")

        instance.awaitTitle("Back again")
        instance.awaitBadge(2)
        self.assertEqual(instance.end()[:2], (0, ""))

    def test_reloading_tries_again_too(self):
        port = freePort()
        instance = self.instance(f"http://127.0.0.1:{port}/")
        instance.start()
        instance.window()
        site = self.newSite(port=port)
        site.page("/", title="Back again")

        awaitCondition(lambda: site.requestsOf("/") or instance.press("F5"), lambda: "no request")

        instance.awaitTitle("Back again")

    def test_the_page_with_the_reason_is_no_page_of_the_site(self):
        self.site.page("/", f"""
            navigator.setAppBadge(3);
            addEventListener('click', () => {{
                report('leaves'); location = 'http://127.0.0.1:{freePort()}/'; }});
            addEventListener('pageshow', () => report('shown'));""", title="First")
        instance = self.startedAt()
        self.site.awaitReport(1)
        instance.awaitTitle("First")
        instance.click()
        self.site.awaitReport(2)
        awaitCondition(lambda: len(self.site.reports) > 2 or instance.press("alt+Left"),
                       lambda: f"there is no way back: {self.site.reports}")
        instance.end()

        self.assertEqual(set(instance.lines()), {"badge: 3"})

    def test_a_host_that_nobody_knows_leaves_a_window(self):
        instance = self.instance("http://korvane-test.invalid/")
        instance.start()
        instance.window()

        instance.awaitPicture()
        self.assertEqual(instance.end()[:2], (0, ""))
        self.assertEqual(instance.log(), "")

    def test_a_server_that_says_nothing_leaves_a_page(self):
        _, instance = self.startedAtPort("http://127.0.0.1:{}/")
        instance.window()

        instance.awaitPicture()

    def test_a_certificate_that_nobody_trusts_is_never_passed_over(self):
        site = self.newSite(selfSignedCertificate(self.user.root))
        site.page("/", title="Not to be seen")
        instance = self.instance(site.url())
        instance.start()
        instance.window()
        instance.awaitPicture()
        before = site.handshakes()

        self.tryAgainUntil(instance, lambda: site.handshakes() > before + 1,
                           lambda: "it is not tried again")

        self.assertEqual(site.requests, [])
        self.assertEqual(instance.title(), instance.name)

    def test_a_picture_from_a_site_that_nobody_trusts_is_not_loaded(self):
        site = self.newSite(selfSignedCertificate(self.user.root))
        self.site.page("/", f"""
            const picture = new Image();
            picture.onerror = () => report('no picture');
            picture.onload = () => report('a picture');
            picture.src = '{site.url('/picture.png')}';""", title="Page")
        instance = self.startedAt()

        self.assertEqual(self.site.awaitReport(), "no picture")
        self.assertEqual(site.requests, [])
        instance.awaitTitle("Page")

    def test_a_web_process_that_is_killed_leaves_a_page_to_try_again(self):
        self.site.page("/", "addEventListener('load', () => report('loaded'));", title="Page")
        instance = self.startedAt()
        self.site.awaitReport(1)
        for number in (2, 3):
            for process in descendants(instance.pid()):
                if nameOf(process) == "WebKitWebProces":
                    os.kill(process, signal.SIGKILL)

            self.tryAgainUntil(instance, lambda: len(self.site.reports) >= number,
                               lambda: f"loaded {len(self.site.reports)} times")
        self.assertEqual(instance.end()[:2], (0, ""))

    def test_a_network_process_that_is_killed_is_started_again(self):
        self.site.page("/", "addEventListener('load', () => report('loaded'));", title="Page")
        instance = self.startedAt()
        self.site.awaitReport(1)
        for process in descendants(instance.pid()):
            if nameOf(process) == "WebKitNetworkPr":
                os.kill(process, signal.SIGKILL)

        awaitCondition(lambda: len(self.site.reports) > 1 or instance.press("F5"),
                       lambda: "nothing is loaded any more")


def nameOf(process):
    try:
        return pathlib.Path(f"/proc/{process}/comm").read_text().rstrip("\n")
    except OSError:
        return None


def freePort():
    """One that nobody listens at."""
    site = Site()
    site.close()
    return site.port


class Machines(WebTests):
    """What is missing is told on standard error, in one line, by an instance that ends with 1."""

    def assertRefused(self, instance, *wrapper, **environment):
        status, output, errors = instance.run(*wrapper, **environment)

        self.assertEqual((status, output, errors.count("\n"), errors[-1:]), (1, "", 1, "\n"),
                         errors)
        self.assertTrue(errors.startswith(failed), errors)
        self.assertGreater(len(errors), len(failed) + 10)
        self.assertEqual(self.site.requests, [])
        return errors

    def test_no_display(self):
        self.assertRefused(self.instance(self.site.url()), DISPLAY=None, WAYLAND_DISPLAY=None)

    def test_a_display_that_nobody_answers_at(self):
        self.assertRefused(self.instance(self.site.url()), DISPLAY=":9873")

    def test_no_engine(self):
        folder = self.user.root / "unusable"
        folder.mkdir()
        (folder / "libwebkitgtk-6.0.so.4").touch()

        told = self.assertRefused(self.instance(self.site.url()), LD_LIBRARY_PATH=str(folder))

        self.assertIn("libwebkitgtk-6.0-4", told)
        command = self.instance(kind="command", commandPath="/bin/sh",
                                commandArgs=["-c", "exit 7"], strategy="home-override")
        self.assertEqual(command.run(LD_LIBRARY_PATH=str(folder))[0], 7)

    def test_no_bwrap(self):
        told = self.assertRefused(self.instance(self.site.url()), *self.inPlaceOf("/dev/null"),
                                  WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS=None)

        self.assertIn("bubblewrap", told)

    def test_a_bwrap_that_fails(self):
        program = self.user.root / "bwrap"
        program.write_text("#!/bin/sh\necho No permissions to create new namespace >&2\nexit 1\n")
        program.chmod(0o755)

        self.assertRefused(self.instance(self.site.url()), *self.inPlaceOf(program),
                           WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS=None)

    def test_no_bwrap_but_a_user_who_wants_no_sandbox(self):
        self.site.page("/", title="Without")
        instance = self.instance(self.site.url())
        instance.start(*self.inPlaceOf("/dev/null"), WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS="1")

        instance.awaitTitle("Without")

    @unittest.skipUnless(sandboxWorks(), "bwrap cannot work here")
    def test_pages_are_shown_inside_the_engines_sandbox(self):
        instance = self.startedAt("/")
        instance.window()

        [process] = [process for process in descendants(instance.pid())
                     if nameOf(process) == "WebKitWebProces"]
        self.assertIn("bwrap", map(nameOf, ancestorsOf(process)))
        status = pathlib.Path(f"/proc/{process}/status").read_text()
        self.assertRegex(status, r"NoNewPrivs:\s1\n")
        self.assertRegex(status, r"Seccomp:\s2\n")

    def inPlaceOf(self, other):
        """A command for what sees the other file where everybody else has bwrap."""
        own = ["unshare", "--map-root-user", "--mount"]
        if subprocess.run([*own, "true"], capture_output=True).returncode != 0:
            self.skipTest("nobody may have a view of the file system of their own here")
        return [*own, "sh", "-c", 'mount --bind "$0" /usr/bin/bwrap && exec "$@"', other]

    def test_without_a_bus_pages_are_shown_and_notifications_logged(self):
        self.assertShownWithout(DBUS_SESSION_BUS_ADDRESS=None, XDG_RUNTIME_DIR=str(self.user.root))

    def test_with_the_address_of_a_bus_that_has_gone_it_is_the_same(self):
        self.assertShownWithout(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/bus")

    def assertShownWithout(self, **environment):
        self.site.page("/", """navigator.setAppBadge(2); new Notification('Nobody hears this');""",
                       title="Without a bus")
        instance = self.instance(self.site.url())
        instance.start(**environment)

        instance.awaitTitle("Without a bus")
        self.assertEqual(instance.linesUntil("notify: Nobody hears this — "), ["badge: 2"])
        self.assertEqual(instance.end()[0], 0)

    def test_without_a_notification_server_pages_are_shown_and_notifications_logged(self):
        bus, address = self.ownBus()
        self.site.page("/", "new Notification('Nobody shows this')", title="Without a server")
        instance = self.instance(self.site.url())
        instance.start(DBUS_SESSION_BUS_ADDRESS=address)

        instance.awaitTitle("Without a server")
        instance.linesUntil("notify: Nobody shows this — ")
        # A web process may miss the bus of those who need a page read to them.
        self.assertEqual(instance.end()[:2], (0, ""))

    def test_a_bus_that_goes_away_takes_no_window_with_it(self):
        bus, address = self.ownBus()
        self.site.page("/", """
            addEventListener('click', () => {
                navigator.setAppBadge(9); new Notification('Clicked'); });""", title="Page")
        instance = self.instance(self.site.url())
        instance.start(DBUS_SESSION_BUS_ADDRESS=address)
        instance.awaitTitle("Page")

        bus.terminate()
        bus.wait()

        awaitCondition(lambda: instance.click() or "notify: Clicked — " in instance.lines(),
                       lambda: instance.log())
        self.assertEqual(instance.end()[0], 0)

    def ownBus(self):
        """A bus on which no server is started when it is asked for."""
        folder = self.user.root / "bus"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        (folder / "configuration").write_text(
            '<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN" '
            '"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd"><busconfig>'
            f"<type>session</type><listen>unix:path={folder}/socket</listen>"
            '<policy context="default"><allow send_destination="*" eavesdrop="true"/>'
            '<allow eavesdrop="true"/><allow own="*"/></policy>'
            "</busconfig>")
        bus = subprocess.Popen(["dbus-daemon", f"--config-file={folder}/configuration", "--nofork",
                                "--nopidfile"], stdin=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
        self.addCleanup(bus.wait)
        self.addCleanup(bus.terminate)
        awaitCondition((folder / "socket").exists, lambda: "no bus")
        return bus, f"unix:path={folder}/socket"


if __name__ == "__main__":
    unittest.main()
