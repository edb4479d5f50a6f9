"""Items handed in from the command line, links, the bus, and the menus of file managers."""

import importlib.util
import os
import pathlib
import shlex
import signal
import subprocess
import sys
import unittest
import unittest.mock
import uuid

import dbus
from gi.repository import Gio, GLib

from stage.host import BINARY, hide_window, output_of, shown_windows, visible_window, wait_until
from cases import BUILD, RemoteTest, install
from stage.remote import Remote

HOME = pathlib.Path(os.environ["HOME"])
NAME = "org.brevanholt.Brevanholt"
# Such names are easily broken on the way to the program.
ODD_NAMES = [
    "plain",
    "with space",
    "it's",
    'the "best"',
    "100%25 %F",
    "two\nlines",
    "naïve 🎈",
    "$HOME `x` \\",
    "-dash",
    "a:b",
]


def file_entry(path):
    return {"path": str(path), "name": path.name, "size": path.stat().st_size, "kind": "file"}


def text_event(text):
    entry = {"path": "", "name": "Shared text", "kind": "text", "text": text}
    return ["sharedEntries", [{**entry, "size": len(text.encode())}]]


class IntakeTest(RemoteTest):
    def setUp(self):
        self.folder = HOME / self.id().split(".")[-1]
        (self.folder / "sub").mkdir(parents=True)
        (self.folder / "sub/a").write_text("12")
        self.files = [self.folder / name for name in ODD_NAMES]
        for file in self.files:
            file.write_text(file.name)
        (self.folder / "link").symlink_to("plain")
        self.entries = [file_entry(file) for file in self.files]

    def share(self, *arguments, cwd=None):
        return subprocess.run(
            [BINARY, *arguments], check=False, timeout=30, capture_output=True, cwd=cwd
        )


class CommandLineTest(IntakeTest):
    def test_shares_what_is_named(self):
        _, remote = self.start_remote("--share", self.folder / "plain")
        for arguments, cwd in (
            (["--share", "--", *ODD_NAMES], self.folder),
            (["--share", *(file.as_uri() for file in self.files)], None),
            (["--share", "./../sub/."], self.folder / "sub"),
            (["--share", "link", "./link", "sub/../link"], self.folder),
            (["--share-text", "häh\n"], None),
            (["--share-text", ""], None),
        ):
            self.assertEqual(self.share(*arguments, cwd=cwd).returncode, 0)
        self.assertEqual(remote.events(), [])

        remote.call("platformEventsReady")
        first, odd, uris, folder, links, text = remote.wait_for_events(6)
        self.assertEqual(first, ["sharedEntries", self.entries[:1]])
        self.assertEqual(odd, ["sharedEntries", self.entries])
        self.assertEqual(uris, odd)
        self.assertEqual([entry["relativePath"] for entry in folder[1]], ["sub", "sub/a"])
        self.assertEqual(links[1], [file_entry(self.folder / "link")] * 3)
        self.assertEqual(text, text_event("häh\n"))

    def test_refuses_what_it_cannot_share(self):
        _, remote = self.start_remote()
        bad = os.fsencode(self.folder) + b"/caf\xe9"
        pathlib.Path(os.fsdecode(bad)).touch()
        for arguments, complaint in (
            (["--share", self.folder / "gone"], b"gone"),
            (["--share", ""], b"an empty name"),
            (["--share", bad, "gone", self.files[0]], b"not UTF-8"),
            (["--share-text", b"\xff"], b"UTF-8"),
            (["--share-text", "x", "y"], b"given with --share"),
            (["--sharing"], b"--sharing"),
        ):
            result = self.share(*arguments)
            self.assertEqual((result.returncode, complaint in result.stderr), (1, True), arguments)
        remote.call("platformEventsReady")
        self.assertEqual(remote.wait_for_events(1), [["sharedEntries", self.entries[:1]]])


class ActionsTest(IntakeTest):
    """What the desktop's launcher offers, which the command line and the bus take as well."""

    def test_does_what_the_launcher_asks(self):
        host, remote = self.start_remote()
        remote.call("platformEventsReady")
        clipboard = ["xclip", "-selection", "clipboard"]
        subprocess.run(clipboard, input=b"copied", check=True, timeout=30)
        self.assertEqual(self.share("--share-clipboard").returncode, 0)
        self.assertEqual(remote.wait_for_events(1), [text_event("copied")])

        hide_window()
        self.assertEqual(self.share("--choose-files").returncode, 0)
        wait_until(visible_window, "the window")
        panel = wait_until(lambda: shown_windows("name", "Choose Files to Send"), "the panel")
        output_of("wmctrl", "-i", "-c", str(panel[0]))

        hide_window()
        self.assertEqual(self.share("--login-item").returncode, 0)
        remote.call("deviceName")  # by then what was sent before has come
        self.assertIsNone(visible_window())
        for arguments in (["--quit", "--choose-files"], ["--quit", "--share", "."]):
            result = self.share(*arguments)
            self.assertEqual((result.returncode, b"nothing else" in result.stderr), (1, True))
        self.assertEqual(self.share("--quit").returncode, 0)
        self.assertEqual(host.process.wait(30), 0)
        self.assertEqual(self.share("--quit").returncode, 0)

    def test_says_its_version(self):
        self.assertRegex(self.share("--version").stdout, rb"^brevanholt \d+\.\d+\.\d+\n$")


