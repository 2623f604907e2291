#!/usr/bin/env python3
"""Where addresses lead: the one of the instance, and those that its pages name."""

import unittest

from Desktop import awaitCondition
from Screen import Screen
from WebInstances import WebTests, pressAnywhere
from WebSite import Answer, htmlPage


class Addresses(WebTests):
    def test_a_bare_host_is_asked_over_TLS_and_never_without(self):
        port, instance = self.startedAtPort(" 127.0.0.1:{}/path\n")

        instance.window()
        instance.end()
        # The first byte of a TLS record that begins a connection.
        self.assertEqual({heard[:1] for heard in port.heard}, {b"\x16"})

    def test_blanks_around_an_address_are_left_out_and_its_scheme_stays(self):
        self.site.page("/trimmed", title="Trimmed")
        instance = self.instance(f"\n\t  {self.site.url('/trimmed')} \r\n")
        instance.start()

        instance.awaitTitle("Trimmed")

    def test_data_and_files_are_loaded_as_they_are_given(self):
        file = self.user.root / "a page.html"
        file.write_text(htmlPage("", "navigator.setAppBadge(3)", "From a file"))
        for url, title in {"data:text/html,<title>From data</title>": "From data",
                           file.as_uri(): "From a file"}.items():
            instance = self.instance(url)
            instance.start()
            instance.awaitTitle(title)
            instance.end()
        self.assertEqual(instance.lines()[0], "badge: 3")

    def test_what_is_no_address_is_told_in_the_title_and_nothing_is_loaded(self):
        for url in [None, "", "  \n", "http://", "https:///path", "http://a b/",
                    "http://host:port/", "1http://example.org/", "://example.org", "a b",
                    "http://ho\tst/"]:
            with self.subTest(url=url):
                instance = self.instance(url)
                instance.start()

                instance.awaitTitle(f"{instance.name} — invalid URL")
                self.assertEqual(instance.end()[:2], (0, ""))
                self.assertEqual(instance.log(), "")

    def test_a_display_name_of_any_letters_is_the_title_until_a_page_has_one(self):
        name = 'Ünïcode "quoted" <b>&amp; 🙂'
        instance = self.instance(displayName=name)
        instance.start()

        window = instance.window()
        awaitCondition(lambda: "invalid URL" in instance.title(), instance.title)

        self.assertEqual(self.desktop.titleOf(window),
                         '"' + f"{name} — invalid URL".replace('"', '\\"') + '"')

    def test_errors_of_a_server_are_pages_like_others(self):
        for status in (404, 500, 503):
            self.site.page(f"/{status}", "navigator.setAppBadge(1)", f"Error {status}",
                           status=status)
            instance = self.startedAt(f"/{status}")

            instance.awaitTitle(f"Error {status}")
            instance.awaitBadge(1)
            instance.end()

    def test_a_page_that_leads_on_is_followed(self):
        self.site.pages["/"] = Answer(status=302, headers={"Location": self.site.url("/on")})
        self.site.page("/on", "setTimeout(() => { location = '/further'; })", "On")
        self.site.page("/further", title="Further")

        self.startedAt().awaitTitle("Further")


class NewWindows(WebTests):
    def assertLeadsToOneWindow(self, script, body="", click=False):
        self.site.page("/", f"""
            {'' if click else "addEventListener('load', () => setTimeout(() => {"}
            {script}
            {'' if click else "}));"}""", "Opener", body)
        self.site.page("/target", title="Target")
        instance = self.startedAt()
        if click:
            instance.awaitTitle("Opener")
            instance.click()

        instance.awaitTitle("Target")
        self.assertEqual(len(instance.windows()), 1)
        return instance

    everywhere = "style='position: fixed; inset: 0; width: 100%; height: 100%'"

    def test_a_link_for_a_new_window_opens_in_the_same(self):
        instance = self.assertLeadsToOneWindow(
            "", f"<a href='/target' target='_blank' {self.everywhere}>x</a>", click=True)

        instance.press("alt+Left")
        instance.awaitTitle("Opener")

    def test_a_link_without_an_opener_opens_in_the_same(self):
        self.assertLeadsToOneWindow(
            "document.querySelector('a').click()",
            "<a href='/target' target='other' rel='noopener noreferrer'>x</a>")

    def test_a_form_for_a_new_window_opens_in_the_same(self):
        self.assertLeadsToOneWindow(
            "document.querySelector('form').submit()",
            "<form method='post' action='/target' target='_blank'><input name=a value=b></form>")

    def test_a_script_opens_in_the_same_without_a_click(self):
        self.assertLeadsToOneWindow("report(String(open('/target', 'x', 'width=200,height=200')))")

        self.assertEqual(self.site.awaitReport(), "null")

    def test_a_window_without_an_address_leaves_the_page(self):
        self.site.page("/", """addEventListener('load', async () => {
            const opened = [open(), open(''), open('about:blank')];
            await report(opened.map(String));
            new Notification('Still here'); });""", "Opener")
        instance = self.startedAt()

        self.assertEqual(self.site.awaitReport(), ["null"] * 3)
        instance.awaitBanner("Still here")
        instance.awaitTitle("Opener")
        self.assertEqual(len(instance.windows()), 1)

    def test_a_hundred_windows_are_still_one(self):
        self.assertLeadsToOneWindow("for (let n = 0; n < 100; ++n) open('/target', `w${n}`)")


