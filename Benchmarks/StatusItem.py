"""Measures what items cost, for status-item: StatusItem.py BIN FOLDER ROUNDS."""

import os
import pathlib
import statistics
import subprocess
import sys
import time

from Measuring import await_, pss

settled = 10  # every tenth round looks at the memory
settling = 0.5  # seconds until that: the panel has read and drawn everything then


def instance(bin, name, options, *command):
    """The runner of an instance of a command."""
    made = subprocess.run([bin / "korvane", "create", "command", name, *options, *command],
                          check=True, capture_output=True, text=True).stdout.rstrip("\n")
    return pathlib.Path(made) / "Contents" / "MacOS" / "runner"


def seconds(runner):
    """From the start to the end."""
    started = time.monotonic()
    subprocess.run([runner], check=True)
    return time.monotonic() - started


class Waiting:
    """A runner whose program tells when it was started, and waits for a line then."""

    program = ("import sys, time\n"
               'print(time.monotonic(), file=open(sys.argv[1], "w"), flush=True)\n'
               "sys.stdin.readline()\n")

    def __init__(self, runner, told):
        told.unlink(missing_ok=True)
        self._started = time.monotonic()
        self._process = subprocess.Popen([runner], stdin=subprocess.PIPE)
        self._told = told

    def secondsToProgram(self):
        text = await_(lambda: self._told.exists() and self._told.read_text(), "program")
        return float(text) - self._started

    def memory(self):
        return pss(self._process.pid)

    def end(self):
        self._process.communicate(b"\n")
        if self._process.returncode:
            sys.exit(f"the runner ended with {self._process.returncode}")


def items():
    """How many items the panel has."""
    told = subprocess.run(
        ["gdbus", "call", "--session", "--dest", "org.kde.StatusNotifierWatcher", "--object-path",
         "/StatusNotifierWatcher", "--method", "org.freedesktop.DBus.Properties.Get",
         "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"],
        check=True, capture_output=True, text=True).stdout
    return told.count("/StatusNotifierItem")


def row(name, values, unit, base=None):
    numbers = [statistics.median(values), statistics.mean(values), statistics.stdev(values),
               min(values), max(values)]
    line = f"{name:14}" + "".join(f"{number:9.2f} {unit}" for number in numbers)
    if base:
        more = [value - of for value, of in zip(values, base)]
        line += f"   {statistics.median(values) - statistics.median(base):+.2f} {unit}" \
                f" ({statistics.median(more):+.2f} by round; least to least" \
                f" {min(values) - min(base):+.2f})"
    print(line)


def measured(runners, tellers, told, rounds):
    ends, starts, memories = ({name: [] for name in runners} for _ in range(3))
    for number in range(rounds + 1):
        # Each is the first as often as the other: what ends may disturb what comes next.
        turn = sorted(runners, reverse=number % 2 == 1)
        for name in turn:
            time_ = seconds(runners[name])
            if number:  # the first round only finds the caches
                ends[name].append(1000 * time_)
        for name in turn:
            waiting = Waiting(tellers[name], told)
            time_ = waiting.secondsToProgram()
            if name == "with an item":
                await_(items, "item")
            if number:
                starts[name].append(1000 * time_)
            if number % settled == 0:
                time.sleep(settling)
                memories[name].append(waiting.memory() / 1000)
            waiting.end()
            await_(lambda: items() == 0, "end of the item")
    return ends, starts, memories


def main(bin, folder, rounds):
    program = folder / "tell"
    program.write_text(f"#!{sys.executable} -IS\n{Waiting.program}")
    program.chmod(0o755)
    told = folder / "told"
    sides = {"without one": [], "with an item": ["--menu-bar"]}
    runners = {name: instance(bin, f"True {name}", options, "/bin/true")
               for name, options in sides.items()}
    tellers = {name: instance(bin, f"Tell {name}", options, program, told)
               for name, options in sides.items()}
    ends, starts, memories = measured(runners, tellers, told, rounds)
    for what, table, unit in (("/bin/true, from start to end", ends, "ms"),
                              ("until the program was started", starts, "ms"),
                              ("memory of the waiting runner (PSS)", memories, "MB")):
        print(f"{what}\n{'':14}{'median':>9}{'mean':>12}{'spread':>12}{'least':>12}{'most':>12}"
              "      more than without")
        row("without one", table["without one"], unit)
        row("with an item", table["with an item"], unit, table["without one"])
    print(f"{rounds} rounds, memory in every {settled}th; the spread is a standard deviation; "
          f"the load of the machine was {os.getloadavg()[0]:.1f} at the end")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), int(sys.argv[3]))
