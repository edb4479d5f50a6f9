#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/channel/Value.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/PlatformError.h"

#include <functional>

namespace brevanholt::platform {

// Calls back once a descriptor is ready, or not at all when this goes first. One wait at a time.
class ReadinessWatch {
 public:
  ReadinessWatch() = default;
  ~ReadinessWatch() { stop(); }
  ReadinessWatch(const ReadinessWatch&) = delete;
  ReadinessWatch& operator=(const ReadinessWatch&) = delete;

  enum class For { kReading, kWriting };
  // `ready` says whether to go on waiting. It may end this.
  void start(int descriptor, For purpose, std::function<bool()> ready);
  void stop();
  [[nodiscard]] bool isWaiting() const { return source_ != 0; }

 private:
  std::function<bool()> ready_;
  unsigned source_ = 0;
};

// The error of the page's sockets.
[[nodiscard]] MethodError socketError(const std::exception& error);

// A socket that the page has open. Destroying it closes it and answers what waits on it with
// ECANCELED. Nothing here blocks.
class EngineSocket {
 public:
  virtual ~EngineSocket() = default;

 protected:
  explicit EngineSocket(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
  [[nodiscard]] int descriptor() const { return descriptor_.get(); }

 private:
  FileDescriptor descriptor_;
};

// A reply that may be owed for as long as a socket is open.
class OwedReply {
 public:
  ~OwedReply() { fail(SystemError("wait for the socket", ECANCELED)); }
  OwedReply() = default;
  OwedReply(const OwedReply&) = delete;
  OwedReply& operator=(const OwedReply&) = delete;

  // Throws PlatformError where one is owed already.
  void take(MethodResult& result);
  void succeed(Value value);
  void fail(const std::exception& error);
  [[nodiscard]] bool isOwed() const { return result_.has_value(); }

 private:
  std::optional<MethodResult> result_;
};

}  // namespace brevanholt::platform
