"""Previews of images and documents over the channel, with the real child and the real Tumbler."""

import os
import pathlib
import shutil
import subprocess
import unittest

from stage.host import output_of, wait_until
from cases import RemoteTest

DOWNLOADS = pathlib.Path.home() / "Downloads"
PDF = b"""%PDF-1.4
1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj
2 0 obj <</Type/Pages/Kids[3 0 R]/Count 1>> endobj
3 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 800 600]/Contents 4 0 R>> endobj
4 0 obj <</Length 54>> stream
1 0 0 rg 0 0 400 600 re f 0 0 1 rg 400 0 400 600 re f
endstream endobj
trailer <</Root 1 0 R>>
"""


def look_of(preview):
    """Its size, and whether its left is red and its right blue."""
    kept = DOWNLOADS / "preview.png"
    kept.write_bytes(bytes(preview.values()))
    look = "%wx%h %[fx:u.p{0,0}.r-u.p{0,0}.b>.9] %[fx:u.p{w-1,0}.b-u.p{w-1,0}.r>.9]"
    return output_of("convert", kept, "-format", look, "info:")


def may_make_sandboxes():
    """Whether bubblewrap works here, or is missing, which is a fault of the machine."""
    sandbox = ["bwrap", "--unshare-all", "--ro-bind", "/", "/", "true"]
    return (
        not shutil.which("bwrap")
        or subprocess.run(sandbox, check=False, stderr=subprocess.DEVNULL).returncode == 0
    )


class PreviewsTest(RemoteTest):
    def test_shows_images_and_documents_in_the_pixels_of_the_screen(self):
        photo, document, cut, fifo = (
            DOWNLOADS / name for name in ("photo.jpg", "report.pdf", "cut.jpg", "fifo.png")
        )
        output_of("convert", "-size", "2000x3000", "xc:red", "xc:blue", "+append", photo)
        document.write_bytes(PDF)
        cut.write_bytes(photo.read_bytes()[:1500])
        os.mkfifo(fifo)
        for scale, page in (("1", "200x150 1 1"), ("2", "400x300 1 1")):
            host, remote = self.start_remote(environment={"GDK_SCALE": scale})
            asked = [
                remote.begin("receivedFilePreview", location=str(file), maximumDimension=200)
                for file in (document, cut, fifo, DOWNLOADS, *[photo] * 40)
            ]
            previews = [remote.finish(number)["value"] for number in asked]
            self.assertEqual(look_of(previews[0]), page)
            self.assertIsNotNone(previews[1])  # what could be decoded of it
            self.assertEqual(previews[2:4], [None] * 2)
            self.assertEqual(look_of(previews[4]), "200x150 1 1")
            self.assertEqual(previews[5:], [previews[4]] * 39)
            wait_until(
                lambda: subprocess.run(
                    ["pgrep", "-P", str(host.process.pid), "-f", "brevanholt-preview"],
                    check=False,
                    stdout=subprocess.DEVNULL,
                ).returncode
                != 0,
                "the end of the last child",
            )
            self.assertEqual("without a sandbox" in host.log, not may_make_sandboxes())
            self.assertEqual(host.stop(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
