#include "platform/linux/DBusMenuEncoding.h"

#include "platform/linux/DotIcon.h"
#include "platform/linux/GPointers.h"

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
  if (!row.item->isCommand()) properties.add("enabled", g_variant_new_boolean(FALSE));
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

GVariant* rootLayout(const DBusMenuModel& model, std::int32_t depth,
                     const std::set<std::string>& names) {
  Properties properties(names);
  properties.add("children-display", g_variant_new_string("submenu"));
  GVariantBuilder children;
  g_variant_builder_init(&children, G_VARIANT_TYPE("av"));
  if (depth != 0) {
    for (const auto& row : model.rows()) {
      g_variant_builder_add(&children, "v", rowLayout(row, names));
    }
  }
  return g_variant_new("(i@a{sv}@av)", 0, properties.finish(), g_variant_builder_end(&children));
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
