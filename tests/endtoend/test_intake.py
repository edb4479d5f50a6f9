"""Items handed in from the command line, from links and over the bus, and what lasts of them."""

import json
import os
import pathlib
import shlex
import shutil
import signal
import subprocess
import unittest
import uuid

from entries import ODD_NAMES, file_entry, odd_files, text_entry
from host import BINARY, SOURCE, output_of, visible_window, wait_until
from remote import Remote, RemoteTest

HOME = pathlib.Path(os.environ["HOME"])
BUILD = pathlib.Path(BINARY).parents[1]
INBOX = HOME / "Downloads/.NativeShareInbox"
NAME = "org.brevanholt.Brevanholt"


def stage(text):
    """Leaves a share of one text in the inbox and returns its identifier."""
    identifier = str(uuid.uuid4())
    (INBOX / identifier).mkdir(parents=True)
    (INBOX / identifier / "share.json").write_text(json.dumps({"items": [{"text": text}]}))
    return identifier



def share_over_the_bus(files, text):
    output_of("gdbus", "call", "--session", "--dest", NAME, "--object-path",
              "/org/brevanholt/Brevanholt", "--method",
              "org.freedesktop.Application.ActivateAction", "share", f"[<(@as {files}, {text!r})>]",
              "{}")


class IntakeTest(RemoteTest):

    def setUp(self):
        self.folder = HOME / self.id().split(".")[-1]
        self.folder.mkdir()

    def share(self, *arguments, cwd=None):
        return subprocess.run([BINARY, *arguments], check=False, timeout=30, capture_output=True,
                              cwd=cwd)

    def test_shares_what_the_command_line_names(self):
        _, remote = self.start_remote()
        odd = odd_files(self.folder)
        (self.folder / "sub").mkdir()
        (self.folder / "sub/a").write_text("12")
        (self.folder / "link").symlink_to("sub")

        self.assertEqual(self.share("--share", "--", *ODD_NAMES, cwd=self.folder).returncode, 0)
        self.assertEqual(self.share("--share", *(path.as_uri() for path in odd)).returncode, 0)
        self.assertEqual(self.share("--share", "..", cwd=self.folder / "sub").returncode, 0)
        self.assertEqual(self.share("--share", "sub/", cwd=self.folder).returncode, 0)
        self.assertEqual(self.share("--share-text", "häh\n").returncode, 0)
        self.assertEqual(self.share("--share-text", "").returncode, 0)
        wait_until(visible_window, "the window")
        self.assertEqual(remote.events(), [])

        self.assertEqual(remote.call("platformEventsReady"), {"value": None})
        events = remote.wait_for_events(5)
        self.assertEqual({method for method, _ in events}, {"sharedEntries"})
        batches = [batch for _, batch in events]
        self.assertEqual(batches[0], [file_entry(path) for path in odd])
        self.assertEqual(batches[1], batches[0])
        self.assertEqual(batches[2][0]["path"], str(self.folder))
        self.assertIn(f"{self.folder.name}/sub/a", [entry["relativePath"] for entry in batches[2]])
        self.assertEqual([entry["relativePath"] for entry in batches[3]], ["sub", "sub/a"])
        self.assertEqual(batches[3][0]["path"], str(self.folder / "sub"))
        self.assertEqual(batches[4], [text_entry("häh\n")])

    def test_refuses_what_it_cannot_share(self):
        _, remote = self.start_remote()
        (self.folder / "good").write_text("x")
        bad = os.fsencode(self.folder) + b"/caf\xe9"
        pathlib.Path(os.fsdecode(bad)).write_text("x")
        for arguments, complaint in (
                (["--share", self.folder / "gone"], b"gone"), (["--share"], b"needs a file"),
                (["--share-text", b"\xff"], b"not UTF-8"),
                (["--share-text", "x", "y"], b"given with --share"), (["--sharing"], b"--sharing")):
            result = self.share(*arguments)
            self.assertEqual(result.returncode, 1, arguments)
            self.assertIn(complaint, result.stderr)
        self.assertEqual(self.share("--share", bad, self.folder / "good").returncode, 0)

        remote.call("platformEventsReady")
        self.assertEqual(remote.wait_for_events(1),
                         [["sharedEntries", [file_entry(self.folder / "good")]]])

    def test_starts_to_share_when_it_does_not_run(self):
        (self.folder / "a").write_text("x")
        _, remote = self.start_remote("--share", self.folder / "a")
        remote.call("platformEventsReady")
        self.assertEqual(remote.wait_for_events(1),
                         [["sharedEntries", [file_entry(self.folder / "a")]]])

    def test_shares_what_comes_over_the_bus(self):
        host, remote = self.start_remote()
        remote.call("platformEventsReady")
        (self.folder / "a").write_text("x")
        uri = (self.folder / "a").as_uri()
        share_over_the_bus([uri, "https://example.org", "file://elsewhere/a"], "not this")
        share_over_the_bus([], "text")
        self.assertEqual(remote.wait_for_events(2),
                         [["sharedEntries", [file_entry(self.folder / "a")]],
                          ["sharedEntries", [text_entry("text")]]])
        self.assertIn("not shared, since it is no file of this computer: https://example.org",
                      host.log)

    def test_takes_what_is_pending_when_it_starts_and_when_it_comes_to_the_front(self):
        stage("at start")
        _, remote = self.start_remote()
        remote.call("platformEventsReady")
        self.assertEqual(remote.wait_for_events(1), [["sharedEntries", [text_entry("at start")]]])

        window = visible_window()
        output_of("wmctrl", "-i", "-c", window)
        wait_until(lambda: not visible_window(), "hiding")
        stage("while hidden")
        self.share()
        wait_until(lambda: ["sharedEntries", [text_entry("while hidden")]] in remote.events(),
                   "the share")



