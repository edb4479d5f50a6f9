#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/files/Files.h"
#include "platform/foundation/Log.h"

#include <algorithm>
#include <cmath>

namespace brevanholt {

namespace fs = std::filesystem;
using platform::Bytes;
using platform::ImagePreviewer;
using platform::MethodResult;
using platform::Result;

namespace {

constexpr std::int64_t kSmallestDimension = 48;
constexpr std::int64_t kLargestDimension = 1200;
constexpr double kScaleWithoutScreen = 2.0;

int maximumDimensionIn(const CallArguments& arguments) {
  const auto* value = arguments.map().find("maximumDimension");
  const auto asked = value != nullptr ? value->integer() : std::nullopt;
  return static_cast<int>(
      std::clamp(asked.value_or(kLargestDimension), kSmallestDimension, kLargestDimension));
}

// Replies null; the reason is logged.
void answerNone(MethodResult result, const platform::PlatformError& why) {
  platform::logDebug("no preview: " + why.message());
  std::move(result).success();
}

}  // namespace

void MainFlutterWindow::receivedFilePreview(const CallArguments& arguments, MethodResult result) {
  const auto location = arguments.path("location");
  if (!location || !platform::fileExists(*location)) return std::move(result).success();
  receivedFilePreview(*location, maximumDimensionIn(arguments), std::move(result));
}

void MainFlutterWindow::receivedFilePreview(const fs::path& file, int maximumDimension,
                                            MethodResult result) {
  imagePreviewData(file, maximumDimension,
                   [weak = weak_from_this(), file, maximumDimension,
                    result = std::move(result)](Result<std::optional<Bytes>> image) mutable {
                     if (!image.ok()) return answerNone(std::move(result), image.error());
                     if (image.value()) return std::move(result).success(*image.value());
                     const auto self = weak.lock();
                     if (!self) return std::move(result).success();
                     self->documentPreview(file, maximumDimension, std::move(result));
                   });
}

void MainFlutterWindow::imagePreviewData(const fs::path& file, int maximumDimension,
                                         ImagePreviewer::Callback callback) {
  services_.imagePreviewer.preview(file, maximumDimension, std::move(callback));
}

// Documents are drawn for the screen they are shown on; images have the pixels they have.
void MainFlutterWindow::documentPreview(const fs::path& file, int maximumDimension,
                                        MethodResult result) {
  const double scale = services_.screen.mainScaleFactor().value_or(kScaleWithoutScreen);
  services_.thumbnailer.thumbnail(file, static_cast<int>(std::lround(maximumDimension * scale)),
                                  [result = std::move(result)](Result<Bytes> thumbnail) mutable {
                                    if (!thumbnail.ok()) {
                                      return answerNone(std::move(result), thumbnail.error());
                                    }
                                    std::move(result).success(thumbnail.value());
                                  });
}

}  // namespace brevanholt
