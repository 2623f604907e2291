#!/usr/bin/env python3
"""How long instances have names of their own, and their starts where they cannot have any."""

import os
import pathlib
import shutil
import signal
import socket
import stat
import tempfile
import unittest

from BusPeer import owned
from Desktop import awaitCondition, isRunning, processOf
from EndToEnd import contents
from OwnNames import OwnNamesTests, awaitEnd, letters, writeProgram

# Waits for a word in the file that is named first, asks for the name's owner and leaves the answer.
_late = """#!/bin/sh
exec </dev/null >/dev/null 2>&1
read word <"$1"
gdbus call --session --dest org.freedesktop.DBus --object-path / \\
    --method org.freedesktop.DBus.GetNameOwner "$2" >"$1.told" 2>&1
echo "$?" >>"$1.told"
mv "$1.told" "$1.done"
"""


class WorkingTests(OwnNamesTests):
    def assertWorks(self, agent):
        self.assertApart(agent)
        peer = self.inside(agent)
        self.outside.own(letters)
        self.assertEqual((peer.own(letters), peer.ownerOf(letters)), (owned, peer.name))
        self.outside.release(letters)
        peer.close()


class Lifetimes(WorkingTests):
    def folderOf(self, agent):
        return pathlib.Path(agent.address.removeprefix("unix:path=").partition(",")[0]).parent

    def test_the_manager_ends_with_the_program_and_with_its_status(self):
        for status in (0, 7):
            agent = self.instance().run()
            self.assertWorks(agent)
            agent.leave(status)
            self.assertEqual(agent.ended(), (status, "the last words\n", ""))

    def test_what_is_left_of_the_program_does_not_hold_up_the_end(self):
        agent = self.instance().run()
        self.assertApart(agent)
        client = self.inside(agent)

        agent.leave(3)

        self.assertEqual(agent.ended()[0], 3)
        self.assertEqual(client.own(letters), owned)

    def test_nothing_is_left_behind_by_the_last(self):
        agent = self.started()
        self.assertWorks(agent)
        folder, helper = self.folderOf(agent), agent.parent()

        agent.leave()
        self.assertEqual(agent.ended(), (0, "", ""))

        awaitEnd(helper)
        self.assertFalse(folder.exists())

    def test_signals_to_the_start_reach_the_program(self):
        agent = self.started()
        self.assertApart(agent)

        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            os.kill(agent.runner(), number)
            self.assertEqual(agent.awaitSignal(), number.name)

        agent.leave(4)
        self.assertEqual(agent.ended()[0], 4)

    def test_a_program_that_a_signal_ends_is_told_as_where_the_bus_is_shared(self):
        agents = [self.startedApart(), self.started("--plist", "KorvaneSharedBus=true")]

        for agent in agents:
            os.kill(agent.pid, signal.SIGKILL)

        apart, shared = (agent.ended() for agent in agents)
        self.assertEqual(apart, shared)
        self.assertNotEqual(apart[0], 0)

    def test_nobody_but_the_user_gets_at_the_socket(self):
        # That of the tests' session has a path that a socket's might be too long with.
        runtime = pathlib.Path(tempfile.mkdtemp(dir="/tmp", prefix="k"))
        self.addCleanup(lambda: shutil.rmtree(runtime))
        agent = self.startedApart(XDG_RUNTIME_DIR=str(runtime))
        folder = self.folderOf(agent)

        self.assertIn(runtime, folder.parents)
        modes = {path: stat.S_IMODE(path.stat().st_mode) for path in [
            *folder.iterdir(), folder, *[above for above in folder.parents
                                         if runtime in above.parents]]}
        self.assertEqual({mode & 0o077 for mode in modes.values()}, {0}, modes)

    def test_a_second_start_has_the_names_of_the_first_and_keeps_them_alive(self):
        instance = self.instance()
        first = instance.start()
        self.assertApart(first)
        second = instance.start()
        other = self.started()
        inside = [self.inside(agent) for agent in (first, second)]

        self.assertEqual(second.address, first.address)
        self.assertNotEqual(other.address, first.address)
        inside[0].own(letters)
        first.leave(1)
        self.assertEqual(first.ended()[0], 1)
        self.assertEqual(inside[1].ownerOf(letters), inside[0].name)
        self.assertWorksStill(second)
        second.leave(2)
        self.assertEqual(second.ended()[0], 2)

    def assertWorksStill(self, agent):
        peer = self.inside(agent)
        self.assertEqual(peer.own(f"{letters}2"), owned)
        self.assertFalse(self.outside.isOwned(f"{letters}2"))
        self.assertIn("app.korvane", agent.run("busctl", "--user", "list", "--acquired"))
        peer.close()

    def test_twenty_starts_at_once_meet(self):
        instance = self.instance()
        for _ in range(20):
            instance.begin()
        agents = [instance.agent() for _ in range(20)]

        self.assertEqual({agent.address for agent in agents}, {agents[0].address})
        self.assertWorks(agents[0])
        self.assertWorks(agents[-1])

    def test_a_socket_that_nobody_listens_at_is_no_obstacle(self):
        instance = self.instance()
        agent = instance.start()
        self.assertApart(agent)
        path = agent.address.removeprefix("unix:path=").partition(",")[0]
        helper, runner = agent.parent(), agent.runner()
        for process in (helper, runner, agent.pid):
            os.kill(process, signal.SIGKILL)
        awaitEnd(helper)
        self.assertTrue(stat.S_ISSOCK(os.stat(path).st_mode))

        self.assertWorks(instance.start())

    def test_a_link_where_the_socket_goes_is_not_followed(self):
        instance = self.instance()
        agent = instance.start()
        self.assertApart(agent)
        folder, helper = self.folderOf(agent), agent.parent()
        agent.leave()
        agent.ended()
        awaitEnd(helper)
        victim = self.user.root / "victim"
        victim.mkdir(mode=0o700)
        folder.parent.mkdir(parents=True, exist_ok=True)
        folder.symlink_to(victim)
        self.addCleanup(folder.unlink)

        agent = instance.start()

        self.assertEqual(contents(victim), {})
        agent.leave(6)
        self.assertEqual(agent.ended()[0], 6)

    def test_the_runners_sudden_end_is_not_the_programs(self):
        agent = self.started()
        self.assertApart(agent)
        inside = self.inside(agent)
        inside.own(letters)
        helper = agent.parent()

        os.kill(agent.runner(), signal.SIGKILL)
        agent.ended()

        self.assertIn("app.korvane", agent.run("busctl", "--user", "list", "--acquired"))
        self.assertWorksStill(agent)
        inside.close()
        agent.leave()
        awaitEnd(helper)

    def test_what_the_program_leaves_running_keeps_the_bus(self):
        late = writeProgram(self.user, "late", _late)
        instance = self.instance()
        agent = instance.run()
        self.assertApart(agent)
        orders = self.user.root / f"{instance.name}.orders"
        os.mkfifo(orders)
        agent.run("sh", "-c", f"setsid '{late}' '{orders}' '{letters}' &")
        self.outside.own(letters)
        helper = agent.parent()

        agent.leave(2)
        self.assertEqual(agent.ended()[0], 2)
        orders.write_text("now\n")

        done = pathlib.Path(f"{orders}.done")
        awaitCondition(done.exists, lambda: "it has left nothing")
        told = done.read_text()
        self.assertIn("NameHasNoOwner", told)
        self.assertTrue(told.endswith("\n1\n"), told)
        awaitEnd(helper)


