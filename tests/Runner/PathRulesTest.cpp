#include "Runner/MainFlutterWindow/PathRules.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace brevanholt {
namespace {

// What the rule returns, or the message that it throws.
template <class Rule>
std::string outcome(Rule rule, const std::string& input) {
  try {
    return rule(input);
  } catch (const platform::PlatformError& error) {
    return error.message();
  }
}

constexpr const char* kBadFolder = "The receive folder name is invalid.";
constexpr const char* kBadPath = "The received path is invalid.";

TEST(SafeFolderNameTest, TrimsAndRefuses) {
  const std::pair<std::string, std::string> cases[] = {
      {"  Inbox \n", "Inbox"}, {"\u2003\u0085Büro\u2028\u00A0", "Büro"},
      {"a b", "a b"},          {"...", "..."},
      {".hidden", ".hidden"},  {std::string(10000, 'x'), std::string(10000, 'x')},
      {"\u200Bx", "\u200Bx"},  // a zero-width space is no white space
      {"", kBadFolder},        {"   ", kBadFolder},
      {".", kBadFolder},       {" .. ", kBadFolder},
      {"a/b", kBadFolder},     {"a\\b", kBadFolder},
      {"a:b", kBadFolder},
  };
  for (const auto& [input, expected] : cases) EXPECT_EQ(outcome(safeFolderName, input), expected);
}

TEST(SafeRelativePathTest, NormalisesAndRefuses) {
  const std::pair<std::string, std::string> cases[] = {
      {"photos\\2024\\a.jpg", "photos/2024/a.jpg"},
      {"  a/b  ", "a/b"},
      {"a /b", "a /b"},
      {"a/..b", "a/..b"},
      {"a/.b", "a/.b"},
      {"a/\x7F", "a/\x7F"},
      {"", kBadPath},
      {" \t ", kBadPath},
      {"/etc/passwd", kBadPath},
      {"\\etc", kBadPath},
      {"a/../b", kBadPath},
      {"..\\b", kBadPath},
      {"./a", kBadPath},
      {"a/.", kBadPath},
      {"a//b", kBadPath},
      {"a/", kBadPath},
      {"C:/x", kBadPath},
      {"a/b:c", kBadPath},
      {"a\tb", kBadPath},
      {"a/\x1F", kBadPath},
      {std::string("a\0b", 3), kBadPath},
  };
  for (const auto& [input, expected] : cases) EXPECT_EQ(outcome(safeRelativePath, input), expected);
}

TEST(SafeRelativePathTest, CountsCharactersAsPeopleSeeThem) {
  EXPECT_EQ(outcome(safeRelativePath, std::string(1024, 'a')), std::string(1024, 'a'));
  EXPECT_EQ(outcome(safeRelativePath, std::string(1025, 'a')), kBadPath);

  // A letter with three marks, and a family of four, are one character each.
  std::string marked;
  std::string families;
  for (int count = 0; count < 1024; ++count) {
    marked += "e\u0301\u0323\u0330";
    families += "👩‍👩‍👧‍👦";
  }
  EXPECT_EQ(outcome(safeRelativePath, marked), marked);
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
  const std::pair<std::string, std::string> cases[] = {{"../../x.bin", "x.bin"},
                                                       {"x.bin", "x.bin"},
                                                       {"a/b/", "b"},
                                                       {"/", "Received file"},
                                                       {"", "Received file"},
                                                       {"///", "Received file"},
                                                       {"..", ".."},
                                                       {"a\\b", "a\\b"},
                                                       {"a\nb", "a\nb"},
                                                       {"\u202Egpj", "\u202Egpj"},
                                                       {std::string("a\0b", 3), kBadPath}};
  for (const auto& [input, expected] : cases) {
    EXPECT_EQ(outcome(receivedFileName, input), expected);
    EXPECT_EQ(outcome(receivedFileName, input).find('/'), std::string::npos);
  }
}

class UniqueDestinationTest : public testing::Test {
 protected:
  std::string choose(std::string_view name) {
    return uniqueDestination("/d", name,
                             [this](const std::filesystem::path& path) {
                               ++probes_;
                               return taken_.contains(path.filename());
                             })
        .filename();
  }

  std::set<std::string> taken_;
  int probes_ = 0;
};

TEST_F(UniqueDestinationTest, NumbersTakenNamesBeforeTheExtension) {
  taken_ = {"x.txt", "x (1).txt", "report.pdf", "notes", "archive.tar.gz", ".profile", "a.", ".."};
  const std::pair<const char*, const char*> cases[] = {{"free.txt", "free.txt"},
                                                       {"x.txt", "x (2).txt"},
                                                       {"report.pdf", "report (1).pdf"},
                                                       {"notes", "notes (1)"},
                                                       {"archive.tar.gz", "archive.tar (1).gz"},
                                                       {".profile", ".profile (1)"},
                                                       {"a.", "a. (1)"},
                                                       {"..", ".. (1)"}};
  for (const auto& [name, expected] : cases) EXPECT_EQ(choose(name), expected);
}

TEST_F(UniqueDestinationTest, FallsBackToAnUnprobedUuidAfterNineThousand) {
  taken_.insert("x.txt");
  for (int suffix = 1; suffix <= 9998; ++suffix) {
    taken_.insert("x (" + std::to_string(suffix) + ").txt");
  }
  EXPECT_EQ(choose("x.txt"), "x (9999).txt");

  taken_.insert("x (9999).txt");
  probes_ = 0;
  const std::string last = choose("x.txt");
  EXPECT_TRUE(platform::isUuid(last.substr(0, 36))) << last;
  EXPECT_EQ(last.substr(36), "-x.txt");
  EXPECT_EQ(probes_, 10000);
}

}  // namespace
}  // namespace brevanholt
