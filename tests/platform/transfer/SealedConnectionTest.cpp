#include "platform/transfer/SealedConnection.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <string>

#include <sys/socket.h>
#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Octets = std::vector<std::uint8_t>;

constexpr SealedConnection::Terms kTrusted{RecordLayout::kLargestFrame, true};

Bytes bytesOf(std::string_view text) {
  return Bytes(std::vector<std::uint8_t>(text.begin(), text.end()));
}

std::string textOf(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

// What arrived until a control record came, or the connection failed.
struct Heard {
  std::uint64_t taken = 0;
  std::vector<std::uint32_t> whole;
  std::vector<std::pair<std::uint32_t, int>> failed;
  std::string text;  // of entries that went to memory
  int record = 0;    // its type, or 0
  std::string body;
  bool isEnd = false;
  int error = 0;
};

class SealedConnectionTest : public testing::Test {
 protected:
  SealedConnectionTest() { connect(); }

  void connect() {
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets_.data()), 0);
    const Octets one(32, 1);
    const Octets two(32, 2);
    near_.emplace(SealedConnection::Options{FileDescriptor(sockets_[0]), one, two, silence_},
                  queue_);
    far_.emplace(SealedConnection::Options{FileDescriptor(sockets_[1]), two, one, silence_},
                 queue_);
  }

  // Waits for the outcome of a call.
  template <class T, class F>
  Outcome<T> outcomeOf(F call) {
    std::optional<Outcome<T>> found;
    call([&found](Outcome<T> outcome) { found = std::move(outcome); });
    if (!queue_.runUntil([&found] { return found.has_value(); })) ADD_FAILURE() << "no answer";
    return std::move(found).value_or(SystemError("wait", ETIME));
  }
  template <class T>
  static int errorOf(const Outcome<T>& outcome) {
    const auto* error = std::get_if<SystemError>(&outcome);
    return error != nullptr ? error->errorNumber() : 0;
  }

  int say(SealedConnection& by, std::uint8_t type, std::string_view body = "") {
    return errorOf(
        outcomeOf<Done>([&](auto done) { by.send(type, bytesOf(body), std::move(done)); }));
  }
  int part(SealedConnection& by) {
    return errorOf(outcomeOf<Done>([&](auto done) {
      by.part(Arrival::Control{11, bytesOf("over")}, std::move(done));
    }));
  }
  void sendLater(std::vector<OutgoingPart> parts) {
    near_->sendContent(std::move(parts), [this](Outcome<std::vector<PartFailure>> outcome) {
      sent_ = errorOf(outcome);
      if (sent_ != 0) return;
      for (const auto& [entry, error] : std::get<std::vector<PartFailure>>(outcome)) {
        unsent_.emplace_back(entry, error.errorNumber());
      }
    });
    near_->send(8, {}, [](const auto&) {});
  }
  Heard hear(SealedConnection::Terms terms = kTrusted, std::vector<IncomingPart> wanted = {}) {
    Heard heard;
    while (heard.record == 0 && heard.error == 0 && !heard.isEnd) {
      auto outcome = outcomeOf<Arrival>([&](auto done) { far_->receive(terms, std::move(done)); });
      heard.error = errorOf(outcome);
      if (heard.error != 0) break;
      auto& arrival = std::get<Arrival>(outcome);
      heard.taken += arrival.taken;
      for (const auto& [entry, bytes] : arrival.whole) {
        heard.whole.push_back(entry);
        heard.text += textOf(bytes);
      }
      for (const auto& [entry, error] : arrival.failed) {
        heard.failed.emplace_back(entry, error.errorNumber());
      }
      if (arrival.wanted) far_->expect(std::exchange(wanted, {}));
      heard.isEnd = arrival.isEnd;
      if (!arrival.record) continue;
      heard.record = arrival.record->type;
      heard.body = textOf(arrival.record->body);
    }
    return heard;
  }

  OutgoingPart file(std::uint32_t entry, const std::string& content, std::uint64_t offset = 0) {
    const auto path = folder_ / ("out" + std::to_string(entry));
    writeFile(path, content);
    struct stat now {};
    EXPECT_EQ(::stat(path.c_str(), &now), 0);
    return {entry, Reach{.root = folder_.path(), .below = path.filename()}, offset, content.size(),
            now.st_mtim.tv_sec * 1000 + now.st_mtim.tv_nsec / 1'000'000};
  }
  IncomingPart target(const OutgoingPart& part) {
    return {part.entry, Reach{.root = folder_.path(), .below = "in" + std::to_string(part.entry)},
            part.offset, part.size};
  }
  std::string arrived(std::uint32_t entry) {
    return readFile(folder_ / ("in" + std::to_string(entry)));
  }

  TemporaryFolder folder_;
  FakeMainQueue queue_;
  std::chrono::milliseconds silence_{10'000};
  std::array<int, 2> sockets_{};
  int sent_ = -1;
  std::vector<std::pair<std::uint32_t, int>> unsent_;
  std::optional<SealedConnection> near_;
  std::optional<SealedConnection> far_;
};

