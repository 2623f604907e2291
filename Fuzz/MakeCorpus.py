#!/usr/bin/env python3
"""Writes the first inputs of the fuzz targets: one small file for each thing that a reader knows.

Inputs that a fuzzing run finds are added beside them, under names that say what they showed.
"""
import pathlib
import plistlib
import struct
import zlib

CORPUS = pathlib.Path(__file__).parent / "Corpus"


def write(target, name, data):
    folder = CORPUS / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data)


def element(kind, data):
    return kind + struct.pack(">I", 8 + len(data)) + data


def icon(*elements):
    data = b"".join(elements)
    return b"icns" + struct.pack(">I", 8 + len(data)) + data


def plane(value, count):
    """A run-length plane of one value."""
    data = b""
    while count >= 3:
        run = min(count, 130)
        data += bytes([run + 125, value])
        count -= run
    return data + (bytes([count - 1]) + bytes([value]) * count if count else b"")


def planes(side, count):
    return b"".join(plane(60 * i + 7, side * side) for i in range(count)) + b"\0"


def png(side):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = (b"\0" + b"\x20\x40\x60\x80" * side) * side
    header = struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def jpeg2000(side):
    """The boxes up to the first marker of the codestream: enough for everything but the pixels."""
    def box(kind, data):
        return struct.pack(">I", 8 + len(data)) + kind + data

    header = box(b"ihdr", struct.pack(">IIHBBBB", side, side, 4, 7, 7, 0, 0))
    size = struct.pack(">HHIIIIIIIIH", 50, 0, side, side, 0, 0, side, side, 0, 0, 4)
    stream = b"\xff\x4f\xff\x51" + size + b"\x07\x01\x01" * 4 + b"\xff\xd9"
    return (box(b"jP  ", b"\r\n\x87\n") + box(b"ftyp", b"jp2 \0\0\0\0jp2 ")
            + box(b"jp2h", header) + box(b"jp2c", stream))


def icons():
    yield "empty", icon()
    for kind, mask, side in ((b"is32", b"s8mk", 16), (b"il32", b"l8mk", 32),
                             (b"ih32", b"h8mk", 48), (b"it32", b"t8mk", 128)):
        start = b"\0\0\0\0" if kind == b"it32" else b""
        colors = element(kind, start + planes(side, 3))
        yield kind.decode(), icon(colors)
        if side < 48:
            yield kind.decode() + "-mask", icon(colors, element(mask, bytes(range(256)) * 4))
    for kind, side in ((b"ic04", 16), (b"ic05", 32), (b"icsb", 18)):
        yield kind.decode() + "-argb", icon(element(kind, b"ARGB" + planes(side, 4)))
    for kind, side in ((b"icp4", 16), (b"icp5", 32)):
        yield kind.decode() + "-rgb", icon(element(kind, planes(side, 3)))
        yield kind.decode() + "-png", icon(element(kind, png(side)))
    for kind, side in ((b"ic12", 64), (b"ic07", 128)):
        yield kind.decode() + "-png", icon(element(kind, png(side)))
        yield kind.decode() + "-jpeg2000", icon(element(kind, jpeg2000(side)))
    yield "codestream", icon(element(b"ic07", jpeg2000(128).partition(b"jp2c")[2]))
    yield "information", icon(element(b"TOC ", b"is32\0\0\0\x10"), element(b"icnV", b"\0\0\0\0"),
                              element(b"info", b"bplist00"), element(b"name", b"icon"))
    yield "dark", icon(element(b"\xfd\xd9\x2f\xa8", icon(element(b"ic04", b"ARGB" + planes(16, 4)))))
    yield "old", icon(element(b"ICN#", b"\xaa" * 256), element(b"ics8", b"\x10" * 256))
    yield "length-zero", b"icns\0\0\0\x20is32\0\0\0\0" + bytes(16)
    yield "length-huge", b"icns\x40\0\0\0ic10\x3f\xff\xff\xf8" + png(16)
    yield "cut", icon(element(b"is32", planes(16, 3)))[:-5]
    yield "twice", icon(element(b"is32", planes(16, 3)), element(b"is32", planes(16, 3)))


