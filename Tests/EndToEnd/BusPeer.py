"""A program on a session's bus that does all that programs do there: it owns names, answers calls,
hears signals and passes descriptors, in either order of bytes."""

import array
import os
import select
import socket
import struct
import urllib.parse

from BusClient import BusClient, BusError, BusValues
from BusMonitor import message, singleTypes

bus = "org.freedesktop.DBus"
noReply, noAutoStart = 1, 2
doNotQueue = 4
owned, inQueue, exists, alreadyOwner = 1, 2, 3, 4  # what RequestName answers
_descriptorSize = array.array("i").itemsize


class BusPeer(BusClient):
    """Messages that nobody has asked for yet are kept, in the order in which they came."""

    signal = 4

    def __init__(self, address, order="<"):
        self.order = order
        self.kept = []
        self.descriptors = []  # that have come and that nobody has taken
        self._data = bytearray()
        path = address.partition(";")[0].removeprefix("unix:path=").partition(",")[0]
        super().__init__("unix:path=" + urllib.parse.unquote(path))

    def _shakeHands(self):
        super()._shakeHands()
        self._socket.sendall(b"NEGOTIATE_UNIX_FD\r\n")
        self._expect(b"AGREE_UNIX_FD")

    def close(self):
        """Leaves the bus; nothing happens the second time."""
        for descriptor in self.descriptors:
            os.close(descriptor)
        self.descriptors = []
        super().close()

    def send(self, destination, path, interface, member, signature="", *arguments, **more):
        return self.sendMessage(self.call, {1: path, 2: interface, 3: member, 6: destination},
                                signature, *arguments, **more)

    def emit(self, path, interface, member, signature="", *arguments, **more):
        fields = {1: path, 2: interface, 3: member, 6: more.pop("destination", None)}
        return self.sendMessage(self.signal, fields, signature, *arguments, **more)

    def reply(self, call, signature="", *arguments, **more):
        return self.sendMessage(self.answer, {5: call.serial, 6: call.sender}, signature,
                                *arguments, **more)

    def refuse(self, call, name):
        self.sendMessage(self.error, {4: name, 5: call.serial, 6: call.sender})

    def sendMessage(self, kind, fields, signature="", *arguments, flags=0, descriptors=()):
        """The serial of a message with these header fields, by their codes."""
        data = self.messageOf(kind, fields, signature, *arguments, flags=flags,
                              descriptors=len(descriptors))
        sent = 0
        if descriptors:
            sent = socket.send_fds(self._socket, [data], descriptors)
        self._socket.sendall(memoryview(data)[sent:])
        return self._serial

    def messageOf(self, kind, fields, signature="", *arguments, flags=0, descriptors=0):
        """The bytes of a message."""
        self._serial += 1
        body = BusValues(self.order)
        for single, argument in zip(singleTypes(signature), arguments, strict=True):
            body.write(single, argument)
        kinds = {1: "o", 2: "s", 3: "s", 4: "s", 5: "u", 6: "s"}
        listed = [(code, (kinds[code], value)) for code, value in fields.items() if value]
        if signature:
            listed.append((8, ("g", signature)))
        if descriptors:
            listed.append((9, ("u", descriptors)))
        header = BusValues(self.order)
        header.data = struct.pack(self.order + "4BII", ord({"<": "l", ">": "B"}[self.order]), kind,
                                  flags, 1, len(body.data), self._serial)
        header.write("a(yv)", listed)
        header.align(8)
        return header.data + body.data

    def sendRaw(self, data):
        self._socket.sendall(data)

    def ask(self, *words, **more):
        return self.resultOf(self.send(*words, **more))

    def askBus(self, member, signature="", *arguments):
        return self.ask(bus, "/org/freedesktop/DBus", bus, member, signature, *arguments)

    def resultOf(self, serial):
        """The values that the call with this serial is answered with. Throws BusError."""
        received = self.next(lambda told: told.replySerial == serial)
        if received.kind == self.error:
            raise BusError(received.errorName, " ".join(map(str, received.body)))
        return received.body

    def failureOf(self, *words, **more):
        """The error that a call is answered with, as its name and its text."""
        try:
            return ("no error", str(self.ask(*words, **more)))
        except BusError as error:
            return (error.name, str(error))

    def busFailure(self, member, signature="", *arguments):
        return self.failureOf(bus, "/org/freedesktop/DBus", bus, member, signature, *arguments)

    def next(self, isWanted):
        """The first message of those kept and those to come that is wanted."""
        for place, told in enumerate(self.kept):
            if isWanted(told):
                return self.kept.pop(place)
        while not isWanted(told := self._receive()):
            self.kept.append(told)
        return told

    def nextCall(self, member):
        return self.next(lambda told: told.kind == self.call and told.member == member)

    def nextSignal(self, member):
        return self.next(lambda told: told.kind == self.signal and told.member == member)

    def heard(self, member):
        """What came with each message of this member that was sent before this call; they are
        taken."""
        # The bus answers in the order in which it sends.
        self.askBus("GetId")
        found = [told for told in self.kept if told.member == member]
        self.kept = [told for told in self.kept if told not in found]
        return [told.body for told in found]

    def answerCalls(self, answer):
        """Gives every call that has come to `answer`; the rest is kept."""
        while self._hasInput():
            told = self._receive()
            if told.kind == self.call:
                answer(told)
            else:
                self.kept.append(told)

    def own(self, name, flags=doNotQueue):
        return self.askBus("RequestName", "su", name, flags)[0]

    def release(self, name):
        return self.askBus("ReleaseName", "s", name)[0]

    def ownerOf(self, name):
        return self.askBus("GetNameOwner", "s", name)[0]

    def isOwned(self, name):
        return self.askBus("NameHasOwner", "s", name)[0]

    def names(self):
        """Those that programs have asked for."""
        return [name for name in self.askBus("ListNames")[0] if not name.startswith(":")]

    def watch(self, rule):
        self.askBus("AddMatch", "s", rule)

    def unwatch(self, rule):
        self.askBus("RemoveMatch", "s", rule)

    def takeDescriptors(self, count):
        taken, self.descriptors = self.descriptors[:count], self.descriptors[count:]
        return taken

    def _hasInput(self):
        return bool(self._data) or bool(select.select([self._socket], [], [], 0)[0])

    def _read(self, size):
        while len(self._data) < size:
            data, descriptors, _, _ = socket.recv_fds(self._socket, 1 << 20, 253)
            self.descriptors += descriptors
            if not data:
                raise AssertionError("the bus has ended")
            self._data += data
        taken = bytes(self._data[:size])
        del self._data[:size]
        return taken
