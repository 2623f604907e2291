#!/usr/bin/env python3
"""Whatever programs of an instance send to the session's bus, in whatever pieces."""

import errno
import itertools
import os
import pathlib
import random
import signal
import socket
import struct
import unittest

from BusPeer import BusPeer, bus, owned
from Desktop import awaitCondition, processOf
from OwnNames import OwnNamesTests, letters, post

megabyte = 1 << 20


class HostileTests(OwnNamesTests):
    def setUp(self):
        super().setUp()
        self.agent = self.startedApart()
        self.path = self.agent.address.removeprefix("unix:path=").partition(",")[0]
        self.first = self.inside(self.agent)
        self.first.askBus("GetId")  # which is answered when the start is over

    def pair(self):
        """Two programs of the instance, of which the second owns the name as the user does."""
        self.outside.own(letters)
        caller, owner = self.inside(self.agent), self.inside(self.agent)
        self.assertEqual(owner.own(letters), owned)
        return caller, owner

    def assertServes(self):
        """Others are served."""
        peer = self.inside(self.agent)
        name = f"{letters}{next(_numbers)}"
        self.assertEqual((peer.own(name), peer.ownerOf(name)), (owned, peer.name))
        peer.close()

    def openDescriptors(self):
        """Of whoever stands between the instance and the bus."""
        return len(os.listdir(f"/proc/{self.agent.parent()}/fd"))

    def memory(self):
        """The most that it has had at any time, in bytes."""
        status = pathlib.Path(f"/proc/{self.agent.parent()}/status").read_text()
        return int(status.partition("VmHWM:")[2].split()[0]) * 1024

    def connection(self):
        made = socket.socket(socket.AF_UNIX)
        made.settimeout(60)
        made.connect(self.path)
        self.addCleanup(made.close)
        return made


_numbers = itertools.count(1)


