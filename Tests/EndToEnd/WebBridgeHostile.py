#!/usr/bin/env python3
"""What a page can do to the bridge that means no good: texts that pretend, replaced objects, and
messages of any shape and from any frame."""

import unittest

from Desktop import awaitCondition
from WebInstances import Banner, WebTests, notifications
from WebPages import PageTests

post = "const post = what => webkit.messageHandlers.korvane.postMessage(what);"


class Texts(PageTests):
    def shown(self, title, body):
        """The banner of a notification with these texts, written in JavaScript."""
        self.logOf(f"new Notification({title}, {{body: {body}}})")
        banners = self.banners()
        self.assertEqual(len(banners), 1)
        return banners[0]

    def test_what_looks_like_markup_is_shown_as_text(self):
        for text in ["<b>bold</b> & <i>tall", "&lt;b&gt; &amp;amp; &#60;",
                     '<a href="https://example.org">click</a>', '<img src="file:///etc/passwd">',
                     "a < b && c > d", "]]>", "\\u0026 \\\\ \\' %s %b %n"]:
            # Written so that Python and JavaScript mean the same text.
            meant = text.replace("\\u0026", "&").replace("\\\\", "\\").replace("\\'", "'")
            with self.subTest(text=meant):
                self.shown(f"'{text}'", f"'{text}'")

                banner = self.started.awaitBanner(meant)

                self.assertEqual(banner, Banner(meant, meant))

    def test_the_server_formats_no_markup_of_a_page(self):
        self.shown("'Plain'", "'<b>bold</b> & <u>more</u>'")
        self.user.run("dunstctl", "close-all")

        def formatted():
            return self.user.run("gdbus", "call", "--session", "--dest", notifications,
                                 "--object-path", "/org/freedesktop/Notifications", "--method",
                                 "org.dunstproject.cmd0.NotificationListHistory")
        awaitCondition(lambda: "bold" in formatted(), formatted)
        self.assertIn("&lt;b&gt;bold&lt;/b&gt; &amp; &lt;u&gt;more&lt;/u&gt;", formatted())

    def test_a_text_does_not_make_a_line_of_its_own_in_the_log(self):
        for break_ in ["\\n", "\\r", "\\r\\n", "\\x0b", "\\x0c"]:
            with self.subTest(line=break_):
                log = self.logOf(f"new Notification('a{break_}badge: 1', "
                                 f"{{body: 'b{break_}badge: 2'}})")

                self.assertEqual(len(log), 1, log)
                self.assertEqual(len(log[0].splitlines()), 1, log)
                self.assertTrue(log[0].startswith("notify: a") and log[0].endswith("badge: 2"))

    def test_line_breaks_of_a_body_do_not_hide_a_banner(self):
        self.assertEqual(self.shown("'Lines'", "'one\\ntwo'").summary, "Lines")

    def test_texts_that_are_no_text_still_give_a_banner(self):
        texts = ["'a\\0b'", "'\\0'", "'\\ud800'", "'a\\udc00b'", "'\\uffff'", "'\\x01\\x1b[31m'",
                 "'\\ufeff'", "'\\u202eabc'", "'\U0001F642'.slice(0, 1)"]
        for text in texts:
            with self.subTest(text=text):
                banner = self.shown(text, text)

                self.assertNotEqual(banner.summary, "")
                self.assertNotIn("\0", banner.summary + banner.body)

    def test_a_NUL_does_not_cut_a_text_off(self):
        log = self.logOf("new Notification('before\\0after', {body: 'begun\\0ended'})")

        self.assertRegex(log[0], "^notify: before.?after — begun.?ended$")

    def test_a_title_with_a_NUL_keeps_its_count(self):
        log = self.logAfterTheStart("""
            document.title = 'before\\0(7)';
            await new Promise(done => setTimeout(done))""", title="Start")

        self.assertEqual(log, ["badge: cleared", "badge: 7"])