class Surroundings(WorkingTests):
    """What the start is given, and what it is not."""

    def test_who_started_the_runner_is_not_told_to_the_program(self):
        agent = self.started(DBUS_STARTER_ADDRESS=self.user.session["DBUS_SESSION_BUS_ADDRESS"],
                             DBUS_STARTER_BUS_TYPE="session")

        self.assertEqual([name for name in agent.environment if "STARTER" in name], [])
        self.assertWorks(agent)

    def test_a_configured_address_has_the_last_word(self):
        elsewhere = "unix:path=/nowhere/at/all"

        agent = self.started("--env", f"DBUS_SESSION_BUS_ADDRESS={elsewhere}")

        self.assertEqual(agent.address, elsewhere)
        self.assertWorks(self.started())

    def test_an_instance_that_shares_the_bus_has_it_as_it_is(self):
        session = self.user.session["DBUS_SESSION_BUS_ADDRESS"]
        shared, apart = self.started("--plist", "KorvaneSharedBus=true"), self.started()

        self.assertEqual(shared.address, session)
        self.assertEqual(shared.parent(), shared.runner())
        self.assertWorks(apart)

    def test_the_manager_makes_and_changes_instances_that_share_the_bus(self):
        session = self.user.session["DBUS_SESSION_BUS_ADDRESS"]
        instance = self.instance("--shared-bus")
        self.assertEqual(instance.start().address, session)
        for value, isShared in (("false", False), ("true", True)):
            self.user.korvane("edit", instance.name, "--set", f"sharedBus={value}")
            self.assertEqual(instance.start().address == session, isShared)

    def test_a_command_has_the_users_own_bus(self):
        self.user.korvane("create", "command", "Plain", "--runner", os.environ["KORVANE_RUNNER"],
                          "sh", "-c", 'echo "$DBUS_SESSION_BUS_ADDRESS"')

        self.user.korvane("run", "Plain")

        log = self.user.home / "KorvaneInstances" / "Plain" / "korvane-instance.log"
        self.assertEqual(log.read_text(), self.user.session["DBUS_SESSION_BUS_ADDRESS"] + "\n")
        self.assertWorks(self.started())

    def test_a_bus_that_is_not_named_is_found_where_libraries_look(self):
        agent = self.started(DBUS_SESSION_BUS_ADDRESS=None)
        self.assertIsNotNone(agent.address)
        self.assertWorks(agent)

        runtime = self.user.root / "empty"
        runtime.mkdir(mode=0o700, exist_ok=True)
        agent = self.started(DBUS_SESSION_BUS_ADDRESS=None, XDG_RUNTIME_DIR=str(runtime))
        self.assertIsNone(agent.address)
        self.assertEqual(contents(runtime), {})
        agent.leave()
        self.assertEqual(agent.ended(), (0, "", ""))

    def test_an_address_of_a_kind_that_is_not_known_is_left_to_the_program(self):
        self.assertWorks(self.started())
        for address in ("tcp:host=localhost,port=1", "nonsense", "unix:tmpdir=/tmp"):
            with self.subTest(address):
                agent = self.started(DBUS_SESSION_BUS_ADDRESS=address)
                self.assertEqual(agent.address, address)
                agent.leave(3)
                self.assertEqual(agent.ended()[0], 3)

    def test_a_start_that_may_open_little_is_one_without_names_of_its_own(self):
        instance = self.instance()
        limited = ("sh", "-c", 'ulimit -n $1; exec "$0"', instance.executable)
        for limit in range(5, 13):
            with self.subTest(limit):
                agent = instance.start(*limited, str(limit))
                self.assertEqual(agent.address, self.user.session["DBUS_SESSION_BUS_ADDRESS"])
                agent.leave()
                status, _, errors = agent.ended()
                self.assertEqual(status, 0)
                self.assertIn("runner: no names of its own on the bus — ", errors)
                self.assertIn("Too many open files", errors)
        self.assertWorks(instance.start(*limited, "16"))

    def test_a_bus_without_a_folder_of_the_session_works_from_another(self):
        file = self.user.root / "no folder"
        file.touch()
        for runtime in (None, "", "/nowhere/at/all", str(file)):
            with self.subTest(runtime):
                agent = self.started(XDG_RUNTIME_DIR=runtime)
                self.assertWorks(agent)
                helper = agent.parent()
                agent.leave()
                agent.ended()
                awaitEnd(helper)  # whose folder is not in that of the session