CONFIGURATIONS = {
    "smallest": '{"displayName":"A","bundleId":"org.example.a","instanceHome":"~/A"}',
    "web": '{"displayName":"A","bundleId":"b","instanceHome":"/h","kind":"web","url":"https://e/"}',
    "label": '{"displayName":"A","bundleId":"b","instanceHome":"/h","iconLabel":'
             '{"text":"A1","colorHex":"#ff0000","position":"bottom"},"menuBarIcon":true}',
    "lists": '{"displayName":"\\u00e9\\ud83d\\ude00","bundleId":"b","instanceHome":"/h","extraArgs":'
             '["{{instanceHome}}",""],"environment":{"A":"\\/"},"workingDirectory":null}',
    "command": '{"displayName":"A","bundleId":"b","instanceHome":"/h","kind":"command",'
               '"commandPath":"/bin/true","commandArgs":["-v"],"unknown":[1e400,-0.0,{"a":null}]}',
    "number-within-a-number": '{"displayName":1e400-0.5}',
    "not-json": '{"displayName":',
    "deep": "[" * 600 + "]" * 600,
}


def property_lists():
    value = {"CFBundleIdentifier": "org.example.a", "LSUIElement": True, "Count": -5, "Real": 1.5,
             "Nested": {"List": ["a", {"b": False}], "Text": "<&>\u00e9\U0001f600"}}
    for name, form in (("xml", plistlib.FMT_XML), ("binary", plistlib.FMT_BINARY)):
        yield name, plistlib.dumps(value, fmt=form)
        yield name + "-data", plistlib.dumps({"Data": b"\0\1", "Long": "x" * 300}, fmt=form)
    yield "doctype", (b'<?xml version="1.0"?><!DOCTYPE plist [<!ENTITY a "b">]>'
                      b"<plist><dict><key>&a;</key><string><![CDATA[<]]></string></dict></plist>")
    yield "deep", b"<plist>" + b"<array>" * 600 + b"</array>" * 600 + b"</plist>"


BUS = "org.freedesktop.DBus"


class Message:
    """A message of the session's bus in one byte order."""

    def __init__(self, order="<"):
        self.order = order

    def number(self, value):
        return struct.pack(self.order + "I", value)

    def text(self, value):
        data = value.encode()
        return self.number(len(data)) + data + b"\0"

    def texts(self, values):
        data = b""
        for value in values:
            data = padded(data, 4) + self.text(value)
        return self.number(len(data)) + data

    def field(self, code, kind, value):
        data = bytes([code, len(kind)]) + kind.encode() + b"\0"
        if kind == "g":
            return data + bytes([len(value)]) + value.encode() + b"\0"
        return padded(data, 4) + (self.number(value) if kind == "u" else self.text(value))

    def bytes(self, kind, serial, fields, body=b""):
        data = b""
        for field in fields:
            data = padded(data, 8) + self.field(*field)
        order = b"l" if self.order == "<" else b"B"
        start = order + bytes([kind, 0, 1]) + self.number(len(body)) + self.number(serial)
        return padded(start + self.number(len(data)) + data, 8) + body

    def call(self, member, signature="", body=b"", serial=2, destination=BUS):
        fields = [(1, "o", "/org/freedesktop/DBus"), (3, "s", member), (6, "s", destination)]
        return self.bytes(1, serial, fields + [(8, "g", signature)] * bool(signature), body)

    def answer(self, signature, body, serial=3, kind=2):
        return self.bytes(kind, serial, [(6, "s", ":1.5"), (5, "u", 2), (7, "s", BUS),
                                         (8, "g", signature)] + [(4, "s", "a.b")] * (kind == 3), body)

    def signal(self, member, names):
        body = b""
        for name in names:
            body = padded(body, 4) + self.text(name)
        return self.bytes(4, 3, [(1, "o", "/"), (2, "s", BUS), (3, "s", member), (7, "s", BUS),
                                 (8, "g", "s" * len(names))], body)


def padded(data, size):
    return data + bytes(-len(data) % size)


