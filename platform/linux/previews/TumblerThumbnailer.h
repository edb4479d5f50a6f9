#pragma once

#include "platform/linux/previews/ChildImagePreviewer.h"
#include "platform/linux/previews/TumblerRequest.h"
#include "platform/services/Thumbnailer.h"

namespace brevanholt::platform {

// Thumbnails that Tumbler makes, in its own process, and leaves in the desktop's cache. What it
// made of a stranger's document is read as carefully as the document. A few are asked for at once.
// A service that does not answer is left alone for a while.
class TumblerThumbnailer final : public Thumbnailer {
 public:
  struct Options {
    std::filesystem::path cacheHome;
    std::chrono::milliseconds timeLimit = std::chrono::seconds(30);  // for each thumbnail
    // For a question about the service. D-Bus may have to start the service first, which takes many
    // seconds on a busy machine.
    std::chrono::milliseconds answerLimit = std::chrono::seconds(20);
    // Until a service that did not answer is asked again.
    std::chrono::milliseconds retryAfter = std::chrono::minutes(1);
    std::size_t mostAtOnce = 2;
  };

  TumblerThumbnailer(Bus& sessionBus, ChildImagePreviewer& previewer, Options options);

  void thumbnail(const std::filesystem::path& file, int maximumDimension,
                 Callback callback) override;

 private:
  struct Job {
    std::filesystem::path file;
    int maximumDimension = 0;
    OwedResult<Bytes> result;
    TumblerRequest::Document document;
    std::unique_ptr<TumblerRequest> request;
    std::chrono::steady_clock::time_point asked;
    bool isSlow = false;
  };
  using Jobs = BoundedJobs<Job>;

  void start(Jobs::Position job);
  void flavorsKnown(Jobs::Position job, Result<GVariantPointer> reply);
  void made(Jobs::Position job, const ThumbnailFlavor& flavor, const Result<Done>& result);
  void read(Job job, const ThumbnailFlavor& flavor);
  void fail(Jobs::Position job, const PlatformError& error);

  Bus& bus_;
  ChildImagePreviewer& previewer_;
  Options options_;
  bool isKnownMissing_ = false;
  std::chrono::steady_clock::time_point silentUntil_;
  Jobs jobs_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
