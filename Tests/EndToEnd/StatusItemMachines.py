#!/usr/bin/env python3
"""Items on machines that lack something, or lose it: the panel, the bus, or either's answers. The
program and the runner's status never suffer."""

import os
import pathlib
import signal
import socket
import subprocess
import unittest

from BusClient import BusClient
from Desktop import awaitCondition
from StatusItems import StatusItemTests, itemsOf, registeredItems, watcher


class WithoutMuch(StatusItemTests):
    def assertRunsAsEver(self, instance):
        """A recording program that was just started gets its signals, and its status counts."""
        before = instance.log()
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
            instance.signal(number)
            before += f"{number.name}\n"
            instance.awaitLog(before)
        instance.finish(21)
        status, output, errors = instance.ended()
        self.assertEqual((status, output), (21, ""))
        self.assertEqual(instance.log(), before)
        return errors

    def startWith(self, **environment):
        instance = self.recording()
        instance.start(**environment)
        instance.awaitLog("ready\n")
        return instance

    def assertToldInOneLineAtMost(self, errors):
        self.assertRegex(errors, r"\A(runner: [^\n]+\n)?\Z")


class Panels(WithoutMuch):
    def test_an_item_comes_back_with_every_panel(self):
        instance, item = self.startedRecording()
        for number in (signal.SIGKILL, signal.SIGTERM, signal.SIGKILL):
            self.panel.end(number)
            self.assertTrue(instance.isRunning())
            self.panel.start()
            self.panel.slots()
            self.assertTrue(item.isThere())
        self.panel.openMenu().click("Quit")
        instance.awaitLog("ready\nSIGTERM\n")
        self.panel.pointAway()
        self.assertEqual(self.assertRunsAsEver(instance), "")
        self.assertNoItems()

    def test_without_a_panel_an_instance_runs_as_if_there_was_one(self):
        self.panel.end()
        self.addCleanup(lambda: self.panel.isThere() or self.panel.start())
        self.assertEqual(self.assertRunsAsEver(self.startWith()), "")
        self.assertEqual(self.instance("/bin/false").run(), (1, "", ""))

        instance = self.startWith()
        self.panel.start()
        self.panel.slots()

        self.panel.openMenu().click("Quit")
        instance.awaitLog("ready\nSIGTERM\n")
        self.panel.pointAway()
        self.assertEqual(self.assertRunsAsEver(instance), "")
        self.assertNoItems()

    def test_no_panel_is_started_for_an_item(self):
        """A bus may know a program that provides what items register with."""
        services = self.user.home / ".local" / "share" / "dbus-1" / "services"
        services.mkdir(parents=True)
        started = self.user.root / "started"
        program = self.program(f"#!/bin/sh\ntouch '{started}'\n")
        service = services / f"{watcher}.service"
        service.write_text(f"[D-BUS Service]\nName={watcher}\nExec={program}\n")
        self.addCleanup(service.unlink)  # the session's own bus would heed it, too
        address, bus = self.newBus()

        instance = self.startWith(DBUS_SESSION_BUS_ADDRESS=address)

        awaitCondition(lambda: self.isConnected(bus, instance), lambda: "it does not use the bus")
        self.assertRunsAsEver(instance)
        self.assertFalse(started.exists())

    def isConnected(self, bus, instance):
        names = bus.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "ListNames")[0]
        return any(bus.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                           "GetConnectionUnixProcessID", "s", name) == (instance.pid(),)
                   for name in names if name.startswith(":"))

    def newBus(self):
        """The address of a bus of its own, and a client of it."""
        path = self.user.temporary / "bus"
        process = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--nosyslog", "--print-address",
             f"--address=unix:path={path}"],
            env=self.user.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL)
        self.daemon = process

        def end():
            process.kill()
            process.wait()
            path.unlink(missing_ok=True)
        self.addCleanup(end)
        with process.stdout as output:
            self.assertNotEqual(output.readline(), b"", "no bus")  # it takes clients from here on
        client = BusClient(f"unix:path={path}")
        self.addCleanup(client.close)
        return f"unix:path={path}", client

    def test_a_bus_that_ends_meanwhile_takes_the_item_alone(self):
        address, bus = self.newBus()
        instance = self.startWith(DBUS_SESSION_BUS_ADDRESS=address)
        awaitCondition(lambda: self.isConnected(bus, instance), lambda: "it does not use the bus")

        self.daemon.kill()
        self.daemon.wait()

        # A library may end its process when its bus ends, by a signal that would be passed on.
        expected = "ready\n"
        for _ in range(20):
            instance.signal(signal.SIGHUP)
            expected += "SIGHUP\n"
            instance.awaitLog(expected)
        self.assertLess(processorTicks(instance.pid()), 50, "it is busy with a dead connection")
        os.kill(instance.programPid(), signal.SIGKILL)
        status, output, errors = instance.ended()
        self.assertEqual((status, output, instance.log()), (int(signal.SIGKILL), "", expected))
        self.assertToldInOneLineAtMost(errors)

    def test_a_panel_that_does_not_answer_holds_nothing_up(self):
        [owner] = self.bus.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                               "GetConnectionUnixProcessID", "s", watcher)
        os.kill(owner, signal.SIGSTOP)
        try:
            self.assertEqual(self.instance("/bin/false").run(), (1, "", ""))
            self.assertEqual(self.assertRunsAsEver(self.startWith()), "")
        finally:
            os.kill(owner, signal.SIGCONT)
            # It keeps in its list what has registered meanwhile, also when that is gone.
            self.panel.restart()
        self.assertNoItems()


