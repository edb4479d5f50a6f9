#pragma once

#include "platform/linux/menu/DBusMenuModel.h"

#include <gio/gio.h>

#include <set>
#include <string>
#include <vector>

namespace brevanholt::platform {

// The values of `com.canonical.dbusmenu`. All are floating.

// a{sv}: the row's properties, or those of them that are named.
[[nodiscard]] GVariant* rowProperties(const DBusMenuModel::Row& row,
                                      const std::set<std::string>& names);

// (ia{sv}av): the row without children.
[[nodiscard]] GVariant* rowLayout(const DBusMenuModel::Row& row,
                                  const std::set<std::string>& names);

// a{sv}: the properties of row 0, which holds the others.
[[nodiscard]] GVariant* rootProperties(const std::set<std::string>& names);

// (ia{sv}av): the whole menu, as the children of row 0; without them at depth 0.
[[nodiscard]] GVariant* rootLayout(const std::vector<DBusMenuModel::Row>& rows, std::int32_t depth,
                                   const std::set<std::string>& names);

// (a(ia{sv})a(ias)): what the changed rows show now; nothing is taken from any.
[[nodiscard]] GVariant* propertyUpdates(const std::vector<DBusMenuModel::Row>& rows,
                                        const DBusMenuModel::RowChanges& changes);

// The names in an array of strings.
[[nodiscard]] std::set<std::string> namesIn(GVariant* strings);

}  // namespace brevanholt::platform
