#include "platform/engine/web/transfers/TransferValues.h"

#include "platform/engine/web/link/EngineArguments.h"

#include <cerrno>
#include <cstring>
#include <limits>

namespace brevanholt::platform {
namespace {

std::uint32_t entryIn(const Map& part) {
  const std::int64_t entry = sizeIn(part, "entry");
  if (entry > std::numeric_limits<std::int32_t>::max()) {
    throw PlatformError("“entry” has at most 31 bits.");
  }
  return static_cast<std::uint32_t>(entry);
}

bool hasPath(const Map& part) {
  const Value* value = part.find("path");
  return value != nullptr && !value->isNull();
}

// Where a part begins, and how large its entry is.
std::pair<std::uint64_t, std::uint64_t> extentIn(const Map& part) {
  const std::int64_t offset = sizeIn(part, "offset");
  const std::int64_t size = sizeIn(part, "size");
  if (offset > size) throw PlatformError("“offset” lies behind the end.");
  return {static_cast<std::uint64_t>(offset), static_cast<std::uint64_t>(size)};
}

std::variant<Reach, Bytes, FileError> sourceIn(const Map& part, FileAccess* access) {
  if (!hasPath(part)) return bytesIn(part);
  try {
    return readableIn(part, access);
  } catch (const PlatformError&) {
    return FileError("use", textIn(part, "path"), EACCES);  // the others are sent
  }
}

template <class Part, class F>
std::vector<Part> partsIn(const Map& arguments, F partOf) {
  const List& list = listIn(arguments, "parts");
  std::vector<Part> parts;
  parts.reserve(list.size());
  for (const Value& one : list) parts.push_back(partOf(mapIn(one)));
  return parts;
}

}  // namespace

std::vector<OutgoingPart> outgoingPartsIn(const Map& arguments, FileAccess* access) {
  return partsIn<OutgoingPart>(arguments, [access](const Map& part) {
    const auto [offset, size] = extentIn(part);
    return OutgoingPart{entryIn(part), sourceIn(part, access), offset, size,
                        hasPath(part) ? sizeIn(part, "modified") : 0};
  });
}

std::vector<IncomingPart> incomingPartsIn(const Map& arguments, FileAccess* access) {
  return partsIn<IncomingPart>(arguments, [access](const Map& part) {
    const auto [offset, size] = extentIn(part);
    auto path = hasPath(part) ? std::optional(changeableIn(part, access)) : std::nullopt;
    return IncomingPart{entryIn(part), std::move(path), offset, size};
  });
}

Value valueOf(const std::vector<PartFailure>& failures) {
  List list;
  for (const auto& [entry, error] : failures) {
    const char* name = ::strerrorname_np(error.errorNumber());
    list.push_back(List{static_cast<std::int64_t>(entry), name != nullptr ? Value(name) : Value(),
                        error.message()});
  }
  return list;
}

Value valueOf(Arrival arrival) {
  Int32List whole;
  List texts;
  for (auto& [entry, bytes] : arrival.whole) {
    whole.push_back(static_cast<std::int32_t>(entry));
    if (!bytes.empty()) texts.push_back(List{whole.back(), std::move(bytes)});
  }
  Map value{{"taken", static_cast<std::int64_t>(arrival.taken)},
            {"whole", std::move(whole)},
            {"texts", std::move(texts)},
            {"failed", valueOf(arrival.failed)},
            {"isEnd", arrival.isEnd}};
  if (arrival.wanted) value.add("wanted", static_cast<std::int64_t>(*arrival.wanted));
  if (arrival.record) {
    value.add("type", static_cast<std::int32_t>(arrival.record->type));
    value.add("body", std::move(arrival.record->body));
  }
  return value;
}

}  // namespace brevanholt::platform
