#pragma once

#include "platform/desktop/DragDestination.h"
#include "platform/desktop/OpenPanel.h"
#include "platform/foundation/SecurityScopes.h"

#include <deque>
#include <map>
#include <utility>

namespace brevanholt::platform {

// A view over which the test drags.
struct FakeDropContainer final : DropContainer {
  [[nodiscard]] NativeView& view() override { return nativeView; }
  void addSubview(NativeView& view) override { subview = &view; }
  void registerForDraggedFiles(DragDestination* newDestination) override {
    destination = newDestination;
  }

  NativeView nativeView;
  NativeView* subview = nullptr;
  DragDestination* destination = nullptr;
};

// Panels that stay open until the test answers them, oldest first.
struct FakeOpenPanel final : OpenPanel {
  void choose(Choice choice, Callback callback) override {
    open.emplace_back(choice, std::move(callback));
  }
  void answer(Locations chosen) {
    Callback callback = std::move(open.front().second);
    open.pop_front();
    callback(std::move(chosen));
  }

  std::deque<std::pair<Choice, Callback>> open;
};

// Scopes that are counted by location, and bookmarks "bookmark of <location>" of whatever is asked
// for. Where an item is said to have moved, its bookmark is stale and leads to the new place.
class FakeSecurityScopes final : public SecurityScopes {
 public:
  std::unique_ptr<SecurityScope> begin(const std::filesystem::path& location) override {
    ++begun[location];
    return std::make_unique<Scope>(held[location]);
  }
  [[nodiscard]] std::optional<std::string> bookmark(
      const std::filesystem::path& location) const override {
    if (gone == location) return std::nullopt;
    return kPrefix + location.native();
  }
  [[nodiscard]] std::optional<ResolvedBookmark> resolve(
      const std::string& bookmark) const override {
    if (!bookmark.starts_with(kPrefix)) return std::nullopt;
    const std::filesystem::path location = bookmark.substr(kPrefix.size());
    const auto newPlace = moved.find(location);
    if (newPlace != moved.end()) return ResolvedBookmark{newPlace->second, true};
    return gone == location ? std::nullopt : std::optional(ResolvedBookmark{location, false});
  }

  std::map<std::filesystem::path, int> begun;
  std::map<std::filesystem::path, int> held;
  std::map<std::filesystem::path, std::filesystem::path> moved;
  std::filesystem::path gone;

 private:
  static inline const std::string kPrefix = "bookmark of ";

  struct Scope final : SecurityScope {
    explicit Scope(int& count) : count_(count) { ++count_; }
    ~Scope() override { --count_; }
    int& count_;
  };
};

}  // namespace brevanholt::platform
