#!/usr/bin/env python3
"""Names on the session's bus as programs of an instance, and those of the user, see them."""

import os
import unittest

from BusPeer import (alreadyOwner, bus, doNotQueue, exists, inQueue, noReply, owned)
from OwnNames import OwnNamesTests, letters, post

changed = "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged'"
busObject = (bus, "/org/freedesktop/DBus", bus)


class Names(OwnNamesTests):
    def setUp(self):
        super().setUp()
        self.one = self.started()
        self.two = self.started()
        self.assertApart(self.one)

    def test_a_name_has_an_owner_for_the_user_and_one_in_each_instance(self):
        peers = [self.outside, self.inside(self.one), self.inside(self.two)]

        self.assertEqual([peer.own(letters) for peer in peers], [owned, owned, owned])

        self.assertEqual([peer.ownerOf(letters) for peer in peers], [peer.name for peer in peers])
        self.assertEqual([peer.own(letters) for peer in peers], [alreadyOwner] * 3)

    def test_a_second_program_of_the_same_instance_finds_the_name_taken(self):
        first, second = self.inside(self.one), self.inside(self.one)
        self.outside.own(letters)
        self.assertEqual(first.own(letters), owned)

        self.assertEqual(second.own(letters), exists)
        self.assertEqual(second.own(letters, flags=0), inQueue)

        self.assertEqual(first.askBus("ListQueuedOwners", "s", letters),
                         ([first.name, second.name],))
        self.assertEqual(self.outside.askBus("ListQueuedOwners", "s", letters),
                         ([self.outside.name],))
        self.assertEqual(first.release(letters), 1)
        self.assertEqual(second.nextSignal("NameAcquired").body, (second.name,))
        self.assertEqual(second.nextSignal("NameAcquired").body, (letters,))
        self.assertEqual(first.heard("NameLost"), [(letters,)])
        self.assertEqual(first.release(letters), 3)

    def test_nobody_takes_a_name_from_another_instance_or_the_user(self):
        allowReplacement, replace = 1, 2
        inside, other = self.inside(self.one), self.inside(self.two)
        self.assertEqual(inside.own(letters, allowReplacement), owned)

        for peer in (other, self.outside):
            self.assertEqual(peer.own(letters, replace | doNotQueue), owned)

        self.assertEqual(inside.ownerOf(letters), inside.name)
        self.assertEqual(inside.heard("NameLost"), [])

    def test_a_name_that_only_others_have_is_nobodys_and_errors_tell_it_as_it_was_asked_for(self):
        inside = self.inside(self.one)
        calls = {member: self.outside.busFailure(member, "s", letters) for member in (
            "GetNameOwner", "GetConnectionUnixProcessID", "GetConnectionUnixUser",
            "GetConnectionCredentials", "ListQueuedOwners", "GetAdtAuditSessionData",
            "GetConnectionSELinuxSecurityContext")}
        calls["StartServiceByName"] = self.outside.busFailure("StartServiceByName", "su", letters,
                                                              0)
        sent = self.outside.failureOf(letters, "/", post, "Write")
        for peer in (self.outside, self.inside(self.two)):
            peer.own(letters)

        for member, failure in calls.items():
            with self.subTest(member):
                words = ("su", letters, 0) if member == "StartServiceByName" else ("s", letters)
                self.assertEqual(inside.busFailure(member, *words), failure)
        self.assertEqual(inside.failureOf(letters, "/", post, "Write"), sent)
        self.assertFalse(inside.isOwned(letters))
        self.assertNotIn(letters, inside.names())

    def test_lists_tell_the_instances_names_as_they_were_asked_for_and_nobody_elses(self):
        inside, other = self.inside(self.one), self.inside(self.two)
        self.outside.own("app.korvane.test.User")
        inside.own(letters)
        other.own("app.korvane.test.Other")

        names = inside.names()

        self.assertEqual([name for name in names if "korvane" in name], [letters])
        self.assertIn(bus, names)
        self.assertIn(self.outside.name, inside.askBus("ListNames")[0])

    def test_the_user_finds_no_name_of_an_instance_by_its_beginning(self):
        inside = self.inside(self.one)
        inside.own(letters)
        inside.own("org.kde.dolphin-42")

        names = self.outside.names()

        self.assertEqual([name for name in names if name.startswith(
            ("app.korvane.test.", "org.kde.dolphin"))], [])
        [real] = [name for name in names if name.endswith(f".{letters}")]
        self.assertEqual(self.outside.ownerOf(real), inside.name)
        self.assertFalse(self.outside.isOwned(letters))

    def test_programs_of_every_library_reach_the_bus_whatever_the_instance_is_called(self):
        method = f"{bus}.ListNames"
        libraries = {"the bus's own": ["dbus-send", "--session", "--print-reply", f"--dest={bus}",
                                       busObject[1], method],
                     "GLib's": ["gdbus", "call", "--session", "--dest", bus, "--object-path",
                                busObject[1], "--method", method]}
        agent = self.instance(name="An instance with a name that says what it is for").start()
        self.assertApart(agent)
        for library, command in libraries.items():
            with self.subTest(library):
                self.assertIn(bus, agent.run(*command))

    def test_the_words_of_the_bus_itself_pass(self):
        inside = self.inside(self.one)

        for member in ("GetId", "ListNames", "ListActivatableNames", "GetNameOwner"):
            words = ("s", bus) if member == "GetNameOwner" else ()
            with self.subTest(member):
                self.assertEqual(type(inside.askBus(member, *words)[0]),
                                 type(self.outside.askBus(member, *words)[0]))
        self.assertEqual(inside.askBus("GetId"), self.outside.askBus("GetId"))
        # Without an interface it is still the bus that is meant.
        inside.own(letters)
        self.assertEqual(inside.ask(bus, "/", None, "GetNameOwner", "s", letters),
                         (inside.name,))

    def test_the_process_of_a_program_is_told_and_not_that_of_somebody_between(self):
        inside, neighbour = self.inside(self.one), self.inside(self.one)
        neighbour.own(letters)

        for name in (inside.name, neighbour.name, letters):
            with self.subTest(name):
                self.assertEqual(inside.askBus("GetConnectionUnixProcessID", "s", name),
                                 (os.getpid(),))
                [told] = inside.askBus("GetConnectionCredentials", "s", name)
                self.assertEqual((told["ProcessID"], told["UnixUserID"]),
                                 (os.getpid(), os.getuid()))
                self.assertEqual(inside.askBus("GetConnectionUnixUser", "s", name),
                                 (os.getuid(),))
        self.assertEqual(inside.askBus("GetConnectionUnixProcessID", "s", bus),
                         self.outside.askBus("GetConnectionUnixProcessID", "s", bus))

    def test_tools_show_the_names_as_the_instance_has_them(self):
        inside = self.inside(self.one)
        self.outside.own("app.korvane.test.User")
        inside.own(letters)

        busctl = self.one.run("busctl", "--user", "list", "--acquired", "--no-legend")
        listed = [line.split()[0] for line in busctl.splitlines()]
        self.assertEqual([name for name in listed if "korvane" in name], [letters])
        self.assertIn(f"string \"{letters}\"\n", self.one.run(
            "dbus-send", "--session", "--print-reply", f"--dest={bus}", "/", f"{bus}.ListNames"))
        self.assertIn(inside.name, self.one.run(
            "gdbus", "call", "--session", "--dest", bus, "--object-path", "/", "--method",
            f"{bus}.GetNameOwner", letters))
        shown = self.user.run("busctl", "--user", "list", "--acquired", "--no-legend")
        self.assertNotIn(letters, [line.split()[0] for line in shown.splitlines()])


