#include "platform/engine/web/FileTable.h"
#include "tests/support/PrintValue.h"
#include "tests/support/SmallDisk.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

class FileTableTest : public testing::Test {
 protected:
  Reply call(const std::string& method, Value arguments) {
    return table_.perform({method, std::move(arguments)});
  }
  std::int64_t handle(const std::string& method, const std::string& path) {
    const Reply reply = call(method, Map{{"path", path}});
    const auto* value = std::get_if<Value>(&reply);
    return value != nullptr ? value->integer().value_or(-1) : -1;
  }
  Reply write(std::int64_t file, std::int64_t offset, const std::string& content) {
    return call("write",
                Map{{"handle", file},
                    {"offset", offset},
                    {"bytes", Bytes(std::vector<std::uint8_t>(content.begin(), content.end()))}});
  }
  // The name of the system's error, or what else came.
  static std::string errorOf(const Reply& reply) {
    const auto* error = std::get_if<MethodError>(&reply);
    if (error == nullptr) return "no error";
    const auto* name = error->details.getIf<std::string>();
    return name != nullptr ? *name : error->message;
  }

  TemporaryFolder folder_;
  FileTable table_;
};

TEST_F(FileTableTest, WritesWhereItIsToldAndReadsRanges) {
  const std::string path = folder_ / "new";
  const auto file = handle("create", path);
  EXPECT_EQ(write(file, 4, "56789"), Reply(Value()));
  EXPECT_EQ(write(file, 0, "1234"), Reply(Value()));
  EXPECT_EQ(call("flush", Map{{"handle", file}}), Reply(Value()));
  EXPECT_EQ(call("close", Map{{"handle", file}}), Reply(Value()));
  EXPECT_EQ(readFile(path), "123456789");
  struct stat information {};
  ::stat(path.c_str(), &information);
  EXPECT_EQ(information.st_mode & 0777, 0600U) << "nobody else's to read before it is published";

  const auto reader = handle("open", path);
  const auto read = [&](std::int64_t offset, std::int64_t length) {
    const Reply reply =
        call("read", Map{{"handle", reader}, {"offset", offset}, {"length", length}});
    const Bytes bytes = *std::get<Value>(reply).getIf<Bytes>();
    return std::string(bytes.begin(), bytes.end());
  };
  EXPECT_EQ(read(2, 3), "345");
  EXPECT_EQ(read(7, std::int64_t{1} << 40), "89");
  EXPECT_EQ(read(100, 5), "");
}

TEST_F(FileTableTest, NeverTakesANameThatIsTaken) {
  writeFile(folder_ / "theirs", "theirs");
  std::filesystem::create_symlink(folder_ / "target", folder_ / "link");
  EXPECT_EQ(errorOf(call("create", Map{{"path", (folder_ / "theirs").string()}})), "EEXIST");
  EXPECT_EQ(errorOf(call("create", Map{{"path", (folder_ / "link").string()}})), "EEXIST");
  EXPECT_EQ(readFile(folder_ / "theirs"), "theirs");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "target"));
}

TEST_F(FileTableTest, DoesNotWaitOnWhatIsNoFile) {
  ASSERT_EQ(::mkfifo((folder_ / "fifo").c_str(), 0600), 0);
  for (const std::string& path : {(folder_ / "fifo").string(), std::string("/dev/zero")}) {
    EXPECT_EQ(errorOf(call("open", Map{{"path", path}})), "EINVAL") << path;
  }
  EXPECT_EQ(errorOf(call("open", Map{{"path", folder_.path().string()}})), "EISDIR");
  EXPECT_EQ(errorOf(call("remove", Map{{"path", folder_.path().string()}})), "EISDIR");
  EXPECT_EQ(call("remove", Map{{"path", (folder_ / "none").string()}}), Reply(Value()));
  EXPECT_EQ(call("stat", Map{{"path", (folder_ / "none").string()}}), Reply(Value()));
}

TEST_F(FileTableTest, SaysWhatIsWrongWithACall) {
  const auto file = handle("create", folder_ / "f");
  EXPECT_EQ(errorOf(call("open", Map{{"path", "relative"}})),
            "The path of a file must be absolute.");
  EXPECT_EQ(errorOf(call("open", Map{{"path", std::string("/a\0b", 4)}})),
            "The path of a file must be absolute.");
  EXPECT_EQ(errorOf(call("open", {})), "“path” must be a text.");
  EXPECT_EQ(errorOf(write(file, -1, "x")), "“offset” must be a size.");
  EXPECT_EQ(errorOf(write(file + 1, 0, "x")), "The file is not open.");
  EXPECT_EQ(call("rename", Map{}), Reply(NotImplemented{}));
  for (int count = 0; count < 255; ++count) EXPECT_GT(handle("open", folder_ / "f"), 0);
  EXPECT_EQ(errorOf(call("open", Map{{"path", (folder_ / "f").string()}})),
            "Too many files are open.");
  table_.closeAll();
  EXPECT_GT(handle("open", folder_ / "f"), 0);
}

TEST_F(FileTableTest, TellsWhenTheDiskIsFull) {
  SmallDisk disk("64k");
  BREVANHOLT_NEEDS(disk);
  const auto file = handle("create", disk.path() / "big");
  EXPECT_EQ(errorOf(write(file, 0, std::string(200'000, 'x'))), "ENOSPC");
}

}  // namespace
}  // namespace brevanholt::platform
