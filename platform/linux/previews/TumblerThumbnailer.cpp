#include "platform/linux/previews/TumblerThumbnailer.h"

#include "platform/files/Files.h"
#include "platform/foundation/Log.h"
#include "platform/gtk/ContentType.h"
#include "platform/linux/previews/TumblerRequest.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

std::string uriOf(const fs::path& file) {
  const GCharPointer uri(g_filename_to_uri(file.c_str(), nullptr, nullptr));
  if (!uri) throw PlatformError("not an absolute path: " + file.string());
  return uri.get();
}

std::int64_t modificationTime(const fs::path& file) {
  struct stat information {};
  if (::stat(file.c_str(), &information) != 0) throw FileError("look at", file, errno);
  return information.st_mtim.tv_sec;
}

const ThumbnailFlavor* flavorIn(GVariant* reply, int pixels) {
  std::vector<std::string> available;
  GVariantIter* names = nullptr;
  const char* name = nullptr;
  g_variant_get(reply, "(as)", &names);
  while (g_variant_iter_next(names, "&s", &name) != FALSE) available.emplace_back(name);
  g_variant_iter_free(names);
  return flavorFor(pixels, available);
}

}  // namespace

TumblerThumbnailer::TumblerThumbnailer(Bus& sessionBus, ChildImagePreviewer& previewer,
                                       Options options)
    : bus_(sessionBus),
      previewer_(previewer),
      options_(std::move(options)),
      jobs_({.running = options_.mostAtOnce}, [this](Jobs::Position job) { start(job); }) {}

void TumblerThumbnailer::thumbnail(const fs::path& file, int maximumDimension, Callback callback) {
  jobs_.add({.file = file,
             .maximumDimension = maximumDimension,
             .result = OwedResult<Bytes>(std::move(callback)),
             .document = {},
             .request = nullptr,
             .asked = {}});
}

void TumblerThumbnailer::start(Jobs::Position job) {
  if (std::chrono::steady_clock::now() < silentUntil_) {
    return std::move(jobs_.remove(job).result).deliver(PlatformError("the thumbnailer is silent"));
  }
  try {
    job->document = {.uri = uriOf(job->file), .mimeType = contentTypeOf(job->file)};
  } catch (const PlatformError& error) {
    return std::move(jobs_.remove(job).result).deliver(error);
  }
  job->asked = std::chrono::steady_clock::now();
  bus_.call(tumblerMethod("GetFlavors"), nullptr, "(as)",
            lifetime_.bind([this, job](Result<GVariantPointer> reply) {
              flavorsKnown(job, std::move(reply));
            }),
            options_.answerLimit);
}

void TumblerThumbnailer::flavorsKnown(Jobs::Position job, Result<GVariantPointer> reply) {
  if (!reply.ok()) {
    if (std::chrono::steady_clock::now() - job->asked >= options_.answerLimit) {
      silentUntil_ = std::chrono::steady_clock::now() + options_.retryAfter;
    }
    if (!std::exchange(isKnownMissing_, true)) {
      logInfo("documents have no previews: " + reply.error().message());
    }
    return fail(job, reply.error());
  }
  const ThumbnailFlavor* flavor = flavorIn(reply.value().get(), job->maximumDimension);
  if (flavor == nullptr)
    return fail(job, PlatformError("the thumbnailer has no size that is known"));
  job->request = std::make_unique<TumblerRequest>(
      bus_, [this, job, flavor](const Result<Done>& result) { made(job, *flavor, result); });
  job->request->start(job->document, *flavor, options_.timeLimit);
}

void TumblerThumbnailer::made(Jobs::Position job, const ThumbnailFlavor& flavor,
                              const Result<Done>& result) {
  if (!result.ok()) return fail(job, result.error());
  Job finished = jobs_.remove(job);
  jobs_.startWaiting();
  read(std::move(finished), flavor);
}

void TumblerThumbnailer::read(Job job, const ThumbnailFlavor& flavor) {
  const std::string& uri = job.document.uri;
  std::int64_t modified = 0;
  try {
    modified = modificationTime(job.file);
  } catch (const PlatformError& error) {
    return std::move(job.result).deliver(error);
  }
  previewer_.previewThumbnail(
      thumbnailPath(options_.cacheHome, flavor, uri), {.uri = uri, .modified = modified},
      std::min(job.maximumDimension, flavor.edge),
      [result = std::move(job.result)](Result<std::optional<Bytes>> picture) mutable {
        if (!picture.ok()) return std::move(result).deliver(picture.error());
        if (!picture.value()) return std::move(result).deliver(PlatformError("no thumbnail"));
        std::move(result).deliver(*picture.value());
      });
}

void TumblerThumbnailer::fail(Jobs::Position job, const PlatformError& error) {
  auto result = jobs_.remove(job).result;
  jobs_.startWaiting();
  std::move(result).deliver(error);
}

}  // namespace brevanholt::platform
