#include "platform/linux/menu/DBusMenuModel.h"

#include "platform/foundation/DisplayText.h"
#include "platform/linux/menu/ShownItems.h"

#include <algorithm>
#include <cmath>

namespace brevanholt::platform {
namespace {

constexpr int kBarCells = 20;
constexpr std::size_t kMostReplacedCommands = 64;
constexpr std::size_t kMostColumns = 40;  // about as wide as the menu; the tray knows its font

std::string barText(const ProgressBar& bar) {
  const int filled = static_cast<int>(std::lround(bar.shownValue() * kBarCells));
  std::string text;
  for (int cell = 0; cell < kBarCells; ++cell) text += cell < filled ? "█" : "░";
  return text;
}

std::string lineText(const Label& label) {
  const Cut cut = label.style().truncation == Truncation::kMiddle ? Cut::kMiddle : Cut::kTail;
  return directionIsolated(cutToColumns(onOneLine(label.text()), kMostColumns, cut));
}

bool isOfSameKind(const DBusMenuModel::Row& left, const DBusMenuModel::Row& right) {
  if (left.item->isSeparator() != right.item->isSeparator()) return false;
  return left.item->title() == right.item->title() &&
         left.item->keyEquivalent() == right.item->keyEquivalent() &&
         left.dot.has_value() == right.dot.has_value();
}

}  // namespace

// Makes the rows of one state of the menu, still without ids.
class DBusMenuModel::RowMaker final : public ViewVisitor {
 public:
  explicit RowMaker(DBusMenuModel& model) : model_(model) { model_.viewConnections_.clear(); }

  std::vector<Row> make() {
    for (const auto& item : shownItems(model_.menu_)) {
      item_ = item;
      dot_.reset();
      if (item->view() != nullptr) {
        item->view()->accept(*this);
      } else {
        addRow(item->title());
      }
    }
    return std::move(rows_);
  }

  void visit(const Label& label) override {
    addRow(lineText(label));
    follow(label.changed);
  }
  void visit(const Dot& dot) override { dot_ = dot.color(); }
  void visit(const ProgressBar& bar) override {
    addRow(barText(bar));
    follow(bar.changed);
  }
  void visit(const Stack& stack) override {
    for (const auto& child : stack.children()) child->accept(*this);
  }
  void visit(const FixedView& view) override { view.content().accept(*this); }

 private:
  void addRow(std::string text) {
    rows_.push_back(
        {.item = item_, .text = std::move(text), .dot = std::exchange(dot_, std::nullopt)});
  }
  void follow(Signal& changed) {
    model_.viewConnections_.push_back(changed.connect([&model = model_] { model.viewChanged(); }));
  }

  DBusMenuModel& model_;
  std::shared_ptr<const MenuItem> item_;
  std::optional<SystemColor> dot_;  // for the next row
  std::vector<Row> rows_;
};

DBusMenuModel::DBusMenuModel(const Menu& menu, std::function<void()> onChanged)
    : menu_(menu),
      onChanged_(std::move(onChanged)),
      menuConnection_(menu.itemsChanged.connect([this] { viewChanged(); })) {}

const std::vector<DBusMenuModel::Row>& DBusMenuModel::rows() {
  refresh();
  return rows_;
}

const DBusMenuModel::Row* DBusMenuModel::find(std::int32_t id) {
  const auto found = std::ranges::find(rows(), id, &Row::id);
  return found != rows_.end() ? &*found : nullptr;
}

std::shared_ptr<const MenuItem> DBusMenuModel::clickedItem(std::int32_t id) {
  if (const Row* row = find(id)) return row->item;
  const auto replaced = replacedCommands_.find(id);
  if (replaced == replacedCommands_.end()) return nullptr;
  const auto successor = std::ranges::find_if(rows_, [&replaced](const Row& row) {
    return row.item->isCommand() && row.item->title() == replaced->second;
  });
  return successor != rows_.end() ? successor->item : nullptr;
}

std::uint32_t DBusMenuModel::revision() {
  refresh();
  return revision_;
}

DBusMenuModel::RowChanges DBusMenuModel::takeChanges() {
  refresh();
  return std::exchange(changes_, {});
}

void DBusMenuModel::viewChanged() {
  if (!std::exchange(isStale_, true)) onChanged_();
}

void DBusMenuModel::refresh() {
  if (!std::exchange(isStale_, false)) return;
  auto rows = RowMaker(*this).make();
  if (std::ranges::equal(rows, rows_, isOfSameKind)) {
    updateRows(std::move(rows));
  } else {
    replaceRows(std::move(rows));
  }
}

void DBusMenuModel::replaceRows(std::vector<Row> rows) {
  for (const Row& row : rows_) {
    if (row.item->isCommand()) replacedCommands_.emplace(row.id, row.item->title());
  }
  while (replacedCommands_.size() > kMostReplacedCommands) {
    replacedCommands_.erase(replacedCommands_.begin());
  }
  rows_ = std::move(rows);
  for (Row& row : rows_) row.id = ++lastId_;
  changes_.clear();
  ++revision_;
}

void DBusMenuModel::updateRows(std::vector<Row> rows) {
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const Row& before = rows_[index];
    Row& row = rows[index];
    row.id = before.id;
    if (row.text != before.text) changes_[row.id].ofText = true;
    if (row.dot != before.dot) changes_[row.id].ofDot = true;
  }
  rows_ = std::move(rows);
}

}  // namespace brevanholt::platform
