#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/transfer/Records.h"
#include "platform/transfer/TransferParts.h"

#include <functional>
#include <optional>
#include <vector>

namespace brevanholt::platform {

// Writes the segments that come to where they belong. Blocks; for one thread.
//
// Entries come one after the other, each without gaps, from the expected offset on or anew from its
// beginning: then a file that is there is removed first. One that ends early is left where it is.
// The failure of one file is told once; what else comes of it is dropped.
class IncomingContent {
 public:
  // What is expected for an entry, asked once for each; nothing where it is unknown.
  using Expectation = std::function<std::optional<IncomingPart>(std::uint32_t entry)>;

  explicit IncomingContent(Expectation expectation) : expectation_(std::move(expectation)) {}

  // Takes segments until there are no more, or one is of an entry that is not expected: then `news`
  // says which is wanted, and another call begins with that segment. Throws SystemError (EPROTO)
  // where the other side sends what it may not.
  void take(SegmentReader& segments, Arrival& news);

  [[nodiscard]] bool isStalled() const { return stalled_.has_value(); }

 private:
  struct Open {
    IncomingPart part;
    std::uint64_t taken = 0;
    FileDescriptor file;
    std::vector<std::uint8_t> memory;
    bool hasFailed = false;
  };

  // False where the entry is not expected.
  [[nodiscard]] bool begin(const Segment& segment, Arrival& news);
  void write(const Segment& segment, Arrival& news);
  void fail(const SystemError& error, Arrival& news);

  Expectation expectation_;
  std::optional<Open> open_;
  std::optional<std::uint32_t> last_;
  std::optional<Segment> stalled_;
};

}  // namespace brevanholt::platform