TEST_F(SealedConnectionTest, MovesFilesAndTextsInOrderAndSaysWhatIsWhole) {
  const std::string large(3 * (1 << 20) + 7, 'x');
  std::vector<OutgoingPart> parts{file(1, large), file(2, ""), file(5, "resumed", 3)};
  parts.push_back({6, bytesOf("a text"), 0, 6, 0});
  for (std::uint32_t entry = 10; entry < 200; ++entry) parts.push_back(file(entry, "small"));
  std::vector<IncomingPart> targets;
  std::ranges::transform(parts, std::back_inserter(targets),
                         [this](const OutgoingPart& part) { return target(part); });
  targets[3].path.reset();
  writeFile(folder_ / "in5", "res");
  far_->expect({targets[0]});

  sendLater(parts);
  const Heard heard = hear(kTrusted, targets);

  EXPECT_EQ(heard.record, 8);
  EXPECT_EQ(heard.taken, large.size() + 7 + 6 + 190 * std::size_t{5});
  EXPECT_EQ(heard.whole.size(), parts.size() - 1) << "nothing comes of an empty one";
  EXPECT_EQ(heard.text, "a text");
  EXPECT_EQ(arrived(1), large);
  EXPECT_EQ(arrived(5), "resumed");
  EXPECT_EQ(arrived(199), "small");
  EXPECT_TRUE(queue_.runUntil([this] { return sent_ == 0; }));
  EXPECT_THAT(unsent_, IsEmpty());
}

TEST_F(SealedConnectionTest, TellsOfFilesThatCannotBeSentAsTheyWereOffered) {
  std::vector<OutgoingPart> parts{file(1, "gone"), file(2, "changed"), file(3, "short"),
                                  file(4, "fine")};
  parts.push_back({5, FileError("use", "forbidden", EACCES), 0, 1, 0});
  std::filesystem::remove(folder_ / "out1");
  ++parts[1].modified;
  parts[2].size = 1 << 20;
  far_->expect({target(parts[3])});

  sendLater(parts);
  const Heard heard = hear();

  EXPECT_THAT(heard.whole, ElementsAre(4));
  EXPECT_TRUE(queue_.runUntil([this] { return sent_ == 0; }));
  EXPECT_THAT(unsent_, ElementsAre(std::pair(1U, ENOENT), std::pair(2U, ESTALE),
                                   std::pair(3U, ESTALE), std::pair(5U, EACCES)));
}

TEST_F(SealedConnectionTest, TellsOfAFullDiskAtOnceAndOfATakenNameAndGoesOn) {
  const SmallDisk disk("64k");
  BREVANHOLT_NEEDS(disk);
  std::vector<OutgoingPart> parts{file(1, std::string(1 << 20, 'x')), file(2, "taken"),
                                  file(3, "fine")};
  IncomingPart full = target(parts[0]);
  full.path = Reach{.root = disk.path(), .below = "full"};
  writeFile(folder_ / "in2", "here before");
  far_->expect({full, target(parts[1]), target(parts[2])});

  sendLater(parts);
  const Heard heard = hear();

  EXPECT_THAT(heard.failed, ElementsAre(std::pair(1U, ENOSPC), std::pair(2U, EEXIST)));
  EXPECT_THAT(heard.whole, ElementsAre(3));
  EXPECT_EQ(arrived(2), "here before");
}

