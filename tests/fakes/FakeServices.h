#pragma once

#include "platform/Services.h"

#include <map>
#include <utility>

namespace brevanholt::platform {

// Knows no images until it is told of one. Answers at once or when the test says so.
struct FakeImagePreviewer final : ImagePreviewer {
  void preview(const std::filesystem::path& /*file*/, int maximumDimension,
               Callback callback) override {
    asked.push_back(maximumDimension);
    waiting.push_back(std::move(callback));
    if (!waits) answerWaiting();
  }
  void answerWaiting() {
    for (auto& callback : std::exchange(waiting, {})) callback(answer);
  }

  std::vector<int> asked;  // the maximum dimensions
  std::vector<Callback> waiting;
  Result<std::optional<Bytes>> answer = std::optional<Bytes>();
  bool waits = false;
};

struct FakeThumbnailer final : Thumbnailer {
  void thumbnail(const std::filesystem::path& /*file*/, int /*maximumDimension*/,
                 Callback callback) override {
    ++asked;
    callback(answer);
  }

  int asked = 0;
  Bytes answer;
};

struct FakeNotificationCenter final : NotificationCenter {
  void setOpenHandler(std::function<void()> handler) override { opened = std::move(handler); }
  void requestAuthorization(UniqueFunction<void(Result<bool>)> callback) override {
    callback(true);
  }
  void add(const Notification& /*shown*/, UniqueFunction<void(Result<Done>)> callback) override {
    callback(Done{});
  }
  void remove(const std::string& /*identifier*/) override {}

  std::function<void()> opened;
};

struct FakeLoginItem final : LoginItem {
  [[nodiscard]] Status status() const override { return current; }
  void registerItem() override { current = Status::kEnabled; }
  void unregisterItem() override { current = Status::kNotRegistered; }

  Status current = Status::kNotRegistered;
};

// A network that changes when the test calls `updated`.
struct FakeNetworkMonitor final : NetworkMonitor {
  void start(const std::string& /*queueLabel*/, std::function<void()> handler) override {
    updated = std::move(handler);
    updated();
  }
  void cancel() override { updated = nullptr; }

  std::function<void()> updated;
};

// A token that is counted while it exists.
template <class Token>
struct Counted final : Token {
  explicit Counted(int& counter) : count(counter) { ++count; }
  ~Counted() override { --count; }

  int& count;
};

// Counts the activities that are held, by reason.
struct FakeProcessActivities final : ProcessActivities {
  std::unique_ptr<ProcessActivity> begin(ActivityOptions /*options*/,
                                         const std::string& reason) override {
    return std::make_unique<Counted<ProcessActivity>>(held[reason]);
  }

  std::map<std::string, int> held;
};

// Counts scopes by location. The bookmark of a location is "bookmark of <location>"; once the item
// has moved, it is stale and resolves to the new place, or fails if that is empty.
struct FakeSecurityScopes final : SecurityScopes {
  using Path = std::filesystem::path;

  std::unique_ptr<SecurityScope> begin(const Path& location) override {
    ++begun[location];
    return std::make_unique<Counted<SecurityScope>>(held[location]);
  }
  [[nodiscard]] std::optional<std::string> bookmark(const Path& location) const override {
    return kPrefix + location.native();
  }
  [[nodiscard]] std::optional<ResolvedBookmark> resolve(
      const std::string& bookmark) const override {
    if (!bookmark.starts_with(kPrefix)) return std::nullopt;
    const Path location = bookmark.substr(kPrefix.size());
    const auto newPlace = moved.find(location);
    if (newPlace == moved.end()) return ResolvedBookmark{location, false};
    if (newPlace->second.empty()) return std::nullopt;
    return ResolvedBookmark{newPlace->second, true};
  }

  std::map<Path, int> begun;
  std::map<Path, int> held;
  std::map<Path, Path> moved;

  static inline const std::string kPrefix = "bookmark of ";
};

}  // namespace brevanholt::platform
