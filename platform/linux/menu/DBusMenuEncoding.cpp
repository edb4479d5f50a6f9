#include "platform/linux/menu/DBusMenuEncoding.h"

#include "platform/gtk/GLibPointers.h"
#include "platform/linux/menu/DotIcon.h"

namespace brevanholt::platform {
namespace {

// Underscores mark mnemonics; doubled they are themselves.
std::string escapedLabel(const std::string& text) {
  std::string label;
  for (const char letter : text) label.append(letter == '_' ? 2 : 1, letter);
  return label;
}

class Properties {
 public:
  explicit Properties(const std::set<std::string>& names) : names_(names) {
    g_variant_builder_init(&builder_, G_VARIANT_TYPE("a{sv}"));
  }
  void add(const char* name, GVariant* value) {
    const GVariantPointer owned(g_variant_ref_sink(value));
    if (!names_.empty() && !names_.contains(name)) return;
    g_variant_builder_add(&builder_, "{sv}", name, owned.get());
  }
  [[nodiscard]] GVariant* finish() { return g_variant_builder_end(&builder_); }

 private:
  const std::set<std::string>& names_;
  GVariantBuilder builder_{};
};

GVariant* controlAnd(const std::string& key) {
  const char* const press[] = {"Control", key.c_str(), nullptr};
  GVariant* presses[] = {g_variant_new_strv(press, -1)};
  return g_variant_new_array(G_VARIANT_TYPE_STRING_ARRAY, presses, 1);
}

}  // namespace

GVariant* rowProperties(const DBusMenuModel::Row& row, const std::set<std::string>& names) {
  Properties properties(names);
  if (row.item->isSeparator()) {
    properties.add("type", g_variant_new_string("separator"));
    return properties.finish();
  }
  properties.add("label", g_variant_new_string(escapedLabel(row.text).c_str()));
  // Trays draw all of a disabled row in grey, so a row with a dot is enabled; it does nothing.
  if (!row.item->isCommand() && !row.dot) properties.add("enabled", g_variant_new_boolean(FALSE));
  if (!row.item->keyEquivalent().empty()) {
    properties.add("shortcut", controlAnd(row.item->keyEquivalent()));
  }
  if (row.dot) {
    const auto& png = dotIcon(*row.dot);
    properties.add("icon-data", g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, png.data(),
                                                          png.size(), sizeof(png[0])));
  }
  return properties.finish();
}

GVariant* rowLayout(const DBusMenuModel::Row& row, const std::set<std::string>& names) {
  return g_variant_new("(i@a{sv}@av)", row.id, rowProperties(row, names),
                       g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0));
}

GVariant* rootProperties(const std::set<std::string>& names) {
  Properties properties(names);
  properties.add("children-display", g_variant_new_string("submenu"));
  return properties.finish();
}

GVariant* rootLayout(const std::vector<DBusMenuModel::Row>& rows, std::int32_t depth,
                     const std::set<std::string>& names) {
  GVariantBuilder children;
  g_variant_builder_init(&children, G_VARIANT_TYPE("av"));
  if (depth != 0) {
    for (const auto& row : rows) g_variant_builder_add(&children, "v", rowLayout(row, names));
  }
  return g_variant_new("(i@a{sv}@av)", 0, rootProperties(names), g_variant_builder_end(&children));
}

GVariant* propertyUpdates(const std::vector<DBusMenuModel::Row>& rows,
                          const DBusMenuModel::RowChanges& changes) {
  GVariantBuilder updated;
  g_variant_builder_init(&updated, G_VARIANT_TYPE("a(ia{sv})"));
  for (const auto& row : rows) {
    const auto change = changes.find(row.id);
    if (change == changes.end()) continue;
    std::set<std::string> names;
    if (change->second.ofText) names.insert("label");
    if (change->second.ofDot) names.insert("icon-data");
    g_variant_builder_add(&updated, "(i@a{sv})", row.id, rowProperties(row, names));
  }
  return g_variant_new("(@a(ia{sv})@a(ias))", g_variant_builder_end(&updated),
                       g_variant_new_array(G_VARIANT_TYPE("(ias)"), nullptr, 0));
}

std::set<std::string> namesIn(GVariant* strings) {
  std::set<std::string> names;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, strings);
  const char* name = nullptr;
  while (g_variant_iter_next(&iterator, "&s", &name) != FALSE) names.insert(name);
  return names;
}

}  // namespace brevanholt::platform
