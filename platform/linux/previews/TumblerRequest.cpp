#include "platform/linux/previews/TumblerRequest.h"

#include <algorithm>

namespace brevanholt::platform {

TumblerRequest::~TumblerRequest() {
  if (!handle_) return;
  bus_.call(tumblerMethod("Dequeue"), g_variant_new("(u)", *handle_), "()",
            [](const Result<GVariantPointer>&) {});
}

void TumblerRequest::start(const Document& document, const ThumbnailFlavor& flavor,
                           std::chrono::milliseconds timeLimit) {
  onTimeLimit_ =
      LoopSource::after(timeLimit, [this] { end(PlatformError("the thumbnailer took too long")); });
  onFinished_ = bus_.subscribe(tumblerSignal("Finished", "(u)"), [this](GVariant* parameters) {
    std::uint32_t handle = 0;
    g_variant_get(parameters, "(u)", &handle);
    finished(handle);
  });
  onOwner_ = bus_.watchName(kTumblerService,
                            [this](const std::string& owner) { ownerChanged(!owner.empty()); });

  const char* const uris[] = {document.uri.c_str(), nullptr};
  const char* const types[] = {document.mimeType.c_str(), nullptr};
  bus_.call(tumblerMethod("Queue"),
            g_variant_new("(^as^asssu)", uris, types, flavor.name, "foreground", 0U), "(u)",
            lifetime_.bind([this](Result<GVariantPointer> reply) { queued(std::move(reply)); }),
            timeLimit);
}

void TumblerRequest::ownerChanged(bool hasOwner) {
  if (std::exchange(hadOwner_, hasOwner) && !hasOwner) {
    handle_.reset();
    end(PlatformError("the thumbnailer vanished"));
  }
}

void TumblerRequest::queued(Result<GVariantPointer> reply) {
  if (!reply.ok()) return end(reply.error());
  std::uint32_t handle = 0;
  g_variant_get(reply.value().get(), "(u)", &handle);
  if (std::ranges::find(finishedEarly_, handle) != finishedEarly_.end()) return end(Done{});
  handle_ = handle;
}

void TumblerRequest::finished(std::uint32_t handle) {
  if (!handle_) return finishedEarly_.push_back(handle);
  if (handle != *handle_) return;
  handle_.reset();
  end(Done{});
}

void TumblerRequest::end(Result<Done> result) {
  std::exchange(callback_, nullptr)(std::move(result));
}

}  // namespace brevanholt::platform
