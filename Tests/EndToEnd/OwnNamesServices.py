#!/usr/bin/env python3
"""Services that are started by their names, for programs of an instance and for the user."""

import json
import os
import pathlib
import signal
import unittest

from BusClient import BusError
from BusPeer import bus, inQueue, noAutoStart, owned
from Desktop import awaitCondition, isRunning
from EndToEnd import changes, contents
from Instances import placesOfTheManager
from OwnNames import (OwnNamesTests, awaitEnd, letters, serviceIn, writeProgram,
                      writeService)
from StatusItems import descendants

peerInterface = f"{bus}.Peer"
desk = "app.korvane.test.Desk"          # a service that is there for everybody
slow = "app.korvane.test.Slow"          # one that comes when the file "now" is in its home
failing = "app.korvane.test.Failing"    # one that ends with status 3
missing = "app.korvane.test.Missing"    # one whose program is not there
served = "app.korvane.test.Served"      # one that is the program that its entry is about
plain = "app.korvane.test.Plain"        # one that says quickly that it runs, and takes no name
talking = "app.korvane.test.Talking"    # one that says something before it comes


class Services(OwnNamesTests):
    @classmethod
    def prepareUser(cls):
        for folder in ("files", "info"):  # which the start of an instance would make
            (cls.user.home / ".local" / "share" / "Trash" / folder).mkdir(parents=True)
        wait = writeProgram(cls.user, "wait", "#!/bin/sh\n"
                            'until [ -e "$HOME/now" ]; do sleep 0.02; done\n')
        writeService(cls.user, desk)
        writeService(cls.user, slow, [wait])
        writeService(cls.user, failing, "/bin/sh -c 'exit 3'")
        writeService(cls.user, missing, "/nowhere/at/all")
        writeService(cls.user, served)
        say = writeProgram(cls.user, "say", "#!/bin/sh\necho some words\necho more words >&2\n")
        writeService(cls.user, talking, [say])

    def call(self, peer, name, **more):
        return peer.ask(name, "/", peerInterface, "Ping", **more)

    def users(self):
        """All that belongs to the user, without what the manager has made."""
        return contents(self.user.home, leavingOut=placesOfTheManager)

    def endTheUsers(self, service, process):
        os.kill(process, signal.SIGTERM)
        awaitEnd(process)
        awaitCondition(lambda: not self.outside.isOwned(service), lambda: "it is still there")
        (self.user.home / f"{service}.json").unlink()

    def startedWithHome(self, *options, **environment):
        instance = self.instance(*options)
        return instance.start(**environment), instance.home

    def test_a_call_starts_the_instances_own_service_with_its_home(self):
        before = self.users()
        copies = [self.startedWithHome() for _ in range(2)]

        for agent, home in copies:
            self.call(self.inside(agent), desk)

        told = [serviceIn(home, desk) for _, home in copies]
        self.assertEqual(changes(before, self.users()), {})
        self.assertEqual(len({service["pid"] for service in told}), 2)
        for (agent, home), service in zip(copies, told):
            environment = service["environment"]
            self.assertEqual(environment["HOME"], str(home))
            self.assertEqual(environment["XDG_DATA_HOME"], str(home / ".local" / "share"))
            self.assertEqual([environment[name] for name in (
                "DBUS_SESSION_BUS_ADDRESS", "DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE")],
                [agent.address, agent.address, "session"])

    def test_a_service_that_runs_for_the_user_stays_the_users_and_the_only_one(self):
        self.call(self.outside, desk)
        mine = serviceIn(self.user.home, desk)
        self.addCleanup(self.endTheUsers, desk, mine["pid"])
        agent, home = self.startedWithHome()
        inside = self.inside(agent)

        self.call(inside, desk)

        own = serviceIn(home, desk)
        self.assertNotEqual(own["pid"], mine["pid"])
        self.assertEqual(inside.askBus("GetConnectionUnixProcessID", "s", desk), (own["pid"],))
        self.assertEqual(self.outside.askBus("GetConnectionUnixProcessID", "s", desk),
                         (mine["pid"],))
        inside.close()
        agent.leave()
        self.assertEqual(agent.ended()[0], 0)
        awaitEnd(own["pid"])
        self.assertTrue(isRunning(mine["pid"]))

    def test_services_end_when_nobody_is_left_who_uses_them(self):
        agent, home = self.startedWithHome()
        client = self.inside(agent)
        self.call(client, desk)
        service = serviceIn(home, desk)
        helper = agent.parent()

        agent.leave(5)
        self.assertEqual(agent.ended()[0], 5)
        self.call(client, desk)
        client.close()

        awaitEnd(service["pid"])
        awaitEnd(helper)

    def test_calls_wait_for_a_service_in_their_order(self):
        agent, home = self.startedWithHome()
        clients = [self.inside(agent) for _ in range(2)]
        sent = [[client.send(slow, "/", peerInterface, "Ping") for _ in range(20)]
                for client in clients]
        starting = clients[0].send(bus, "/", bus, "StartServiceByName", "su", slow, 0)
        for client in clients:
            self.assertFalse(client.isOwned(slow))
        for client, serials in zip(clients, sent):
            self.assertEqual([told for told in client.kept if told.replySerial in serials], [])

        (home / "now").touch()

        for client, serials in zip(clients, sent):
            answers = [client.next(lambda told: told.replySerial in serials).replySerial
                       for _ in serials]
            self.assertEqual(answers, serials)
        self.assertEqual(clients[0].resultOf(starting), (1,))
        self.assertEqual(serviceIn(home, slow)["environment"]["HOME"], str(home))

    def test_a_service_is_started_by_whoever_asks_for_that_and_only_once(self):
        agent, home = self.startedWithHome()
        inside = self.inside(agent)

        self.assertEqual(inside.askBus("StartServiceByName", "su", desk, 0), (1,))
        self.assertEqual(inside.askBus("StartServiceByName", "su", desk, 0), (2,))

        self.assertFalse(self.outside.isOwned(desk))
        self.assertEqual(serviceIn(home, desk)["environment"]["HOME"], str(home))

    def test_a_service_that_does_not_come_is_told_as_by_the_bus(self):
        agent = self.startedApart()
        inside = self.inside(agent)
        for name in (failing, missing, "app.korvane.test.Nobody"):
            with self.subTest(name):
                words = (name, "/", peerInterface, "Ping")
                self.assertEqual(inside.failureOf(*words)[0], self.outside.failureOf(*words)[0])
                self.assertEqual(inside.busFailure("StartServiceByName", "su", name, 0)[0],
                                 self.outside.busFailure("StartServiceByName", "su", name, 0)[0])
        self.assertEqual(
            inside.failureOf(failing, "/", peerInterface, "Ping")[0],
            "org.freedesktop.DBus.Error.Spawn.ChildExited")

    def test_a_call_that_starts_nothing_is_answered_as_by_the_bus(self):
        agent, home = self.startedWithHome()
        self.assertApart(agent)
        words = (desk, "/", peerInterface, "Ping")

        self.assertEqual(self.inside(agent).failureOf(*words, flags=noAutoStart),
                         self.outside.failureOf(*words, flags=noAutoStart))

        self.assertFalse((home / f"{desk}.json").exists())

    def test_services_of_the_instances_own_are_its_own(self):
        own = "app.korvane.test.OfTheInstance"
        instance = self.instance()
        writeService(self.user, own, data=instance.home / ".local" / "share")
        inside = self.inside(instance.start())

        self.assertLessEqual({own, desk}, set(inside.askBus("ListActivatableNames")[0]))
        self.assertNotIn(own, self.outside.askBus("ListActivatableNames")[0])
        self.call(inside, own)
        serviceIn(instance.home, own)

    def test_a_variable_for_services_is_for_those_of_the_instance(self):
        agent, home = self.startedWithHome()
        other, homeOfOther = self.startedWithHome()
        inside = self.inside(agent)
        inside.askBus("UpdateActivationEnvironment", "a{ss}",
                      [("LETTERS", "from inside"), ("LANG", "de_DE.UTF-8")])
        agent.run("dbus-update-activation-environment", "MORE=words")

        for peer in (inside, self.inside(other)):
            self.call(peer, desk)

        environment = serviceIn(home, desk)["environment"]
        self.assertEqual([environment.get(name) for name in ("LETTERS", "LANG", "MORE")],
                         ["from inside", "de_DE.UTF-8", "words"])
        self.assertNotIn("LETTERS", serviceIn(homeOfOther, desk)["environment"])
        self.assertNotIn("LETTERS", self.environmentOfTheUsers())

    def test_a_variable_for_services_is_not_told_to_the_users_service_manager(self):
        manager = "org.freedesktop.systemd1"
        self.assertEqual(self.outside.own(manager), owned)
        agent, home = self.startedWithHome()
        self.assertApart(agent)

        sign = pathlib.Path(self.user.session["XDG_RUNTIME_DIR"], "systemd")
        sign.mkdir()  # by which the program tells that there is a manager
        self.addCleanup(sign.rmdir)

        told = agent.run("sh", "-c", "dbus-update-activation-environment --systemd A=inside 2>&1")
        self.assertIn(f"{bus}.Error.AccessDenied: The environment of your own services", told)
        with self.assertRaises(BusError) as refused:
            self.inside(agent).ask(manager, "/org/freedesktop/systemd1", f"{manager}.Manager",
                                   "UnsetEnvironment", "as", ["HOME"])

        self.assertEqual(refused.exception.name, f"{bus}.Error.AccessDenied")
        self.outside.askBus("GetId")  # behind whatever has come
        self.assertEqual([told.member for told in self.outside.kept if told.destination == manager],
                         [])
        self.call(self.inside(agent), desk)
        self.assertEqual(serviceIn(home, desk)["environment"]["A"], "inside")

    def environmentOfTheUsers(self):
        """What a service of the user is given, which ends then."""
        (self.user.home / "now").touch()
        self.addCleanup((self.user.home / "now").unlink)
        self.call(self.outside, slow)
        told = serviceIn(self.user.home, slow)
        self.endTheUsers(slow, told["pid"])
        return told["environment"]

    def test_services_get_no_token_of_a_start(self):
        agent, home = self.startedWithHome(DESKTOP_STARTUP_ID="token", XDG_ACTIVATION_TOKEN="token")
        self.assertApart(agent)
        self.call(self.inside(agent), desk)

        environment = serviceIn(home, desk)["environment"]
        self.assertEqual([environment.get(name) for name in (
            "DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN")], [None, None])

    def test_what_a_service_says_is_in_the_log_of_its_instance_alone(self):
        (agent, home), (other, homeOfOther) = self.startedWithHome(), self.startedWithHome()
        self.call(self.inside(agent), talking)

        for each in (agent, other):
            each.leave()
            self.assertEqual(each.ended(), (0, "", ""))
        logs = [(folder / "korvane-instance.log").read_text() for folder in (home, homeOfOther)]
        self.assertEqual(logs, ["some words\nmore words\nthe last words\n", "the last words\n"])

    def test_names_without_a_service_are_owned_by_whoever_asks_while_one_is_started(self):
        agent, home = self.startedWithHome()
        first, second = self.inside(agent), self.inside(agent)
        serial = first.send(slow, "/", peerInterface, "Ping")

        self.assertEqual(second.own(slow), owned)

        second.reply(second.nextCall("Ping"))
        self.assertEqual(first.resultOf(serial), ())
        self.assertEqual(first.own(slow, flags=0), inQueue)


