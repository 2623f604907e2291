"""Tests of what one instance makes of many pages, which it visits one after another: starting one
for each would take most of the time."""

import itertools
import queue

from WebInstances import WebTests
from WebSite import Site

_numbers = itertools.count(1)

class PageTests(WebTests):
    """The tests of a class share `started`, and with it the badge, until one of them fails."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.shared = None
        cls.sharedSite = Site()
        cls.addClassCleanup(cls.sharedSite.close)
        cls.addClassCleanup(cls.forget)

    @classmethod
    def forget(cls):
        """The next test starts an instance of its own."""
        if cls.shared:
            cls.shared.end()
        cls.shared = None
        cls.sharedSite.nextPages.put("/nowhere")  # for the page that still waits
        cls.sharedSite.nextPages = queue.Queue()

    def setUp(self):
        self.site = self.sharedSite
        self.site.reports.clear()

    def run(self, result=None):
        failuresBefore = len(result.failures) + len(result.errors)
        super().run(result)
        if len(result.failures) + len(result.errors) > failuresBefore:
            self.forget()

    def visit(self, script, **page):
        """Goes to a page with a number of its own, whose script calls follow() at its end.

        Notifications tell where its part of the log and of the banners begins; one that it ends
        with is `theEnd`.
        """
        number = next(_numbers)
        self.path = f"/page-{number}"
        self.begin = f"Page {number}"
        self.end = f"End of page {number}"
        script = f"const theEnd = '{self.end}'; new Notification('{self.begin}'); {script}"
        self.site.page(self.path, script, **page)
        if self.shared:
            self.site.nextPages.put(self.path)
        else:
            type(self).shared = self.newInstance(self.site.url(self.path))
            self.shared.start()
        self.started = self.shared
        self.site.awaitRequests(self.path, self.started)

    def logOf(self, script, **page):
        """What the instance logs when it visits a page with this script."""
        self.visit(f"(async () => {{ {script}; new Notification(theEnd); follow(); }})();", **page)
        return self.linesOfThePage()

    def logAfterTheStart(self, script, **page):
        """The same of a script that starts when the page's first title has been told."""
        self.visit(f"""addEventListener('load', async () => {{
            {script}; new Notification(theEnd); follow(); }});""", **page)
        return self.linesOfThePage()

    def linesOfThePage(self):
        return self.started.linesUntil(f"notify: {self.end} — ", f"notify: {self.begin} — ")

    def banners(self):
        """Those of the page, after its last one has come."""
        self.started.awaitBanner(self.end)
        summaries = [banner.summary for banner in self.started.banners()]
        return self.started.banners()[summaries.index(self.begin) + 1:summaries.index(self.end)]

    def reported(self, expression):
        """What the expression is in a page, which may wait for it."""
        self.visit(f"(async () => {{ await report(await ({expression})); follow(); }})();")
        return self.site.awaitReport()
