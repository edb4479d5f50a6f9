#include "platform/engine/web/transfers/TransferTable.h"

#include "platform/engine/web/link/EngineArguments.h"
#include "platform/engine/web/sockets/OwedReply.h"
#include "platform/engine/web/transfers/TransferValues.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kMostConnections = 128;
constexpr std::int64_t kLongestSilence = 3'600'000;  // milliseconds

Value valueOf(Done /*nothing*/) {
  return {};
}

// Answers the page with what an operation ends with.
template <class T>
SealedConnection::Callback<T> answerTo(MethodResult& result) {
  return [result = std::move(result)](Outcome<T> outcome) mutable {
    if (const auto* error = std::get_if<SystemError>(&outcome)) {
      return std::move(result).error(socketError(*error));
    }
    std::move(result).success(valueOf(std::get<T>(std::move(outcome))));
  };
}

std::uint8_t typeIn(const Map& arguments) {
  const std::int64_t type = sizeIn(arguments, "type");
  if (type >= RecordLayout::kContent) throw PlatformError("Control records have types below 64.");
  return static_cast<std::uint8_t>(type);
}

}  // namespace

void TransferTable::perform(const MethodCall& call, MethodResult result) {
  try {
    if (!dispatch(call, result)) std::move(result).notImplemented();
  } catch (const std::exception& error) {
    std::move(result).error(socketError(error));
  }
}

bool TransferTable::dispatch(const MethodCall& call, MethodResult& result) {
  const Map& arguments = argumentsOf(call);
  if (call.method == "protect") {
    protect(arguments);
    std::move(result).success();
  } else if (call.method == "send") {
    at(arguments).send(typeIn(arguments), bytesIn(arguments), answerTo<Done>(result));
  } else if (call.method == "sendContent") {
    auto parts = outgoingPartsIn(arguments, access_);
    at(arguments).sendContent(std::move(parts), answerTo<std::vector<PartFailure>>(result));
  } else if (call.method == "expect") {
    at(arguments).expect(incomingPartsIn(arguments, access_));
    std::move(result).success();
  } else if (call.method == "receive") {
    const SealedConnection::Terms terms{static_cast<std::size_t>(sizeIn(arguments, "largest")),
                                        flagIn(arguments, "readsAhead")};
    at(arguments).receive(terms, answerTo<Arrival>(result));
  } else if (call.method == "part") {
    std::optional<Arrival::Control> last;
    if (optionalBytesIn(arguments, "bytes") != nullptr) {
      last = Arrival::Control{typeIn(arguments), bytesIn(arguments)};
    }
    at(arguments).part(std::move(last), answerTo<Done>(result));
  } else if (call.method == "close") {
    const auto found = open_.find(sizeIn(arguments, "handle"));
    if (found != open_.end()) close(found);
    std::move(result).success();
  } else {
    return false;
  }
  return true;
}

void TransferTable::protect(const Map& arguments) {
  const std::int64_t handle = sizeIn(arguments, "handle");
  const Bytes* send = optionalBytesIn(arguments, "send");
  const Bytes* receive = optionalBytesIn(arguments, "receive");
  if (open_.size() + closing_.size() >= kMostConnections) {
    throw PlatformError("Too many connections are open.");
  }
  if (send == nullptr || receive == nullptr) throw PlatformError("Two keys are needed.");
  const std::int64_t silence =
      std::clamp<std::int64_t>(sizeIn(arguments, "silence"), 1, kLongestSilence);
  SealedConnection::Options options{sockets_.release(handle), send->span(), receive->span(),
                                    std::chrono::milliseconds(silence)};
  open_.emplace(handle, std::make_unique<SealedConnection>(std::move(options), mainQueue_));
}

void TransferTable::closeAll() {
  while (!open_.empty()) close(open_.begin());
}

void TransferTable::close(Connections::iterator connection) {
  auto node = open_.extract(connection);
  const std::int64_t handle = node.key();
  SealedConnection& closing = *node.mapped();
  closing_.insert(std::move(node));
  closing.close(lifetime_.bind([this, handle] { closing_.erase(handle); }));
}

SealedConnection& TransferTable::at(const Map& arguments) const {
  const auto found = open_.find(sizeIn(arguments, "handle"));
  if (found == open_.end()) throw PlatformError("There is no such sealed connection.");
  return *found->second;
}

}  // namespace brevanholt::platform
