"""A real Flutter application, as its authors built it, in the window and in the channels."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from stage.dart_side import DartSide
from stage.host import (
    BINARY,
    SOURCE,
    hide_window,
    output_of,
    visible_window,
    visible_windows,
    wait_until,
)
from cases import HostTest
from test_pickers import bookmarks
from tray import glide, mouse, picture, window_titled

EXCHANGE = pathlib.Path(BINARY).with_name("flutter_exchange")
STOOD_IN_FOR = ("libwindow_manager_plugin.so", "libscreen_retriever_linux_plugin.so")
# The engine itself asks ATK for what is not there without an accessibility bus.
ENVIRONMENT = {"G_DEBUG": ""}


def bundle():
    found = subprocess.run(
        [SOURCE / "scripts/flutter-bundle"], check=False, stdout=subprocess.PIPE, text=True
    )
    if found.returncode == 77:
        raise unittest.SkipTest(found.stdout.strip().removeprefix("skipped: "))
    found.check_returncode()
    return found.stdout.strip()


class FlutterTest(HostTest):
    @classmethod
    def setUpClass(cls):
        cls.bundle = bundle()

    def setUp(self):
        self.dart = DartSide()
        self.addCleanup(self.dart.close)

    def start_bundle(self, *options, environment=None):
        arguments = ["--ui-argument", self.dart.address, "--ui-argument", os.devnull]
        environment = {**ENVIRONMENT, **(environment or {})}
        bundle = ("--ui-bundle", self.bundle)
        host = self.start(*bundle, *arguments, *options, environment=environment)
        self.dart.wait()
        self.show_page()
        return host

    def show_page(self):
        view = {"t": "view", "i": "view", "p": "page", "c": ["text", "field"]}
        text = {"t": "text", "i": "text", "p": "view", "c": [], "value": "From Dart", "size": "40"}
        field = {"t": "textfield", "i": "field", "p": "view", "c": []}
        self.dart.add(view, text, {**field, "autofocus": "true", "onchange": "true"})

    def wait_for_event(self, *event):
        wait_until(lambda: event in self.dart.events, f"{event}")

    def test_lives_in_the_window_through_closing_reopening_and_quitting(self):
        host = self.start_bundle()
        self.dart.set(title="Named by Dart")
        window = wait_until(lambda: window_titled("Named by Dart"), "the plugin's title")
        picture("flutter")
        mouse("windowactivate", "--sync", window, "mousemove", "300", "140", "click", "1")
        mouse("type", "naive")
        self.wait_for_event("field", "change", "naive")
        mouse("key", "ctrl+a", "key", "ctrl+c", "key", "Right", "key", "ctrl+v")
        self.wait_for_event("field", "change", "naivenaive")
        self.assertEqual(output_of("xclip", "-selection", "clipboard", "-o"), "naive")

        hide_window()
        self.wait_for_event("page", "app_lifecycle_state_change", "hide")
        subprocess.run([BINARY], timeout=30, check=True)
        wait_until(visible_window, "the window")
        self.wait_for_event("page", "app_lifecycle_state_change", "show")
        output_of("wmctrl", "-i", "-r", visible_window(), "-e", "0,20,60,700,500")
        wait_until(lambda: self.dart.properties.get("width") == "700.0", "the new width in Dart")
        picture("flutter-resized")
        output_of(BINARY, "--quit")
        self.assertEqual(host.process.wait(30), 0)

    def test_runs_hidden_from_login_on(self):
        host = self.start_bundle("--login-item", environment={"FLET_HIDE_WINDOW_ON_START": "true"})
        self.assertEqual(visible_windows(), [])
        subprocess.run([BINARY], timeout=30, check=True)
        wait_until(visible_window, "the window")
        picture("flutter-after-login")
        self.assertEqual(host.stop(), 0)

    def test_logs_what_nobody_catches_and_stays(self):
        host = self.start("--ui-bundle", self.bundle, environment=ENVIRONMENT)
        wait_until(lambda: "Unhandled Exception: " in host.log, "the error")
        self.assertEqual(host.stop(), 0)

    def test_leaves_drops_to_the_host(self):
        self.start_bundle()
        output_of("wmctrl", "-i", "-r", visible_window(), "-e", "0,20,60,700,500")
        file = pathlib.Path(tempfile.mkdtemp()) / "dropped"
        file.touch()
        source = SOURCE / "tests/endtoend/drag_source.py"
        self.run_beside(sys.executable, source, "text/uri-list", file.as_uri())
        window = wait_until(lambda: window_titled("Drag source"), "the source")
        output_of("wmctrl", "-i", "-r", window, "-e", "0,740,60,200,200")
        start, target = (800, 160), (370, 310)
        mouse("windowactivate", "--sync", window, "mousemove", *start, "mousedown", "1")
        glide(start, target)
        mouse("mouseup", "1")
        wait_until(lambda: len(bookmarks()) == 1, "the bookmark")

    def test_exchanges_calls_with_dart_code(self):
        own = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, own)
        shutil.copytree(self.bundle, own, dirs_exist_ok=True)
        for plugin in STOOD_IN_FOR:
            (own / "lib" / plugin).unlink()
        with open(own / "log", "wb") as log:
            exchange = subprocess.Popen(
                [EXCHANGE, own, self.dart.address, os.devnull],
                stdin=subprocess.PIPE,
                stderr=log,
                text=True,
                env={**os.environ, **ENVIRONMENT},
            )
        self.addCleanup(exchange.communicate)
        self.addCleanup(exchange.kill)

        def order(*words):
            print(*words, file=exchange.stdin, flush=True)

        def calls(pattern):
            return re.findall(f"^{pattern}$", (own / "log").read_text(errors="replace"), re.M)

        def wait_for(pattern):
            wait_until(lambda: calls(pattern), pattern)

        # A reply that is a map of doubles.
        self.assertEqual(self.dart.wait()["windowWidth"], "640.0")
        self.assertEqual(self.dart.details["windowTop"], "60.0")
        self.show_page()
        self.dart.set(title="naïve 🎈")
        wait_for('call setTitle { "title": "naïve 🎈" }')
        self.dart.set(windowwidth="700.5")
        wait_for('call setBounds { .*"width": 700.5 "height": 480 "animate": true }')

        # Centring reads the displays, a list of maps in a map.
        self.dart.set(windowalignment='{"x":0,"y":0}')
        wait_for('call setBounds { .*"x": 480 "y": 360 .*}')

        # After an error or "not implemented" the application can make the same call again.
        for manner, method, name, value in (
            ("error", "setOpacity", "windowopacity", "0.5"),
            ("nothing", "setAlwaysOnTop", "windowalwaysontop", "true"),
        ):
            order(manner, method)
            wait_for(f"{manner} {method}")
            self.dart.set(**{name: value})
            wait_for(f"call {method} .*")
            self.dart.set(title=manner)
            wait_until(lambda: len(calls(f"call {method} .*")) > 1, f"a second {method}")
            order("success", method)
            wait_for(f"success {method}")
            self.dart.set(title=f"{manner} no more")

        order("event", "moved")
        wait_for("handled moved")
        self.wait_for_event("page", "window_event", "moved")
        order("echoes", 200)
        wait_for("echoed 200 .*")
        order("payload", 64 << 20)
        wait_for(f"carried {64 << 20} .*")

        order("hold", "setTitle")
        wait_for("hold setTitle")
        self.dart.set(title="never answered")
        wait_for('call setTitle { "title": "never answered" }')
        order("end")
        self.assertEqual(exchange.wait(30), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
