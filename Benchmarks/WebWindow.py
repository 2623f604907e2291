"""Measures windows with one page, for web-window: WebWindow.py BIN FOLDER ROUNDS."""

import functools
import http.server
import os
import pathlib
import queue
import signal
import statistics
import subprocess
import sys
import threading
import time

from Measuring import pss

page = b"""<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Inbox</title>
<style>body { font: 16px sans-serif; margin: 2em } li { margin: .5em }</style></head>
<body><h1>Inbox</h1><ul id="list"></ul>
<script>
for (let n = 1; n <= 200; ++n) {
    const item = document.createElement("li");
    item.textContent = "Letter " + n + " of somebody about something";
    document.getElementById("list").append(item);
}
addEventListener("load", () => setTimeout(() => fetch("/loaded", {method: "POST"})));
</script></body></html>
"""
settling = 3  # seconds until the memory is looked at: what starts late has started then
settled = 3  # every third round waits for that
patience = 60  # seconds


class Handler(http.server.BaseHTTPRequestHandler):
    def __init__(self, loaded, *arguments):
        self.loaded = loaded
        super().__init__(*arguments)

    def answer(self, body, kind):
        self.send_response(200)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        isPage = self.path == "/"
        self.answer(page if isPage else b"", "text/html" if isPage else "image/x-icon")

    def do_POST(self):
        self.loaded.put(time.monotonic())
        self.answer(b"", "text/plain")

    def log_message(self, *arguments):
        pass


def tree(process):
    """The process and all below it; parent links reach into namespaces of their own."""
    found = [process]
    for task in pathlib.Path(f"/proc/{process}/task").glob("*/children"):
        for child in task.read_text().split():
            found += tree(int(child))
    return found


def memory(process):
    """The sum of PSS in kB, and the name and share of each process."""
    shares = []
    for one in tree(process):
        try:
            shares.append((pathlib.Path(f"/proc/{one}/comm").read_text().strip(), pss(one)))
        except OSError:
            continue  # it has ended meanwhile
    return sum(share for _, share in shares), shares


def processorTime(process):
    """What the process and all below it have used, in seconds."""
    ticks = 0
    for one in tree(process):
        try:
            status = pathlib.Path(f"/proc/{one}/stat").read_text()
        except OSError:
            continue  # it has ended meanwhile, and is in its parent's count
        ticks += sum(map(int, status.rpartition(")")[2].split()[11:15]))
    return ticks / os.sysconf("SC_CLK_TCK")


def runs(process):
    try:
        status = pathlib.Path(f"/proc/{process}/stat").read_text()
    except OSError:
        return False
    return status.rpartition(")")[2].split()[0] != "Z"


def end(process, members):
    process.send_signal(signal.SIGTERM)
    process.wait(patience)
    last = time.monotonic() + patience
    while any(map(runs, members)):
        if time.monotonic() > last:
            sys.exit(f"some of {members} do not end")
        time.sleep(0.02)


def measure(command, loaded, log, isSettled):
    """Until the page is loaded: seconds, and seconds of processors. And the memory then, where it
    has settled."""
    started = time.monotonic()
    process = subprocess.Popen(command, stdout=log, stderr=log)
    try:
        seconds = loaded.get(timeout=patience) - started
    except queue.Empty:
        process.kill()
        sys.exit(f"{command[0]} shows no page")
    used = processorTime(process.pid)
    if isSettled:
        time.sleep(settling)
    found = memory(process.pid) if isSettled else None
    end(process, tree(process.pid))
    return seconds, used, found


def korvaneInstance(bin, url):
    bundle = subprocess.run([bin / "korvane", "create", "web", "Inbox", url], check=True,
                            capture_output=True, text=True).stdout.strip()
    return [f"{bundle}/Contents/MacOS/runner"]


def chromium(folder, url):
    command = ["chromium", f"--app={url}", f"--user-data-dir={folder}/chromium", "--no-first-run",
               "--no-default-browser-check", "--password-store=basic"]
    # It refuses to run as root with its sandbox on.
    return command + ["--no-sandbox"] if os.geteuid() == 0 else command


def row(name, values, others, unit):
    """One line: the numbers of all runs, and the ratio to what was measured in the same round."""
    numbers = [statistics.median(values), statistics.stdev(values), min(values), max(values)]
    line = f"{name:28}" + "".join(f"{number:10.1f} {unit}" for number in numbers)
    for other in others:
        ratios = sorted(value / base for value, base in zip(values, other))
        line += f"   {statistics.median(ratios):.3f} ({ratios[0]:.3f} to {ratios[-1]:.3f})"
    print(line)


def main(bin, folder, rounds):
    loaded = queue.Queue()
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Handler, loaded))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    url = f"http://127.0.0.1:{server.server_port}/"
    commands = {"web instance": korvaneInstance(bin, url),
                "plain WebKitGTK view": [bin / "plain-view", url],
                "chromium --app": chromium(folder, url)}
    times, work, sizes = ({name: [] for name in commands} for _ in range(3))
    shares = {}
    with open(folder / "log", "wb") as log:
        for number in range(rounds + 1):
            # Each is the first as often as the others: what ends may disturb what comes next.
            turn = [*commands, *commands][number % len(commands):][:len(commands)]
            for name in turn:
                seconds, used, found = measure(commands[name], loaded, log, number % settled == 0)
                if number == 0:
                    continue
                times[name].append(1000 * seconds)
                work[name].append(1000 * used)
                if found:
                    sizes[name].append(found[0] / 1024)
                    shares[name] = found[1]
    for what, table, unit in (("start to loaded", times, "ms"), ("processors' time", work, "ms"),
                              ("memory (PSS)", sizes, "MiB")):
        print(f"{what:28}{'median':>13}{'spread':>13}{'least':>13}{'most':>13}"
              "   ratio to plain view      ratio to chromium")
        for name, values in table.items():
            row(name, values, [table["plain WebKitGTK view"], table["chromium --app"]], unit)
    for name, parts in shares.items():
        text = ", ".join(f"{part} {share / 1024:.1f}" for part, share in parts)
        print(f"{name}, the last time, in MiB: {text}")
    print(f"{rounds} rounds, memory in every third; the spread is a standard deviation, a ratio the median of the "
          "rounds' ratios")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), int(sys.argv[3]))
