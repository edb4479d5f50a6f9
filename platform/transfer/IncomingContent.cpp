#include "platform/transfer/IncomingContent.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

[[noreturn]] void refuse() {
  throw SystemError("understand the content", EPROTO);
}

void writeAt(const FileDescriptor& file, std::uint64_t offset,
             std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        ::pwrite(file.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw SystemError("write the file", errno);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
    offset += static_cast<std::uint64_t>(count);
  }
}

}  // namespace

void IncomingContent::take(SegmentReader& segments, Arrival& news) {
  for (auto segment = stalled_ ? std::exchange(stalled_, std::nullopt) : segments.next(); segment;
       segment = segments.next()) {
    const bool isOpen = open_ && open_->part.entry == segment->entry;
    if (!isOpen && !begin(*segment, news)) {
      stalled_ = segment;
      news.wanted = segment->entry;
      return;
    }
    write(*segment, news);
  }
}

bool IncomingContent::begin(const Segment& segment, Arrival& news) {
  if (last_ && segment.entry <= *last_) refuse();
  auto part = expectation_(segment.entry);
  if (!part) return false;
  last_ = segment.entry;
  open_ = Open{std::move(*part), 0, {}, {}, false};
  open_->taken = open_->part.offset;
  const bool isAnew = segment.offset == 0 && open_->part.offset > 0;
  if (isAnew) open_->taken = open_->part.offset = 0;
  news.taken += open_->taken;
  try {
    if (!open_->part.path) return true;
    const Place place(*open_->part.path);
    if (isAnew) place.remove();
    open_->file = open_->part.offset == 0 ? place.create() : place.openToWrite();
  } catch (const SystemError& error) {
    fail(error, news);
  }
  return true;
}

void IncomingContent::write(const Segment& segment, Arrival& news) {
  const std::uint64_t size = open_->part.size;
  if (segment.offset != open_->taken || segment.bytes.size() > size - open_->taken) refuse();
  try {
    if (!open_->part.path) {
      open_->memory.insert(open_->memory.end(), segment.bytes.begin(), segment.bytes.end());
    } else if (!open_->hasFailed) {
      writeAt(open_->file, segment.offset, segment.bytes);
    }
  } catch (const SystemError& error) {
    fail(error, news);
  }
  open_->taken += segment.bytes.size();
  news.taken += segment.bytes.size();
  if (open_->taken < size) return;
  if (!open_->hasFailed) news.whole.push_back({open_->part.entry, std::move(open_->memory)});
  open_.reset();
}

void IncomingContent::fail(const SystemError& error, Arrival& news) {
  open_->hasFailed = true;
  open_->file.reset();
  news.failed.push_back({open_->part.entry, error});
}

}  // namespace brevanholt::platform