class InstalledTest(IntakeTest):
    """Share links and shares over the bus, by the installed files."""

    def install_page(self, remote):
        """Installs the program so that the desktop starts it with the remote's page."""
        install(HOME / ".local")
        output_of("update-desktop-database", HOME / ".local/share/applications")
        host = self.start(scenario="remote", arguments=remote.arguments)
        wait_until(visible_window, "the window")
        command = pathlib.Path(f"/proc/{host.process.pid}/cmdline").read_text().split("\0")[:-1]
        host.process.terminate()
        host.process.wait()
        program = HOME / ".local/bin/brevanholt"
        program.unlink()
        program.write_text(f'#!/bin/sh\nexec {shlex.join(command)} "$@"\n')
        program.chmod(0o755)

    def open_share(self, link, text=None):
        """Opens a link to a share; writes the share before if a text for it is given."""
        identifier = str(uuid.uuid4())
        if text:
            share = HOME / "Downloads/.NativeShareInbox" / identifier
            share.mkdir(parents=True)
            (share / "share.json").write_text('{"items": [{"text": "%s"}]}' % text)
        subprocess.run(["xdg-open", f"brevanholt://{link}{identifier}"], check=True, timeout=30)

    def end_service(self):
        if self.bus.name_has_owner(NAME):
            os.kill(self.daemon.GetConnectionUnixProcessID(NAME), signal.SIGTERM)
            wait_until(lambda: not self.bus.name_has_owner(NAME), "the service's end")

    def test_is_started_by_the_desktop_and_opens_links(self):
        remote = Remote()
        self.install_page(remote)
        self.bus = dbus.SessionBus()
        self.daemon = self.bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus")
        self.daemon.ReloadConfig()
        self.addCleanup(self.end_service)
        self.bus.start_service_by_name(NAME)
        self.assertIsNone(visible_window())
        wait_until(lambda: not self.bus.name_has_owner(NAME), "the end of an idle service")

        self.open_share("share?id=", "cold")
        wait_until(visible_window, "the window")
        remote.call("platformEventsReady")
        self.assertEqual(remote.wait_for_events(1), [text_event("cold")])
        hide_window()
        for bad in ("share", "Share?id=", "share?id=", "share?id=../"):
            self.open_share(bad)
        self.open_share("share/x?y=1&id=", "warm")
        wait_until(visible_window, "the window")
        uris = [self.files[0].as_uri(), "https://example.org", "file://elsewhere/a"]
        actions = self.bus.get_object(NAME, f"/{NAME.replace('.', '/')}")
        wrong = dbus.Struct([dbus.Array(uris, signature="s"), "not this"], variant_level=1)
        actions.ActivateAction("share", [wrong], {}, dbus_interface="org.freedesktop.Application")
        self.assertEqual(
            remote.wait_for_events(3)[1:], [text_event("warm"), ["sharedEntries", self.entries[:1]]]
        )


def selected(uri):
    """A file as Nautilus and Caja show it to their extensions."""
    return unittest.mock.Mock(get_uri=lambda: uri, get_uri_scheme=lambda: uri.partition(":")[0])


class FileManagerTest(IntakeTest):
    """The entries in the menus of file managers, used as each file manager uses them."""

    def installed(self, file):
        return str(BUILD / "share" / file)

    def value_in(self, entry, group, key):
        key_file = GLib.KeyFile()
        key_file.load_from_file(self.installed(entry), GLib.KeyFileFlags.NONE)
        return key_file.get_value(group, key)

    def extension(self, file_manager):
        """The menu provider of the extension for a file manager with such bindings."""
        bindings = unittest.mock.Mock(MenuProvider=type("MenuProvider", (), {}))
        setattr(sys.modules["gi.repository"], file_manager, bindings)
        name = file_manager.lower()
        spec = importlib.util.spec_from_file_location(
            name, self.installed(f"{name}-python/extensions/brevanholt-{name}.py")
        )
        module = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(module)
        return module.BrevanholtMenuProvider()

    def activate(self, items):
        (item,) = items
        _, function, *arguments = item.connect.call_args.args
        function(item, *arguments)

    def test_shares_from_each_menu(self):
        _, remote = self.start_remote()
        remote.call("platformEventsReady")
        paths = [*self.files, self.folder / "sub"]
        uris = [path.as_uri() for path in paths]
        selection = [selected(uri) for uri in uris]

        def thunar():
            entry = self.installed("Thunar/sendto/brevanholt.desktop")
            Gio.DesktopAppInfo.new_from_filename(entry).launch_uris(uris, None)

        def dolphin():
            entry = "kio/servicemenus/brevanholt.desktop"
            command = self.value_in(entry, "Desktop Action share", "Exec")
            output_of(*shlex.split(command.replace("%F", shlex.join(map(str, paths)))))

        def nemo():
            # As Nemo 5.6 does: the entry says how each URI is quoted, and it adds nothing else.
            entry = "nemo/actions/brevanholt.nemo_action"
            self.assertEqual(self.value_in(entry, "Nemo Action", "Quote"), "double")
            quoted = " ".join(f'"{uri}"' for uri in uris)
            command = self.value_in(entry, "Nemo Action", "Exec")
            output_of(*GLib.shell_parse_argv(command.replace("%U", quoted))[1])

        def caja():
            menu = self.extension("Caja").get_file_items
            self.assertEqual(menu(None, [*selection, selected("trash:///a")]), [])
            self.activate(menu(None, selection))

        def nautilus():
            self.activate(self.extension("Nautilus").get_file_items(selection))

        for number, use in enumerate((thunar, dolphin, nemo, caja, nautilus)):
            with self.subTest(use.__name__):
                use()

                def more():
                    GLib.MainContext.default().iteration(False)
                    return remote.events()[number:]

                ((method, entries),) = wait_until(more, "the share")
                shared, folder = entries[: len(self.files)], entries[len(self.files) :]
                self.assertEqual((method, shared), ("sharedEntries", self.entries))
                self.assertEqual([one["relativePath"] for one in folder], ["sub", "sub/a"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
