#include "platform/engine/web/files/Describing.h"
#include "platform/engine/web/files/FileTable.h"
#include "platform/engine/web/files/Settling.h"
#include "platform/foundation/PlatformError.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

// Lets everything in one folder be used that is named plainly.
struct OneFolder final : FileAccess {
  explicit OneFolder(std::filesystem::path folder) : root(std::move(folder)) {}
  Reach toRead(const std::filesystem::path& path) override {
    if (path.lexically_normal() != path) throw PlatformError("refused");
    const std::string below = path.lexically_relative(root);
    return {.root = root, .below = below == "." || below == "./" ? "" : below};
  }
  Reach toChange(const std::filesystem::path& path) override { return toRead(path); }
  void publish(std::vector<ReceivedFile> /*files*/, Published done) override { done({}); }

  std::filesystem::path root;
};

class FileTableTest : public testing::Test {
 protected:
  Reply call(const std::string& method, Value arguments) {
    try {
      return table_.perform(FileTable::permitted({method, std::move(arguments)}, &access_));
    } catch (const PlatformError& error) {
      return MethodError{"file_error", error.message(), {}};
    }
  }
  Reply at(const std::string& method, const std::filesystem::path& path) {
    return call(method, Map{{"path", path.native()}});
  }
  std::int64_t handle(const std::string& method, const std::string& path) {
    const Reply reply = at(method, path);
    const auto* value = std::get_if<Value>(&reply);
    return value != nullptr ? value->integer().value_or(-1) : -1;
  }
  Reply write(std::int64_t file, std::int64_t offset, const std::string& content) {
    const Bytes bytes = std::vector<std::uint8_t>(content.begin(), content.end());
    return call("write", Map{{"handle", file}, {"offset", offset}, {"bytes", bytes}});
  }
  std::string read(std::int64_t file, std::int64_t offset, std::int64_t length) {
    const Reply reply = call("read", Map{{"handle", file}, {"offset", offset}, {"length", length}});
    const Bytes bytes = *std::get<Value>(reply).getIf<Bytes>();
    return {bytes.begin(), bytes.end()};
  }
  // The name of the system's error, or another error's message.
  static std::string errorOf(const Reply& reply) {
    const auto* error = std::get_if<MethodError>(&reply);
    if (error == nullptr) return "no error";
    const auto* name = error->details.getIf<std::string>();
    return name != nullptr ? *name : error->message;
  }

  // For each path the name of the system's error, or "saved".
  std::vector<std::string> settle(const std::vector<std::string>& paths) {
    List files;
    for (const std::string& path : paths) {
      files.push_back(Map{{"path", path}, {"modified", std::int64_t{1'600'000'000'123}}});
    }
    std::optional<Reply> found;
    Settling(queue_).perform({"settle", Map{{"files", std::move(files)}}}, &access_,
                             MethodResult([&found](Reply reply) { found = std::move(reply); }));
    queue_.runUntil([&found] { return found.has_value(); });
    std::vector<std::string> outcomes;
    for (const Value& one : *std::get<Value>(found.value()).getIf<List>()) {
      outcomes.push_back(one.isNull() ? "saved" : *one.getIf<List>()->at(2).getIf<std::string>());
    }
    return outcomes;
  }

  TemporaryFolder folder_;
  OneFolder access_{folder_.path()};
  FileTable table_;
  FakeMainQueue queue_;
};

TEST_F(FileTableTest, WritesWhereItIsToldAndReadsRanges) {
  const std::string path = folder_ / "new";
  const auto file = handle("create", path);
  EXPECT_EQ(write(file, 4, "56789"), Reply(Value()));
  EXPECT_EQ(write(file, 0, "1234"), Reply(Value()));
  EXPECT_EQ(call("close", Map{{"handle", file}}), Reply(Value()));
  EXPECT_EQ(readFile(path), "123456789");
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600))
      << "nobody else's to read before it is published";

  const auto reader = handle("open", path);
  EXPECT_EQ(read(reader, 2, 3), "345");
  EXPECT_EQ(read(reader, 7, std::int64_t{1} << 40), "89");
  EXPECT_EQ(read(reader, 100, 5), "");
}

TEST_F(FileTableTest, DescribesWhatMayBeUsed) {
  std::filesystem::create_directories(folder_ / "b/more");
  for (const char* name : {"b/file", "b/more/file"}) writeFile(folder_ / name, "1234");
  std::filesystem::create_symlink(folder_ / "b/file", folder_ / "b/link");
  List paths;
  for (const char* name : {"b/file", "b/..", "b/.", "b/link", "b/more", "b/none", "b/file",
                           "b/more/file", "b/file/x", "c/x"}) {
    paths.emplace_back((folder_.path() / name).native());
  }
  paths.emplace_back((folder_ / "b/file").native() + std::string("\0", 1));
  DispatchQueue thread("describing");
  std::optional<Reply> found;
  Describing(thread, queue_)
      .perform({"describe", Map{{"paths", std::move(paths)}}}, &access_,
               MethodResult([&found](Reply reply) { found = std::move(reply); }));
  queue_.runUntil([&found] { return found.has_value(); });
  const Map& described = *std::get<Value>(found.value()).getIf<Map>();
  const Bytes kinds = *described.find("kinds")->getIf<Bytes>();
  EXPECT_THAT(std::vector(kinds.begin(), kinds.end()),
              testing::ElementsAre(1, 0, 0, 0, 2, 0, 1, 1, 0, 0, 0));
  EXPECT_EQ(described.find("sizes")->getIf<Float64List>()->at(7), 4);
}

