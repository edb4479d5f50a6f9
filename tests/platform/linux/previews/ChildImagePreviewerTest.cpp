#include "platform/linux/previews/ChildImagePreviewer.h"
#include "platform/linux/storage/InstallLayout.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/MainLoop.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace std::string_literals;

using Picture = Result<std::optional<Bytes>>;

std::string described(const Picture& picture) {
  if (!picture.ok()) return "error: " + picture.error().message();
  return picture.value() ? lookOf(*picture.value()) : "not an image";
}

class ChildImagePreviewerTest : public testing::Test {
 protected:
  // Asks, and waits for the answer.
  std::string preview(const fs::path& file, int maximumDimension = 80) {
    std::string answer;
    previewer_->preview(file, maximumDimension, [&answer](const Picture& picture) {
      EXPECT_EQ(answer, "") << "a second answer";
      answer = described(picture);
    });
    EXPECT_TRUE(spinUntil([&answer] { return !answer.empty(); }, 30s));
    return answer;
  }
  fs::path file(const std::string& name, std::string_view content) {
    writeFile(folder_ / name, content);
    return folder_ / name;
  }
  void useUnsandboxed() {
    options_.bubblewrap = folder_ / "none";
    previewer_ = std::make_unique<ChildImagePreviewer>(options_);
  }
  // A child that runs these shell commands.
  void useChild(const std::string& commands) {
    options_.child = file("child", "#!/usr/bin/sh\n[ \"$1\" = --check ] && exit 0\n" + commands);
    fs::permissions(options_.child, fs::perms::owner_all);
    useUnsandboxed();
  }

  CapturedLog log_;
  TemporaryFolder folder_;
  ChildImagePreviewer::Options options_{.child = InstallLayout::ofThisProcess().previewChild};
  std::unique_ptr<ChildImagePreviewer> previewer_ = std::make_unique<ChildImagePreviewer>(options_);
};

TEST_F(ChildImagePreviewerTest, DecodesEachFormat) {
  redAndBlue(folder_ / "a.png", 160, 120);
  runIn(folder_.path(),
        "convert a.png PNG24:b.png && heif-enc b.png -o a.heic && avifenc b.png a.avif");
  for (const char* name : {"a.jpg", "a.gif", "a.bmp", "a.tiff", "a.webp"}) {
    redAndBlue(folder_ / name, 160, 120);
  }
  file("a.svg",
       "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 160 120'>"
       "<rect width='80' height='120' fill='red'/>"
       "<rect x='80' width='80' height='120' fill='blue'/></svg>");
  for (const char* name :
       {"a.png", "a.jpg", "a.gif", "a.bmp", "a.tiff", "a.webp", "a.heic", "a.avif", "a.svg"}) {
    EXPECT_EQ(preview(folder_ / name), "80x60 red blue / red blue") << name;
  }
}

TEST_F(ChildImagePreviewerTest, ScalesDownAndNeverUp) {
  EXPECT_EQ(preview(redAndBlue(folder_ / "photo.jpg", 4000, 3000), 300),
            "300x225 red blue / red blue");
  EXPECT_EQ(preview(redAndBlue(folder_ / "small.png", 100, 50), 1200),
            "100x50 red blue / red blue");
  EXPECT_EQ(preview(redAndBlue(folder_ / "flat.png", 3000, 2), 300), "300x1 red blue / red blue");
}

std::string bigEndian(unsigned value, int size) {
  std::string text;
  while (size-- > 0) text += static_cast<char>(value >> (8 * size));
  return text;
}

// The JPEG file with an Exif block: an orientation, and a thumbnail.
std::string withExif(const std::string& jpeg, unsigned orientation, const std::string& thumbnail) {
  const auto entry = [](unsigned tag, unsigned type, const std::string& value) {
    return bigEndian(tag, 2) + bigEndian(type, 2) + bigEndian(1, 4) + value;
  };
  constexpr unsigned kThumbnailAt = 56;
  const std::string exif = "Exif\0\0MM\0*\0\0\0\x08\0\1"s +
                           entry(0x112, 3, bigEndian(orientation, 2) + "\0\0"s) + bigEndian(26, 4) +
                           "\0\2"s + entry(0x201, 4, bigEndian(kThumbnailAt, 4)) +
                           entry(0x202, 4, bigEndian(static_cast<unsigned>(thumbnail.size()), 4)) +
                           "\0\0\0\0"s + thumbnail;
  return jpeg.substr(0, 2) + "\xFF\xE1" + bigEndian(static_cast<unsigned>(exif.size() + 2), 2) +
         exif + jpeg.substr(2);
}