class Forms(HostileTests):
    """What is right, but seldom seen."""

    def test_both_orders_of_bytes_are_answered(self):
        self.outside.own(letters)
        for order in ("<", ">"):
            with self.subTest(order):
                peer = self.inside(self.agent, order=order)
                peer.watch(f"type='signal',member='NameOwnerChanged',arg0='{letters}'")
                self.assertEqual(peer.own(letters), owned)
                self.assertEqual(peer.ownerOf(letters), peer.name)
                self.assertEqual([name for name in peer.names() if "korvane" in name], [letters])
                self.assertEqual(peer.askBus("GetConnectionUnixProcessID", "s", letters),
                                 (os.getpid(),))
                for other in ("<", ">"):
                    caller = self.inside(self.agent, order=other)
                    serial = caller.send(letters, "/", post, "Write", "siay", "Dear", -5, [7])
                    call = peer.nextCall("Write")
                    self.assertEqual((call.destination, call.body), (letters, ("Dear", -5, [7])))
                    peer.reply(call, "s", "thanks")
                    self.assertEqual(caller.resultOf(serial), ("thanks",))
                peer.release(letters)
                self.assertEqual(peer.heard("NameOwnerChanged"),
                                 [(letters, "", peer.name), (letters, peer.name, "")])

    def greeting(self):
        """Of a client that says all at once: the handshake, Hello and a request for a name."""
        writer = BusPeer.__new__(BusPeer)
        writer.order, writer._serial = "<", 0
        hello = {1: "/", 2: bus, 3: "Hello", 6: bus}
        request = {**hello, 3: "RequestName"}
        return b"".join([b"\0AUTH EXTERNAL\r\nDATA\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\n",
                         writer.messageOf(BusPeer.call, hello),
                         writer.messageOf(BusPeer.call, request, "su", letters, 4)])

    def test_a_client_that_says_all_at_once_or_byte_by_byte_is_understood(self):
        self.outside.own(letters)
        for pieces in (None, 1, 7):
            with self.subTest(pieces):
                connection = self.connection()
                data = self.greeting()
                for place in range(0, len(data), pieces or len(data)):
                    connection.sendall(data[place:place + (pieces or len(data))])
                listener = self.inside(self.agent)
                awaitCondition(lambda: listener.isOwned(letters), lambda: "the name is not owned")
                connection.close()
                awaitCondition(lambda: not listener.isOwned(letters), lambda: "it is still owned")

    def test_a_client_that_sends_and_leaves_has_sent(self):
        caller, owner = self.pair()
        for number in range(50):
            messenger = self.inside(self.agent)
            messenger.send(letters, "/", post, "Write", "su", "x" * 5000, number)
            messenger.close()
            self.assertEqual(owner.nextCall("Write").body[1], number)
        self.assertEqual(caller.ownerOf(letters), owner.name)

    def test_names_are_as_long_as_a_bus_allows(self):
        first, second = self.inside(self.agent), self.inside(self.agent)
        start = letters + "." + "x" * (254 - len(letters) - 1)
        names = [start + end for end in "ab"]
        for peer, name in zip((first, second), names):
            self.outside.own(name)
            peer.watch(f"type='signal',member='NameOwnerChanged',arg0='{name}'")
            self.assertEqual(peer.own(name), owned)
            self.assertEqual(peer.heard("NameOwnerChanged"), [(name, "", peer.name)])
        self.assertEqual([first.ownerOf(name) for name in names], [first.name, second.name])
        self.assertLessEqual(set(names), set(first.names()))
        first.send(names[1], "/", post, "Write")
        self.assertEqual(second.nextCall("Write").destination, names[1])
        tooLong = names[0] + "x"
        self.assertEqual(first.busFailure("RequestName", "su", tooLong, 4),
                         self.outside.busFailure("RequestName", "su", tooLong, 4))

    def test_names_that_no_program_may_have_are_refused_with_the_words_of_the_bus(self):
        inside = self.inside(self.agent)
        for name in ("", ".", "one", ":1.2", "a..b", "a.1b", bus, "ü.b", "a.b-c.d e", inside.name):
            with self.subTest(name):
                for member, words in {"RequestName": ("su", name, 4), "GetNameOwner": ("s", name),
                                      "ReleaseName": ("s", name)}.items():
                    if (member, name) == ("GetNameOwner", inside.name):
                        continue
                    # The bus tells who has asked, too.
                    name, text = self.outside.busFailure(member, *words)
                    self.assertEqual(inside.busFailure(member, *words), (
                        name, text.replace(f'"{self.outside.name}"', f'"{inside.name}"')))

    def test_calls_with_other_arguments_than_the_bus_takes_are_refused_as_by_the_bus(self):
        inside = self.inside(self.agent)
        for member in ("RequestName", "ReleaseName", "GetNameOwner", "NameHasOwner", "AddMatch",
                       "RemoveMatch", "ListQueuedOwners", "StartServiceByName",
                       "GetConnectionCredentials", "UpdateActivationEnvironment"):
            for words in ((), ("u", 3), ("ss", letters, letters), ("as", [letters])):
                with self.subTest(f"{member}{words}"):
                    self.assertEqual(inside.busFailure(member, *words)[0],
                                     self.outside.busFailure(member, *words)[0])
        self.assertServes()


