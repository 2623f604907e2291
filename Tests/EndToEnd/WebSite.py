"""A web site for the tests, on this machine: pages that a test lays out, what they were asked for,
and what they report."""

import base64
import dataclasses
import http.server
import json
import queue
import socket
import ssl
import subprocess
import threading

from Desktop import awaitCondition


@dataclasses.dataclass
class Answer:
    body: bytes = b""
    kind: str = "text/html; charset=utf-8"
    status: int = 200
    headers: dict = dataclasses.field(default_factory=dict)
    credentials: str = ""  # "name:password", without which the answer is 401
    until: threading.Event = None  # the answer stays away until then


@dataclasses.dataclass(frozen=True)
class Request:
    method: str
    path: str
    headers: dict
    body: str


class Site:
    """Serves until close(). A page is what stands under its path in `pages`."""

    def __init__(self, certificate=None, port=0):
        self.pages = {}
        self.requests = []
        self.reports = []
        self.nextPages = queue.Queue()  # where pages go that call follow()
        self._server = _Server(("127.0.0.1", port), _handlerOf(self))
        self.port = self._server.server_address[1]
        self.scheme = "https" if certificate else "http"
        if certificate:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(certificate)
            self._server.context = context
        self._thread = threading.Thread(target=self._server.serve_forever, args=[0.05],
                                        daemon=True)
        self._thread.start()

    def close(self):
        self._server.shutdown()
        self._server.server_close()
        self._thread.join()

    def url(self, path="/", host="127.0.0.1"):
        return f"{self.scheme}://{host}:{self.port}{path}"

    def handshakes(self):
        """How many have begun to speak TLS, whether or not they trusted the certificate."""
        return self._server.handshakes

    def page(self, path, script="", title=None, body="", **answer):
        """Lays out a page; in `script` report(what) hands something over to `reports`, and
        follow() goes to the page that comes next out of `nextPages`."""
        text = htmlPage(self.url(""), script, title, body)
        self.pages[path] = Answer(text.encode(), **answer)

    def requestsOf(self, path):
        return [request for request in list(self.requests) if request.path == path]

    def awaitRequests(self, path, instance, number=1):
        awaitCondition(lambda: len(self.requestsOf(path)) >= number or instance.assertRuns(),
                       lambda: f"{path} is not asked for, but "
                               f"{[request.path for request in self.requests]}")

    def awaitReport(self, number=1):
        """The report with this number, counted from 1."""
        awaitCondition(lambda: len(self.reports) >= number,
                       lambda: f"reports: {self.reports}; "
                               f"requests: {[request.path for request in self.requests]}")
        return self.reports[number - 1]


def htmlPage(site, script="", title=None, body=""):
    named = "" if title is None else f"<title>{title}</title>"
    return f"""<!doctype html><html><head><meta charset="utf-8">{named}<script>
        function report(what) {{
            return fetch("{site}/report", {{method: "POST", mode: "no-cors", keepalive: true,
                                           body: JSON.stringify(what)}});
        }}
        async function follow() {{
            location = await (await fetch("{site}/next")).text();
        }}
        </script></head><body>{body}<script>{script}</script></body></html>"""


class _Server(http.server.ThreadingHTTPServer):
    daemon_threads = True
    context = None
    handshakes = 0

    def finish_request(self, request, client_address):
        if self.context:
            self.handshakes += 1
            request = self.context.wrap_socket(request, server_side=True)
        super().finish_request(request, client_address)

    def handle_error(self, request, client_address):
        pass  # whoever asked has gone, or does not trust the certificate


def _handlerOf(site):
    class Handler(http.server.BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"

        def do_GET(self):
            size = int(self.headers.get("Content-Length", 0))
            body = self.rfile.read(size).decode("utf-8", "replace")
            path = self.path.partition("?")[0]
            site.requests.append(Request(self.command, path, dict(self.headers), body))
            if path == "/report":
                site.reports.append(json.loads(body))
                self.reply(Answer())
            elif path == "/next":
                self.reply(Answer(site.nextPages.get(timeout=60).encode()))
            else:
                self.reply(site.pages.get(path, Answer(b"There is no such page.", status=404)))

        do_POST = do_GET

        def reply(self, answer):
            if answer.until:
                answer.until.wait(60)
            given = self.headers.get("Authorization", "")
            wanted = "Basic " + base64.b64encode(answer.credentials.encode()).decode()
            if answer.credentials and given != wanted:
                answer = Answer(b"Who is there?", status=401,
                                headers={"WWW-Authenticate": 'Basic realm="the tests"'})
            self.send_response(answer.status)
            headers = {"Content-Type": answer.kind, "Content-Length": str(len(answer.body)),
                       "Access-Control-Allow-Origin": "*", "Cache-Control": "no-store"}
            for name, value in {**headers, **answer.headers}.items():
                self.send_header(name, value)
            self.end_headers()
            self.wfile.write(answer.body)

        def log_message(self, *arguments):
            pass

    return Handler


class Port:
    """Takes connections and keeps what is said first on each."""

    def __init__(self):
        self.heard = []
        self._socket = socket.create_server(("127.0.0.1", 0))
        self.number = self._socket.getsockname()[1]
        threading.Thread(target=self._listen, daemon=True).start()

    def close(self):
        self._socket.shutdown(socket.SHUT_RDWR)
        self._socket.close()

    def _listen(self):
        while True:
            try:
                connection, _ = self._socket.accept()
            except OSError:
                return
            with connection:
                self.heard.append(connection.recv(16))


def selfSignedCertificate(folder):
    """A file with a new certificate that nobody trusts, and its key."""
    file = folder / "certificate.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                    "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2", "-subj",
                    "/CN=127.0.0.1", "-keyout", file, "-out", folder / "public.pem"],
                   check=True, capture_output=True)
    with open(file, "a", encoding="ascii") as whole:
        whole.write((folder / "public.pem").read_text())
    return file