class ReplacedObjects(PageTests):
    def test_a_page_may_put_something_else_in_the_notifications_place(self):
        for script, expected in {
                "Notification = 5; report(Notification)": 5,
                "window.Notification = function() {}; report(Notification.permission ?? 'own')":
                    "own",
                "report([delete window.Notification, 'Notification' in window])": [True, False],
                "Object.defineProperty(window, 'Notification', {get: () => 7});"
                "report(Notification)": 7,
                "Notification.prototype.close = () => 8; report(new Notification('').close())": 8,
                "Notification.permission = 'denied'; report(Notification.permission)": "denied",
        }.items():
            with self.subTest(script=script):
                self.site.reports.clear()
                self.visit(f"{script}.then(follow)")

                self.assertEqual(self.site.awaitReport(), expected)
                self.assertEqual(self.logOf("navigator.setAppBadge(3)"), ["badge: 3"])

    def test_a_class_of_that_name_is_the_pages_own(self):
        self.visit("""
            const element = document.createElement('script');
            element.textContent = `class Notification { static own = 'own'; };
                                   report(Notification.own).then(follow)`;
            document.body.append(element);""")

        self.assertEqual(self.site.awaitReport(), "own")
        self.assertEqual(self.logOf("navigator.setAppBadge(3)"), ["badge: 3"])

    def test_frozen_objects_still_work(self):
        log = self.logOf("""
            Object.freeze(Notification);
            Object.freeze(Notification.prototype);
            Object.freeze(navigator);
            new Notification('Frozen', {body: 'as ice'}).close();
            navigator.setAppBadge(4)""")

        self.assertEqual(log, ["notify: Frozen — as ice", "badge: 4"])

    def test_nothing_throws_where_the_way_to_the_host_is_gone(self):
        for script in ["window.webkit = 5", "delete window.webkit",
                       "Object.defineProperty(window, 'webkit', {get() { throw 'gone'; }})",
                       "Object.getPrototypeOf(webkit.messageHandlers.korvane).postMessage = "
                       "() => { throw 'gone'; }"]:
            with self.subTest(script=script):
                self.site.reports.clear()
                self.visit(f"""(async () => {{
                    const heard = [];
                    addEventListener('unhandledrejection', () => heard.push('rejected'));
                    addEventListener('error', () => heard.push('error'));
                    try {{ {script}; }} catch (error) {{}}
                    new Notification('x');
                    await navigator.setAppBadge(6);
                    await navigator.clearAppBadge();
                    await new Promise(done => setTimeout(done));
                    await report(heard);
                    follow();
                }})();""", title="Title")

                self.assertEqual(self.site.awaitReport(), [])
                self.assertEqual(self.logOf("navigator.setAppBadge(3)"), ["badge: 3"])

    def test_poisoned_built_in_functions_end_at_the_page(self):
        self.visit("""
            String.prototype.toString = Object.prototype.toString = () => { throw 'poison'; };
            Promise.resolve = () => { throw 'poison'; };
            Object.prototype.then = 5;
            try { new Notification('x'); navigator.setAppBadge(6); } catch (error) {}
            setTimeout(follow);""")

        self.assertEqual(self.logOf("navigator.setAppBadge(3)"), ["badge: 3"])


