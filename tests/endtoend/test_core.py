"""The host in a real desktop: the channel, the window, and one file received."""

import os
import pathlib
import signal
import subprocess
import unittest

from host import BINARY, HostTest, output_of, visible_window, wait_until

HOME = pathlib.Path(os.environ["HOME"])
BAD_LINK = {"error": ["platform_error", "The web link could not be opened.", None]}


def platform_error(message):
    return {"error": ["platform_error", message, None]}


def install_handler(name, mime_type):
    """A program that writes what it is asked to open into a file of that name."""
    opened = HOME / name
    script = HOME / f"{name}.sh"
    script.write_text(f'#!/bin/sh\nprintf "%s\\n" "$1" >>"{opened}"\n')
    script.chmod(0o755)
    applications = HOME / ".local/share/applications"
    applications.mkdir(parents=True, exist_ok=True)
    (applications / f"{name}.desktop").write_text(
        f"[Desktop Entry]\nType=Application\nName={name}\nExec={script} %u\nMimeType={mime_type};\n")
    subprocess.run(["xdg-mime", "default", f"{name}.desktop", mime_type], check=True)
    return opened


class CoreTest(HostTest):

    def test_answers_every_method(self):
        links = install_handler("links", "x-scheme-handler/https")
        texts = install_handler("texts", "text/plain")
        folders = install_handler("folders", "inode/directory")
        host = self.start(scenario="core_methods")
        results = host.report()

        self.assertEqual(results["deviceName"], {"value": os.uname().nodename})
        self.assertRegex(results["appVersion"]["value"]["version"], r"^\d+\.\d+\.\d+$")
        self.assertRegex(results["appVersion"]["value"]["buildNumber"], r"^\d*$")
        self.assertEqual(results["appSupportPath"], {"value": f"{HOME}/.local/share/Brevanholt"})
        self.assertEqual(results["enableMulticast"], {"value": None})
        self.assertEqual(results["writeClipboardText"], {"value": None})
        self.assertEqual(results["openExternalUrl"], {"value": None})
        self.assertEqual(results["refusedUrl"], BAD_LINK)
        self.assertEqual(results["unknown"], {"missing": True})

        inbox = HOME / "Downloads/Inbox"
        self.assertEqual(results["prepared"], {"value": True})
        self.assertEqual(results["badName"], platform_error("The receive folder name is invalid."))
        self.assertEqual(results["renamed"], {"value": None})
        self.assertEqual(results["badPath"], platform_error("The received path is invalid."))
        self.assertEqual(results["published"], {"value": f"{inbox}/a.txt"})
        self.assertEqual(results["again"], {"value": f"{inbox}/a (1).txt"})
        self.assertEqual(results["directory"], {"value": f"{inbox}/photos/2024"})
        self.assertEqual(results["exists"], {"value": True})
        self.assertEqual(results["located"], {"value": [
            {"name": "a.txt", "location": f"{inbox}/a.txt", "size": 8}]})
        self.assertEqual(results["opened"], {"value": None})
        self.assertEqual(results["revealed"], {"value": None})
        self.assertEqual(results["openGone"],
                         platform_error("The received file could not be opened."))
        self.assertEqual(results["revealGone"],
                         platform_error("The received file no longer exists."))
        self.assertEqual(results["openFolder"], {"value": None})
        self.assertIsNone(results["scratchLeft"])
        self.assertEqual((inbox / "a.txt").read_text(), "received")

        opened = wait_until(lambda: links.exists() and links.read_text(), "the link's program")
        self.assertEqual(opened, "https://example.org/x?y=1\n")
        opened = wait_until(lambda: texts.exists() and texts.read_text(), "the text's program")
        self.assertIn(f"{inbox}/a.txt", opened)
        opened = wait_until(lambda: folders.exists() and folders.read_text(), "the folder's program")
        self.assertIn(str(inbox), opened)
        wait_until(lambda: "Inbox - Thunar" in output_of("wmctrl", "-l"), "the file manager")

    def test_moves_up_what_earlier_builds_received(self):
        folder = HOME / "Downloads/Brevanholt"
        legacy = folder / HOME.relative_to("/")
        (legacy / "photos").mkdir(parents=True)
        (legacy / "photos/a.jpg").write_text("a")
        self.start(directory=HOME)
        wait_until((folder / "photos/a.jpg").exists, "the move")
        wait_until(lambda: not (folder / HOME.parts[1]).exists(), "the end of the old folders")

    def test_keeps_order_and_payloads_and_the_page_inside(self):
        folder = HOME / "transport"
        folder.mkdir()
        results = self.run_scenario("transport", f"folder={folder}")

        self.assertEqual(results["inFlight"], {"count": 1000, "inOrder": True})
        self.assertEqual(results["large"], {"equal": True, "atEnd": 0, "left": None})
        self.assertEqual(results["noChannel"], {"missing": True})

        files = results["files"]
        self.assertEqual([files[name]["error"][2] for name in (
            "taken", "missing", "folder", "device")], ["EEXIST", "ENOENT", "EISDIR", "EINVAL"])
        self.assertIn("File exists", files["taken"]["error"][1])
        for name in ("relative", "readWriter", "closed", "writeReader"):
            self.assertEqual(files[name]["error"][0], "file_error", name)
        self.assertEqual(files["nothing"], {"value": None})
        self.assertEqual(files["stat"], "directory")

        escapes = results["escapes"]
        self.assertEqual(escapes.pop("stillHere"), "brevanholt-ui://bundle/")
        self.assertIn("connect-src", escapes["blocked"])
        self.assertIn("frame-src", escapes.pop("blocked"))
        self.assertEqual([name for name, refused in escapes.items() if not refused], [])

    def test_hides_when_closed_and_comes_back_when_launched_again(self):
        host = self.start(scenario="core_methods")
        window = wait_until(visible_window, "the window")
        output_of("wmctrl", "-i", "-c", window)
        wait_until(lambda: not visible_window(), "hiding")
        self.assertIsNone(host.process.poll())

        self.assertEqual(subprocess.run([BINARY], timeout=30, check=False).returncode, 0)
        wait_until(visible_window, "the window to be back")
        self.assertIsNone(host.process.poll())

    def test_quits_cleanly_on_signals(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            host = self.start(scenario="core_methods")
            host.report()
            pages = host.web_processes()
            self.assertTrue(pages)
            self.assertEqual(host.stop(number), 0)
            wait_until(lambda: not any(pathlib.Path(f"/proc/{page}/exe").exists()
                                       for page in pages), "the end of the page's process")

    def test_loads_the_page_again_when_its_process_dies(self):
        host = self.start(scenario="core_methods")
        host.report()
        host.report_path.unlink()
        os.kill(host.web_processes()[0], signal.SIGKILL)
        self.assertEqual(host.report()["unknown"], {"missing": True})
        self.assertIn("loading it again", host.log)

    def test_starts_in_the_background_at_login(self):
        host = self.start("--login-item", scenario="core_methods")
        host.report()
        self.assertIsNone(visible_window())

    def test_keeps_the_clipboard_after_quitting(self):
        host = self.start(scenario="core_methods")
        host.report()
        self.assertEqual(host.stop(), 0)
        self.assertEqual(output_of("xclip", "-selection", "clipboard", "-o"), "copied: naïve 🎈")


if __name__ == "__main__":
    unittest.main(verbosity=2)