class OtherSchemes(WebTests):
    """A program of the user's that is there for mail writes down what it is started with."""

    def setUp(self):
        super().setUp()
        self.screen = Screen(self.user)
        self.mails = self.user.root / "mails"
        self.mails.unlink(missing_ok=True)
        program = self.user.root / "mail-program"
        program.write_text(f'#!/bin/sh\nprintf "%s %s %s\\n" "$1" "$HOME" "$XDG_DATA_HOME" '
                           f'>>"{self.mails}"\n')
        program.chmod(0o755)
        applications = self.user.home / ".local/share/applications"
        applications.mkdir(exist_ok=True)
        schemes = [f"x-scheme-handler/{name}" for name in ("mailto", "tel", "sms", "korvane-odd")]
        (applications / "mail.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=Mail\nExec={program} %u\n"
            f"MimeType={';'.join(schemes)};\n")
        (self.user.home / ".config/mimeapps.list").write_text(
            "[Default Applications]\n" + "".join(f"{name}=mail.desktop\n" for name in schemes))

    def told(self):
        return self.mails.read_text().splitlines() if self.mails.exists() else []

    def test_mail_leaves_the_window_after_a_click_and_not_before(self):
        self.site.page("/", """
            addEventListener('load', async () => {
                for (const scheme of ['mailto:script@example.org', 'tel:1', 'korvane-odd:1']) {
                    location = scheme;
                    const frame = document.createElement('iframe');
                    frame.src = scheme;
                    document.body.append(frame);
                    await new Promise(done => setTimeout(done));
                }
                await report('tried');
            });""", "Mail",
            body=f"<a href='mailto:click@example.org' {NewWindows.everywhere}>x</a>")
        instance = self.startedAt()
        self.site.awaitReport()
        instance.awaitTitle("Mail")

        instance.click()
        awaitCondition(self.told, lambda: "no mail is written")

        self.assertEqual(set(self.told()), {f"mailto:click@example.org {self.user.home} "
                                            f"{self.user.home}/.local/share"})
        self.assertEqual((instance.title(), len(instance.windows())), ("Mail", 1))

    def test_an_unknown_scheme_asks_even_after_a_click(self):
        self.site.page("/", "addEventListener('click', () => report('clicked'));", "Odd",
                       body=f"<a href='korvane-odd:thing' {NewWindows.everywhere}>x</a>")
        instance = self.startedAt()
        instance.awaitTitle("Odd")
        for keys, after in [(["Return"], []), (["Tab", "Return"], ["korvane-odd:thing"])]:
            instance.click()
            [question] = awaitCondition(instance.questions, lambda: "nothing is asked")
            # A key too many would be one for the page, whose link has the focus.
            awaitCondition(lambda: self.screen.active() == question.identifier,
                           lambda: f"{self.screen.active()} has the keyboard")
            pressAnywhere(self.user, *keys)
            awaitCondition(lambda: not instance.questions(), lambda: f"{keys} are no answer")
            awaitCondition(lambda: [line.split()[0] for line in self.told()] == after,
                           lambda: f"{self.told()}")

    def test_a_new_window_of_another_scheme_is_nothing_without_a_click(self):
        self.site.page("/", """addEventListener('load', async () => {
            for (const scheme of ['mailto:script@example.org', 'korvane-odd:1']) open(scheme);
            new Notification('Tried'); });""", "Opener")
        instance = self.startedAt()
        instance.awaitBanner("Tried")
        instance.awaitTitle("Opener")

        self.assertEqual((self.told(), instance.questions()), ([], []))

    def test_a_script_in_an_address_stays_in_the_page(self):
        self.site.page("/", "addEventListener('click', () => report('clicked'));", "Script",
                       body="<a href='javascript:report(\"run\"); void 0' "
                            f"{NewWindows.everywhere}>x</a>")
        instance = self.startedAt()
        instance.awaitTitle("Script")
        instance.click()
        self.site.awaitReport(2)

        self.assertEqual(sorted(self.site.reports), ["clicked", "run"])
        self.assertEqual(self.told(), [])


if __name__ == "__main__":
    unittest.main()