class Messages(PageTests):
    def logOfMessages(self, *messages):
        attempts = "".join(f"try {{ post({message})?.catch(() => {{}}); }} catch (error) {{}}"
                           for message in messages)
        return self.logOf(post + attempts)

    def test_messages_of_the_wrong_shape_are_ignored(self):
        log = self.logOfMessages(
            "undefined", "null", "5", "NaN", "true", "'notify'", "[]", "['type', 'notify']", "({})",
            "Object.assign([], {type: 'notify', payload: {title: 'array'}})",
            "({type: 5})", "({type: null, payload: {}})", "({type: ['notify']})",
            "({type: {toString: 'notify'}})", "({type: ''})", "({type: 'Notify'})",
            "({type: 'notify ', payload: {title: 'x'}})", "({type: 'notify\\0', payload: {}})",
            "({Type: 'notify'})", "({payload: {title: 'x'}})", "({type: 'other', payload: {}})",
            "new Date()", "new Map([['type', 'notify']])", "() => {}", "Symbol('x')",
            "document.body", "new Proxy({}, {})", "10n", "new String('notify')", "/x/",
            "({get type() { throw 5; }})", "new ArrayBuffer(8)", "new Error('x')",
            "Object.create({type: 'notify'})")

        self.assertEqual(log, [])

    def test_a_payload_that_is_none_is_an_empty_one(self):
        log = self.logOfMessages(
            "({type: 'notify'})", "({type: 'notify', payload: 5})",
            "({type: 'notify', payload: null})", "({type: 'notify', payload: 'text'})",
            "({type: 'notify', payload: [1]})",
            "({type: 'notify', payload: Object.assign([], {title: 'array'})})")

        self.assertEqual(log, [f"notify: {self.started.name} — "] * 6)

    def test_fields_of_the_wrong_kind_are_none(self):
        name = "({type: 'notify', payload: "
        log = self.logOfMessages(
            f"{name}{{title: 5, body: 6}}}})", f"{name}{{title: {{}}, body: []}}}})",
            f"{name}{{title: ['x'], body: true}}}})", f"{name}{{body: 'only this'}}}})",
            f"{name}{{title: 'title', extra: {{deep: [1, 2]}}}}}})")

        name = self.started.name
        self.assertEqual(log, [*[f"notify: {name} — "] * 3, f"notify: {name} — only this",
                               "notify: title — "])

    def test_counts_that_are_no_integers_clear_the_badge(self):
        badge = "({type: 'badge', payload: {count: "
        log = self.logOfMessages(
            *[f"{badge}{count}}}}})" for count in
              ["3", "'3'", "2.5", "NaN", "-7", "null", "[4]", "1e300", "{}", "'x'", "12"]],
            "({type: 'badge'})", "({type: 'badge', payload: 7})")

        self.assertEqual(log, [f"badge: {label}" for label in
                               ["3", *["cleared"] * 9, "12", "cleared", "cleared"]])

    def test_a_value_that_is_deep_or_has_a_circle_does_no_harm(self):
        log = self.logOf(post + """
            let deep = {};
            for (let level = 0; level < 20000; ++level) deep = {deep};
            const circle = {type: 'notify', payload: {title: 'Circle'}};
            circle.payload.payload = circle;
            post(circle);
            post({type: deep});
            post({type: 'notify', payload: {title: deep}});""")

        self.assertEqual(log, ["notify: Circle — ", f"notify: {self.started.name} — "])


class Frames(WebTests):
    def test_a_frame_of_another_origin_has_no_bridge_script_but_may_not_do_harm(self):
        other = self.newSite()
        other.page("/frame", f"""
            {post}
            const told = [typeof navigator.setAppBadge];
            for (const what of [undefined, 7, {{type: 7}}, {{type: 'other'}}, [], 'badge'])
                try {{ post(what).catch(() => {{}}); }} catch (error) {{ told.push('thrown'); }}
            document.title = '(44)';
            report(told).then(() => parent.postMessage('done', '*'));""", title="(33)")
        frames = "".join(f"<iframe {kind} src='{other.url('/frame', host)}'></iframe>"
                         for kind, host in [("", "localhost"), ("", "127.0.0.1"),
                                            ("sandbox='allow-scripts'", "127.0.0.1")])
        self.site.page("/", """
            let done = 0;
            addEventListener('message', () => { if (++done == 3) new Notification('The end'); });
            """, body=frames, title="(2)")
        instance = self.startedAt()

        self.assertEqual(instance.linesUntil("notify: The end — "), ["badge: 2"])
        self.assertEqual([other.awaitReport(number) for number in (1, 2, 3)], [["undefined"]] * 3)
        instance.awaitTitle("(2)")


if __name__ == "__main__":
    unittest.main()
