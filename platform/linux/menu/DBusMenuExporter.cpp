#include "platform/linux/menu/DBusMenuExporter.h"

#include "platform/foundation/PlatformError.h"
#include "platform/linux/menu/DBusMenuEncoding.h"

#include <gtk/gtk.h>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kUpdateInterval = 100ms;

constexpr const char* kDescription = R"xml(
<node>
  <interface name="com.canonical.dbusmenu">
    <property name="Version" type="u" access="read"/>
    <property name="TextDirection" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="IconThemePath" type="as" access="read"/>
    <method name="GetLayout">
      <arg type="i" direction="in"/><arg type="i" direction="in"/><arg type="as" direction="in"/>
      <arg type="u" direction="out"/><arg type="(ia{sv}av)" direction="out"/>
    </method>
    <method name="GetGroupProperties">
      <arg type="ai" direction="in"/><arg type="as" direction="in"/>
      <arg type="a(ia{sv})" direction="out"/>
    </method>
    <method name="GetProperty">
      <arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
    </method>
    <method name="Event">
      <arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/>
      <arg type="u" direction="in"/>
    </method>
    <method name="EventGroup">
      <arg type="a(isvu)" direction="in"/><arg type="ai" direction="out"/>
    </method>
    <method name="AboutToShow">
      <arg type="i" direction="in"/><arg type="b" direction="out"/>
    </method>
    <method name="AboutToShowGroup">
      <arg type="ai" direction="in"/><arg type="ai" direction="out"/><arg type="ai" direction="out"/>
    </method>
    <signal name="ItemsPropertiesUpdated"><arg type="a(ia{sv})"/><arg type="a(ias)"/></signal>
    <signal name="LayoutUpdated"><arg type="u"/><arg type="i"/></signal>
    <signal name="ItemActivationRequested"><arg type="i"/><arg type="u"/></signal>
  </interface>
</node>)xml";

PlatformError noSuchRow(std::int32_t id) {
  return PlatformError("There is no menu item " + std::to_string(id));
}

}  // namespace

DBusMenuExporter::DBusMenuExporter(Bus& bus, const Menu& menu, Clicked clicked)
    : menu_(menu),
      clicked_(std::move(clicked)),
      model_(menu, [this] { throttle_.schedule(); }),
      announcedRevision_(model_.revision()),
      object_(bus, kPath, kDescription,
              {.call = [this](std::string_view method,
                              GVariant* parameters) { return call(method, parameters); },
               .property = [this](std::string_view name) { return property(name); }}),
      throttle_(kUpdateInterval, [this] { sendSignals(); }) {}

GVariant* DBusMenuExporter::call(std::string_view method, GVariant* parameters) {
  std::int32_t id = 0;
  if (method == "GetLayout") return getLayout(parameters);
  if (method == "GetGroupProperties") return getGroupProperties(parameters);
  if (method == "GetProperty") return getProperty(parameters);
  if (method == "EventGroup") return eventGroup(parameters);
  if (method == "AboutToShowGroup") return aboutToShowGroup(parameters);
  if (method == "Event") {
    const char* kind = nullptr;
    std::uint32_t time = 0;
    g_variant_get(parameters, "(i&svu)", &id, &kind, nullptr, &time);
    if (!event(id, kind, time)) throw noSuchRow(id);
    return g_variant_new("()");
  }
  if (method == "AboutToShow") {
    g_variant_get(parameters, "(i)", &id);
    return g_variant_new("(b)", aboutToShow(id) ? TRUE : FALSE);
  }
  return nullptr;
}

GVariant* DBusMenuExporter::property(std::string_view name) const {
  if (name == "Version") return g_variant_new_uint32(3);
  if (name == "TextDirection") {
    const bool isMirrored = gtk_widget_get_default_direction() == GTK_TEXT_DIR_RTL;
    return g_variant_new_string(isMirrored ? "rtl" : "ltr");
  }
  if (name == "Status") return g_variant_new_string("normal");
  if (name == "IconThemePath") return g_variant_new_strv(nullptr, 0);
  return nullptr;
}

GVariant* DBusMenuExporter::getLayout(GVariant* parameters) {
  std::int32_t parent = 0;
  std::int32_t depth = 0;
  GVariant* strings = nullptr;
  g_variant_get(parameters, "(ii@as)", &parent, &depth, &strings);
  const GVariantPointer owned(strings);
  const auto names = namesIn(strings);
  const auto* row = model_.find(parent);
  if (parent != 0 && row == nullptr) throw noSuchRow(parent);
  if (parent == 0 && depth != 0) servedRevision_ = model_.revision();
  return g_variant_new(
      "(u@(ia{sv}av))", model_.revision(),
      parent == 0 ? rootLayout(model_.rows(), depth, names) : rowLayout(*row, names));
}