class InstalledTest(RemoteTest):
    """Share links and shares through the desktop's own means and the installed files."""

    @classmethod
    def setUpClass(cls):
        subprocess.run(["cmake", "--install", BUILD, "--prefix", HOME / ".local"], check=True,
                       stdout=subprocess.DEVNULL)
        subprocess.run(["update-desktop-database", HOME / ".local/share/applications"], check=True)

    def serve(self, remote):
        """Has the desktop start the installed program with the remote's page."""
        bundle = remote.folder / "bundle"
        shutil.copytree(SOURCE / "tests/endtoend/bundle", bundle)
        shutil.copytree(SOURCE / "ui/engine", bundle / "engine")
        options = ["--ui-bundle", str(bundle)]
        for argument in ("scenario=remote", f"report={remote.folder}/report", *remote.arguments):
            options += ["--ui-argument", argument]
        program = HOME / ".local/bin/brevanholt"
        program.unlink()
        program.write_text(f'#!/bin/sh\nexec {BINARY} {shlex.join(options)} "$@"\n')
        program.chmod(0o755)
        output_of("gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path",
                  "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.ReloadConfig")
        self.addCleanup(self.stop_service)

    def service_process(self):
        reply = subprocess.run(
            ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path",
             "/org/freedesktop/DBus", "--method",
             "org.freedesktop.DBus.GetConnectionUnixProcessID", NAME],
            check=False, capture_output=True, text=True).stdout
        return int(reply.split()[1].rstrip(",)")) if reply else None

    def stop_service(self):
        process = self.service_process()
        if process:
            os.kill(process, signal.SIGTERM)
            wait_until(lambda: not self.service_process() and not visible_window(),
                       "the service's end")

    def test_opens_a_link_when_it_does_not_run(self):
        remote = Remote()
        self.serve(remote)
        self.assertIsNone(self.service_process())
        subprocess.run(["xdg-open", f"brevanholt://share?id={stage('cold')}"], check=True,
                       timeout=30)
        wait_until(visible_window, "the window")
        wait_until(remote.listens, "the page")
        remote.call("platformEventsReady")
        self.assertEqual(remote.wait_for_events(1), [["sharedEntries", [text_entry("cold")]]])

    def test_shares_over_the_bus_when_it_does_not_run(self):
        remote = Remote()
        self.serve(remote)
        share_over_the_bus([], "cold")
        wait_until(remote.listens, "the page")
        remote.call("platformEventsReady")
        self.assertEqual(remote.wait_for_events(1), [["sharedEntries", [text_entry("cold")]]])

    def test_opens_a_link_while_it_runs_hidden(self):
        _, remote = self.start_remote()
        remote.call("platformEventsReady")
        output_of("wmctrl", "-i", "-c", visible_window())
        wait_until(lambda: not visible_window(), "hiding")

        for bad in ("share", "share?id=abc", f"Share?id={uuid.uuid4()}", f"share?id={uuid.uuid4()}"):
            subprocess.run(["xdg-open", f"brevanholt://{bad}"], check=True, timeout=30)
        subprocess.run(["xdg-open", f"brevanholt://share/x?y=1&id={stage('warm')}"], check=True,
                       timeout=30)
        wait_until(visible_window, "the window")
        self.assertIn(["sharedEntries", [text_entry("warm")]], remote.events())

    def test_ends_a_service_that_nobody_asks_for_anything(self):
        self.serve(Remote())
        output_of("gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path",
                  "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.StartServiceByName",
                  NAME, "0")
        self.assertIsNotNone(self.service_process())
        self.assertIsNone(visible_window())
        wait_until(lambda: not self.service_process(), "the service's end")


if __name__ == "__main__":
    unittest.main(verbosity=2)
