"""Previews of images and documents over the channel, with the real child and the real Tumbler."""

import json
import os
import pathlib
import shutil
import subprocess
import unittest

from host import HostTest, output_of, wait_until

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
NONE = {"value": None}


def picture(name, width, height):
    file = DOWNLOADS / name
    output_of("convert", "-size", f"{width // 2}x{height}", "xc:red", "xc:blue", "+append", str(file))
    return file


def look_of(file):
    """Format, size, and the colours of the left and the right half: "PNG 80x60 red blue"."""
    size = output_of("identify", "-format", "%m %wx%h", str(file))
    halves = output_of("convert", str(file), "-scale", "2x1!", "-depth", "8", "-format",
                       "%[fx:round(u.p{0,0}.r)]%[fx:round(u.p{0,0}.b)] "
                       "%[fx:round(u.p{1,0}.r)]%[fx:round(u.p{1,0}.b)]", "info:").split()
    return " ".join([size, *({"10": "red", "01": "blue"}.get(half, half) for half in halves)])


class PreviewsTest(HostTest):

    def setUp(self):
        self.kept = pathlib.Path(os.environ["XDG_RUNTIME_DIR"]) / self.id()
        self.kept.mkdir()

    def previews(self, asked, **how):
        """Asks for (file, maximum dimension or None) each; a look where a preview came."""
        given = []
        for number, (file, dimension) in enumerate(asked):
            call = {"location": str(file), "keep": str(self.kept / f"{number}.png")}
            given.append(call if dimension is None else {**call, "maximumDimension": dimension})
        host = self.start(scenario="previews", arguments=[f"asked={json.dumps(given)}"], **how)
        answers = host.report()
        looks = []
        for call, answer in zip(given, answers):
            kept = pathlib.Path(call["keep"])
            looks.append(look_of(kept) if kept.exists() else answer)
            kept.unlink(missing_ok=True)
        wait_until(lambda: not self.decoders(host), "the end of the last child")
        self.assertNotIn("bubblewrap", host.log)
        self.assertEqual(host.stop(), 0)
        return looks

    @staticmethod
    def decoders(host):
        return subprocess.run(["pgrep", "-P", str(host.process.pid), "bwrap|brevanholt-prev"],
                              capture_output=True, text=True, check=False).stdout.split()

    def test_shows_images(self):
        photo = picture("photo.jpg", 4000, 3000)
        asked = {
            (photo, 300): "PNG 300x225 red blue",
            (photo, 10): "PNG 48x36 red blue",
            (photo, 5000): "PNG 1200x900 red blue",
            (photo, None): "PNG 1200x900 red blue",
            (picture("small.png", 100, 50), 1200): "PNG 100x50 red blue",
            (picture("drawing.webp", 800, 600), 300): "PNG 300x225 red blue",
            (shutil.copy(photo, DOWNLOADS / "photo.txt"), 60): "PNG 60x45 red blue",
        }
        self.assertEqual(dict(zip(asked, self.previews(asked))), asked)

    def test_shows_many(self):
        photo = picture("many.jpg", 1600, 1200)
        self.assertEqual(set(self.previews([(photo, 300)] * 60)), {"PNG 300x225 red blue"})

    def test_shows_documents_in_the_pixels_of_the_screen(self):
        document = DOWNLOADS / "report.pdf"
        document.write_bytes(PDF)
        photo = picture("beside.jpg", 4000, 3000)
        for scale, look in (("1", "PNG 200x150 red blue"), ("2", "PNG 400x300 red blue")):
            self.assertEqual(
                self.previews([(document, 200), (photo, 200)], environment={"GDK_SCALE": scale}),
                [look, "PNG 200x150 red blue"])

    def test_answers_null_for_what_has_none(self):
        cut = DOWNLOADS / "cut.jpg"
        cut.write_bytes(picture("whole.jpg", 400, 300).read_bytes()[:1500])
        (DOWNLOADS / "empty.png").touch()
        (DOWNLOADS / "random.bin").write_bytes(bytes(range(256)))
        (DOWNLOADS / "false.pdf").write_bytes(b"%PDF-1.4\nnothing follows\n")
        os.mkfifo(DOWNLOADS / "fifo.png")
        none = [DOWNLOADS, DOWNLOADS / "gone", cut, "/dev/zero", "relative.png",
                *(DOWNLOADS / name for name in ("empty.png", "random.bin", "false.pdf", "fifo.png"))]
        answers = self.previews([(file, 200) for file in none])
        self.assertEqual(dict(zip(none, answers)), dict.fromkeys(none, NONE))


if __name__ == "__main__":
    unittest.main(verbosity=2)