class Descriptors(HostileTests):
    def pipes(self, count):
        """The ends that are passed on, each of a pipe that holds its number."""
        passed = []
        for number in range(count):
            reader, writer = os.pipe()
            os.write(writer, b"%d" % number)
            os.close(writer)
            passed.append(reader)
        return passed

    def closeAll(self, descriptors):
        for descriptor in descriptors:
            os.close(descriptor)

    def contentsOf(self, descriptors):
        read = [int(os.read(descriptor, 10)) for descriptor in descriptors]
        self.closeAll(descriptors)
        return read

    def test_they_arrive_with_their_message_and_in_their_order(self):
        caller, owner = self.pair()
        ways = {"to a name": (caller, letters, owner),
                "to the user": (caller, self.outside.name, self.outside),
                "from the user": (self.outside, caller.name, caller)}
        for way, (sender, name, receiver) in ways.items():
            for count in (1, 2, 16):
                with self.subTest(f"{count} {way}"):
                    passed = self.pipes(count)
                    for _ in range(3):
                        sender.send(name, "/", post, "Plain", "s", "between")
                    sender.send(name, "/", post, "Take", "ah", list(range(count)),
                                descriptors=passed)
                    self.closeAll(passed)
                    call = receiver.nextCall("Take")
                    self.assertEqual(call.descriptors, count)
                    self.assertEqual(self.contentsOf(receiver.takeDescriptors(count)),
                                     list(range(count)))

    def test_none_is_left_open(self):
        caller, owner = self.pair()
        before = self.openDescriptors()

        for number in range(400):
            passed = self.pipes(2)
            caller.send(letters, "/", post, "Take", "hh", 0, 1, descriptors=passed)
            self.closeAll(passed)
            owner.nextCall("Take")
            self.assertEqual(self.contentsOf(owner.takeDescriptors(2)), [0, 1])

        awaitCondition(lambda: self.openDescriptors() == before,
                       lambda: f"{self.openDescriptors()} are open, not {before}")

    def test_surplus_and_missing_ones_harm_nobody_else(self):
        before = self.openDescriptors()
        for told, passed in ((0, 200), (5, 1), (1, 0), (1 << 31, 1)):
            with self.subTest(told):
                sender = self.inside(self.agent)
                data = sender.messageOf(BusPeer.call, {1: "/", 3: "Take", 6: self.outside.name},
                                        "s", "x", descriptors=told)
                pipes = self.pipes(passed)
                for _ in range(20):
                    if not self.sendAll(sender, data, pipes):
                        break
                self.closeAll(pipes)
                self.assertServes()
                sender.close()
        awaitCondition(lambda: self.openDescriptors() == before,
                       lambda: f"{self.openDescriptors()} are open, not {before}")

    def sendAll(self, sender, data, descriptors):
        """Whether somebody still listened."""
        try:
            if descriptors:
                data = data[self.sendWith(sender, data, descriptors):]
            sender.sendRaw(data)
        except (BrokenPipeError, ConnectionResetError):
            return False
        return True

    def sendWith(self, sender, data, descriptors):
        """How much was sent, when no more descriptors are on their way than one user may have."""
        sent = []

        def isSent():
            try:
                sent.append(socket.send_fds(sender._socket, [data], descriptors))
            except OSError as error:
                if error.errno != errno.ETOOMANYREFS:
                    raise
            return sent

        awaitCondition(isSent, lambda: "the descriptors from before are not taken")
        return sent[0]