TEST_F(ChildImagePreviewerTest, TurnsPhotosUprightAndPassesTheirThumbnailsOver) {
  const std::string photo = readFile(redAndBlue(folder_ / "photo.jpg", 160, 120, "-strip"));
  runIn(folder_.path(), "convert -size 80x60 xc:lime -strip thumbnail.jpg");
  const std::string thumbnail = readFile(folder_ / "thumbnail.jpg");
  const std::pair<unsigned, const char*> cases[] = {{1, "80x60 red blue / red blue"},
                                                    {3, "80x60 blue red / blue red"},
                                                    {6, "60x80 red red / blue blue"},
                                                    {8, "60x80 blue blue / red red"}};
  for (const auto& [orientation, look] : cases) {
    EXPECT_EQ(preview(file("turned.jpg", withExif(photo, orientation, thumbnail))), look);
  }
  const std::string png = readFile(redAndBlue(folder_ / "photo.png", 160, 120, "-strip"));
  const std::string exif = "MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0"s;
  const std::string chunk = bigEndian(static_cast<unsigned>(exif.size()), 4) + "eXIf" + exif;
  EXPECT_EQ(preview(file("turned.png", png.substr(0, png.size() - 12) + chunk +
                                           bigEndian(0xE6AF5206, 4) + png.substr(png.size() - 12))),
            "60x80 red red / blue blue");
}

TEST_F(ChildImagePreviewerTest, KeepsTransparencyAndShowsTheFirstFrame) {
  runIn(folder_.path(), "convert -size 80x60 xc:none xc:blue +append alpha.png");
  EXPECT_EQ(preview(folder_ / "alpha.png"), "80x30 clear blue / clear blue");
  for (const char* name : {"frames.gif", "frames.webp"}) {
    runIn(folder_.path(), "convert -delay 10 -size 40x40 xc:red xc:blue "s + name);
    EXPECT_EQ(preview(folder_ / name), "40x40 red red / red red") << name;
  }
}

TEST_F(ChildImagePreviewerTest, TellsImagesByTheirContent) {
  const std::string png = readFile(redAndBlue(folder_ / "a.png", 20, 20));
  EXPECT_EQ(preview(file("picture.txt", png)), "20x20 red blue / red blue");
  EXPECT_EQ(preview(file("empty.png", "")), "not an image");
  EXPECT_EQ(preview(file("text.jpg", "no picture")), "not an image");
  EXPECT_EQ(preview(file("header.png", png.substr(0, 40))), "error: the image is damaged");
}

TEST_F(ChildImagePreviewerTest, ShowsWhatCanBeDecodedOfADamagedImage) {
  for (const char* name : {"a.png", "a.jpg", "a.bmp", "a.gif"}) {
    const std::string whole =
        readFile(redAndBlue(folder_ / name, 80, 60, "-attenuate 0.1 +noise Gaussian"));
    EXPECT_EQ(preview(file("end-"s + name, whole.substr(0, whole.size() - 2))),
              preview(folder_ / name))
        << name;
    // A BMP begins with the last row, and the loader of GIF hands out whole frames.
    if (name == "a.bmp"s || name == "a.gif"s) continue;
    const std::string half = preview(file("half-"s + name, whole.substr(0, whole.size() * 3 / 4)));
    EXPECT_EQ(half.substr(0, half.find('/')), "80x60 red blue ") << name;
  }
}

TEST_F(ChildImagePreviewerTest, ReadsWhatOneLoaderGetsWrong) {
  // Written by hand: the tools here write neither.
  runIn(folder_.path(), R"(python3 - <<'EOT'
import struct
half = bytes([0] * 40 + [1] * 40)
palette = bytes([0, 0, 255, 255, 0, 0])
core = struct.pack("<IHHHH", 12, 80, 60, 1, 8) + palette
open("os2.bmp", "wb").write(struct.pack("<2sIHHI", b"BM", 14 + len(core) + 4800, 0, 0, 14 + len(core))
                            + core + half * 60)
entries = [(256, 3, 80), (257, 3, 60), (258, 3, 8), (259, 3, 1), (262, 3, 2), (273, 4, 8), (277, 3, 4),
           (278, 3, 60), (279, 4, 80 * 60 * 4), (284, 3, 1), (338, 3, 2)]
pixels = (bytes([200, 0, 0, 160]) * 40 + bytes([0, 0, 200, 160]) * 40) * 60
directory = struct.pack("<H", len(entries)) + b"".join(
    struct.pack("<HHII", tag, kind, 1, value) for tag, kind, value in entries) + bytes(4)
open("alpha.tiff", "wb").write(struct.pack("<2sHI", b"II", 42, 8 + len(pixels)) + pixels + directory)
EOT)");
  EXPECT_EQ(preview(folder_ / "os2.bmp"), "80x60 red blue / red blue");
  EXPECT_EQ(preview(folder_ / "alpha.tiff"), "80x60 red blue / red blue");
}

