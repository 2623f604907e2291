"""A web site on 127.0.0.1 whose one page counts in localStorage how often it was visited."""

import http.server
import threading
import urllib.parse

page = b"""<!doctype html>
<meta charset="utf-8"><title>Visits</title><link rel="icon" href="data:,">
<p id="visits"></p>
<script>
const visits = Number(localStorage.getItem('visits') || 0) + 1;
localStorage.setItem('visits', visits);
document.getElementById('visits').textContent = 'visits: ' + visits;
// Synchronous: the page is not loaded, and nobody takes a picture of it, before this is answered.
const report = new XMLHttpRequest();
report.open('GET', '/report?visits=' + visits + '&' + location.search.slice(1), false);
report.send();
</script>
"""


class VisitCounter:
    """Serves the page; `meeting` visitors at a time are let in, none before all have come."""

    def __init__(self, meeting):
        self._arrivals = threading.Barrier(meeting, timeout=45)
        self._reports = []
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), self._handlerClass())
        self._thread = threading.Thread(target=self._server.serve_forever, daemon=True)
        self._thread.start()

    def address(self, visitor):
        return f"http://127.0.0.1:{self._server.server_port}/?visitor={visitor}"

    def takeReports(self):
        """What the pages have reported since the last call: visitor -> visits."""
        reports, self._reports = self._reports, []
        taken = dict(reports)
        if len(taken) != len(reports):
            raise AssertionError(f"a page was loaded more than once: {reports}")
        return taken

    def close(self):
        self._server.shutdown()
        self._thread.join()
        self._server.server_close()

    def _answer(self, url):
        if url.path == "/":
            self._arrivals.wait()
            return 200, page
        if url.path == "/report":
            query = urllib.parse.parse_qs(url.query)
            self._reports.append((query["visitor"][0], int(query["visits"][0])))
            return 200, b""
        return 404, b""

    def _handlerClass(counter):  # the inner class's methods have a self of their own
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                try:
                    status, body = counter._answer(urllib.parse.urlsplit(self.path))
                except threading.BrokenBarrierError:
                    status, body = 503, b"The other visitor never came."
                self.send_response(status)
                self.send_header("Content-Type", "text/html")
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *arguments):
                pass  # the tests say what went wrong

        return Handler
