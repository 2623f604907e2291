#!/usr/bin/env python3
"""What a desktop does for programs, with those of an instance that has names of its own."""

import re
import unittest

from BusPeer import bus, doNotQueue, exists, owned
from Desktop import awaitCondition
from OwnNames import OwnNamesTests, letters, post
from Panel import Panel

notifications = ("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                 "org.freedesktop.Notifications")
secrets = "org.freedesktop.secrets"

# Names that a desktop has for its programs, whichever desktop that is.
shared = ["org.freedesktop.ScreenSaver", "org.freedesktop.PowerManagement",
          "org.freedesktop.systemd1", "org.freedesktop.portal.Desktop",
          "org.freedesktop.portal.Documents", "org.freedesktop.IBus", secrets,
          "org.gnome.keyring", "org.gnome.SessionManager", "org.gnome.Shell",
          "org.gnome.SettingsDaemon", "org.gnome.ScreenSaver", "org.kde.kglobalaccel",
          "org.kde.KWin", "org.kde.plasmashell", "org.kde.ksmserver", "org.kde.ActivityManager",
          "org.kde.JobViewServer", "org.a11y.Bus", "org.pulseaudio.Server",
          "org.xfce.SessionManager",
          "org.xfce.ScreenSaver"]

# Names of programs and of what they keep data with, beside which the ones above lie.
private = ["org.xfce.mousepad", "org.xfce.Thunar", "org.kde.dolphin", "org.kde.konsole",
           "org.gnome.Nautilus", "org.gnome.Terminal", "org.gnome.TextEditor",
           "org.gnome.evolution.dataserver.Sources5", "org.gnome.Calendar", "ca.desrt.dconf",
           "org.freedesktop.Tracker3.Miner.Files", "org.freedesktop.secretsmore",
           "org.gnome.ShellX", "org.gtk.Notifications", "org.freedesktop.Application",
           "com.example.portal.Desktop", "io.github.celluloid_player.Celluloid"]


class Desktops(OwnNamesTests):
    desktopOptions = ["--notifications", "--panel"]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.panel = Panel(cls.user)

    def setUp(self):
        super().setUp()
        self.one, self.two = self.started(), self.started()
        self.assertApart(self.one)

    def standIn(self, name):
        """A program of the user's that has this name of a desktop."""
        made = self.peer(self.user.session["DBUS_SESSION_BUS_ADDRESS"])
        self.assertEqual(made.own(name), owned)
        return made

    def test_names_of_a_desktop_are_the_users_for_whoever_calls(self):
        inside = self.inside(self.one)
        for name in shared:
            with self.subTest(name):
                desktop = self.standIn(name)
                serial = inside.send(name, "/", post, "Write", "s", "Dear desktop")
                call = desktop.nextCall("Write")
                self.assertEqual((call.sender, call.destination), (inside.name, name))
                desktop.reply(call, "s", "thanks")
                self.assertEqual(inside.resultOf(serial), ("thanks",))
                self.assertTrue(inside.isOwned(name))
                self.assertIn(name, inside.names())

    def test_names_of_programs_are_the_instances_own_however_like_they_are(self):
        inside = self.inside(self.one)
        for name in private:
            with self.subTest(name):
                self.standIn(name)
                self.assertFalse(inside.isOwned(name))
                self.assertEqual(inside.own(name), owned)

    def test_an_instance_does_not_become_a_part_of_the_users_desktop(self):
        inside = self.inside(self.one)
        for name in [*shared, "org.freedesktop.FileManager1"]:
            with self.subTest(name):
                self.assertNotEqual(inside.own(name), exists)
                self.assertFalse(self.outside.isOwned(name))
        dunst = self.outside.ownerOf("org.freedesktop.Notifications")
        inside.own("org.freedesktop.Notifications", 2 | doNotQueue)
        self.assertEqual(self.outside.ownerOf("org.freedesktop.Notifications"), dunst)

    def test_a_notification_is_shown_and_its_action_comes_back(self):
        inside = self.inside(self.one)
        inside.watch(f"type='signal',sender='{notifications[0]}'")

        [number] = inside.ask(*notifications, "Notify", "susssasa{sv}i", "Letters", 0, "",
                              "A letter", "Dear reader", ["default", "Read"], [], 0)
        awaitCondition(lambda: self.user.run("dunstctl", "count", "displayed").strip() == "1",
                       lambda: "nothing is shown")
        self.user.run("dunstctl", "action", "0")

        self.assertEqual(inside.nextSignal("ActionInvoked").body, (number, "default"))
        inside.ask(*notifications, "CloseNotification", "u", number)
        self.assertEqual(inside.nextSignal("NotificationClosed").body[0], number)
        self.assertTrue(inside.ask(*notifications, "GetCapabilities")[0])

    def test_items_of_programs_are_in_the_panel_until_they_end(self):
        self.panel.awaitIcons(0)
        for names in (["org.kde.StatusNotifierItem-42-1", "org.kde.StatusNotifierItem-43-1"],
                      [None, None]):
            with self.subTest(names):
                programs = [self.inside(self.one), self.inside(self.two)]
                for program, name in zip(programs, names):
                    self.register(program, name)
                awaitCondition(lambda: self.showsItemsOf(programs),
                               lambda: f"the panel has {self.items()}")
                for program, name in zip(programs, names):
                    if name:
                        self.assertEqual(self.outside.ownerOf(name), program.name)
                    program.close()
                self.panel.awaitIcons(0)

    def register(self, program, name):
        if name:
            self.assertEqual(program.own(name), owned)
        program.send("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                     "org.kde.StatusNotifierWatcher", "RegisterStatusNotifierItem", "s",
                     name or program.name)

    def showsItemsOf(self, programs):
        for program in programs:
            program.answerCalls(self.answer(program))
        return len(self.items()) == len(programs) == self.panel.count()

    def answer(self, peer):
        """Tells panels what the item of a program is."""
        item = {"Category": ("s", "ApplicationStatus"), "Id": ("s", "letters"),
                "Title": ("s", "Letters"), "Status": ("s", "Active"),
                "IconName": ("s", "mail-unread"), "ItemIsMenu": ("b", False),
                "Menu": ("o", "/NoMenu")}

        def answer(call):
            if call.member == "GetAll":
                peer.reply(call, "a{sv}", list(item.items()))
            elif call.member == "Get" and call.body[1] in item:
                peer.reply(call, "v", item[call.body[1]])
            else:
                peer.refuse(call, f"{bus}.Error.UnknownMethod")
        return answer

    def items(self):
        [items] = self.outside.ask("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                                   f"{bus}.Properties", "Get", "ss",
                                   "org.kde.StatusNotifierWatcher",
                                   "RegisteredStatusNotifierItems")
        return items

    def test_players_are_found_by_the_beginning_of_their_names(self):
        player = "org.mpris.MediaPlayer2.letters"
        first, second = self.inside(self.one), self.inside(self.two)
        self.standIn(player)
        for peer in (first, second):
            self.assertEqual(peer.own(player), owned)
            self.assertEqual([name for name in peer.names() if "mpris" in name], [player])

        found = {self.outside.ownerOf(name): name for name in self.outside.names()
                 if name.startswith(f"{player}.")}

        self.assertEqual(found.keys(), {first.name, second.name})
        for peer in (first, second):
            name = found[peer.name]
            self.assertRegex(name, re.escape(player) + r"\.[A-Za-z_][A-Za-z0-9_]*$")
            serial = self.outside.send(name, "/org/mpris/MediaPlayer2",
                                       "org.mpris.MediaPlayer2.Player", "PlayPause")
            peer.reply(peer.nextCall("PlayPause"))
            self.assertEqual(self.outside.resultOf(serial), ())
            self.outside.watch(f"type='signal',sender='{name}'")
            peer.emit("/org/mpris/MediaPlayer2", f"{bus}.Properties", "PropertiesChanged",
                      "sa{sv}as", "org.mpris.MediaPlayer2.Player", [], [])
            self.assertEqual(self.outside.nextSignal("PropertiesChanged").sender, peer.name)
        self.assertEqual(first.busFailure("GetNameOwner", "s", found[second.name])[0],
                         f"{bus}.Error.NameHasNoOwner")

    def test_a_portals_answers_reach_whoever_asked(self):
        portal = self.standIn("org.freedesktop.portal.Desktop")
        inside = self.inside(self.one)
        inside.watch("type='signal',sender='org.freedesktop.portal.Desktop',"
                     "interface='org.freedesktop.portal.Request'")
        serial = inside.send("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                             "org.freedesktop.portal.FileChooser", "OpenFile", "ss", "", "Open")
        call = portal.nextCall("OpenFile")
        handle = f"/org/freedesktop/portal/desktop/request/{call.sender[1:].replace('.', '_')}/t"
        portal.reply(call, "o", handle)
        portal.emit(handle, "org.freedesktop.portal.Request", "Response", "ua{sv}", 0, [],
                    destination=call.sender)

        self.assertEqual(inside.resultOf(serial), (handle,))
        self.assertEqual(inside.nextSignal("Response").path, handle)

    def test_a_device_is_reserved_for_the_user_too(self):
        device = "org.freedesktop.ReserveDevice1.Audio0"
        first, second = self.inside(self.one), self.inside(self.two)

        self.assertEqual(first.own(device), owned)

        self.assertEqual([second.own(device), self.outside.own(device)], [exists, exists])
        self.assertEqual(self.outside.ownerOf(device), first.name)

    def test_a_badge_is_told_to_the_users_dock(self):
        inside = self.inside(self.one)
        self.outside.watch("type='signal',interface='com.canonical.Unity.LauncherEntry'")

        inside.emit("/letters", "com.canonical.Unity.LauncherEntry", "Update", "sa{sv}",
                    "application://letters.desktop", [("count", ("i", 3))])

        told = self.outside.nextSignal("Update")
        self.assertEqual((told.sender, told.body),
                         (inside.name, ("application://letters.desktop", {"count": 3})))

    def test_the_end_of_a_program_is_told_to_whoever_it_asked_something_of(self):
        screenSaver = self.standIn("org.freedesktop.ScreenSaver")
        inside = self.inside(self.one)
        screenSaver.watch(f"type='signal',member='NameOwnerChanged',arg0='{inside.name}'")
        inside.send("org.freedesktop.ScreenSaver", "/", "org.freedesktop.ScreenSaver", "Inhibit",
                    "ss", "Letters", "a long one")
        self.assertEqual(screenSaver.nextCall("Inhibit").sender, inside.name)

        inside.close()

        self.assertEqual(screenSaver.nextSignal("NameOwnerChanged").body,
                         (inside.name, inside.name, ""))


class Secrets(OwnNamesTests):
    def setUp(self):
        super().setUp()
        self.outside.own(secrets)

    def test_they_are_the_users_unless_the_instance_hides_them(self):
        agents = {"shared": self.startedApart(),
                  "hidden": self.startedApart("--plist", "KorvaneHidesSecrets=true")}
        inside = {kind: self.inside(agent) for kind, agent in agents.items()}
        unknown = self.outside.failureOf("app.korvane.test.Nobody", "/", post, "Write")[0]

        serial = inside["shared"].send(secrets, "/", post, "Write")
        self.outside.reply(self.outside.nextCall("Write"))
        self.assertEqual(inside["shared"].resultOf(serial), ())
        hidden = inside["hidden"]
        self.assertFalse(hidden.isOwned(secrets))
        self.assertNotIn(secrets, hidden.names())
        self.assertNotIn(secrets, hidden.askBus("ListActivatableNames")[0])
        self.assertEqual(hidden.failureOf(secrets, "/", post, "Write")[0], unknown)
        self.assertEqual(hidden.busFailure("GetNameOwner", "s", secrets)[0],
                         f"{bus}.Error.NameHasNoOwner")
        self.assertEqual(self.outside.heard("Write"), [])

    def test_they_are_not_told_of_where_they_are_hidden(self):
        hidden = self.inside(self.startedApart("--plist", "KorvaneHidesSecrets=true"))
        shared = "org.freedesktop.Notifications"
        self.outside.own(shared)
        hidden.watch("type='signal',member='NameOwnerChanged'")

        self.outside.release(secrets)
        self.outside.release(shared)

        self.assertEqual([body[0] for body in hidden.heard("NameOwnerChanged")], [shared])


class Additions(OwnNamesTests):
    """Names that an instance is given beside those of every desktop."""

    def test_a_name_that_may_be_called_is_the_users_and_one_that_may_be_owned_is_shared(self):
        other = "app.korvane.test.Shared"
        inside = self.inside(self.startedApart(
            "--plist", f"KorvaneBusNames=call {letters};own {other}"))
        self.outside.own(letters)

        self.assertEqual(inside.ownerOf(letters), self.outside.name)
        self.assertEqual(inside.own(other), owned)

        self.assertEqual(self.outside.ownerOf(other), inside.name)
        self.outside.own("app.korvane.test.Letters2")
        self.assertFalse(inside.isOwned("app.korvane.test.Letters2"))


if __name__ == "__main__":
    unittest.main()
