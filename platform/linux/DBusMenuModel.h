#pragma once

#include "platform/desktop/Menu.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brevanholt::platform {

// A menu as `com.canonical.dbusmenu` can say it: rows of one line each. A command is a row; a view
// becomes a row for each of its lines, the first with the view's dot as its icon, and a progress
// bar becomes a row of characters.
//
// A row keeps its id while its item lives; ids are never used again.
class DBusMenuModel {
 public:
  struct Row {
    std::int32_t id = 0;
    std::shared_ptr<const MenuItem> item;
    std::string text;  // empty for a separator
    std::optional<SystemColor> dot;
  };

  // `onRowsChanged` after the menu was built anew, `onRowChanged` when a row's text has changed.
  DBusMenuModel(const Menu& menu, std::function<void()> onRowsChanged,
                std::function<void(std::int32_t id)> onRowChanged);

  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
  [[nodiscard]] const Row* find(std::int32_t id) const;
  // Grows each time the rows do change.
  [[nodiscard]] std::uint32_t revision() const { return revision_; }

 private:
  class RowMaker;

  void rebuild();
  void setText(std::size_t index, std::string text);

  const Menu& menu_;
  std::function<void()> onRowsChanged_;
  std::function<void(std::int32_t)> onRowChanged_;
  std::vector<Row> rows_;
  std::vector<Connection> viewConnections_;
  std::int32_t lastId_ = 0;
  std::uint32_t revision_ = 0;
  Connection menuConnection_;
};

}  // namespace brevanholt::platform
