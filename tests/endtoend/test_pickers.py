"""Files that come in by hand: dragged onto the window, and chosen in its file choosers."""

import os
import pathlib
import sys
import unittest

import dbus

from stage.host import SOURCE, output_of, visible_window, wait_until
from cases import RemoteTest
from tray import glide, mouse, picture, window_titled

HOME = pathlib.Path(os.environ["HOME"])
DEFAULTS = HOME / ".config/brevanholt/defaults.ini"
PORTAL = (
    "org.freedesktop.portal.Documents",
    "/org/freedesktop/portal/documents",
    "org.freedesktop.portal.FileTransfer",
)
TARGET = (370, 310)  # within the window


def entry(path):
    return {"path": str(path), "name": path.name, "size": 0}


def bookmarks():
    """What the program has kept of each picked file."""
    lines = DEFAULTS.read_text().splitlines()
    line = next((line for line in lines if line.startswith("pickedFileBookmarks")), "")
    return line.split("(b")[1:]


class HandTest(RemoteTest):
    def setUp(self):
        self.folder = HOME / self.id().split(".")[-1]
        (self.folder / "sub").mkdir(parents=True)
        DEFAULTS.unlink(missing_ok=True)
        self.files = [self.folder / name for name in ("100%25", "naïve 🎈", "with space")]
        for file in (*self.files, self.folder / "sub/b", self.folder / "sub/.hidden"):
            file.write_text("12")


class DragTest(HandTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        # A mock owns the portal's name here: the bus must not start the real one for Thunar.
        services = pathlib.Path(os.environ["XDG_RUNTIME_DIR"]) / "dbus-1/services"
        services.mkdir(parents=True, exist_ok=True)
        (services / f"{PORTAL[0]}.service").write_text(
            f"[D-BUS Service]\nName={PORTAL[0]}\nExec=/bin/false\n"
        )
        dbus.SessionBus().get_object("org.freedesktop.DBus", "/").ReloadConfig()

    def start_beside(self, *source, title):
        """Starts the program at the left, and at the right what is dragged, all of it selected."""
        _, remote = self.start_remote()
        output_of("wmctrl", "-i", "-r", visible_window(), "-e", "0,20,60,700,500")
        self.run_beside(*source)
        window = wait_until(lambda: window_titled(title), title)
        output_of("wmctrl", "-i", "-r", window, "-e", "0,740,60,520,500")
        wait_until(
            lambda: "520x500" in output_of("xdotool", "getwindowgeometry", window), "the size"
        )
        mouse("windowactivate", "--sync", window, "key", "ctrl+a")
        picture(title)
        return remote

    def test_takes_files_dragged_from_the_file_manager(self):
        remote = self.start_beside("thunar", self.folder, title=f"{self.folder.name} - Thunar")
        # The first icon is at the upper left of the files, beside the side pane.
        start = (958, 232)
        mouse("mousemove", *start, "mousedown", "1")
        glide(start, TARGET)
        self.assertEqual(remote.wait_for_events(1), [["dragActiveChanged", True]])
        picture("drag-from-file-manager")
        glide(TARGET, start)
        self.assertEqual(remote.wait_for_events(2)[1:], [["dragActiveChanged", False]])
        glide(start, TARGET)
        remote.wait_for_events(3)
        mouse("mouseup", "1")
        _, (method, dropped), last = remote.wait_for_events(5)[2:]
        self.assertEqual((method, last), ("filesDropped", ["dragActiveChanged", False]))
        self.assertEqual(
            sorted(dropped, key=lambda file: file["name"]), [entry(file) for file in self.files]
        )
        wait_until(lambda: len(bookmarks()) == 3, "the bookmarks")
        remote.call("releasePickedFiles", paths=[str(file) for file in self.files])
        self.assertEqual(bookmarks(), [])

    def test_takes_files_that_the_portal_hands_out(self):
        answer = f"ret = ['{self.files[2]}'] if args[0] == 'the key' else []"
        self.mock(*PORTAL).AddMethod("", "RetrieveFiles", "sa{sv}", "as", answer)
        remote = self.start_beside(
            sys.executable,
            SOURCE / "tests/endtoend/drag_source.py",
            "application/vnd.portal.filetransfer",
            "the key",
            title="Drag source",
        )
        mouse("mousemove", 1000, 310, "mousedown", "1")
        glide((1000, 310), TARGET)
        mouse("mouseup", "1")
        self.assertEqual(remote.wait_for_events(3)[1], ["filesDropped", [entry(self.files[2])]])


class PickerTest(HandTest):
    def choose(self, title, path):
        """Types a path into the open file chooser of that title."""
        chooser = wait_until(lambda: window_titled(title), title)
        self.assertRegex(
            output_of("xprop", "-id", chooser, "WM_TRANSIENT_FOR", "_NET_WM_STATE"),
            f"(?s){int(visible_window()):#x}\n.*_NET_WM_STATE_MODAL",
        )
        mouse("windowactivate", "--sync", chooser)
        mouse("key", "ctrl+l", "type", "--delay", "5", path)
        picture(title)
        mouse("key", "Return")

    def test_picks_and_keeps_what_was_picked_until_it_is_released(self):
        host, remote = self.start_remote()
        files, folder, none = map(remote.begin, ("pickFiles", "pickFolder", "pickFiles"))
        self.choose("Choose Files to Send", self.files[2])
        self.assertEqual(remote.finish(files), {"value": [entry(self.files[2])]})
        missing = self.folder / "missing"
        self.choose("Choose a Folder to Send", missing)
        explanation = wait_until(
            lambda: window_titled("Not everything can be sent"), "the explanation"
        )
        mouse("windowactivate", "--sync", explanation, "key", "Escape")
        self.assertEqual((missing.exists(), remote.reply(folder)), (False, None))
        self.choose("Choose a Folder to Send", self.folder / "sub")
        self.assertEqual(
            [
                (each["relativePath"], each["kind"], each["size"])
                for each in remote.finish(folder)["value"]
            ],
            [("sub", "directory", 0), ("sub/b", "file", 2)],
        )
        chooser = wait_until(lambda: window_titled("Choose Files to Send"), "the chooser")
        mouse("windowactivate", "--sync", chooser, "key", "Escape")
        self.assertEqual(remote.finish(none), {"value": []})

        kept = bookmarks()
        self.assertEqual(len(kept), 2)
        self.assertEqual(host.stop(), 0)
        _, remote = self.start_remote()
        paths = [str(self.files[2]), str(self.folder / "sub")]
        self.assertEqual(remote.call("restorePickedFiles", paths=paths), {"value": None})
        self.assertEqual(bookmarks(), kept)
        self.assertEqual(remote.call("releasePickedFiles", paths=paths), {"value": None})
        self.assertEqual(bookmarks(), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
