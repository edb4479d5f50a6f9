#pragma once

#include "platform/desktop/Menu.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevanholt::platform {

// A menu as `com.canonical.dbusmenu` can say it: rows of one line each. A command is a row; a view
// becomes a row for each of its lines, the first with the view's dot as its icon, and a progress
// bar becomes a row of characters.
//
// The rows are made when they are asked for, not with each change. While a menu that is built anew
// has rows of the same kinds, the rows keep their ids, and what they show changes. Otherwise all of
// them are new: trays do not agree on what becomes of rows that move. Ids are never used again.
class DBusMenuModel {
 public:
  struct Row {
    std::int32_t id = 0;
    std::shared_ptr<const MenuItem> item;
    std::string text;  // empty for a separator
    std::optional<SystemColor> dot;
  };
  struct RowChange {
    bool ofText = false;
    bool ofDot = false;  // of its colour
  };
  using RowChanges = std::map<std::int32_t, RowChange>;  // by the row's id

  // `onChanged` when rows() may have changed; then not again before it was called.
  DBusMenuModel(const Menu& menu, std::function<void()> onChanged);

  [[nodiscard]] const std::vector<Row>& rows();
  [[nodiscard]] const Row* find(std::int32_t id);
  // The item whose row the user clicked. A click on a command whose row was replaced meanwhile is
  // one on the command with its title. Null where there is none.
  [[nodiscard]] std::shared_ptr<const MenuItem> clickedItem(std::int32_t id);
  // Grows each time that other rows are there.
  [[nodiscard]] std::uint32_t revision();
  // What has changed in rows that stayed, since this was last called.
  [[nodiscard]] RowChanges takeChanges();

 private:
  class RowMaker;

  void viewChanged();
  void refresh();
  void replaceRows(std::vector<Row> rows);
  void updateRows(std::vector<Row> rows);

  const Menu& menu_;
  std::function<void()> onChanged_;
  std::vector<Row> rows_;
  std::map<std::int32_t, std::string> replacedCommands_;  // titles, by the ids of the last ones
  RowChanges changes_;
  std::vector<Connection> viewConnections_;
  std::int32_t lastId_ = 0;
  std::uint32_t revision_ = 0;
  bool isStale_ = true;
  Connection menuConnection_;
};

}  // namespace brevanholt::platform