TEST_F(FileTableTest, NeverTakesANameThatIsTaken) {
  writeFile(folder_ / "theirs", "theirs");
  std::filesystem::create_symlink(folder_ / "target", folder_ / "link");
  EXPECT_EQ(errorOf(at("create", folder_ / "theirs")), "EEXIST");
  EXPECT_EQ(errorOf(at("create", folder_ / "link")), "EEXIST");
  EXPECT_EQ(readFile(folder_ / "theirs"), "theirs");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "target"));
}

TEST_F(FileTableTest, FollowsNoLinksBelowTheRoot) {
  std::filesystem::create_directory(folder_ / "outside");
  writeFile(folder_ / "outside/theirs", "theirs");
  std::filesystem::create_directory(folder_ / "own");
  std::filesystem::create_symlink(folder_ / "outside", folder_ / "own/folder");
  std::filesystem::create_symlink(folder_ / "outside/theirs", folder_ / "own/file");
  for (const char* method : {"open", "edit", "create", "remove", "stat", "list", "replace"}) {
    const Reply reply =
        call(method, Map{{"path", (folder_ / "own/folder/theirs").native()}, {"bytes", Bytes()}});
    EXPECT_EQ(errorOf(reply), "ELOOP") << method;
  }
  EXPECT_EQ(errorOf(at("open", folder_ / "own/file")), "ELOOP");
  EXPECT_EQ(errorOf(at("list", folder_ / "own/folder")), "ENOTDIR");
  call("replace", Map{{"path", (folder_ / "own/file").native()}, {"bytes", Bytes()}});
  EXPECT_TRUE(std::filesystem::is_regular_file(folder_ / "own/file")) << "the link is replaced";
  EXPECT_EQ(readFile(folder_ / "outside/theirs"), "theirs");
}

TEST_F(FileTableTest, GoesOnWithAFileAndSettlesIt) {
  const std::string path = folder_ / "part";
  call("close", Map{{"handle", handle("create", path)}});
  std::filesystem::create_symlink(path, folder_ / "link");
  EXPECT_EQ(errorOf(at("edit", folder_ / "link")), "ELOOP");
  EXPECT_EQ(errorOf(at("edit", folder_ / "none")), "ENOENT");

  const auto file = handle("edit", path);
  EXPECT_EQ(write(file, 0, "whole"), Reply(Value()));
  EXPECT_THAT(settle({path, folder_ / "link", folder_ / "none"}),
              testing::ElementsAre("saved", "ELOOP", "ENOENT"));
  const Reply found = at("stat", path);
  EXPECT_EQ(std::get<Value>(found).getIf<Map>()->find("modified")->integer(), 1'600'000'000'123);
  const mode_t mask = ::umask(0);
  ::umask(mask);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0666 & ~mask));
  EXPECT_GT(std::get<Value>(at("space", folder_.path())).integer(), 0);
}

TEST_F(FileTableTest, ListsNamesAndMovesOnlyToAFreeName) {
  writeFile(folder_ / "one", "1");
  writeFile(folder_ / ".two", "2");
  const auto move = [&](const char* from, const char* to) {
    return errorOf(
        call("move", Map{{"path", (folder_ / from).native()}, {"to", (folder_ / to).native()}}));
  };
  EXPECT_EQ(move("one", ".two"), "EEXIST");
  EXPECT_EQ(move("none", "three"), "ENOENT");
  EXPECT_EQ(move(".two", "three"), "no error");
  EXPECT_EQ(readFile(folder_ / "three"), "2");
  std::filesystem::remove(folder_ / "one");
  EXPECT_EQ(at("list", folder_ / ""), Reply(Value(List{"three"})));
  EXPECT_EQ(at("list", folder_ / "none"), Reply(Value(List{})));
}

TEST_F(FileTableTest, SaysWhatIsWrongWithACall) {
  ASSERT_EQ(::mkfifo((folder_ / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(errorOf(at("open", folder_ / "fifo")), "EINVAL") << "and does not wait";
  EXPECT_EQ(errorOf(at("remove", folder_.path())), "EISDIR");
  EXPECT_EQ(at("remove", folder_ / "none"), Reply(Value()));
  for (const std::string& path : {std::string("relative"), std::string("/a\0b", 4)}) {
    EXPECT_EQ(errorOf(at("open", path)), "The path of a file must be absolute.");
  }
  EXPECT_EQ(errorOf(call("open", {})), "“path” must be a text.");
  const auto file = handle("create", folder_ / "f");
  EXPECT_EQ(errorOf(write(file, -1, "x")), "“offset” must be a size.");
  EXPECT_EQ(errorOf(write(file + 1, 0, "x")), "The file is not open.");

  for (int count = 0; count < 255; ++count) EXPECT_GT(handle("open", folder_ / "f"), 0);
  EXPECT_EQ(errorOf(at("open", folder_ / "f")), "Too many files are open.");
  table_.closeAll();
  EXPECT_GT(handle("open", folder_ / "f"), 0);
}

}  // namespace
}  // namespace brevanholt::platform
