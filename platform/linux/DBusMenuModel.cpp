#include "platform/linux/DBusMenuModel.h"

#include <algorithm>
#include <cmath>

namespace brevanholt::platform {
namespace {

constexpr int kBarCells = 20;

std::string barText(const ProgressBar& bar) {
  const int filled = static_cast<int>(std::lround(bar.shownValue() * kBarCells));
  std::string text;
  for (int cell = 0; cell < kBarCells; ++cell) text += cell < filled ? "█" : "░";
  return text;
}

}  // namespace

// Walks an item's view and adds its rows.
class DBusMenuModel::RowMaker final : public ViewVisitor {
 public:
  RowMaker(DBusMenuModel& model, std::shared_ptr<const MenuItem> item)
      : model_(model), item_(std::move(item)) {}

  void addRow(std::string text) {
    model_.rows_.push_back({.id = ++model_.lastId_,
                            .item = item_,
                            .text = std::move(text),
                            .dot = std::exchange(dot_, std::nullopt)});
  }

  void visit(const Label& label) override {
    const std::size_t index = model_.rows_.size();
    addRow(label.text());
    follow(label.changed, [&model = model_, index, &label] { model.setText(index, label.text()); });
  }
  void visit(const Dot& dot) override { dot_ = dot.color(); }
  void visit(const ProgressBar& bar) override {
    const std::size_t index = model_.rows_.size();
    addRow(barText(bar));
    follow(bar.changed, [&model = model_, index, &bar] { model.setText(index, barText(bar)); });
  }
  void visit(const Stack& stack) override {
    for (const auto& child : stack.children()) child->accept(*this);
  }
  void visit(const FixedView& view) override { view.content().accept(*this); }

 private:
  void follow(Signal& changed, Signal::Slot slot) {
    model_.viewConnections_.push_back(changed.connect(std::move(slot)));
  }

  DBusMenuModel& model_;
  std::shared_ptr<const MenuItem> item_;
  std::optional<SystemColor> dot_;  // for the next row
};

DBusMenuModel::DBusMenuModel(const Menu& menu, std::function<void()> onRowsChanged,
                             std::function<void(std::int32_t)> onRowChanged)
    : menu_(menu),
      onRowsChanged_(std::move(onRowsChanged)),
      onRowChanged_(std::move(onRowChanged)),
      menuConnection_(menu.itemsChanged.connect([this] {
        rebuild();
        onRowsChanged_();
      })) {
  rebuild();
}

const DBusMenuModel::Row* DBusMenuModel::find(std::int32_t id) const {
  const auto found = std::ranges::find(rows_, id, &Row::id);
  return found != rows_.end() ? &*found : nullptr;
}

void DBusMenuModel::rebuild() {
  viewConnections_.clear();
  rows_.clear();
  ++revision_;
  for (const auto& item : menu_.items()) {
    RowMaker maker(*this, item);
    if (item->view() != nullptr) {
      item->view()->accept(maker);
    } else {
      maker.addRow(item->title());
    }
  }
}

void DBusMenuModel::setText(std::size_t index, std::string text) {
  Row& row = rows_[index];
  if (std::exchange(row.text, std::move(text)) == row.text) return;
  onRowChanged_(row.id);
}

}  // namespace brevanholt::platform
