#!/usr/bin/env python3
"""What belongs to the user, as seen from an instance in a desktop session: settings, folders, the
way to the display, and whatever a link in an instance's home leads to."""

import os
import shutil
import unittest

from Desktop import endPrograms
from EndToEnd import changes, contents
from Instances import InDesktop, WithInstances, placesOfTheManager


class Settings(InDesktop):
    """The session's service that writes dconf's settings has the user's home, an instance's own one
    has the instance's."""

    schema = "org.gnome.desktop.interface"
    key = "cursor-size"

    def usersOwn(self):
        return self.user.run("dconf", "dump", "/org/gnome/desktop/interface/")

    def instanceThatSets(self, name, value, *arguments):
        self.create(name, self.app, *arguments,
                    *[f"--add-arg={word}" for word in ["set", self.schema, self.key, value]])

    def test_what_an_instance_sets_is_its_own(self):
        self.app = self.adopt("/usr/bin/gsettings")
        self.user.run("gsettings", "set", self.schema, self.key, "32")
        self.instanceThatSets("Work", "48")
        self.instanceThatSets("Private", "64")

        self.assertEqual((self.runInstance("Work"), self.runInstance("Private")), ("", ""))

        self.assertEqual(self.usersOwn(), "[/]\ncursor-size=32\n")
        for name, value in {"Work": "48", "Private": "64"}.items():
            kept = self.home(name) / ".config" / "glib-2.0" / "settings" / "keyfile"
            self.assertEqual(kept.read_text(),
                             f"[org/gnome/desktop/interface]\n{self.key}={value}\n")

    def test_a_backend_that_the_user_chose_stays_chosen_and_keeps_them_in_the_instance(self):
        self.app = self.adopt("/usr/bin/gsettings")
        self.user.run("gsettings", "set", self.schema, self.key, "32")
        self.instanceThatSets("Work", "48", "--env", "GSETTINGS_BACKEND=dconf")

        self.runInstance("Work")

        self.assertEqual(self.usersOwn(), "[/]\ncursor-size=32\n")
        self.assertTrue((self.home("Work") / ".config" / "dconf" / "user").is_file())
        self.assertFalse((self.home("Work") / ".config" / "glib-2.0").exists())

    def test_a_backend_that_the_user_chose_writes_the_users_where_the_bus_is_shared(self):
        self.app = self.adopt("/usr/bin/gsettings")
        self.instanceThatSets("Work", "48", "--env", "GSETTINGS_BACKEND=dconf", "--shared-bus")

        self.runInstance("Work")

        self.assertEqual(self.usersOwn(), "[/]\ncursor-size=48\n")


class GermanFolders(WithInstances):
    def setUp(self):
        super().setUp()
        (self.user.home / "Documents").rename(self.user.home / "Dokumente")
        (self.user.home / "Desktop").rename(self.user.home / "Schreibtisch")
        (self.user.home / ".config" / "user-dirs.dirs").write_text(
            'XDG_DESKTOP_DIR="$HOME/Schreibtisch"\n'
            'XDG_DOWNLOAD_DIR="$HOME/Downloads"\n'
            'XDG_DOCUMENTS_DIR="$HOME/Dokumente"\n')

    def test_a_program_finds_them_where_it_looks_and_files_land_in_them(self):
        script = """
            for folder in DESKTOP DOWNLOAD DOCUMENTS; do
                there=$(xdg-user-dir $folder)
                echo "$folder $there"
                echo "from an instance" >"$there/letter.txt"
            done
        """
        self.create("Work", self.adopt("/bin/sh"), "--arg=-c", f"--arg={script}")

        shown = self.runInstance("Work")

        home = self.home("Work")
        self.assertEqual(shown, f"DESKTOP {home}/Desktop\nDOWNLOAD {home}/Downloads\n"
                                f"DOCUMENTS {home}/Documents\n")
        for link, folder in {"Desktop": "Schreibtisch", "Downloads": "Downloads",
                             "Documents": "Dokumente"}.items():
            self.assertEqual(os.readlink(home / link), str(self.user.home / folder))
            letter = self.user.home / folder / "letter.txt"
            self.assertEqual(letter.read_text(), "from an instance\n")
        self.assertFalse((self.user.home / "Documents").exists())
        self.assertFalse((self.user.home / "Desktop").exists())