GVariant* DBusMenuExporter::getGroupProperties(GVariant* parameters) {
  GVariantIter* ids = nullptr;
  GVariant* strings = nullptr;
  g_variant_get(parameters, "(ai@as)", &ids, &strings);
  const std::unique_ptr<GVariantIter, FreeWith<g_variant_iter_free>> ownedIds(ids);
  const GVariantPointer ownedStrings(strings);
  const auto names = namesIn(strings);

  std::set<std::int32_t> wanted;
  std::int32_t id = 0;
  while (g_variant_iter_next(ids, "i", &id) != FALSE) wanted.insert(id);
  GVariantBuilder groups;
  g_variant_builder_init(&groups, G_VARIANT_TYPE("a(ia{sv})"));
  if (wanted.empty() || wanted.contains(0)) {  // none named means all
    g_variant_builder_add(&groups, "(i@a{sv})", 0, rootProperties(names));
  }
  for (const auto& row : model_.rows()) {
    if (!wanted.empty() && !wanted.contains(row.id)) continue;
    g_variant_builder_add(&groups, "(i@a{sv})", row.id, rowProperties(row, names));
  }
  return g_variant_new("(@a(ia{sv}))", g_variant_builder_end(&groups));
}

GVariant* DBusMenuExporter::getProperty(GVariant* parameters) {
  std::int32_t id = 0;
  const char* name = nullptr;
  g_variant_get(parameters, "(i&s)", &id, &name);
  const auto* row = model_.find(id);
  if (id != 0 && row == nullptr) throw noSuchRow(id);
  const GVariantPointer properties(
      g_variant_ref_sink(id == 0 ? rootProperties({}) : rowProperties(*row, {})));
  const GVariantPointer value(g_variant_lookup_value(properties.get(), name, nullptr));
  if (!value) throw PlatformError(std::string("The menu item has no property ") + name);
  return g_variant_new("(v)", value.get());
}

GVariant* DBusMenuExporter::eventGroup(GVariant* parameters) {
  GVariantIter* events = nullptr;
  g_variant_get(parameters, "(a(isvu))", &events);
  const std::unique_ptr<GVariantIter, FreeWith<g_variant_iter_free>> owned(events);
  GVariantBuilder unknown;
  g_variant_builder_init(&unknown, G_VARIANT_TYPE("ai"));
  std::int32_t id = 0;
  const char* kind = nullptr;
  std::uint32_t time = 0;
  while (g_variant_iter_next(events, "(i&svu)", &id, &kind, nullptr, &time) != FALSE) {
    if (!event(id, kind, time)) g_variant_builder_add(&unknown, "i", id);
  }
  return g_variant_new("(@ai)", g_variant_builder_end(&unknown));
}

GVariant* DBusMenuExporter::aboutToShowGroup(GVariant* parameters) {
  GVariantIter* ids = nullptr;
  g_variant_get(parameters, "(ai)", &ids);
  const std::unique_ptr<GVariantIter, FreeWith<g_variant_iter_free>> owned(ids);
  GVariantBuilder updated;
  GVariantBuilder unknown;
  g_variant_builder_init(&updated, G_VARIANT_TYPE("ai"));
  g_variant_builder_init(&unknown, G_VARIANT_TYPE("ai"));
  std::int32_t id = 0;
  while (g_variant_iter_next(ids, "i", &id) != FALSE) {
    if (id != 0 && model_.find(id) == nullptr) {
      g_variant_builder_add(&unknown, "i", id);
    } else if (aboutToShow(id)) {
      g_variant_builder_add(&updated, "i", id);
    }
  }
  return g_variant_new("(@ai@ai)", g_variant_builder_end(&updated),
                       g_variant_builder_end(&unknown));
}

bool DBusMenuExporter::event(std::int32_t id, std::string_view kind, std::uint32_t time) {
  const auto item = id != 0 ? model_.clickedItem(id) : nullptr;
  if (id != 0 && item == nullptr) return false;
  if (id == 0 && kind == "opened" && openings_.opened()) menu_.willOpen();
  if (id == 0 && kind == "closed") openings_.closed();
  if (item != nullptr && kind == "clicked") {
    clicked_(time);
    item->activate();
  }
  return true;
}

bool DBusMenuExporter::aboutToShow(std::int32_t id) {
  if (id != 0) {
    if (model_.find(id) == nullptr) throw noSuchRow(id);
    return false;
  }
  if (openings_.aboutToShow()) menu_.willOpen();
  return servedRevision_ != model_.revision();
}

void DBusMenuExporter::sendSignals() {
  if (std::exchange(announcedRevision_, model_.revision()) != model_.revision()) {
    object_.emit("LayoutUpdated", g_variant_new("(ui)", announcedRevision_, 0));
  }
  const auto changes = model_.takeChanges();
  if (!changes.empty())
    object_.emit("ItemsPropertiesUpdated", propertyUpdates(model_.rows(), changes));
}

}  // namespace brevanholt::platform
