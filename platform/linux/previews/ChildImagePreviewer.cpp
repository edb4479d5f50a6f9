#include "platform/linux/previews/ChildImagePreviewer.h"

#include "platform/files/Files.h"
#include "platform/foundation/Log.h"
#include "preview/PngFile.h"
#include "preview/Protocol.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

using Picture = std::optional<Bytes>;

// A picture of so many pixels that does not compress at all, and some more for what is around it.
std::size_t mostOutput(int maximumDimension) {
  const auto edge = static_cast<std::size_t>(maximumDimension);
  return edge * (edge * 4 + 1) / 100 * 101 + (64 << 10);
}

// Whether the child wrote what it says it wrote. A stranger's bytes may have taken it over.
bool isPicture(const Bytes& output, int maximumDimension) {
  const auto png = preview::PngFile::parse(output.span());
  const auto most = static_cast<std::uint32_t>(maximumDimension);
  return png && png->length == output.size() && std::min(png->width, png->height) > 0 &&
         std::max(png->width, png->height) <= most;
}

Result<Picture> pictureIn(const CollectedProcess::Outcome& outcome, int maximumDimension) {
  switch (outcome.exitStatus) {
    case preview::kPreviewed:
      if (isPicture(outcome.output, maximumDimension)) return Picture(outcome.output);
      return PlatformError("what was decoded is no picture");
    case preview::kNotAnImage:
      return Picture();
    case preview::kRefused:
      return PlatformError("the image is larger than any has reason to be");
    case preview::kDamaged:
      return PlatformError("the image is damaged");
    case preview::kForeign:
      return PlatformError("the thumbnail is not of this file as it is");
    default:
      return PlatformError("decoding ended with status " + std::to_string(outcome.exitStatus));
  }
}

}  // namespace

ChildImagePreviewer::ChildImagePreviewer(Options options)
    : options_(std::move(options)),
      jobs_(
          {.running = options_.mostChildren, .aside = options_.mostSlowChildren},
          [this](Jobs::Position job) { start(job); },
          [](Jobs::Position job) {
            job->onSlow.stop();
            job->child.reset();
          }),
      sandbox_(options_.child, options_.bubblewrap, options_.isInFlatpak,
               options_.retrySandboxAfter) {}

void ChildImagePreviewer::preview(const std::filesystem::path& file, int maximumDimension,
                                  Callback callback) {
  add(file, maximumDimension, {}, std::move(callback));
}

void ChildImagePreviewer::previewThumbnail(const std::filesystem::path& thumbnail,
                                           const Original& original, int maximumDimension,
                                           Callback callback) {
  add(thumbnail, maximumDimension, {original.uri, std::to_string(original.modified)},
      std::move(callback));
}

void ChildImagePreviewer::add(const std::filesystem::path& file, int maximumDimension,
                              std::vector<std::string> arguments, Callback callback) {
  arguments.insert(arguments.begin(), std::to_string(maximumDimension));
  Job job{.file = file,
          .maximumDimension = maximumDimension,
          .arguments = std::move(arguments),
          .result = OwedResult<Picture>(std::move(callback)),
          .child = nullptr,
          .onSlow = {}};
  sandbox_.whenKnown([this, job = std::move(job)]() mutable { jobs_.add(std::move(job)); });
}

void ChildImagePreviewer::start(Jobs::Position job) {
  const CollectedProcess::Limits limits{.time = options_.timeLimit,
                                        .output = mostOutput(job->maximumDimension)};
  try {
    job->child = std::make_unique<CollectedProcess>(
        sandbox_.command(job->arguments), openRegularFile(job->file), limits,
        [this, job](const Result<CollectedProcess::Outcome>& outcome) { ended(job, outcome); });
    job->onSlow = LoopSource::after(options_.slowAfter, [this, job] { jobs_.standAside(job); });
  } catch (const PlatformError& error) {
    std::move(jobs_.remove(job).result).deliver(error);
  }
}

void ChildImagePreviewer::ended(Jobs::Position job,
                                const Result<CollectedProcess::Outcome>& outcome) {
  auto picture = outcome.ok() ? pictureIn(outcome.value(), job->maximumDimension)
                              : Result<Picture>(outcome.error());
  auto result = jobs_.remove(job).result;
  jobs_.startWaiting();
  std::move(result).deliver(std::move(picture));
}

}  // namespace brevanholt::platform
