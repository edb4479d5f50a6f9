#pragma once

#include "platform/foundation/OwedResult.h"
#include "platform/linux/previews/BoundedJobs.h"
#include "platform/linux/previews/PreviewSandbox.h"
#include "platform/services/ImagePreviewer.h"

namespace brevanholt::platform {

// Decodes each image in a process of its own, brevanholt-preview, that has no rights and ends with
// its answer. A few run at once; what is asked for beyond that waits in order. Those that take long
// do not keep the others waiting.
class ChildImagePreviewer final : public ImagePreviewer {
 public:
  struct Options {
    std::filesystem::path child;
    std::filesystem::path bubblewrap = "/usr/bin/bwrap";
    bool isInFlatpak = false;
    std::chrono::milliseconds timeLimit = std::chrono::seconds(10);  // for each child
    std::size_t mostChildren = 2;
    // A child that runs for longer makes room for another one, though only so many do.
    std::chrono::milliseconds slowAfter = std::chrono::milliseconds(300);
    std::size_t mostSlowChildren = 2;
    // Until bubblewrap is tried again where it did not work.
    std::chrono::milliseconds retrySandboxAfter = std::chrono::minutes(1);
  };
  // The file that a thumbnail was made of.
  struct Original {
    std::string uri;
    std::int64_t modified = 0;  // seconds since 1970
  };

  explicit ChildImagePreviewer(Options options);

  void preview(const std::filesystem::path& file, int maximumDimension, Callback callback) override;
  // Of a thumbnail that another program made; an error where it is not one of `original`.
  void previewThumbnail(const std::filesystem::path& thumbnail, const Original& original,
                        int maximumDimension, Callback callback);

 private:
  struct Job {
    std::filesystem::path file;
    int maximumDimension = 0;
    std::vector<std::string> arguments;
    OwedResult<std::optional<Bytes>> result;
    std::unique_ptr<CollectedProcess> child;
    LoopSource onSlow;
    bool isSlow = false;
  };
  using Jobs = BoundedJobs<Job>;

  void add(const std::filesystem::path& file, int maximumDimension,
           std::vector<std::string> arguments, Callback callback);
  void start(Jobs::Position job);
  void ended(Jobs::Position job, const Result<CollectedProcess::Outcome>& outcome);

  Options options_;
  Jobs jobs_;
  PreviewSandbox sandbox_;
};

}  // namespace brevanholt::platform
