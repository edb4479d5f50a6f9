#pragma once

#include "platform/gtk/LoopSource.h"
#include "platform/linux/bus/Bus.h"
#include "platform/linux/previews/ThumbnailCache.h"

#include <optional>
#include <vector>

namespace brevanholt::platform {

inline constexpr const char* kTumblerService = "org.freedesktop.thumbnails.Thumbnailer1";
inline constexpr const char* kTumblerPath = "/org/freedesktop/thumbnails/Thumbnailer1";

constexpr BusMethod tumblerMethod(const char* method) {
  return {kTumblerService, kTumblerPath, kTumblerService, method};
}

constexpr BusSignal tumblerSignal(const char* signal, const char* type) {
  return {kTumblerService, kTumblerPath, kTumblerService, signal, type};
}

// One thumbnail asked for at org.freedesktop.thumbnails.Thumbnailer1. Given up with this object.
class TumblerRequest {
 public:
  struct Document {
    std::string uri;
    std::string mimeType;
  };
  // May destroy the request. An error where the service vanished or took too long; otherwise the
  // thumbnail is in the cache if there is one at all.
  using Callback = UniqueFunction<void(Result<Done>)>;

  TumblerRequest(Bus& bus, Callback callback) : bus_(bus), callback_(std::move(callback)) {}
  ~TumblerRequest();
  TumblerRequest(const TumblerRequest&) = delete;
  TumblerRequest& operator=(const TumblerRequest&) = delete;

  // Once.
  void start(const Document& document, const ThumbnailFlavor& flavor,
             std::chrono::milliseconds timeLimit);

 private:
  void ownerChanged(bool hasOwner);
  void queued(Result<GVariantPointer> reply);
  void finished(std::uint32_t handle);
  void end(Result<Done> result);

  Bus& bus_;
  Callback callback_;
  bool hadOwner_ = false;
  std::optional<std::uint32_t> handle_;       // while the service works on it
  std::vector<std::uint32_t> finishedEarly_;  // before the handle was known
  BusSubscription onFinished_;
  BusSubscription onOwner_;
  LoopSource onTimeLimit_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
