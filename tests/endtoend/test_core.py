"""The host in a real desktop: the channel, the page, the window."""

import os
import pathlib
import signal
import subprocess
import unittest

from stage.host import BINARY, hide_window, output_of, visible_window, wait_until
from cases import RemoteTest
from stage.remote import Remote

HERE = pathlib.Path(__file__).parent
HOME = pathlib.Path(os.environ["HOME"])


def install_handler(name, mime_type):
    """A program that writes what it is asked to open into a file of that name."""
    opened = HOME / name
    script = HOME / f"{name}.sh"
    script.write_text(f'#!/bin/sh\nprintf "%s\\n" "$1" >>"{opened}"\n')
    script.chmod(0o755)
    applications = HOME / ".local/share/applications"
    applications.mkdir(parents=True, exist_ok=True)
    (applications / f"{name}.desktop").write_text(
        f"[Desktop Entry]\nType=Application\nName={name}\nExec={script} %u\nMimeType={mime_type};\n"
    )
    subprocess.run(["xdg-mime", "default", f"{name}.desktop", mime_type], check=True)
    return opened


class CoreTest(RemoteTest):
    def test_opens_with_the_desktops_own_programs(self):
        _, remote = self.start_remote()
        remote.call("prepareReceiveLocation")
        file = HOME / "Downloads/Brevanholt/a.txt"
        file.write_text("received")
        link = "https://example.org/x?y=1"
        for mime_type, given, method, arguments in (
            ("x-scheme-handler/https", link, "openExternalUrl", {"url": link}),
            ("text/plain", str(file), "openReceivedFile", {"location": str(file)}),
            ("inode/directory", str(file.parent), "openReceiveFolder", {}),
        ):
            opened = install_handler(method, mime_type)
            self.assertEqual(remote.call(method, **arguments), {"value": None})
            wait_until(lambda: opened.exists() and given in opened.read_text(), method)
        remote.call("revealReceivedFile", location=str(file))
        wait_until(lambda: "Brevanholt - Thunar" in output_of("wmctrl", "-l"), "the file manager")

    def test_keeps_the_clipboard_after_quitting(self):
        host, remote = self.start_remote()
        remote.call("writeClipboardText", text="copied: naïve 🎈")
        self.assertEqual(host.stop(), 0)
        self.assertEqual(output_of("xclip", "-selection", "clipboard", "-o"), "copied: naïve 🎈")

    def test_keeps_order_and_payloads_and_the_page_inside(self):
        results = self.run_scenario("transport", f"folder={HOME}", more_bundle=HERE / "bundle")
        self.assertEqual(results["inFlight"], list(range(1000)))
        self.assertEqual(results["large"], 64 << 20)
        escapes = results["escapes"]
        self.assertEqual((escapes["worked"], escapes["location"]), ([], "brevanholt-ui://bundle/"))
        self.assertLessEqual({"connect-src", "frame-src"}, set(escapes["blocked"]))

    def test_keeps_the_pages_process_in_a_sandbox(self):
        host, _ = self.start_remote()
        if "no sandbox of its own" in host.log:
            self.skipTest("bubblewrap cannot make namespaces here")
        for space in ("mnt", "net", "pid"):
            ours = os.readlink(f"/proc/{host.process.pid}/ns/{space}")
            self.assertTrue(host.web_processes())
            for page in host.web_processes():
                self.assertNotEqual(os.readlink(f"/proc/{page}/ns/{space}"), ours)

    def test_loads_the_page_again_when_its_process_dies(self):
        host, remote = self.start_remote()
        dead = host.web_processes()[0]
        os.kill(dead, signal.SIGKILL)
        wait_until(lambda: set(host.web_processes()) - {dead}, "another page")
        self.assertNotIn(dead, host.web_processes())
        self.assertIn("loading it again", host.log)
        self.assertEqual(remote.call("unknown"), {"missing": True})

    def test_starts_in_the_background_and_hides_when_closed(self):
        remote = Remote()
        host = self.start("--login-item", scenario="remote", arguments=remote.arguments)
        remote.events()
        self.assertIsNone(visible_window())
        for _ in range(2):
            subprocess.run([BINARY], timeout=30, check=True)
            hide_window()
        self.assertIsNone(host.process.poll())

    def test_quits_cleanly_on_signals(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            host, _ = self.start_remote()
            pages = host.web_processes()
            self.assertTrue(pages)
            self.assertEqual(host.stop(number), 0)
            wait_until(
                lambda: not any(pathlib.Path(f"/proc/{page}/exe").exists() for page in pages),
                "the end of the page's process",
            )


if __name__ == "__main__":
    unittest.main(verbosity=2)