TEST_F(ChildImagePreviewerTest, OpensOnlyFiles) {
  ASSERT_EQ(::mkfifo((folder_ / "fifo").c_str(), 0600), 0);
  const fs::path secret = file("secret", "x");
  fs::permissions(secret, fs::perms::none);
  for (const fs::path& path : {folder_ / "fifo", folder_.path(), folder_ / "none",
                               fs::path("/dev/zero"), fs::path("/dev/random")}) {
    EXPECT_EQ(preview(path).substr(0, 6), "error:") << path;
  }
  const int self = ::setfsuid(65534);  // root could read it all the same
  EXPECT_EQ(preview(secret).substr(0, 6), "error:");
  ::setfsuid(static_cast<unsigned>(self));
}

TEST_F(ChildImagePreviewerTest, RefusesABombWithoutUnpackingIt) {
  // 60,000 by 60,000 pixels, 450 MB once it is unpacked, in 2 MB.
  runIn(folder_.path(), R"(python3 - <<'EOT'
import struct, zlib
def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
packer = zlib.compressobj(1)
rows = b"".join(packer.compress(bytes(7501 * 100)) for _ in range(600)) + packer.flush()
header = struct.pack(">IIBBBBB", 60000, 60000, 1, 0, 0, 0, 0)
open("bomb.png", "wb").write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", rows)
                             + chunk(b"IEND", b""))
EOT)");
  const std::string png = readFile(folder_ / "bomb.png");
  ASSERT_GT(png.size(), 400'000U);
  const auto memory = [] {
    rusage children{};
    ::getrusage(RUSAGE_CHILDREN, &children);
    return children.ru_maxrss;
  };
  useUnsandboxed();  // so that the child that decodes is one of this process
  const long before = memory();
  EXPECT_EQ(preview(folder_ / "bomb.png"), "error: the image is larger than any has reason to be");
  EXPECT_LT(memory(), before + (32 << 10)) << "KiB";

  file("bomb.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='60000' height='60000'/>");
  EXPECT_EQ(preview(folder_ / "bomb.svg"), "error: the image is larger than any has reason to be");
  fs::resize_file(redAndBlue(folder_ / "long.png", 20, 20), 300U << 20);
  EXPECT_EQ(preview(folder_ / "long.png"), "error: the image is larger than any has reason to be");
}

TEST_F(ChildImagePreviewerTest, NeverReadsWhatADrawingPointsTo) {
  const std::string other = redAndBlue(folder_ / "other.png", 80, 60);
  const auto drawing = [](const std::string& content) {
    return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' "
           "xmlns:xi='http://www.w3.org/2001/XInclude' width='80' height='60'>"
           "<rect width='80' height='60' fill='lime'/>" +
           content + "</svg>";
  };
  const auto linkTo = [](const std::string& target, const char* element = "image") {
    return "<"s + element + " width='80' height='60' xlink:href='" + target + "'/>";
  };
  const std::string contents[] = {
      linkTo("file://" + other), linkTo("other.png"), linkTo("http://127.0.0.1/other.png"),
      linkTo("file://" + other, "use"),
      "<text y='50' font-size='99'><xi:include parse='text' href='file:///etc/passwd'/></text>"};
  for (const bool isSandboxed : {true, false}) {
    if (!isSandboxed) useUnsandboxed();
    for (const std::string& content : contents) {
      EXPECT_EQ(preview(file("drawing.svg", drawing(content))), "80x60 green green / green green")
          << content;
    }
    const std::string entity = "<!DOCTYPE svg [<!ENTITY e SYSTEM 'file:///etc/passwd'>]>";
    const std::string seen =
        preview(file("entity.svg", entity + drawing("<text y='50' font-size='99'>&e;</text>")));
    EXPECT_TRUE(seen == "error: the image is damaged" || seen == "80x60 green green / green green");
  }
}

TEST_F(ChildImagePreviewerTest, AnswersHoweverTheChildEnds) {
  const fs::path png = redAndBlue(folder_ / "a.png", 20, 20);
  const std::string show = "cat '" + png.string() + "'";
  options_.timeLimit = 500ms;
  const std::pair<std::string, std::string> cases[] = {
      {show, "20x20 red blue / red blue"},
      {show + "; exit 42", "error: the image is damaged"},
      {"kill -9 $$", "error: signal 9 ended it"},
      {"exec sleep 60", "error: it took too long"},
      {"exec sleep 60 & exit 0", "error: it took too long"},
      {"exec cat /dev/zero", "error: it answered too much"},
      {"echo garbage", "error: what was decoded is no picture"},
      {"exit 0", "error: what was decoded is no picture"},
      {show + "; echo more", "error: what was decoded is no picture"},
      {"exit 1", "error: decoding ended with status 1"},
  };
  for (const auto& [commands, answer] : cases) {
    useChild(commands);
    EXPECT_EQ(preview(png), answer) << commands;
  }
  useChild(show);
  EXPECT_EQ(preview(png, 19), "error: what was decoded is no picture") << "too large";
  options_.child = folder_ / "gone";
  useUnsandboxed();
  EXPECT_NE(preview(png).find("gone: No such file"), std::string::npos);
}