class Buses(WithoutMuch):
    def setUp(self):
        """No bus can be found, and nothing that would start one goes unnoticed."""
        self.empty = self.user.root / "no-bus"
        self.empty.mkdir(exist_ok=True)
        self.launched = self.user.root / "launched"
        tools = self.user.root / "tools"
        tools.mkdir(exist_ok=True)
        for name in ("dbus-launch", "dbus-daemon", "dbus-broker-launch"):
            (tools / name).write_text(f"#!/bin/sh\necho {name} >>'{self.launched}'\nexit 1\n")
            (tools / name).chmod(0o755)
        self.path = f"{tools}:{self.user.environment()['PATH']}"

    def startAt(self, address, folder=None):
        return self.startWith(DBUS_SESSION_BUS_ADDRESS=address, PATH=self.path,
                              XDG_RUNTIME_DIR=str(folder or self.empty))

    def test_without_a_bus_none_is_started(self):
        for address in [None, "", "autolaunch:", "nonsense", "unix:path=/no/such/bus",
                        "tcp:host=127.0.0.1,port=1", "unix:"]:
            with self.subTest(address):
                instance = self.startAt(address)
                self.assertToldInOneLineAtMost(self.assertRunsAsEver(instance))
                self.assertFalse(self.launched.exists())
                self.assertEqual(list(self.empty.iterdir()), [])

    def test_without_a_bus_a_status_comes_as_ever(self):
        instance = self.instance("/bin/sh", "-c", "exit 9")
        status, output, _ = instance.run(DBUS_SESSION_BUS_ADDRESS=None, PATH=self.path,
                                         XDG_RUNTIME_DIR=str(self.empty))
        self.assertEqual((status, output), (9, ""))
        self.assertFalse(self.launched.exists())

    def test_a_bus_is_found_in_the_runtime_folder(self):
        instance = self.startAt(None, self.user.session["XDG_RUNTIME_DIR"])
        self.panel.slots()
        self.assertEqual(self.assertRunsAsEver(instance), "")
        self.assertNoItems()

    def test_a_bus_that_never_answers_holds_nothing_up(self):
        path = self.user.temporary / "silent"
        with socket.socket(socket.AF_UNIX) as silent:
            silent.bind(str(path))
            silent.listen(8)
            instance = self.startAt(f"unix:path={path}")
            self.assertRunsAsEver(instance)
            instance = self.instance("/bin/false")
            self.assertEqual(instance.run(DBUS_SESSION_BUS_ADDRESS=f"unix:path={path}")[0], 1)
        path.unlink()

    def test_an_instance_without_an_item_pays_nothing(self):
        without = self.recording(options=())
        without.start()
        without.awaitLog("ready\n")
        self.assertEqual([name for name in librariesOf(without.pid())
                          if name.startswith(("libgio", "libgobject", "libglib", "libxcb",
                                              "libdbus"))], [])
        self.assertEqual(len(os.listdir(f"/proc/{without.pid()}/task")), 1)
        self.assertEqual(itemsOf(self.bus, without.pid()), [])
        without.finish(0)
        self.assertEqual(without.ended(), (0, "", ""))

    def test_an_item_loads_no_toolkit(self):
        instance, item = self.startedRecording()
        item.properties()
        item.choose(f"Show {instance.name}")
        self.panel.openMenu().close()
        self.panel.pointAway()
        loaded = librariesOf(instance.pid())
        self.assertIn("libgio-2.0.so.0", [name[:15] for name in loaded])
        self.assertEqual([name for name in loaded
                          if name.startswith(("libgtk", "libgdk-3", "libwebkit", "libjavascript",
                                              "libX11", "libwayland"))], [])
        instance.finish(0)
        self.assertEqual(instance.ended(), (0, "", ""))
        self.assertNoItems()
        self.assertEqual(registeredItems(self.bus), [])


def librariesOf(process):
    """The names of the libraries that a process has loaded."""
    maps = pathlib.Path(f"/proc/{process}/maps").read_text()
    return sorted({line.rpartition("/")[2] for line in maps.splitlines() if ".so" in line})


def processorTicks(process):
    told = pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()
    return int(told[11]) + int(told[12])


if __name__ == "__main__":
    unittest.main()
