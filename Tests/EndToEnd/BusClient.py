"""A program on a session's bus that calls others, and takes what they answer as it is."""

import socket
import struct

from BusMonitor import message, singleTypes

_signature = 8  # the code of that header field


class BusError(Exception):
    """What a call was answered with in place of a result: the error's name, and its text."""

    def __init__(self, name, text):
        super().__init__(f"{name}: {text}")
        self.name = name


class BusClient:
    call, answer, error = 1, 2, 3

    def __init__(self, address, seconds=60):
        """`address` is a bus at unix:path=…; no answer after `seconds` is a failure."""
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(seconds)
        self._socket.connect(address.removeprefix("unix:path=").partition(",")[0])
        self._stream = self._socket.makefile("rb")
        self._serial = 0
        self._shakeHands()
        self._socket.sendall(b"BEGIN\r\n")
        [self.name] = self.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "Hello")

    def _shakeHands(self):
        self._socket.sendall(b"\0AUTH EXTERNAL\r\n")
        self._expect(b"DATA")
        self._socket.sendall(b"DATA\r\n")
        self._expect(b"OK")

    def close(self):
        self._stream.close()
        self._socket.close()

    def ask(self, destination, path, interface, member, signature="", *arguments):
        """The values of the answer. Throws BusError."""
        serial = self.send(destination, path, interface, member, signature, *arguments)
        while True:
            received = self._receive()
            if received.replySerial == serial:
                break
        if received.kind == self.error:
            raise BusError(received.errorName, " ".join(map(str, received.body)))
        return received.body

    def send(self, destination, path, interface, member, signature="", *arguments):
        """The number of a call that may be answered later."""
        self._serial += 1
        body = BusValues()
        for kind, argument in zip(singleTypes(signature), arguments, strict=True):
            body.write(kind, argument)
        fields = [(1, ("o", path)), (2, ("s", interface)), (3, ("s", member)),
                  (6, ("s", destination))]
        if signature:
            fields.append((_signature, ("g", signature)))
        header = BusValues()
        header.data = struct.pack("<4BII", ord("l"), self.call, 0, 1, len(body.data),
                                  self._serial)
        header.write("a(yv)", fields)
        header.align(8)
        self._socket.sendall(header.data + body.data)
        return self._serial

    def _receive(self):
        fixed = self._read(16)
        order = {ord("l"): "<", ord("B"): ">"}[fixed[0]]
        bodySize, _, fieldsSize = struct.unpack(order + "III", fixed[4:])
        rest = self._read(-(-fieldsSize // 8) * 8 + bodySize)
        return message(fixed + rest, order, 16 + len(rest) - bodySize)

    def _read(self, size):
        data = self._stream.read(size)
        if len(data) < size:
            raise AssertionError("the bus has ended")
        return data

    def _expect(self, word):
        line = self._stream.readline()
        if not line.startswith(word):
            raise AssertionError(f"the bus says {line}, not {word}")


class BusValues:
    """Values one after another, as they stand in a message. A variant is its type and a value.
    `order` is that of their bytes, as struct names it."""

    def __init__(self, order="<"):
        self.data = b""
        self._order = order

    def align(self, size):
        self.data += bytes(-len(self.data) % size)

    def write(self, kind, value):
        if kind[0] in "so":
            self.write("u", len(value.encode()))
            self.data += value.encode() + b"\0"
        elif kind[0] == "g":
            self.data += bytes([len(value)]) + value.encode() + b"\0"
        elif kind[0] == "v":
            self.write("g", value[0])
            self.write(*value)
        elif kind[0] == "a":
            self._writeArray(kind[1:], value)
        elif kind[0] in "({":
            self.align(8)
            for part, item in zip(singleTypes(kind[1:-1]), value, strict=True):
                self.write(part, item)
        else:
            code = {"y": "B", "b": "I", "h": "I", "i": "i", "u": "I", "d": "d"}[kind[0]]
            self.align(struct.calcsize(code))
            self.data += struct.pack(self._order + code, value)

    def _writeArray(self, kind, items):
        self.align(4)
        place = len(self.data)
        self.data += bytes(4)
        self.align(8 if kind[0] in "({d" else 1)
        start = len(self.data)
        for item in items:
            self.write(kind, item)
        size = struct.pack(self._order + "I", len(self.data) - start)
        self.data = self.data[:place] + size + self.data[place + 4:]