def bus_messages(order):
    """Each kind of message that is changed on its way, and some that are not."""
    one = Message(order)
    own = "k_One.org.example.Service"
    process = padded(one.text("ProcessID") + b"\1u\0", 4) + one.number(7)
    yield "hello", one.call("Hello") + one.answer("s", one.text(":1.5"))
    yield "name", one.call("GetNameOwner", "s", one.text("org.a.b"))
    yield "request", one.call("RequestName", "su", padded(one.text("org.a.b"), 4) + one.number(4))
    yield "start", one.call("StartServiceByName", "su",
                            padded(one.text("org.example.Service"), 4) + one.number(0))
    yield "rule", one.call("AddMatch", "s", one.text("member=NameLost,arg0namespace='org'"))
    yield "monitor", one.call("BecomeMonitor", "asu",
                              padded(one.texts(["sender=a.b", ""]), 4) + one.number(0))
    yield "environment", one.call("UpdateActivationEnvironment", "a{ss}", one.number(13)
                                  + bytes(4) + padded(one.text("A"), 4) + one.text(""))
    yield "names", one.call("ListNames") + one.answer("as", one.texts([own, "org.a", ":1.5"]))
    yield "process", one.call("GetConnectionUnixProcessID", "s", one.text(":1.5")) + \
        one.answer("u", one.number(9))
    yield "credentials", one.call("GetConnectionCredentials", "s", one.text(":1.5")) + \
        one.answer("a{sv}", one.number(len(process)) + bytes(4) + process)
    descriptor = padded(padded(one.text("ProcessFD") + b"\1h\0", 4) + one.number(0), 8)
    yield "descriptor", one.call("GetConnectionCredentials", "s", one.text(":1.5")) + \
        one.answer("a{sv}", one.number(len(descriptor + process)) + bytes(4) + descriptor + process)
    yield "manager", one.call("SetEnvironment", destination="org.freedesktop.systemd1")
    yield "acquired", one.signal("NameAcquired", [own])
    yield "changed", one.signal("NameOwnerChanged", [own, "", ":1.5"])
    yield "error", one.answer("s", one.text("The name " + own + " is not there"), kind=3)
    yield "program", one.call("Open", "s", one.text("x"), destination="org.example.Service")
    yield "received", one.call("Open", "s", one.text("x"), serial=3, destination=own)


RULES = {
    "empty": "",
    "watch": "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='org.a.b'",
    "namespace": "interface=org.freedesktop.DBus, arg0namespace='org.a'",
    "quotes": " sender =org.'a'.b\\'c,destination='x.y',=,arg0='z'",
    "arguments": "arg0path='/a',arg63='x',arg00='y.z',eavesdrop=true,member=NameLost",
    "unfinished": "sender='org.a.b",
}


FILES = {
    "service": "[D-BUS Service]\nName=org.example.Service\nExec=/usr/bin/program 'a b' \"c\\\\d\" e\\ f\n",
    "systemd": "[D-BUS Service]\nName=org.a.B\nExec=/bin/false\nSystemdService=b.service\nUser=x\n",
    "entry": "[Desktop Entry]\nType=Application\nName=Files\nNoDisplay=false\nExec=files %U\n",
    "names": "call org.example.Service  a reason\nown org.example.Item-*  another\n# no name\n",
    "address": "tcp:host=a;unix:path=/run/user/7/b%20us,guid=00;unix:abstract=/tmp/x",
    "runtime": "unix:runtime=yes",
}


def main():
    handshake = b"\0AUTH EXTERNAL 30\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\n"
    for name, order in (("little", "<"), ("big", ">")):
        conversation = handshake
        for kind, data in bus_messages(order):
            write("BusMessage", f"{kind}-{name}", data)
            write("BusConversation", f"{kind}-{name}", handshake + data)
            write("BusStream", f"{kind}-{name}", bytes([len(kind)]) + data)
            conversation += data if kind != "monitor" else b""
        write("BusConversation", f"all-{name}", conversation)
        write("BusStream", f"all-{name}", b"\x40" + conversation[len(handshake):])
    for name, text in RULES.items():
        write("BusRule", name, text.encode())
    for name, text in FILES.items():
        write("BusFile", name, text.encode())
    for name, data in icons():
        write("IcnsReader", name, data)
    for name, text in CONFIGURATIONS.items():
        write("InstanceConfig", name, text.encode())
    for name, data in property_lists():
        write("PropertyList", name, data)


if __name__ == "__main__":
    main()
