#!/usr/bin/env python3
"""The window of a web instance: its identity, its frame, its keys and its questions."""

import os
import pathlib
import re
import threading
import unittest

from Desktop import awaitCondition
from WebInstances import WebTests, pressAnywhere

lateStart = pathlib.Path(os.environ["BUILD_FOLDER"], "Tests", "libkorvane-test-late-start.so")


class Frames(WebTests):
    def setUp(self):
        super().setUp()
        self.site.page("/", "addEventListener('load', () => report(innerWidth));", title="Page")

    def started(self, instance=None):
        before = len(self.site.reports)
        instance = instance or self.instance(self.site.url())
        instance.start()
        self.site.awaitReport(before + 1)
        instance.awaitTitle("Page")
        return instance

    def test_a_new_instance_has_the_usual_size_and_the_class_of_its_entry(self):
        instance = self.started()

        self.assertEqual(instance.frame()[2:], (1160, 780))
        self.assertEqual(instance.window().names, (instance.identifier, instance.identifier))
        self.assertEqual(self.site.awaitReport(), 1160)
        told = self.user.run("xprop", "-id", instance.window().identifier, "_NET_WM_WINDOW_TYPE",
                             "WM_NORMAL_HINTS", "_NET_WM_ALLOWED_ACTIONS")
        for action in ["RESIZE", "MINIMIZE", "CLOSE", "MAXIMIZE_HORZ"]:
            self.assertIn(f"_NET_WM_ACTION_{action}", told)

    def test_the_frame_is_remembered_and_does_not_wander(self):
        self.site.page("/", """addEventListener('load', () => report(innerWidth));
            addEventListener('resize', () => report(innerWidth));""", title="Page")
        instance = self.started()
        self.user.run("wmctrl", "-i", "-r", instance.window().identifier, "-e", "0,123,45,900,600")
        awaitCondition(lambda: instance.frame()[2:] == (900, 600), lambda: str(instance.frame()))
        # The screen has the new size before the instance does, whose page is told last.
        awaitCondition(lambda: 900 in self.site.reports, lambda: str(self.site.reports))
        chosen = instance.frame()
        instance.close()
        self.assertEqual(instance.ended()[:2], (0, ""))

        for _ in range(3):
            self.started(instance)
            awaitCondition(lambda: instance.frame() == chosen,
                           lambda: f"{instance.frame()} is not {chosen}")
            self.assertEqual(instance.end()[:2], (0, ""))

        other = self.started()
        self.assertEqual(other.frame()[2:], (1160, 780))

    def test_a_window_that_was_maximized_is_not_too_large_for_the_screen_later(self):
        instance = self.started()
        self.user.run("wmctrl", "-i", "-r", instance.window().identifier, "-b",
                      "add,maximized_vert,maximized_horz")
        awaitCondition(lambda: instance.frame()[2] == 1280, lambda: str(instance.frame()))
        instance.end()

        self.started(instance)

        x, y, width, height = instance.frame()
        self.assertTrue(0 <= x < 1280 and 0 <= y < 900 and 0 < width <= 1280 and height <= 900,
                        str(instance.frame()))

    def test_a_remembered_frame_that_is_none_is_not_used(self):
        instance = self.started()
        instance.end()
        [file] = instance.home.glob(f"KorvaneWeb-{instance.identifier}*")
        kept = file.read_text()
        for content in ["garbage\n", kept.replace("1160", "-5"),
                        kept.replace("1160", "99999999999999999999"),
                        kept.replace("1160", "2147483647"), "\0" * 10_000_000]:
            with self.subTest(content=content[:50]):
                file.write_text(content)

                self.started(instance)

                x, y, width, height = instance.frame()
                self.assertTrue(100 <= width <= 4096 and 100 <= height <= 4096,
                                str(instance.frame()))
                self.assertTrue(x < 1280 and y < 900, str(instance.frame()))
                self.assertEqual(instance.end()[:2], (0, ""))


