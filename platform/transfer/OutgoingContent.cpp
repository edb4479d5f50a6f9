#include "platform/transfer/OutgoingContent.h"

#include <algorithm>
#include <cerrno>
#include <functional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

using Layout = RecordLayout;

std::int64_t milliseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}

[[noreturn]] void changed(const std::filesystem::path& path) {
  throw FileError("send", path, ESTALE);
}

// A file or bytes, read from one end to the other.
class Source {
 public:
  explicit Source(const OutgoingPart& part) : part_(part) {
    if (const auto* refused = std::get_if<FileError>(&part.source)) throw FileError(*refused);
    const auto* reach = std::get_if<Reach>(&part.source);
    if (reach == nullptr || part.size == 0) return;
    file_ = Place(*reach).openToRead();
    // Doubles what the system reads ahead.
    ::posix_fadvise(file_.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  }

  void read(std::uint64_t offset, std::span<std::uint8_t> room) {
    if (const auto* bytes = std::get_if<Bytes>(&part_.source)) {
      if (offset + room.size() > bytes->size()) changed("");
      std::ranges::copy(bytes->span().subspan(offset, room.size()), room.begin());
      return;
    }
    const std::filesystem::path path = std::get<Reach>(part_.source).path();
    for (std::size_t filled = 0; filled < room.size();) {
      const ssize_t count = ::pread(file_.get(), room.data() + filled, room.size() - filled,
                                    static_cast<off_t>(offset + filled));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) throw FileError("read", path, errno);
      if (count == 0) changed(path);
      filled += static_cast<std::size_t>(count);
    }
  }

  // Looked at after the last byte was read, so it tells of changes before and while it was; by
  // name, so it tells of another file in its place.
  void expectUnchanged() const {
    const auto* reach = std::get_if<Reach>(&part_.source);
    struct stat now {};
    if (reach == nullptr) return;
    const bool isThere = Place(*reach).look(now);
    if (!isThere || !S_ISREG(now.st_mode) ||
        static_cast<std::uint64_t>(now.st_size) != part_.size ||
        std::max<std::int64_t>(0, milliseconds(now.st_mtim)) != part_.modified) {
      changed(reach->path());
    }
  }

 private:
  const OutgoingPart& part_;
  FileDescriptor file_;
};

}  // namespace

OutgoingContent::OutgoingContent(RecordSocket& socket, std::span<const std::uint8_t> key)
    : socket_(socket), cipher_(RecordCipher::Direction::kSeal, key) {}

void OutgoingContent::sendControl(std::uint8_t type, const Bytes& body) {
  if (type >= Layout::kContent || body.size() > Layout::kLargestControl) {
    throw SystemError("send the record", EMSGSIZE);
  }
  std::ranges::copy(body, bodyFrom(0, body.size()).begin());
  sealAndSend(type, body.size());
}

std::vector<PartFailure> OutgoingContent::send(const std::vector<OutgoingPart>& parts,
                                               const std::atomic<bool>& isCanceled) {
  std::vector<PartFailure> failures;
  place_ = {};
  for (const OutgoingPart& part : parts) {
    before_ = place_;
    try {
      sendPart(part, isCanceled);
    } catch (const FileError& error) {
      place_ = before_;
      failures.push_back({part.entry, error});
    }
  }
  flush();
  return failures;
}

void OutgoingContent::sendPart(const OutgoingPart& part, const std::atomic<bool>& isCanceled) {
  Source source(part);
  if (part.size == 0) return source.expectUnchanged();
  std::uint64_t offset = part.offset;
  do {
    if (isCanceled) throw SystemError("send the content", ECANCELED);
    if (place_.segments == Layout::kMostSegments || place_.content == Layout::kChunk) flush();
    const std::size_t length =
        std::min<std::uint64_t>(part.size - offset, Layout::kChunk - place_.content);
    const auto segment = bodyFrom(place_.filled, Layout::kSegment + length);
    writeSegmentHead(segment.first<Layout::kSegment>(), part.entry,
                     static_cast<std::uint32_t>(length), offset);
    source.read(offset, segment.subspan(Layout::kSegment));
    offset += length;
    if (offset == part.size) source.expectUnchanged();
    place_.filled += segment.size();
    place_.content += length;
    ++place_.segments;
  } while (offset < part.size);
}

void OutgoingContent::flush() {
  if (place_.segments > 0) sealAndSend(Layout::kContent, place_.filled);
  place_ = before_ = {};
}

std::span<std::uint8_t> OutgoingContent::bodyFrom(std::size_t at, std::size_t size) {
  const std::size_t needed = Layout::kHeader + at + size + RecordCipher::kTagSize;
  if (buffer_.size() < needed) buffer_.resize(std::min(2 * needed, Layout::kLargestRecord));
  return std::span(buffer_).subspan(Layout::kHeader + at, size);
}

void OutgoingContent::sealAndSend(std::uint8_t type, std::size_t bodySize) {
  const auto record = std::span(buffer_).first(Layout::kHeader + bodySize + RecordCipher::kTagSize);
  sealRecord(cipher_, type, record);
  socket_.send(record);
}

}  // namespace brevanholt::platform