class AuthorityInTheFile(InDesktop):
    """Display managers that set no XAUTHORITY leave the cookie in the home folder."""

    def setUp(self):
        super().setUp()
        self.cookies = self.user.home / ".Xauthority"
        shutil.copy(self.user.session.pop("XAUTHORITY"), self.cookies)

    def test_an_instance_is_let_in_to_the_display(self):
        self.create("Work", self.adopt("xterm"), "--add-arg=-e", "--add-arg=sleep 100")

        processes = {"Work": self.startInstance("Work")}
        endPrograms(processes, self.desktop.awaitWindows(processes))

    def test_without_the_cookie_nobody_would_be(self):
        self.create("Work", self.adopt("xterm"), "--add-arg=-e", "--add-arg=sleep 100")
        self.cookies.unlink()

        self.assertIn("Authorization required", self.runInstance("Work", status=1))


class HostileHome(WithInstances):
    """Links that stand in the way, in a home that somebody else has filled."""

    folders = [".config", ".config/ibus", ".config/ibus/bus", ".config/fontconfig", ".local",
               ".local/share", ".local/share/Trash", ".local/share/fonts", ".local/share/themes",
               ".local/share/icons", ".fonts", ".themes", ".icons", ".cache", "tmp"]
    files = [".config/user-dirs.dirs", ".config/glib-2.0"]

    def setUp(self):
        super().setUp()
        home = self.user.home
        # All that an instance could be given a link to is there.
        for name in [".config/ibus/bus", ".config/fontconfig", ".local/share/Trash/files",
                     ".local/share/Trash/info", ".local/share/fonts", ".local/share/themes",
                     ".local/share/icons/hicolor", ".fonts", ".themes", ".icons"]:
            (home / name).mkdir(parents=True)
            (home / name / "mine").write_text("the user's own\n")
        self.victims = self.user.root / "victims"
        self.victims.mkdir()
        self.app = self.adopt("/bin/sh")

    def plant(self, name, place, target):
        link = self.home(name) / place
        link.parent.mkdir(parents=True)
        link.symlink_to(target)
        return link

    def victimFolder(self, name, filled):
        folder = self.victims / name
        folder.mkdir(mode=0o751)
        if filled:
            # What would be made below it is there, as files and as empty folders.
            for item in ["ibus", "share", "fonts", "user-dirs.dirs"]:
                (folder / item).write_text("the user's own\n")
            for item in ["bus", "Trash", "themes", "icons", "fontconfig"]:
                (folder / item).mkdir()
        return folder

    def victimFile(self, name):
        file = self.victims / name
        file.write_text("the user's own\n")
        file.chmod(0o640)
        return file

    def outsideTheInstances(self):
        """All that belongs to the user, without what the manager makes for the instances."""
        made = [f"home/{place}" for place in placesOfTheManager if not place.endswith("/icons")]
        return contents(self.user.root, leavingOut=[*made, "home/.local/share/icons/hicolor",
                                                    "tmp"])

    def plans(self):
        """Place and target of each link: every place meets every kind of target."""
        for number, place in enumerate(self.folders):
            yield place, self.victimFolder(f"filled-{number}", filled=True)
            yield place, self.victimFolder(f"empty-{number}", filled=False)
            yield place, self.victims / f"missing-{number}"
        for number, place in enumerate([*self.folders, *self.files]):
            yield place, self.victimFile(f"file-{number}")

    def test_nothing_that_a_link_leads_to_is_changed(self):
        planted = {}
        for number, (place, target) in enumerate(self.plans()):
            planted[f"Instance {number}"] = (place, target)
        before = self.outsideTheInstances()

        for name, (place, target) in planted.items():
            link = self.plant(name, place, target)
            self.create(name, self.app, "--arg=-c", "--arg=:", "--env",
                        "TMPDIR={{instanceHome}}/tmp/below")
            self.runInstance(name)
            self.assertEqual(os.readlink(link), str(target), f"the link at {place}")

        self.assertEqual(changes(before, self.outsideTheInstances()), {})

    def test_a_home_without_such_links_gets_those_to_the_users_own(self):
        self.create("Work", self.app, "--arg=-c", "--arg=:")
        self.runInstance("Work")

        for place in [".config/ibus/bus", ".config/fontconfig", ".local/share/Trash",
                      ".local/share/fonts", ".local/share/themes", ".local/share/icons", ".fonts",
                      ".themes", ".icons"]:
            self.assertEqual(os.readlink(self.home("Work") / place), str(self.user.home / place))


if __name__ == "__main__":
    unittest.main()
