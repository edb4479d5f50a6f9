#pragma once

#include "platform/files/Place.h"
#include "platform/foundation/Bytes.h"
#include "platform/foundation/PlatformError.h"

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

namespace brevanholt::platform {

// What an operation on a connection ends with.
template <class T>
using Outcome = std::variant<T, SystemError>;

// What is to be sent of an entry: the rest of a file from an offset on, or of bytes at hand. A file
// that may not be used has the error instead.
struct OutgoingPart {
  std::uint32_t entry = 0;
  std::variant<Reach, Bytes, FileError> source;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;     // of the whole entry
  std::int64_t modified = 0;  // of the file, in milliseconds since 1970
};

// Where the content of an entry goes: to a file, or to memory where there is no path. The file is
// new where the offset is 0, else one that holds so many bytes already. Of more bytes than `size`,
// in all, none is written.
struct IncomingPart {
  std::uint32_t entry = 0;
  std::optional<Reach> path;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

// An entry that was not sent, or not written, as it should have been; the rest goes on.
struct PartFailure {
  std::uint32_t entry = 0;
  SystemError error;  // ESTALE: the file is not, or no longer, what the part said
};

// What has come on a connection since the last report.
struct Arrival {
  struct Control {
    std::uint8_t type = 0;
    Bytes body;
  };
  struct Whole {
    std::uint32_t entry = 0;
    Bytes bytes;  // where they went to memory
  };

  std::uint64_t taken = 0;              // bytes of content, with those that were there before
  std::vector<Whole> whole;             // entries of which all is there
  std::vector<PartFailure> failed;      // entries that cannot be written
  std::optional<std::uint32_t> wanted;  // an entry that has come without being expected
  std::optional<Control> record;        // came after all of the above
  bool isEnd = false;                   // the other side sends nothing more
};

}  // namespace brevanholt::platform