class Owners(OwnNamesTests):
    """What is told when names get owners and lose them."""

    def setUp(self):
        super().setUp()
        one, two = self.started(), self.started()
        self.listener, self.owner = self.inside(one), self.inside(one)
        self.other = self.inside(two)

    def takeAndGiveBack(self):
        """Everybody takes the name and gives it back; what the listener has to be told."""
        for peer in (self.outside, self.other, self.owner):
            peer.own(letters)
        for peer in (self.outside, self.other, self.owner):
            peer.release(letters)
        return [(letters, "", self.owner.name), (letters, self.owner.name, "")]

    def test_only_what_happens_in_the_instance_is_told(self):
        for rule in (changed, f"{changed},arg0='{letters}'",
                     f"{changed},arg0namespace='{letters}'",
                     f"{changed},arg0namespace='app.korvane'",
                     f"interface='{bus}',arg0='{letters}'",
                     f"arg0={letters},member=NameOwnerChanged",
                     "type='signal',member='NameOwnerChanged',arg0='app.korvane.''test.Letters'"):
            with self.subTest(rule):
                self.listener.watch(rule)

                expected = self.takeAndGiveBack()

                heard = [body for body in self.listener.heard("NameOwnerChanged")
                         if not body[0].startswith(":")]
                self.assertEqual(heard, expected)
                self.listener.unwatch(rule)
                self.takeAndGiveBack()
                self.assertEqual(self.listener.heard("NameOwnerChanged"), [])

    def test_names_of_the_session_are_told_beside_those_of_the_instance(self):
        shared = "org.freedesktop.ScreenSaver"
        for rule in (f"{changed},arg0namespace='org.freedesktop'", f"{changed},arg0='{shared}'"):
            self.listener.watch(rule)
            self.outside.own(shared)
            self.outside.release(shared)
            self.assertEqual(self.listener.heard("NameOwnerChanged"), [
                (shared, "", self.outside.name), (shared, self.outside.name, "")])
            self.listener.unwatch(rule)
        self.assertEqual([self.owner.own(letters), self.other.own(letters)], [owned, owned])

    def test_a_rule_is_taken_away_as_often_as_it_was_given_and_no_more(self):
        for rule in (f"{changed},arg0='{letters}'", f"{changed},arg0namespace='app.korvane'",
                     f"sender='{letters}'"):
            with self.subTest(rule):
                failure = self.outside.busFailure("RemoveMatch", "s", rule)
                self.listener.watch(rule)
                self.listener.watch(rule)
                self.listener.unwatch(rule)
                self.listener.unwatch(rule)
                self.assertEqual(self.listener.busFailure("RemoveMatch", "s", rule), failure)
        self.assertEqual(self.listener.busFailure("AddMatch", "s", "type='"),
                         self.outside.busFailure("AddMatch", "s", "type='"))
        self.assertEqual([self.outside.own(letters), self.owner.own(letters)], [owned, owned])

    def test_a_rule_given_without_waiting_for_answers_holds(self):
        self.listener.send(*busObject, "AddMatch", "s", f"{changed},arg0namespace='app.korvane'",
                           flags=noReply)

        self.listener.askBus("GetId")
        expected = self.takeAndGiveBack()

        self.assertEqual(self.listener.heard("NameOwnerChanged"), expected)
        self.assertEqual([told for told in self.listener.kept if told.replySerial], [])