class Keys(WebTests):
    def setUp(self):
        super().setUp()
        self.site.page("/", """
            addEventListener('resize', () => report(innerWidth));
            addEventListener('load', () => report('loaded'));""", title="Keys")
        self.site.page("/second", title="Second")
        self.keys = self.startedAt()
        self.site.awaitReport()
        self.keys.awaitTitle("Keys")

    def widths(self):
        return [width for width in self.site.reports if isinstance(width, int)]

    def pressUntil(self, condition, *keys):
        self.keys.press(*keys)
        awaitCondition(condition, lambda: f"{keys}: {self.site.reports}")

    def test_zoom(self):
        for larger, same, smaller in [("ctrl+plus", "ctrl+0", "ctrl+minus"),
                                      ("ctrl+KP_Add", "ctrl+KP_0", "ctrl+KP_Subtract")]:
            self.site.reports.clear()
            self.pressUntil(lambda: self.widths() and self.widths()[-1] < 1160, larger)
            self.pressUntil(lambda: self.widths()[-1] == 1160, same)
            self.pressUntil(lambda: self.widths()[-1] > 1160, smaller)
            self.pressUntil(lambda: self.widths()[-1] == 1160, same)

    def test_reloading(self):
        for number, key in enumerate(["F5", "ctrl+r", "ctrl+shift+r"], 2):
            self.pressUntil(lambda: len(self.site.requestsOf("/")) == number and
                            self.site.reports.count("loaded") == number, key)

    def test_back_and_forward_by_keys_and_by_the_mouse(self):
        self.site.page("/", "addEventListener('load', () => { location = '/second'; })", "Keys")
        self.site.page("/", """addEventListener('click', () => { location = '/second'; });
            addEventListener('load', () => report('loaded'));""", "Keys")
        self.keys.press("F5")
        self.site.awaitReport(2)
        self.keys.click()
        self.keys.awaitTitle("Second")
        for back, forward in [(lambda: self.keys.press("alt+Left"),
                               lambda: self.keys.press("alt+Right")),
                              (lambda: self.keys.click(8), lambda: self.keys.click(9))]:
            back()
            self.keys.awaitTitle("Keys")
            forward()
            self.keys.awaitTitle("Second")

    def test_finding(self):
        self.site.page("/", """
            addEventListener('scroll', () => { if (scrollY > 5000) report('found'); });
            addEventListener('load', () => report('ready'));""", "Long",
            body="<div style='height: 9000px'>above</div>the needle<div style='height: 900px'>")
        self.keys.press("F5")
        self.site.awaitReport(2)

        self.keys.press("ctrl+f")
        awaitCondition(lambda: "found" in self.site.reports or self.keys.type("needle") or
                       self.keys.press("Return", "ctrl+a"), lambda: str(self.site.reports))

    def test_a_page_is_not_robbed_of_other_keys(self):
        self.site.page("/", """
            const heard = [];
            addEventListener('keydown', event => {
                heard.push((event.ctrlKey ? 'ctrl+' : '') + event.key);
                if (event.key == 'z') report(heard);
            });
            addEventListener('load', () => report('ready'));""", "Long")
        self.keys.press("F5")
        self.site.awaitReport(2)
        self.keys.click()

        self.keys.press("a", "Escape", "ctrl+b", "ctrl+s", "Left", "BackSpace", "z")

        heard = [key for key in self.site.awaitReport(3) if key != "Control"]
        self.assertEqual(heard, ["a", "Escape", "ctrl+b", "ctrl+s", "ArrowLeft",
                                 "Backspace", "z"])

    def test_the_keyboard_stays_with_the_page_after_its_last_link(self):
        self.site.page("/", """
            addEventListener('keydown', event => report(event.key));
            addEventListener('load', () => report('ready'));""", "Keys", body="<a href='#'>x</a>")
        self.keys.press("F5")
        self.site.awaitReport(2)
        self.site.reports.clear()

        self.keys.press("Tab")
        self.site.awaitReport(1)
        self.keys.press("Tab", "Tab", "Tab")
        awaitCondition(lambda: "a" in self.site.reports or self.keys.press("a"),
                       lambda: f"heard: {self.site.reports}")

    def test_the_whole_screen(self):
        self.site.page("/", """
            addEventListener('click', () => document.documentElement.requestFullscreen());
            addEventListener('fullscreenchange', () => report(!!document.fullscreenElement));
            addEventListener('load', () => report('ready'));""", "Large")
        self.keys.press("F5")
        self.site.awaitReport(2)
        self.keys.click()
        self.assertTrue(self.site.awaitReport(3))
        awaitCondition(lambda: self.keys.frame() == (0, 0, 1280, 900), lambda: str(
            self.keys.frame()))

        awaitCondition(lambda: False in self.site.reports or self.keys.press("Escape"),
                       lambda: "it stays")
        awaitCondition(lambda: self.keys.frame()[2:] == (1160, 780), lambda: str(
            self.keys.frame()))


