"""Bundles that are missing or incomplete, and engine libraries that do not work."""

import os
import pathlib
import shutil
import subprocess
import unittest

from stage.host import BINARY, output_of, wait_until
from cases import BUILD, HostTest
from tray import picture

ENGINE = pathlib.Path("lib/libflutter_linux_gtk.so")
CODE = "lib/libapp.so"
CHARACTERS = "data/icudtl.dat"
LOGO = "data/flutter_assets/assets/images/brevanholt_logo.png"
STAND_INS = BUILD / "stand-in"


class BundlesTest(HostTest):
    def folder(self, *files, engine=None):
        """A folder with these files, all empty, and one of the engines that were written for tests."""
        folder = self.new_folder()
        for file in files:
            (folder / file).parent.mkdir(parents=True, exist_ok=True)
            (folder / file).touch()
        if engine:
            (folder / "lib").mkdir(exist_ok=True)
            (folder / ENGINE).symlink_to(STAND_INS / engine / ENGINE.name)
        return folder

    def whole(self, engine="whole"):
        return self.folder(CODE, CHARACTERS, "data/flutter_assets/version.json", engine=engine)

    def test_says_what_is_wrong_with_a_bundle(self):
        assets = "data/flutter_assets/version.json"
        for bundle, behaviour, words in (
            (self.folder("main.js"), "", "holds no user interface: it has neither index.html nor"),
            (self.folder(CODE, engine="whole"), "", "holds no user interface"),
            (self.folder(CODE, assets, engine="whole"), "", f"{CHARACTERS}”"),
            (self.folder(CHARACTERS, assets, engine="whole"), "", f"{CODE}” (release) nor"),
            (self.folder(CODE, CHARACTERS, assets, ENGINE), "", "cannot be loaded"),
            (self.whole("lacking"), "", "function fl_binary_messenger_send_on_channel_finish"),
            (self.whole(), "fail", "Flutter's engine could not be created"),
        ):
            with self.subTest(words=words):
                ended = subprocess.run(
                    [BINARY, "--ui-bundle", bundle],
                    env={**os.environ, "STAND_IN_ENGINE": behaviour},
                    check=False,
                    capture_output=True,
                    text=True,
                    timeout=30,
                )
                self.assertEqual(ended.returncode, 1)
                last = ended.stderr.splitlines()[-1]
                self.assertIn(words, last)
                if not behaviour:
                    self.assertIn("brevanholt: ", last)
                    self.assertIn(str(bundle), last)

    def test_ends_with_the_status_that_the_user_interface_gives(self):
        host = self.start("--ui-bundle", str(self.whole()), environment={"STAND_IN_ENGINE": "exit"})
        self.assertEqual(host.process.wait(30), 3)
        self.assertIn("the user interface ended the program with status 3", host.log)

    def test_runs_the_installed_bundle_and_shows_its_logo(self):
        prefix = self.folder()
        program = prefix / "bin/brevanholt"
        link = prefix / "lib/brevanholt/ui-bundle"
        program.parent.mkdir()
        link.parent.mkdir(parents=True)
        shutil.copy(BINARY, program)
        link.symlink_to("nowhere")
        ended = subprocess.run([program], check=False, capture_output=True, text=True, timeout=30)
        self.assertEqual(ended.returncode, 1)
        self.assertIn(f"“{link}” holds no user interface", ended.stderr)

        bundle = self.whole()
        (bundle / LOGO).parent.mkdir(parents=True)
        output_of("convert", "-size", "512x512", "xc:black", bundle / LOGO)
        link.unlink()
        link.symlink_to(bundle)
        self.run_beside(program)
        wait_until(lambda: self.lightness_of_icon() < 0.5, "the logo, which is all black")

    def lightness_of_icon(self):
        icon = picture("bundle-logo", "20x14+1185+9")
        return float(
            output_of("convert", icon, "-colorspace", "Gray", "-format", "%[fx:mean]", "info:")
        )


if __name__ == "__main__":
    unittest.main(verbosity=2)