class Amounts(HostileTests):
    def test_large_messages_pass_both_ways_and_are_not_collected(self):
        caller, owner = self.pair()
        before = self.memory()
        for size in (1, 16, 100):
            with self.subTest(size):
                text = "0123456789abcdef" * (size * megabyte // 16)
                self.passOn(caller, owner, text)
        self.assertLess(self.memory() - before, 16 * megabyte)

    def passOn(self, caller, owner, text):
        """There and back; one process cannot write and read such a message at the same time."""
        child = os.fork()
        if child == 0:
            status = 1
            try:
                call = owner.nextCall("Write")
                owner.reply(call, "s", call.body[0])
                status = 0
            finally:
                os._exit(status)
        serial = caller.send(letters, "/", post, "Write", "s", text)
        answer = caller.resultOf(serial)
        self.assertEqual(os.waitpid(child, 0)[1], 0)
        self.assertTrue(answer == (text,), "the text has changed")

    def test_a_client_that_reads_nothing_costs_nobody_else_anything(self):
        idle, before = self.inside(self.agent), self.memory()
        text = "x" * megabyte
        for _ in range(120):
            self.outside.send(idle.name, "/", post, "Write", "s", text, flags=1)
        self.outside.askBus("GetId")

        self.assertServes()

        self.assertLess(self.memory() - before, 16 * megabyte)

    def test_a_thousand_clients_are_served_and_leave_nothing(self):
        before = self.openDescriptors()
        for _ in range(2):
            clients = [self.inside(self.agent) for _ in range(1000)]
            for number, client in enumerate(clients):
                self.assertEqual(client.own(f"{letters}{number}"), owned)
            self.assertFalse(self.outside.isOwned(f"{letters}0"))
            for client in clients:
                client.close()
            awaitCondition(lambda: self.openDescriptors() == before,
                           lambda: f"{self.openDescriptors()} are open, not {before}")

    def test_programs_have_the_limits_of_whoever_started_the_instance(self):
        limits = "ulimit -Sn; ulimit -Hn"
        self.assertEqual(self.agent.run("sh", "-c", limits), self.user.run("sh", "-c", limits))


class Nonsense(HostileTests):
    def test_clients_that_end_inside_a_message_leave_nothing(self):
        caller, owner = self.pair()
        before = self.openDescriptors()
        for number in range(200):
            client = self.inside(self.agent)
            data = client.messageOf(BusPeer.call, {1: "/", 3: "Write", 6: letters}, "s",
                                    "x" * (number * 50))
            client.sendRaw(data[:1 + number * (len(data) - 1) // 200])
            client.close()

        awaitCondition(lambda: self.openDescriptors() == before,
                       lambda: f"{self.openDescriptors()} are open, not {before}")
        caller.send(letters, "/", post, "Last")
        self.assertEqual(owner.next(lambda told: told.kind == BusPeer.call).member, "Last")

    def test_changed_messages_and_noise_harm_nobody_else(self):
        generator = random.Random(12)
        before = self.openDescriptors()
        for number in range(600):
            client = self.inside(self.agent)
            data = bytearray(client.messageOf(
                BusPeer.call, {1: "/", 2: bus, 3: "RequestName", 6: bus}, "su", letters, 4))
            for _ in range(generator.randint(1, 8)):
                data[generator.randrange(len(data))] = generator.randrange(256)
            self.sendAndLeave(client, data if number % 3 else generator.randbytes(200))
        for number in range(200):
            connection = self.connection()
            self.sendAndLeave(connection, b"\0" * (number % 2) + generator.randbytes(number))
        self.assertServes()
        awaitCondition(lambda: self.openDescriptors() == before,
                       lambda: f"{self.openDescriptors()} are open, not {before}")

    def sendAndLeave(self, client, data):
        try:
            client.sendRaw(data) if isinstance(client, BusPeer) else client.sendall(data)
        except (BrokenPipeError, ConnectionResetError):
            pass  # it has been shown the door
        client.close()

    def test_false_lengths_end_only_those_who_tell_them(self):
        before = self.memory()
        for body, fields in ((1 << 27, 0), (0xFFFFFFFF, 0), (0, 0xFFFFFFFF), (0, 1 << 26),
                             (1 << 31, 1 << 31)):
            for order in "<>":
                with self.subTest((body, fields, order)):
                    client = self.inside(self.agent)
                    letter = {"<": b"l", ">": b"B"}[order]
                    client.sendRaw(letter + struct.pack(order + "3BIII", 1, 0, 1, body, 1, fields)
                                   + bytes(200))
                    self.assertServes()
                    client.close()
        self.assertLess(self.memory() - before, 16 * megabyte)

    def test_a_handshake_without_an_end_is_not_kept(self):
        before = self.memory()
        connection = self.connection()
        with self.assertRaises((BrokenPipeError, ConnectionResetError)):
            for _ in range(1000):
                connection.sendall(b"A" * 65536)
        self.assertServes()
        self.assertLess(self.memory() - before, 16 * megabyte)

    def test_an_answer_that_somebody_forges_is_not_taken_for_that_of_the_bus(self):
        forgers = [self.peer(self.user.session["DBUS_SESSION_BUS_ADDRESS"])]
        victim = self.inside(self.agent)
        forgers.append(self.peer(self.user.session["DBUS_SESSION_BUS_ADDRESS"]))
        victim.own(letters)
        daemon = processOf(self.user, "dbus-daemon")

        for _ in range(5):
            os.kill(daemon, signal.SIGSTOP)
            try:
                serial = victim.send(bus, "/", bus, "ListNames")
                for forger in forgers:
                    forger.sendMessage(BusPeer.answer, {5: serial, 6: victim.name}, "as",
                                       ["forged.name"])
            finally:
                os.kill(daemon, signal.SIGCONT)
            told = victim.next(lambda told: told.replySerial == serial and told.sender == bus)
            self.assertEqual([name for name in told.body[0] if "korvane" in name], [letters])


if __name__ == "__main__":
    unittest.main()