class Questions(WebTests):
    """They are answered by keys until the page tells what it was answered."""

    def ask(self, expression, title="Question"):
        self.site.page("/", f"""addEventListener('load', () => setTimeout(async () => {{
            await report('asking');
            await report({{answer: await ({expression})}});
        }}));""", title=title)
        instance = self.startedAt()
        self.site.awaitReport(1)
        return instance

    def answer(self, instance, *keys):
        awaitCondition(lambda: len(self.site.reports) > 1 or pressAnywhere(self.user, *keys),
                       lambda: f"no answer to {keys}")
        return self.site.reports[1].get("answer")

    def test_alert(self):
        self.assertIsNone(self.answer(self.ask("alert('Look <b>here</b>')"), "Return"))

    def test_confirm(self):
        for key, expected in {"Return": True, "Escape": False}.items():
            self.site.reports.clear()
            instance = self.ask("confirm('Really?')")
            self.assertIs(self.answer(instance, key), expected)
            instance.end()

    def test_prompt(self):
        for keys, expected in {("ctrl+a", "h", "i", "Return"): "hi", ("Escape",): None}.items():
            self.site.reports.clear()
            # Keys that come while the question comes up may be the last of them alone: it is asked
            # again then.
            instance = self.ask("""(() => {
                for (let i = 0; i < 20; ++i) {
                    const answer = prompt('Name?', 'old');
                    if (answer === null || answer === 'hi' || i === 19) return answer;
                }
            })()""")
            self.assertEqual(self.answer(instance, *keys), expected)
            instance.end()

    def test_a_place_is_not_told_without_an_answer(self):
        instance = self.ask("""new Promise(done => navigator.geolocation.getCurrentPosition(
            () => done('told'), error => done(error.code)))""")

        self.assertEqual(self.answer(instance, "Escape"), 1)

    def test_a_question_does_not_keep_an_instance_from_ending(self):
        for expression in ["alert('x')", "confirm('x')", "prompt('x')"]:
            self.site.reports.clear()
            instance = self.ask(expression)
            instance.window()

            # The engine may say of its process that it did not expect to end.
            self.assertEqual(instance.end()[:2], (0, ""), expression)

    def test_a_name_and_a_password_are_asked_for(self):
        self.guardPage()
        self.answerWithName(self.startedAt())

    def test_they_are_asked_for_again_when_the_engine_drops_the_question(self):
        self.guardPage()
        gate = self.user.root / "gate"
        os.mkfifo(gate)
        instance = self.instance(self.site.url())
        instance.start(LD_PRELOAD=lateStart, LATE_START_GATE=gate, LATE_START_URL=self.site.url())
        instance.awaitPicture()
        answered = threading.Event()
        self.guardPage(until=answered)

        self.user.run("timeout", "60", "sh", "-c", 'echo >"$0"', gate)

        self.site.awaitRequests("/", instance, 2)
        instance.awaitEmptiness()
        answered.set()
        self.answerWithName(instance)

    def guardPage(self, **answer):
        self.site.page("/", "addEventListener('load', () => report('in'))", "Inside",
                       credentials="ada:pass word", **answer)

    def answerWithName(self, instance):
        instance.awaitPicture()
        instance.type("ada")
        pressAnywhere(self.user, "Tab")
        instance.type("pass word")
        pressAnywhere(self.user, "Return")

        instance.awaitTitle("Inside")


class Wayland(WebTests):
    def test_the_compositor_is_told_the_desktop_id(self):
        display = "korvane-web-test"
        compositor = self.user.start("weston", "--backend=headless-backend.so", "--no-config",
                                     "--idle-time=0", f"--socket={display}")
        self.addCleanup(compositor.communicate)
        self.addCleanup(compositor.terminate)
        socket = os.path.join(self.user.session["XDG_RUNTIME_DIR"], display)
        awaitCondition(lambda: os.path.exists(socket), lambda: "no compositor")
        self.site.page("/", "addEventListener('load', () => report('loaded'));", title="Page")
        instance = self.instance(self.site.url())
        # Into a file, for it is more than a pipe holds.
        told = self.user.root / "told"
        instance.start("sh", "-c", 'exec "$@" 2>"$0"', told, WAYLAND_DISPLAY=display,
                       WAYLAND_DEBUG="1", XDG_SESSION_TYPE="wayland", GDK_BACKEND="wayland",
                       DISPLAY=None)
        self.site.awaitReport()
        awaitCondition(lambda: 'set_title("Page")' in told.read_text(), lambda: "no title")

        self.assertEqual(instance.end()[0], 0)

        self.assertEqual(set(re.findall(r'set_app_id\("(.*)"\)', told.read_text())),
                         {instance.identifier})


if __name__ == "__main__":
    unittest.main()