class BusEnds(OwnNamesTests):
    def listens(self, path):
        """Its file is there a moment before that."""
        with socket.socket(socket.AF_UNIX) as visitor:
            return visitor.connect_ex(str(path)) == 0

    def test_programs_see_it_and_new_ones_reach_the_next_at_the_same_address(self):
        agent = self.startedApart()
        inside = self.inside(agent)
        daemon = processOf(self.user, "dbus-daemon")
        command = pathlib.Path(f"/proc/{daemon}/cmdline").read_text().split("\0")[:-1]
        path = pathlib.Path(self.user.session["XDG_RUNTIME_DIR"], "bus")

        os.kill(daemon, signal.SIGTERM)
        self.assertRaises(AssertionError, inside.nextSignal, "Never")
        awaitEnd(daemon)
        path.unlink(missing_ok=True)
        self.user.start(*command)
        awaitCondition(lambda: self.listens(path), lambda: "there is no other bus")

        self.assertTrue(isRunning(agent.pid))
        outside = self.peer(self.user.session["DBUS_SESSION_BUS_ADDRESS"])
        self.assertEqual(outside.own(letters), owned)
        late = self.inside(agent)
        self.assertEqual((late.own(letters), late.ownerOf(letters)), (owned, late.name))
        agent.leave(8)
        self.assertEqual(agent.ended()[0], 8)


if __name__ == "__main__":
    unittest.main()
