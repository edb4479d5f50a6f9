"""Files that come in by hand: dragged onto the window, and chosen in its file choosers."""

import os
import pathlib
import subprocess
import sys
import unittest

import dbusmock

from host import BINARY, SOURCE, output_of, visible_window, wait_until
from remote import RemoteTest, stored_bookmarks
from tray import picture

HOME = pathlib.Path(os.environ["HOME"])
PORTAL = ("org.freedesktop.portal.Documents", "/org/freedesktop/portal/documents",
          "org.freedesktop.portal.FileTransfer")
WHOLE = "1280x800+0+0"


def window_titled(title):
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                           check=False, capture_output=True, text=True, timeout=30)
    return found.stdout.split()[0] if found.stdout.strip() else None


def place_of(window):
    lines = output_of("xdotool", "getwindowgeometry", "--shell", window).split()
    place = dict(line.split("=") for line in lines)
    return tuple(int(place[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))


def middle_of(window):
    x, y, width, height = place_of(window)
    return x + width // 2, y + height // 2


def mouse(*orders):
    output_of("xdotool", *(str(order) for order in orders))


def glide(start, end, steps=12):
    """Moves the pointer as a hand does: a drag begins, and is followed, by its motions."""
    for step in range(steps + 1):
        mouse("mousemove", *(a + (b - a) * step // steps for a, b in zip(start, end)))


def dropped(path):
    return {"path": str(path), "name": path.name, "size": 0}


class HandTest(RemoteTest):

    def setUp(self):
        self.folder = HOME / self.id().split(".")[-1]
        self.folder.mkdir()
        (HOME / ".config/brevanholt/defaults.ini").unlink(missing_ok=True)

    def start_at_left(self, *options):
        """Starts the program with its window at the left, so that something fits beside it."""
        host, remote = self.start_remote(*options)
        output_of("wmctrl", "-i", "-r", visible_window(), "-e", "0,20,60,700,500")
        wait_until(lambda: place_of(visible_window())[2] == 700, "the window to shrink")
        return host, remote

    def start_beside(self, *command, title):
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        return wait_until(lambda: window_titled(title), title)


class DragTest(HandTest):

    def drag_source(self, uris):
        return self.drag_source_of("text/uri-list", "\\r\\n".join(uris))

    def drag_source_of(self, target, data):
        return self.start_beside(sys.executable, SOURCE / "tests/endtoend/drag_source.py", target,
                                 data, title="Drag source")

    def drag(self, source):
        start, end = middle_of(source), middle_of(visible_window())
        mouse("mousemove", *start, "mousedown", "1")
        glide(start, end)
        mouse("mouseup", "1")

    def test_takes_dragged_files_and_tells_of_the_hover(self):
        _, remote = self.start_at_left()
        (self.folder / "sub").mkdir()
        for name in ("with space", "100%25", "naïve 🎈"):
            (self.folder / name).write_text("x")
        uris = [(self.folder / name).as_uri()
                for name in ("sub", "with space", "100%25", "naïve 🎈")]
        source = self.drag_source(uris[:2] + ["https://example.org/",
                                              self.folder.as_uri() + "/caf%E9"] + uris[2:])
        start, end = middle_of(source), middle_of(visible_window())

        mouse("mousemove", *start, "mousedown", "1")
        glide(start, end)
        self.assertEqual(remote.wait_for_events(1), [["dragActiveChanged", True]])
        picture("drag-hover", WHOLE)
        glide(end, start)
        self.assertEqual(remote.wait_for_events(2)[1:], [["dragActiveChanged", False]])
        glide(start, end)
        remote.wait_for_events(3)
        mouse("mouseup", "1")

        files = [dropped(self.folder / name) for name in ("with space", "100%25", "naïve 🎈")]
        self.assertEqual(remote.wait_for_events(5)[2:], [
            ["dragActiveChanged", True], ["filesDropped", files], ["dragActiveChanged", False]])
        wait_until(lambda: set(stored_bookmarks()) == {file["path"] for file in files},
                   "the bookmarks")
        remote.call("releasePickedFiles", {"paths": [file["path"] for file in files]})
        self.assertEqual(stored_bookmarks(), {})

    def test_takes_no_folder(self):
        _, remote = self.start_at_left()
        self.drag(self.drag_source([self.folder.as_uri()]))
        self.assertEqual(remote.wait_for_events(1), [["dragActiveChanged", False]])

    def test_takes_files_that_the_portal_hands_out(self):
        _, remote = self.start_at_left()
        (self.folder / "a b").write_text("x")
        portal = dbusmock.DBusTestCase.spawn_server(*PORTAL, system_bus=False)
        self.addCleanup(portal.wait)
        self.addCleanup(portal.terminate)
        output_of("gdbus", "call", "--session", "--dest", PORTAL[0], "--object-path", PORTAL[1],
                  "--method", "org.freedesktop.DBus.Mock.AddMethod", "", "RetrieveFiles", "sa{sv}",
                  "as", f"ret = ['{self.folder}/a b'] if args[0] == 'the key' else []")
        self.drag(self.drag_source_of("application/vnd.portal.filetransfer", "the key"))
        self.assertEqual(remote.wait_for_events(3)[1],
                         ["filesDropped", [dropped(self.folder / "a b")]])

    def test_takes_a_file_from_the_file_manager(self):
        # All of it before the page says that it is ready: what waits for that comes last.
        _, remote = self.start_at_left()
        subprocess.run([BINARY, "--share-text", "first"], check=True, timeout=30)
        (self.folder / "a file.txt").write_text("x")
        manager = self.start_beside("thunar", self.folder, title=f"{self.folder.name} - Thunar")
        output_of("wmctrl", "-i", "-r", manager, "-e", "0,740,60,520,500")
        wait_until(lambda: place_of(manager)[2] == 520, "the file manager to shrink")
        mouse("windowactivate", "--sync", manager)
        picture("file-manager", WHOLE)
        # The first icon is at the upper left of the files, beside the side pane.
        x, y, _, _ = place_of(manager)
        start, end = (x + 215, y + 130), middle_of(visible_window())
        mouse("mousemove", *start, "mousedown", "1")
        glide(start, end)
        remote.wait_for_events(1)
        picture("drag-from-file-manager", WHOLE)
        mouse("mouseup", "1")
        told = remote.wait_for_events(3)
        self.assertEqual(told, [
            ["dragActiveChanged", True], ["filesDropped", [dropped(self.folder / "a file.txt")]],
            ["dragActiveChanged", False]])
        remote.call("platformEventsReady")
        self.assertEqual([method for method, _ in remote.wait_for_events(4)[3:]], ["sharedEntries"])


class PickerTest(HandTest):

    def choose(self, title, path):
        """Types a path into the open file chooser of that title."""
        chooser = wait_until(lambda: window_titled(title), title)
        mouse("windowactivate", "--sync", chooser)
        mouse("key", "ctrl+l", "type", "--delay", "5", f"{path}")
        picture(title, WHOLE)
        mouse("key", "Return")
        return chooser

    def test_picks_files_and_a_folder_one_chooser_after_the_other(self):
        _, remote = self.start_remote()
        (self.folder / "sub").mkdir()
        for name in ("a", "sub/b", "sub/.hidden"):
            (self.folder / name).write_text("12")
        files, folder = remote.begin("pickFiles"), remote.begin("pickFolder")

        self.choose("Choose Files to Send", self.folder / "a")
        self.assertEqual(remote.finish(files), {"value": [dropped(self.folder / "a")]})
        self.assertFalse(remote.is_answered(folder))
        self.choose("Choose a Folder to Send", self.folder / "sub")
        entries = remote.finish(folder)["value"]
        self.assertEqual([(entry["relativePath"], entry["kind"], entry["size"])
                          for entry in entries],
                         [("sub", "directory", 0), ("sub/b", "file", 2)])
        self.assertEqual(set(stored_bookmarks()), {f"{self.folder}/a", f"{self.folder}/sub"})

    def test_keeps_the_window_from_input_and_everything_else_going(self):
        _, remote = self.start_remote()
        number = remote.begin("pickFiles")
        chooser = wait_until(lambda: window_titled("Choose Files to Send"), "the chooser")
        self.assertIn(f"window id # {int(visible_window()):#x}",
                      output_of("xprop", "-id", chooser, "WM_TRANSIENT_FOR"))
        self.assertIn("_NET_WM_STATE_MODAL", output_of("xprop", "-id", chooser, "_NET_WM_STATE"))
        self.assertEqual(remote.call("enableMulticast"), {"value": None})
        mouse("windowactivate", "--sync", chooser, "key", "Escape")
        self.assertEqual(remote.finish(number), {"value": []})
        self.assertEqual(stored_bookmarks(), {})

    def test_restores_what_was_picked_in_another_run_until_it_is_released(self):
        for name in ("a", "b"):
            (self.folder / name).write_text("x")
        host, remote = self.start_remote()
        picked = remote.begin("pickFiles")
        self.choose("Choose Files to Send", self.folder / "a")
        remote.finish(picked)
        kept = stored_bookmarks()
        self.assertEqual(set(kept), {f"{self.folder}/a"})
        self.assertEqual(host.stop(), 0)
        self.assertEqual(stored_bookmarks(), kept)

        host, remote = self.start_remote()
        paths = {"paths": [f"{self.folder}/a"]}
        self.assertEqual(remote.call("restorePickedFiles", paths), {"value": None})
        self.assertEqual(stored_bookmarks(), kept)
        self.assertEqual(remote.call("releasePickedFiles", paths), {"value": None})
        self.assertEqual(stored_bookmarks(), {})
        self.assertEqual(host.stop(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