class Messages(OwnNamesTests):
    """Calls and signals that are for a name, or come from one."""

    def setUp(self):
        super().setUp()
        one = self.started()
        self.caller, self.owner = self.inside(one), self.inside(one)
        self.outside.own(letters)
        self.assertEqual(self.owner.own(letters), owned)

    def test_a_call_reaches_the_instances_owner_by_the_name_that_was_called(self):
        serial = self.caller.send(letters, "/letters", post, "Write", "s", "Dear reader")

        call = self.owner.nextCall("Write")
        self.owner.reply(call, "s", "thanks")

        self.assertEqual((call.destination, call.sender, call.path, call.body, call.serial),
                         (letters, self.caller.name, "/letters", ("Dear reader",), serial))
        self.assertEqual(self.caller.resultOf(serial), ("thanks",))
        self.outside.askBus("GetId")
        self.assertEqual([told for told in self.outside.kept if told.member == "Write"], [])

    def test_a_call_of_the_user_reaches_the_users_owner(self):
        visitor = self.peer(self.user.session["DBUS_SESSION_BUS_ADDRESS"])

        visitor.send(letters, "/", post, "Write")

        self.assertEqual(self.outside.nextCall("Write").sender, visitor.name)
        self.assertEqual(self.owner.heard("Write"), [])

    def test_a_signal_matched_by_its_sender_is_that_of_the_instance(self):
        rule = f"type='signal',sender='{letters}',interface='{post}'"
        self.caller.watch(rule)

        self.outside.emit("/", post, "Delivered", "s", "to the user")
        self.outside.askBus("GetId")
        self.owner.emit("/", post, "Delivered", "s", "to the instance")
        self.owner.askBus("GetId")

        self.assertEqual(self.caller.heard("Delivered"), [("to the instance",)])
        self.caller.unwatch(rule)
        self.owner.emit("/", post, "Delivered", "s", "too late")
        self.owner.askBus("GetId")
        self.assertEqual(self.caller.heard("Delivered"), [])

    def test_a_name_that_is_only_data_is_left_as_it_is(self):
        self.caller.watch(f"type='signal',interface='{post}',arg0='{letters}'")

        for peer in (self.outside, self.owner):
            peer.emit("/", post, "Told", "s", letters)
            peer.askBus("GetId")
        self.caller.send(letters, "/", post, "Write", "sas", letters, [letters])

        self.assertEqual(self.caller.heard("Told"), [(letters,), (letters,)])
        self.assertEqual(self.owner.nextCall("Write").body, (letters, [letters]))

    def test_a_signal_for_a_name_reaches_the_instances_owner(self):
        self.caller.emit("/", post, "Knock", destination=letters)

        self.assertEqual(self.owner.nextSignal("Knock").destination, letters)
        self.assertEqual(self.outside.heard("Knock"), [])

    def test_unique_names_are_those_of_the_bus_and_lead_everywhere(self):
        serial = self.outside.send(self.caller.name, "/", post, "Ask")
        call = self.caller.nextCall("Ask")
        self.assertEqual(call.sender, self.outside.name)
        self.caller.reply(call, "s", "from inside")

        self.assertEqual(self.outside.resultOf(serial), ("from inside",))

    def test_a_monitor_with_a_rule_sees_what_the_instance_does(self):
        monitor = self.caller
        monitor.ask(bus, "/org/freedesktop/DBus", f"{bus}.Monitoring", "BecomeMonitor", "asu",
                    [f"type='signal',sender='{letters}'"], 0)

        self.outside.emit("/", post, "Delivered", "s", "to the user")
        self.outside.askBus("GetId")
        self.owner.emit("/", post, "Delivered", "s", "to the instance")

        self.assertEqual(monitor.nextSignal("Delivered").body, ("to the instance",))


if __name__ == "__main__":
    unittest.main()
