"""The entries in the menus of file managers, used as each file manager uses them."""

import importlib.util
import os
import pathlib
import re
import shlex
import subprocess
import sys
import types
import unittest

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib, GObject  # noqa: E402  (after the version)

from entries import file_entry, odd_files  # noqa: E402
from host import BINARY, wait_until  # noqa: E402
from remote import RemoteTest  # noqa: E402

HOME = pathlib.Path(os.environ["HOME"])
SHARE = pathlib.Path(BINARY).parents[1] / "share"


def command_in(entry, group):
    key_file = GLib.KeyFile()
    key_file.load_from_file(str(SHARE / entry), GLib.KeyFileFlags.NONE)
    return key_file.get_value(group, "Exec")


class FakeMenuItem:

    def __init__(self, label, **_how):
        self.label = label

    def connect(self, signal, function, *arguments):
        assert signal == "activate"
        self.activate = lambda: function(self, *arguments)


def extension(file_manager):
    """The menu provider of the extension for a file manager with such bindings."""
    bindings = types.SimpleNamespace(MenuProvider=type("MenuProvider", (), {}), MenuItem=FakeMenuItem)
    setattr(sys.modules["gi.repository"], file_manager, bindings)
    name = f"brevanholt-{file_manager.lower()}.py"
    path = SHARE / f"{file_manager.lower()}-python/extensions" / name
    spec = importlib.util.spec_from_file_location(f"extension_{file_manager}", path)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module.BrevanholtMenuProvider()


class SelectedFile(GObject.GObject):

    def __init__(self, uri):
        super().__init__()
        self.get_uri = lambda: uri
        self.get_uri_scheme = lambda: uri.partition(":")[0]


class FileManagerTest(RemoteTest):

    def setUp(self):
        self.folder = HOME / self.id().split(".")[-1]
        self.folder.mkdir()
        self.files = odd_files(self.folder)
        self.inner = self.folder / "a folder"
        self.inner.mkdir()
        _, self.remote = self.start_remote()
        self.remote.call("platformEventsReady")

    def assert_shared(self, what):
        context = GLib.MainContext.default()
        wait_until(lambda: (context.iteration(False), self.remote.events())[1], what)
        (method, entries), = self.remote.events()
        self.assertEqual(method, "sharedEntries", what)
        self.assertEqual(entries[:-1], [file_entry(path) for path in self.files], what)
        self.assertEqual(entries[-1]["relativePath"], "a folder", what)

    def test_is_in_the_send_to_menu_of_thunar(self):
        entry = Gio.DesktopAppInfo.new_from_filename(str(SHARE / "Thunar/sendto/brevanholt.desktop"))
        files = [Gio.File.new_for_path(str(path)) for path in [*self.files, self.inner]]
        self.assertTrue(entry.launch(files, None))
        self.assert_shared("Thunar")

    def test_is_an_action_of_dolphin(self):
        command = command_in("kio/servicemenus/brevanholt.desktop", "Desktop Action share")
        paths = " ".join(shlex.quote(str(path)) for path in [*self.files, self.inner])
        subprocess.run(shlex.split(command.replace("%F", paths)), check=True, timeout=30)
        self.assert_shared("Dolphin")

    def test_is_an_action_of_nemo(self):
        # Nemo puts a backslash before what means something to a shell.
        command = command_in("nemo/actions/brevanholt.nemo_action", "Nemo Action")
        uris = " ".join(re.sub(r"([^\w%/:.-])", r"\\\1", path.as_uri())
                        for path in [*self.files, self.inner])
        _, arguments = GLib.shell_parse_argv(command.replace("%U", uris))
        subprocess.run(arguments, check=True, timeout=30)
        self.assert_shared("Nemo")

    def test_is_in_the_menu_of_nautilus_and_caja(self):
        uris = [path.as_uri() for path in [*self.files, self.inner]]
        selection = [SelectedFile(uri) for uri in uris]
        caja = extension("Caja")
        item, = caja.get_file_items(None, selection)
        self.assertEqual(item.label, "Send with Brevanholt")
        self.assertEqual(caja.get_file_items(None, []), [])
        self.assertEqual(caja.get_file_items(None, [*selection, SelectedFile("trash:///a")]), [])
        item, = extension("Nautilus").get_file_items(selection)
        item.activate()
        self.assertEqual(self.remote.events(), [], "the file manager does not wait")
        self.assert_shared("Nautilus")


if __name__ == "__main__":
    unittest.main(verbosity=2)
