#pragma once

#include "platform/desktop/View.h"
#include "platform/foundation/Signal.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace brevanholt::platform {

// One item of a menu: a separator, a view, or a command.
class MenuItem {
 public:
  [[nodiscard]] static std::shared_ptr<MenuItem> separator() {
    return std::make_shared<MenuItem>(MenuItem());
  }
  [[nodiscard]] static std::shared_ptr<MenuItem> of(std::shared_ptr<FixedView> view) {
    MenuItem item;
    item.view_ = std::move(view);
    return std::make_shared<MenuItem>(std::move(item));
  }
  // `keyEquivalent` is a letter that, with Control held, chooses the item; empty for none.
  [[nodiscard]] static std::shared_ptr<MenuItem> command(std::string title,
                                                         std::string keyEquivalent,
                                                         std::function<void()> action) {
    MenuItem item;
    item.title_ = std::move(title);
    item.keyEquivalent_ = std::move(keyEquivalent);
    item.action_ = std::move(action);
    return std::make_shared<MenuItem>(std::move(item));
  }

  [[nodiscard]] bool isSeparator() const { return view_ == nullptr && !isCommand(); }
  [[nodiscard]] bool isCommand() const { return static_cast<bool>(action_); }
  // Null unless the item is a view.
  [[nodiscard]] const std::shared_ptr<FixedView>& view() const { return view_; }
  [[nodiscard]] const std::string& title() const { return title_; }
  [[nodiscard]] const std::string& keyEquivalent() const { return keyEquivalent_; }
  void activate() const {
    if (action_) action_();
  }

 private:
  MenuItem() = default;

  std::shared_ptr<FixedView> view_;
  std::string title_;
  std::string keyEquivalent_;
  std::function<void()> action_;
};

class MenuDelegate {
 public:
  virtual ~MenuDelegate() = default;
  virtual void menuWillOpen() = 0;
};

// A menu's items, apart from how they are shown. Renderers connect to its signals, and tell it when
// the user opens it.
class Menu {
 public:
  [[nodiscard]] const std::vector<std::shared_ptr<MenuItem>>& items() const { return items_; }
  void setItems(std::vector<std::shared_ptr<MenuItem>> items) {
    items_ = std::move(items);
    itemsChanged.emit();
  }

  // Borrowed.
  void setDelegate(MenuDelegate* delegate) { delegate_ = delegate; }
  void willOpen() const {
    if (delegate_ != nullptr) delegate_->menuWillOpen();
  }
  // Closes the menu where it is open.
  void cancelTracking() const { trackingCancelled.emit(); }

  double minimumWidth = 0;
  mutable Signal itemsChanged;
  mutable Signal trackingCancelled;

 private:
  std::vector<std::shared_ptr<MenuItem>> items_;
  MenuDelegate* delegate_ = nullptr;
};

}  // namespace brevanholt::platform
