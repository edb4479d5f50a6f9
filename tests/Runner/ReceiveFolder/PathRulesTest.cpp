#include "Runner/ReceiveFolder/PathRules.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace brevanholt {
namespace {

using namespace std::string_literals;

constexpr const char* kBadFolder = "The receive folder name is invalid.";
constexpr const char* kBadPath = "The received path is invalid.";

using Rule = std::string (*)(std::string_view);

// What the rule returns, or the message that it throws.
std::string outcome(Rule rule, const std::string& input) {
  try {
    return rule(input);
  } catch (const platform::PlatformError& error) {
    return error.message();
  }
}

void expectTaken(Rule rule, const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [input, expected] : cases) EXPECT_EQ(outcome(rule, input), expected) << input;
}
void expectRefused(Rule rule, const std::vector<std::string>& inputs, const char* message) {
  for (const std::string& input : inputs) EXPECT_EQ(outcome(rule, input), message) << input;
}

TEST(SafeFolderNameTest, TrimsAndRefuses) {
  expectTaken(safeFolderName, {{"  Inbox \n", "Inbox"},
                               {"\u2003\u0085Büro\u2028\u00A0", "Büro"},
                               {"...", "..."},
                               {"\u200Bx", "\u200Bx"}});  // a zero-width space is no white space
  expectRefused(safeFolderName, {"", "   ", ".", " .. ", "a/b", "a\\b", "a:b"}, kBadFolder);
}

TEST(SafeRelativePathTest, NormalisesAndRefuses) {
  expectTaken(safeRelativePath,
              {{"photos\\2024\\a.jpg", "photos/2024/a.jpg"}, {"  a /..b  ", "a /..b"}});
  expectRefused(safeRelativePath,
                {"", " \t ", "/etc/passwd", "\\etc", "a/../b", "..\\b", "./a", "a//b", "a/", "C:/x",
                 "a/\x1F", "a\0b"s},
                kBadPath);
}

TEST(SafeRelativePathTest, CountsCharactersAsPeopleSeeThem) {
  EXPECT_EQ(outcome(safeRelativePath, std::string(1024, 'a')), std::string(1024, 'a'));

  // A family of four, and a letter with three marks, are one character each.
  std::string families;
  for (int count = 0; count < 512; ++count)
    families += "👩‍👩‍👧‍👦e\u0301\u0323\u0330";
  EXPECT_EQ(outcome(safeRelativePath, families), families);
  EXPECT_EQ(outcome(safeRelativePath, families + "x"), kBadPath);
}

TEST(SafeRelativePathTest, NeverAcceptsAWayOutOfTheFolder) {
  const std::vector<std::string> pieces = {"..", ".",  "/", "\\", "a",      ":",
                                           " ",  "\n", "",  "…",  "\u2024", "b.txt"};
  std::mt19937 random(1);
  const std::filesystem::path folder = "/receive/here";
  int accepted = 0;
  for (int round = 0; round < 50000; ++round) {
    std::string path;
    for (auto count = random() % 7; count > 0; --count) path += pieces[random() % pieces.size()];
    const std::string result = outcome(safeRelativePath, path);
    if (result == kBadPath) continue;
    ++accepted;
    const std::string landed = (folder / result).lexically_normal();
    ASSERT_TRUE(landed.starts_with("/receive/here/")) << path << " lands at " << landed;
    ASSERT_EQ(outcome(safeRelativePath, result), result) << "not stable: " << path;
  }
  EXPECT_GT(accepted, 1000);
}

TEST(ReceivedFileNameTest, TakesTheLastComponent) {
  expectTaken(receivedFileName, {{"../../x.bin", "x.bin"},
                                 {"a/b/", "b"},
                                 {"///", "Received file"},
                                 {"", "Received file"},
                                 {"..", ".."},
                                 {"a\nb\\\u202Egpj", "a\nb\\\u202Egpj"}});
  expectRefused(receivedFileName, {"a\0b"s}, kBadPath);
}

TEST(UniqueDestinationTest, NumbersTakenNamesBeforeTheExtensionAndTakesAUuidAfterNineThousand) {
  std::set<std::string> taken{"x.txt",    "x (1).txt", "notes", "archive.tar.gz",
                              ".profile", "a.",        "..",    "full"};
  const auto choose = [&](std::string_view name) {
    const auto isTaken = [&](const auto& path) { return taken.contains(path.filename()); };
    return uniqueDestination("/d", name, isTaken).filename().string();
  };
  const std::pair<const char*, const char*> cases[] = {{"free.txt", "free.txt"},
                                                       {"x.txt", "x (2).txt"},
                                                       {"notes", "notes (1)"},
                                                       {"a.", "a. (1)"},
                                                       {".profile", ".profile (1)"},
                                                       {"..", ".. (1)"},
                                                       {"archive.tar.gz", "archive.tar (1).gz"}};
  for (const auto& [name, expected] : cases) EXPECT_EQ(choose(name), expected);

  for (int suffix = 1; suffix <= 9998; ++suffix) {
    taken.insert("full (" + std::to_string(suffix) + ")");
  }
  EXPECT_EQ(choose("full"), "full (9999)");
  taken.insert("full (9999)");
  const std::string last = choose("full");
  EXPECT_TRUE(platform::isUuid(last.substr(0, 36))) << last;
  EXPECT_EQ(last.substr(36), "-full");
}

}  // namespace
}  // namespace brevanholt
