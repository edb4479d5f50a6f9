#pragma once

#include "platform/services/ImagePreviewer.h"
#include "platform/services/Thumbnailer.h"

#include <filesystem>
#include <utility>
#include <vector>

namespace brevanholt::platform {

// Gives what the test has prepared, at once or when the test says so, and remembers what was asked.
template <class Service, class T>
class FakePreviews : public Service {
 public:
  using Asked = std::pair<std::filesystem::path, int>;

  explicit FakePreviews(T usual) : answer(std::move(usual)) {}

  void answerWaiting() {
    for (auto& callback : std::exchange(waiting_, {})) callback(answer);
  }

  std::vector<Asked> asked;
  Result<T> answer;
  bool waits = false;

 protected:
  void ask(const std::filesystem::path& file, int maximumDimension,
           typename Service::Callback callback) {
    asked.emplace_back(file, maximumDimension);
    waiting_.push_back(std::move(callback));
    if (!waits) answerWaiting();
  }

 private:
  std::vector<typename Service::Callback> waiting_;
};

// Knows no images until it is told of one.
struct FakeImagePreviewer final : FakePreviews<ImagePreviewer, std::optional<Bytes>> {
  FakeImagePreviewer() : FakePreviews(std::nullopt) {}
  void preview(const std::filesystem::path& file, int maximumDimension,
               Callback callback) override {
    ask(file, maximumDimension, std::move(callback));
  }
};

struct FakeThumbnailer final : FakePreviews<Thumbnailer, Bytes> {
  FakeThumbnailer() : FakePreviews(Bytes()) {}
  void thumbnail(const std::filesystem::path& file, int maximumDimension,
                 Callback callback) override {
    ask(file, maximumDimension, std::move(callback));
  }
};

}  // namespace brevanholt::platform
