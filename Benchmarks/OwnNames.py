"""Measures what names of an instance's own cost, for own-names: OwnNames.py BIN FOLDER ROUNDS."""

import os
import pathlib
import select
import shutil
import signal
import statistics
import subprocess
import sys
import time

from Measuring import await_, pss

programs = {"GTK": ["mousepad", "eog", "gnome-calculator"],
            "Qt": ["featherpad", "konsole", "qterminal"]}
roundTrips = 500  # in one go: each program has to be undisturbed for as long
large = 16 * 1024 * 1024
day = 10


class Instances:
    """One program's, with names of its own and on the user's bus."""

    def __init__(self, bin, name, program):
        app = self._korvane(bin, "adopt", program)
        self.bin = bin
        self.names = {True: f"{name} Own", False: f"{name} Shared"}
        made = {own: self._korvane(bin, "create", "app", called, app, "--runner",
                                   bin / "korvane-runner", *([] if own else ["--shared-bus"]))
                for own, called in self.names.items()}
        self.runners = {own: pathlib.Path(path, "Contents", "MacOS", "runner")
                        for own, path in made.items()}

    @staticmethod
    def _korvane(bin, *words):
        done = subprocess.run([bin / "korvane", *words], capture_output=True, text=True)
        if done.returncode:
            sys.exit(done.stderr)
        return done.stdout.rstrip("\n")

    def stop(self, own):
        subprocess.run([self.bin / "korvane", "stop", self.names[own]], stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)


def helperBeside(runner):
    """The process beside a runner."""
    def find():
        for status in pathlib.Path("/proc").glob("[0-9]*/status"):
            try:
                lines = dict(line.split(":\t", 1) for line in status.read_text().splitlines()
                             if ":\t" in line)
            except OSError:
                continue
            if lines["PPid"] == str(runner) and lines["Name"] == "runner":
                return int(lines["Pid"])
        return None
    return await_(find, "process beside the runner")


def inTurns(rounds, measure):
    """What `measure` gives with names of its own and without, each a list."""
    measured = {True: [], False: []}
    for number in range(rounds + 1):
        for own in (True, False) if number % 2 else (False, True):
            value = measure(own)
            if number:  # the first time files are read that are in memory then
                measured[own].append(value)
    return measured[True], measured[False]


def tell(what, unit, values, goal):
    """The least of all is what whatever else the machine did has disturbed least."""
    spread = [statistics.stdev(each) for each in values]
    print(f"{what}, with names of its own and on the user's bus; {goal}")
    for name, of in (("median", statistics.median), ("least", min)):
        own, shared = map(of, values)
        print(f"    {name:8}{own:9.2f} {shared:9.2f} {unit}: {own - shared:+.2f} {unit}, "
              f"{own / shared:.3f} times", flush=True)
    print(f"    spread  {spread[0]:9.2f} {spread[1]:9.2f} {unit}")


def measureStart(bin, rounds):
    instances = Instances(bin, "True", "/bin/true")

    def seconds(own):
        begin = time.monotonic()
        subprocess.run([instances.runners[own]], check=True)
        return 1000 * (time.monotonic() - begin)
    tell("start of /bin/true", "ms", inTurns(10 * rounds, seconds), "goal: +2 ms")


class Windows:
    """Tells when there is another window."""

    def __init__(self):
        self._spy = subprocess.Popen(["xprop", "-root", "-spy", "_NET_CLIENT_LIST"],
                                     stdout=subprocess.PIPE, bufsize=0)

    def ids(self):
        """What there is at the next change, for which it waits."""
        line = await_(self._line, "window").decode()
        return set(line.split("#")[1].replace(",", " ").split()) if "#" in line else set()

    def _line(self):
        return select.select([self._spy.stdout], [], [], 1)[0] and self._spy.stdout.readline()

    def close(self):
        self._spy.terminate()
        self._spy.communicate()


def measureWindow(bin, rounds, kind):
    program = next(filter(shutil.which, programs[kind]), None)
    if program is None:
        print(f"no {kind} program of {', '.join(programs[kind])} is installed")
        return
    instances = Instances(bin, kind, program)
    memory = {"with the runner": [], "without it": []}

    def toWindow(own):
        windows = Windows()
        before = windows.ids()
        begin = time.monotonic()
        runner = subprocess.Popen([instances.runners[own]], stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        while not windows.ids() - before:
            pass
        taken = time.monotonic() - begin
        windows.close()
        if own:
            helper = helperBeside(runner.pid)
            time.sleep(0.5)  # the program has asked what it asks at its start
            memory["with the runner"].append(pss(helper))
            runner.send_signal(signal.SIGKILL)
            runner.wait()
            memory["without it"].append(pss(helper))
        instances.stop(own)
        runner.wait()
        return 1000 * taken
    tell(f"first window of {program} ({kind})", "ms", inTurns(rounds, toWindow),
         "goal: +15 % or +25 ms")
    for when, values in memory.items():
        print(f"    memory (PSS) {when}: {statistics.median(values):.0f} kB, at most "
              f"{max(values)}; goal: less than 1,000")


def waitingInstance(bin, folder):
    """An instance whose program waits; its runner, and the address of its bus."""
    told = folder / "address"
    os.mkfifo(folder / "gate")
    program = folder / "waiting"
    program.write_text(f'#!/bin/sh\necho "$DBUS_SESSION_BUS_ADDRESS" >"{told}.new"\n'
                       f'mv "{told}.new" "{told}"\nread line <"{folder}/gate"\n')
    program.chmod(0o755)
    instances = Instances(bin, "Waiting", program)
    runner = subprocess.Popen([instances.runners[True]])
    await_(told.exists, "program")
    return runner, told.read_text().strip()


def measureCalls(bin, rounds, addresses):
    def ask(*words):
        def measure(own):
            done = subprocess.run([bin / "bus-benchmark", addresses[own], *map(str, words)],
                                  check=True, capture_output=True, text=True)
            return float(done.stdout)
        return measure
    tell("call of the bus", "µs", inTurns(3 * rounds, ask("calls", roundTrips)),
         "goal: 1.6 times")
    tell("call of another program", "µs", inTurns(3 * rounds, ask("pairs", roundTrips)),
         "goal: 1.6 times")
    values = inTurns(min(rounds, 11), ask("bytes", large, 5))
    tell("16 MB there and back", "ms", [[each / 1000 for each in one] for one in values],
         "no goal")


def liveADay(bin, address, helper):
    def state():
        return pss(helper), len(os.listdir(f"/proc/{helper}/fd"))
    print("a day: PSS in kB, open files: before {} {}".format(*state()), end="")
    for _ in range(day):
        subprocess.run([bin / "bus-benchmark", address, "day", "1000"], check=True)
        await_(lambda: state()[1] < 20, "end of the last program")
        print("; {} {}".format(*state()), end="", flush=True)
    print()


def main():
    bin, folder, rounds = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), int(sys.argv[3])
    print(f"load average: {os.getloadavg()[0]:.2f}, {os.cpu_count()} processors")
    measureStart(bin, rounds)
    runner, address = waitingInstance(bin, folder)
    measureCalls(bin, rounds, {True: address, False: os.environ["DBUS_SESSION_BUS_ADDRESS"]})
    liveADay(bin, address, helperBeside(runner.pid))
    (folder / "gate").write_text("x\n")
    runner.wait()
    for kind in programs:
        measureWindow(bin, rounds, kind)
    print(f"load average: {os.getloadavg()[0]:.2f}")


main()