TEST_F(ChildImagePreviewerTest, LetsOthersPassHoweverManyChildrenAreSlow) {
  useChild("[ \"$1\" = 81 ] && exec sleep 60\nexit 40");
  std::vector<std::string> answers;
  for (const int maximum : {81, 81, 81, 81, 81, 81, 80}) {
    previewer_->preview(file("a", "a"), maximum,
                        [&](const Picture& picture) { answers.push_back(described(picture)); });
  }
  EXPECT_TRUE(spinUntil([&] { return !answers.empty(); }, 5s));
  EXPECT_EQ(answers, std::vector<std::string>{"not an image"});
  previewer_.reset();  // answers the slow ones
}

TEST_F(ChildImagePreviewerTest, EndsTheChildWhenItGoesAndAnswers) {
  useChild("echo $$ >'" + (folder_ / "pid").string() + "'; exec sleep 60");
  std::string answer;
  previewer_->preview(file("a", "a"), 80,
                      [&](const Picture& picture) { answer = described(picture); });
  ASSERT_TRUE(spinUntil([&] { return !readFile(folder_ / "pid").empty(); }));
  const int child = std::stoi(readFile(folder_ / "pid"));
  previewer_.reset();
  EXPECT_EQ(answer, "error: it was given up");
  EXPECT_TRUE(spinUntil([child] { return ::kill(child, 0) != 0; })) << "it is dead, and reaped";
}

// True without bubblewrap as well, so that the tests fail: they need it.
bool mayMakeSandboxes() {
  return std::system(
             "(! command -v bwrap || bwrap --unshare-all --ro-bind / / true) >/dev/null 2>&1") == 0;
}

TEST_F(ChildImagePreviewerTest, ShutsTheChildIn) {
  if (!mayMakeSandboxes()) GTEST_SKIP() << "bubblewrap may not make namespaces";
  const std::string secret = file("secret", "x").string();
  const fs::path bubblewrap = options_.bubblewrap;
  useChild(
      "[ -e '" + secret + "' ] && exit 41\n" +  // exit statuses that tell apart
      "[ -e /proc/1 -o -e /home -o -e /dev/null ] && exit 42\n" + "echo x >/written && exit 43\n" +
      "[ \"$(/usr/bin/python3 -c 'import socket; print(len(socket.if_nameindex()))')\" = 1 ] || "
      "exit 44\n" +
      "[ \"$(/usr/bin/env | grep -c HOME)\" = 0 ] || exit 45\n" + "exit 40");
  options_.bubblewrap = bubblewrap;
  previewer_ = std::make_unique<ChildImagePreviewer>(options_);
  EXPECT_EQ(preview(secret), "not an image");
  EXPECT_EQ(log_.count(LogLevel::kWarning, ""), 0);
}

TEST_F(ChildImagePreviewerTest, DoesWithoutBubblewrapAndSaysSoOnce) {
  const fs::path png = redAndBlue(folder_ / "a.png", 20, 20);
  for (const fs::path& bubblewrap : {fs::path("/nowhere/bwrap"), fs::path("/bin/false")}) {
    options_.bubblewrap = bubblewrap;
    previewer_ = std::make_unique<ChildImagePreviewer>(options_);
    EXPECT_EQ(preview(png), "20x20 red blue / red blue");
    EXPECT_EQ(preview(png), "20x20 red blue / red blue");
  }
  EXPECT_EQ(log_.count(LogLevel::kWarning, "decoded without a sandbox around the decoder"), 2);
}

TEST_F(ChildImagePreviewerTest, TriesBubblewrapAgainAfterItFailed) {
  if (!mayMakeSandboxes()) GTEST_SKIP() << "bubblewrap may not make namespaces";
  const fs::path png = redAndBlue(folder_ / "a.png", 20, 20);
  options_.bubblewrap = file("bwrap", "#!/usr/bin/sh\n[ -e '" + (folder_ / "works").string() +
                                          "' ] || exit 1\necho >>'" + (folder_ / "uses").string() +
                                          "'\nexec /usr/bin/bwrap \"$@\"\n");
  fs::permissions(options_.bubblewrap, fs::perms::owner_all);
  options_.retrySandboxAfter = 0ms;
  previewer_ = std::make_unique<ChildImagePreviewer>(options_);
  EXPECT_EQ(preview(png), "20x20 red blue / red blue");
  file("works", "");
  EXPECT_EQ(preview(png), "20x20 red blue / red blue");
  EXPECT_EQ(readFile(folder_ / "uses"), "\n\n") << "the check, and the preview";
}

}  // namespace
}  // namespace brevanholt::platform