class ServiceIsTheProgram(OwnNamesTests):
    """What is started is only a client: the service that it has started is the program."""

    @classmethod
    def prepareUser(cls):
        writeService(cls.user, served)
        writeService(cls.user, desk)
        told = f'"$HOME/{plain}.json"'
        writeService(cls.user, plain, str(writeProgram(
            cls.user, "plain", f'#!/bin/sh\necho "{{\\"pid\\": $$}}" >{told}.new && '
                               f'mv {told}.new {told} && exec sleep 100\n')))
        entries = cls.user.home / ".local" / "share" / "applications"
        entries.mkdir(parents=True)
        launch = f"/usr/bin/gdbus call --session --dest {bus} --object-path / --method " \
                 f"{bus}.StartServiceByName"
        for entry, service in ((served, served), (letters, desk)):
            (entries / f"{entry}.desktop").write_text(
                f"[Desktop Entry]\nType=Application\nName={entry.rpartition('.')[2]}\n"
                f"Exec={launch} {service} 0\n")

    def create(self, name, entry):
        app = self.user.korvane("adopt", entry).rstrip("\n")
        return json.loads(self.user.korvane("create", "app", name, app, "--json", "--runner",
                                            os.environ["KORVANE_RUNNER"]))

    def startAndTellTheEnd(self, made, service):
        """A start that says, when it has ended, whether the service is still there."""
        told = f"{made['home']}/{service}.json"
        # Quickly: a service that nobody uses ends soon after the program.
        pid = f"sed 's/.*\"pid\": \\([0-9]*\\).*/\\1/' '{told}'"
        return self.user.start("sh", "-c", f"'{os.environ['KORVANE']}' run '{made['name']}' "
                               f">/dev/null; echo ended $?; until [ -e '{told}' ]; do "
                               f"sleep 0.02; done; kill -0 $({pid}) && echo runs")

    def test_a_start_lasts_as_long_as_the_service_that_the_entry_is_named_after(self):
        made = self.create("Serving", served)
        start = self.startAndTellTheEnd(made, served)
        service = serviceIn(made["home"], served)
        self.user.korvane("run", self.create("Another", "/bin/true")["name"])

        os.kill(service["pid"], signal.SIGTERM)

        output, _ = start.communicate()
        self.assertTrue(output.startswith("ended ") and "runs" not in output, output)

    def test_a_start_ends_with_its_program_when_the_service_is_any(self):
        made = self.create("Asking", letters)
        start = self.startAndTellTheEnd(made, desk)

        output, _ = start.communicate()

        self.assertEqual(output, "ended 0\nruns\n")
        awaitEnd(serviceIn(made["home"], desk)["pid"])

    def test_a_program_that_has_only_left_a_service_is_not_said_to_run(self):
        entry = self.user.home / ".local/share/applications/app.korvane.test.Left.desktop"
        leaves = writeProgram(self.user, "leaves", f"""#!/bin/sh
dbus-send --session --type=method_call --dest={bus} / {bus}.StartServiceByName \\
    string:{plain} uint32:0
until [ -e "$HOME/{plain}.json" ]; do sleep 0.02; done
""")
        entry.write_text(f"[Desktop Entry]\nType=Application\nName=Left\nExec={leaves}\n")
        made = self.create("Leaving", "app.korvane.test.Left")

        start = self.user.start(os.environ["KORVANE"], "open", made["name"])
        service = serviceIn(made["home"], plain)
        output, errors = start.communicate()

        self.assertEqual((start.returncode, output), (1, ""))
        self.assertIn("ended at once with status 0, and nothing of it runs", errors)
        awaitEnd(service["pid"])

    def test_a_signal_to_the_start_reaches_the_service(self):
        made = self.create("Signalled", served)
        runner = os.path.join(made["bundle"], "Contents", "MacOS", "runner")
        start = self.user.start("sh", "-c", f"echo $$; exec '{runner}'")
        pid = int(start.stdout.readline())
        service = serviceIn(made["home"], served)
        awaitCondition(lambda: not clientsOf(pid), lambda: "the client does not end")

        os.kill(pid, signal.SIGTERM)

        awaitEnd(service["pid"])
        start.communicate()


def clientsOf(process):
    """Those that have started the service and wait for nothing else."""
    found = []
    for child in descendants(process):
        try:
            with open(f"/proc/{child}/comm") as file:
                found += [child] if file.read().strip() == "gdbus" else []
        except OSError:
            pass  # it has ended meanwhile
    return found


if __name__ == "__main__":
    unittest.main()
