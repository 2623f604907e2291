"""What goes over a session's bus: the messages themselves, so that no text in them, however odd,
is mistaken for something else."""

import dataclasses
import struct
import subprocess
import threading

from Desktop import awaitCondition

_ready = "app.korvane.test.Ready"
_numbers = {"y": "B", "n": "h", "q": "H", "i": "i", "u": "I", "x": "q", "t": "Q", "d": "d",
            "b": "I", "h": "I"}
_alignments = {**{code: struct.calcsize(kind) for code, kind in _numbers.items()},
               "s": 4, "o": 4, "a": 4, "g": 1, "v": 1, "(": 8, "{": 8}
_headerFields = {1: "path", 2: "interface", 3: "member", 4: "errorName", 5: "replySerial",
                 6: "destination", 7: "sender", 8: "signature", 9: "descriptors"}


@dataclasses.dataclass(frozen=True)
class Message:
    kind: int  # 1 is a call, 2 an answer, 3 an error and 4 a signal
    interface: str
    member: str
    sender: str
    body: tuple
    replySerial: int = 0  # of the call that is answered
    errorName: str = ""
    serial: int = 0
    path: str = ""
    destination: str = ""
    descriptors: int = 0  # how many travel with it


class BusMonitor:
    """Keeps the messages that match one of `rules`, from the constructor's return to close()."""

    call, signal = 1, 4

    def __init__(self, user, *rules):
        self._messages = []
        self._process = subprocess.Popen(
            ["timeout", "500", "dbus-monitor", "--session", "--binary", f"interface='{_ready}'",
             *rules],
            env=user.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

        def watches():
            user.run("gdbus", "emit", "--session", "--object-path", "/", "--signal",
                     f"{_ready}.Now")
            return self.messages(_ready)
        awaitCondition(watches, lambda: "dbus-monitor shows nothing")

    def close(self):
        self._process.terminate()
        self._reader.join()
        self._process.stdout.close()
        self._process.wait()

    def messages(self, interface, member=None):
        return [message for message in list(self._messages) if message.interface == interface
                and member in (None, message.member)]

    def _read(self):
        stream = self._process.stdout
        while len(fixed := stream.read(16)) == 16:
            order = {ord("l"): "<", ord("B"): ">"}[fixed[0]]
            bodySize, _, fieldsSize = struct.unpack(order + "III", fixed[4:])
            rest = stream.read(-(-fieldsSize // 8) * 8 + bodySize)
            self._messages.append(message(fixed + rest, order, len(fixed + rest) - bodySize))


def message(data, order, bodyStart):
    """The message that `data` holds; `order` is that of its bytes, as struct names it."""
    found = {_headerFields.get(code): value
             for code, value in _Values(data, order, 12).next("a(yv)")}
    values = _Values(data, order, bodyStart)
    body = tuple(values.next(kind) for kind in singleTypes(found.get("signature", "")))
    [serial] = struct.unpack_from(order + "I", data, 8)
    return Message(data[1], found.get("interface", ""), found.get("member", ""),
                   found.get("sender", ""), body, found.get("replySerial", 0),
                   found.get("errorName", ""), serial, found.get("path", ""),
                   found.get("destination", ""), found.get("descriptors", 0))


class _Values:
    """The values that stand one after another in a message, read by their types."""

    def __init__(self, data, order, place):
        self._data = data
        self._order = order
        self._place = place

    def next(self, kind):
        self._align(_alignments[kind[0]])
        if kind[0] in _numbers:
            value = self._number(kind[0])
            return bool(value) if kind == "b" else value
        if kind[0] in "sog":
            size = self._number("y" if kind == "g" else "u")
            self._place += size + 1
            return self._data[self._place - size - 1:self._place - 1].decode()
        if kind[0] == "v":
            return self.next(self.next("g"))
        if kind[0] == "a":
            return self._array(kind[1:])
        return tuple(self.next(part) for part in singleTypes(kind[1:-1]))

    def _array(self, kind):
        size = self._number("u")
        self._align(_alignments[kind[0]])
        end = self._place + size
        items = []
        while self._place < end:
            items.append(self.next(kind))
        return dict(items) if kind[0] == "{" else items

    def _number(self, code):
        [value] = struct.unpack_from(self._order + _numbers[code], self._data, self._place)
        self._place += struct.calcsize(_numbers[code])
        return value

    def _align(self, size):
        self._place = -(-self._place // size) * size


def singleTypes(signature):
    """The single complete types of a signature, one after another."""
    kinds = []
    start = depth = 0
    for place, code in enumerate(signature, 1):
        depth += {"(": 1, "{": 1, ")": -1, "}": -1}.get(code, 0)
        if depth == 0 and code != "a":
            kinds.append(signature[start:place])
            start = place
    return kinds
