#!/usr/bin/env python3
"""Files that a site hands out: they land in the user's own downloads under names of their own."""

import os
import pathlib
import unittest

from Desktop import awaitCondition
from EndToEnd import changes, contents
from WebInstances import WebTests
from WebSite import Answer


def contentOf(file):
    """None when it has gone since it was listed: what is being loaded gets its name at the end."""
    try:
        return file.read_bytes()
    except FileNotFoundError:
        return None


def filesNamed(name, folder):
    """Those in the folder and below it, where folders may come and go meanwhile."""
    return [pathlib.Path(path, name) for path, _, files in os.walk(folder) if name in files]


class Downloads(WebTests):
    def setUp(self):
        super().setUp()
        self.folder = self.user.home / "Downloads"
        before = set(self.folder.iterdir())
        self.addCleanup(lambda: [file.unlink() for file in self.folder.iterdir()
                                 if file not in before])

    def offer(self, path, content, header="attachment", kind="application/octet-stream"):
        self.site.pages[path] = Answer(content, kind, headers={"Content-Disposition": header})

    def startedWith(self, script, **configuration):
        """An instance whose page runs the script, says so, and is still there afterwards."""
        self.site.page("/", f"""
            function download(address, name) {{
                const link = document.createElement('a');
                link.href = address;
                if (name !== undefined) link.download = name;
                document.body.append(link);
                link.click();
            }}
            addEventListener('load', async () => {{ {script} }});""", title="The page")
        return self.startedAt(**configuration)

    def awaitFiles(self, expected, folder=None):
        """Waits until the folder holds these files, name -> content, and has no others."""
        folder = folder or self.folder

        def found():
            return {file.name: contentOf(file) for file in folder.iterdir()
                    if file.name != "note.txt"}
        awaitCondition(lambda: found() == expected,
                       lambda: f"in {folder}: {list(found())}")

    def test_an_attachment_lands_in_the_users_downloads_with_a_banner(self):
        self.offer("/file", b"the content", 'attachment; filename="a report.pdf"')
        instance = self.startedWith("download('/file')")

        self.awaitFiles({"a report.pdf": b"the content"})
        awaitCondition(lambda: any("a report.pdf" in banner.summary + banner.body
                                   for banner in instance.banners()),
                       lambda: f"banners: {instance.banners()}")
        instance.awaitTitle("The page")
        self.assertEqual(instance.end()[:2], (0, ""))  # with the log's last lines written
        self.assertEqual(instance.lines(), ["badge: cleared"])

    def test_a_file_that_is_there_stays_and_the_next_gets_a_name_of_its_own(self):
        (self.folder / "report.txt").write_bytes(b"the user's own")
        self.offer("/file", b"from the site", 'attachment; filename="report.txt"')
        self.startedWith("download('/file')")

        awaitCondition(lambda: len(list(self.folder.glob("report*.txt"))) == 2,
                       lambda: f"{list(self.folder.iterdir())}")

        self.assertEqual((self.folder / "report.txt").read_bytes(), b"the user's own")
        [other] = [file for file in self.folder.glob("report*.txt") if file.name != "report.txt"]
        awaitCondition(lambda: other.read_bytes() == b"from the site", lambda: str(other))

    def test_three_at_once_of_one_name_are_three_files(self):
        for number in (1, 2, 3):
            self.offer(f"/file{number}", str(number).encode() * 100000,
                       'attachment; filename="same.bin"')
        self.startedWith("""
            for (const number of [1, 2, 3]) {
                const frame = document.createElement('iframe');
                frame.src = `/file${number}`;
                document.body.append(frame);
            }""")

        awaitCondition(lambda: sorted(file.read_bytes() for file in self.folder.glob("same*.bin"))
                       == [str(number).encode() * 100000 for number in (1, 2, 3)],
                       lambda: f"{list(self.folder.iterdir())}")

    def test_no_name_leads_out_of_the_folder_or_hides(self):
        names = ["../../escaped.txt", "/etc/escaped.txt", "..", ".hidden", "a/b.txt", "%2e%2e%2fx",
                 "x" * 300 + ".txt", "tab\\\\t.txt", "-rf", "~", ".bashrc"]
        before = contents(self.user.home, leavingOut=["Downloads", "KorvaneInstances"])
        for number, name in enumerate(names):
            self.offer(f"/file{number}", f"{number}".encode(), f'attachment; filename="{name}"')
        self.startedWith(f"""
            for (let number = 0; number < {len(names)}; ++number) {{
                const frame = document.createElement('iframe');
                frame.src = `/file${{number}}`;
                document.body.append(frame);
            }}""")

        def saved():
            return sorted(int(content) for file in self.folder.iterdir()
                          if file.name != "note.txt" and (content := contentOf(file)))
        awaitCondition(lambda: saved() == list(range(len(names))),
                       lambda: f"{saved()}: {list(self.folder.iterdir())}")
        self.assertEqual([file for file in self.folder.iterdir() if file.name.startswith(".")], [])
        after = contents(self.user.home, leavingOut=["Downloads", "KorvaneInstances"])
        self.assertEqual(changes(before, after), {})

    def test_what_a_page_makes_itself_can_be_kept(self):
        for script, name, content in [
                ("download('data:text/plain,from%20data', 'data.txt')", "data.txt", b"from data"),
                ("download(URL.createObjectURL(new Blob(['from a blob'])), 'blob.txt')", "blob.txt",
                 b"from a blob")]:
            instance = self.startedWith(script)
            awaitCondition(lambda: (self.folder / name).exists() and
                           (self.folder / name).read_bytes() == content,
                           lambda: f"{name}: {list(self.folder.iterdir())}")
            instance.end()

    def test_what_the_engine_cannot_show_is_kept(self):
        self.site.pages["/archive.tar.gz"] = Answer(b"packed", "application/gzip")
        instance = self.startedWith("location = '/archive.tar.gz'")

        self.awaitFiles({"archive.tar.gz": b"packed"})
        instance.awaitTitle("The page")

    def test_an_instance_that_is_a_download_alone_still_has_a_window(self):
        self.offer("/file", b"all there is", 'attachment; filename="only.bin"')
        instance = self.startedAt("/file")

        self.awaitFiles({"only.bin": b"all there is"})
        self.assertEqual(instance.title(), instance.name)
        self.assertEqual(instance.end()[:2], (0, ""))

    def test_the_folder_is_the_one_that_the_user_has_chosen(self):
        chosen = self.user.home / "Empfangenes"
        chosen.mkdir()
        settings = self.user.home / ".config" / "user-dirs.dirs"
        settings.write_text('XDG_DOWNLOAD_DIR="$HOME/Empfangenes"\n')
        self.addCleanup(settings.unlink)
        self.offer("/file", b"the content", 'attachment; filename="file.bin"')

        self.startedWith("download('/file')")

        self.awaitFiles({"file.bin": b"the content"}, chosen)
        self.awaitFiles({})

    def test_with_a_home_elsewhere_the_folder_is_still_the_users(self):
        self.offer("/file", b"the content", 'attachment; filename="file.bin"')

        instance = self.startedWith("download('/file')", instanceHome="~/Elsewhere/home")

        self.awaitFiles({"file.bin": b"the content"})
        instance.end()
        found = [path for path in (self.user.home / "Elsewhere").rglob("file*.bin")
                 if not path.resolve().is_relative_to(self.folder)]
        self.assertEqual(found, [])

    def test_an_instance_that_shares_no_folders_keeps_its_files_in_its_home(self):
        self.offer("/file", b"the content", 'attachment; filename="file.bin"')

        instance = self.startedWith("download('/file')", shareUserFolders=False)

        awaitCondition(lambda: [file for file in filesNamed("file.bin", instance.home)
                                if contentOf(file) == b"the content"],
                       lambda: "it is nowhere in the home")
        self.awaitFiles({})

    def test_without_such_a_folder_one_is_made_or_found(self):
        self.folder.rename(self.user.home / "Away")
        self.addCleanup((self.user.home / "Away").rename, self.folder)
        self.offer("/file", b"the content", 'attachment; filename="file.bin"')

        self.startedWith("download('/file')")

        def found():
            return [file for file in filesNamed("file.bin", self.user.home)
                    if "KorvaneInstances" not in file.parts and not file.is_symlink()
                    and contentOf(file) == b"the content"]
        awaitCondition(found, lambda: "it is nowhere")
        for file in found():
            self.addCleanup(self.removeWithFolder, file)

    def removeWithFolder(self, file):
        file.unlink()
        if self.folder.exists():
            self.folder.rmdir()


if __name__ == "__main__":
    unittest.main()
