#include "Runner/StatusMenu/DesktopStatusMenuController.h"

#include "Runner/StatusMenu/StatusMenuViews.h"

#include <algorithm>

namespace brevanholt {

using platform::FixedView;
using platform::FontWeight;
using platform::List;
using platform::MenuItem;
using platform::ProgressBar;
using platform::SystemColor;
using platform::Truncation;
using platform::Value;

namespace {

bool isSameTransfer(const std::optional<DesktopTransferSnapshot>& left,
                    const std::optional<DesktopTransferSnapshot>& right) {
  return left && right ? left->isSameTransfer(*right) : left.has_value() == right.has_value();
}

std::vector<DesktopTransferSnapshot> parseAll(const List& values) {
  std::vector<DesktopTransferSnapshot> snapshots;
  for (const Value& value : values) {
    if (auto snapshot = DesktopTransferSnapshot::parse(&value)) {
      snapshots.push_back(std::move(*snapshot));
    }
  }
  return snapshots;
}

}  // namespace

DesktopStatusMenuController::DesktopStatusMenuController() {
  menu_.setDelegate(this);
  menu_.minimumWidth = kStatusMenuWidth;
  rebuild();
}

void DesktopStatusMenuController::update(bool available, const Value* active, const List& recent) {
  auto newActive = DesktopTransferSnapshot::parse(active);
  auto newRecent = parseAll(recent);
  const bool isUnchanged =
      available == isAvailable_ && isSameTransfer(newActive, activeTransfer_) &&
      std::ranges::equal(newRecent, recentTransfers_, &DesktopTransferSnapshot::makesSameRow);
  isAvailable_ = available;
  activeTransfer_ = std::move(newActive);
  recentTransfers_ = std::move(newRecent);

  // With nothing in progress the menu is built anew even when nothing changed.
  if (!isUnchanged || !activeTransfer_) return rebuild();
  if (const auto bar = activeProgress_.lock()) bar->setValue(activeTransfer_->progress);
  if (const auto text = activeProgressLabel_.lock()) text->setText(activeTransfer_->progressLabel);
}

void DesktopStatusMenuController::menuWillOpen() {
  if (const auto callback = onWake) callback();
}

void DesktopStatusMenuController::openApp() const {
  if (const auto callback = onOpen) callback();
}

void DesktopStatusMenuController::quitApp() const {
  if (const auto callback = onQuit) callback();
}

void DesktopStatusMenuController::rebuild() {
  activeProgress_.reset();
  activeProgressLabel_.reset();

  std::vector<std::shared_ptr<MenuItem>> items{MenuItem::of(headerView()), MenuItem::separator()};
  if (activeTransfer_) {
    items.push_back(MenuItem::of(activeView(*activeTransfer_)));
    items.push_back(MenuItem::separator());
  }
  if (!recentTransfers_.empty()) {
    items.push_back(MenuItem::of(sectionHeading("Recent")));
    for (const auto& snapshot : recentTransfers_)
      items.push_back(MenuItem::of(recentView(snapshot)));
  } else if (!activeTransfer_) {
    items.push_back(MenuItem::of(emptyView()));
  }
  if (!recentTransfers_.empty() || !activeTransfer_) items.push_back(MenuItem::separator());
  items.push_back(MenuItem::command("Open Brevanholt", "", [this] { openApp(); }));
  items.push_back(MenuItem::separator());
  items.push_back(MenuItem::command("Quit Brevanholt", "q", [this] { quitApp(); }));
  menu_.setItems(std::move(items));
}

std::shared_ptr<FixedView> DesktopStatusMenuController::headerView() const {
  return fixedView(
      dotAndLines(isAvailable_ ? SystemColor::kGreen : SystemColor::kTertiaryLabel,
                  label("Brevanholt", 12.5, FontWeight::kSemibold, SystemColor::kLabel),
                  label(isAvailable_ ? "Available to nearby devices" : "Visibility is turned off",
                        10.5, FontWeight::kRegular, SystemColor::kSecondaryLabel)),
      44, 12);
}

std::shared_ptr<FixedView> DesktopStatusMenuController::activeView(
    const DesktopTransferSnapshot& snapshot) {
  const auto bar = std::make_shared<ProgressBar>(snapshot.progress);
  const auto progressLabel =
      label(snapshot.progressLabel, 10, FontWeight::kRegular, SystemColor::kSecondaryLabel);
  activeProgress_ = bar;
  activeProgressLabel_ = progressLabel;
  return fixedView(
      column(3, {label("Active transfer", 9.5, FontWeight::kSemibold, SystemColor::kBlue),
                 label(snapshot.title, 12.5, FontWeight::kMedium, SystemColor::kLabel),
                 label(snapshot.item, 10.5, FontWeight::kRegular, SystemColor::kSecondaryLabel,
                       Truncation::kMiddle),
                 bar, progressLabel}),
      88, 12);
}

}  // namespace brevanholt