TEST_F(SealedConnectionTest, RefusesContentThatWasNotAskedFor) {
  const auto outcome = [this](std::vector<OutgoingPart> parts, std::vector<IncomingPart> targets) {
    connect();
    far_->expect(std::move(targets));
    sendLater(std::move(parts));
    return hear().error;
  };
  OutgoingPart part = file(1, "content");
  IncomingPart small = target(part);
  small.size = 3;
  EXPECT_EQ(outcome({part}, {}), EPROTO);
  EXPECT_EQ(outcome({part}, {small}), EPROTO);
  part.offset = 2;
  EXPECT_EQ(outcome({part}, {{1, std::nullopt, 0, 7}}), EPROTO);
  EXPECT_EQ(
      outcome({file(2, "b"), file(1, "a")}, {{1, std::nullopt, 0, 1}, {2, std::nullopt, 0, 1}}),
      EPROTO);
  EXPECT_EQ(arrived(1), "");
}

TEST_F(SealedConnectionTest, ReadsOfAStrangerNoMoreThanItIsAskedTo) {
  for (int number = 0; number < 3; ++number) ASSERT_EQ(say(*near_, 1, std::to_string(number)), 0);
  ASSERT_EQ(say(*near_, 1, std::string(5000, 'x')), 0);
  for (int number = 0; number < 3; ++number) {
    EXPECT_EQ(hear({4096, false}).body, std::to_string(number));
  }
  EXPECT_EQ(hear({4096, false}).error, EPROTO);
  EXPECT_EQ(hear({4096, false}).error, EPROTO);
}

TEST_F(SealedConnectionTest, TellsAnEndFromACutFromAForgery) {
  far_->part(std::nullopt, [](const auto&) {});
  EXPECT_EQ(part(*near_), 0);
  connect();
  near_->part(Arrival::Control{11, bytesOf("over")}, [](const auto&) {});
  EXPECT_EQ(hear().body, "over");
  EXPECT_TRUE(hear().isEnd);

  connect();
  ASSERT_EQ(::send(sockets_[0], "\0\0\0\x40half", 8, MSG_NOSIGNAL), 8);
  ::shutdown(sockets_[0], SHUT_WR);
  EXPECT_EQ(hear().error, ECONNRESET);

  connect();
  const std::string forged = std::string("\0\0\0\x14\x0c\0\0\0", 8) + std::string(16, 'x');
  ASSERT_EQ(::send(sockets_[0], forged.data(), forged.size(), MSG_NOSIGNAL), 24);
  EXPECT_EQ(hear().error, EBADMSG);

  silence_ = std::chrono::milliseconds(1);
  connect();
  EXPECT_EQ(hear().error, ETIMEDOUT);
}

TEST_F(SealedConnectionTest, AnswersWhatWaitsWhenItIsClosed) {
  sendLater({file(1, std::string(16 << 20, 'x'))});  // nobody reads it
  std::optional<int> received;
  near_->receive(kTrusted, [&](const auto& outcome) { received = errorOf(outcome); });
  bool isClosed = false;
  near_->close([&isClosed] { isClosed = true; });
  EXPECT_TRUE(queue_.runUntil([&isClosed] { return isClosed; }));
  EXPECT_EQ(sent_, ECANCELED);
  EXPECT_EQ(received, ECANCELED);
  EXPECT_EQ(say(*near_, 1), ECANCELED);
}

TEST_F(SealedConnectionTest, SaysAFarewellBeforeContentThatWaits) {
  const OutgoingPart large = file(1, std::string(64 << 20, 'x'));
  far_->expect({target(large)});
  sendLater({large, file(2, "never")});
  near_->part(Arrival::Control{11, bytesOf("paused")}, [](const auto&) {});
  EXPECT_THAT(hear().whole, IsEmpty());
  EXPECT_EQ(hear().body, "paused");
  EXPECT_EQ(sent_, ECANCELED);
}

}  // namespace
}  // namespace brevanholt::platform
