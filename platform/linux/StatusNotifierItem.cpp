#include "platform/linux/StatusNotifierItem.h"

#include "platform/foundation/Log.h"

#include <algorithm>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

constexpr const char* kPath = "/StatusNotifierItem";
constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr BusMethod kRegister{kWatcher, "/StatusNotifierWatcher", kWatcher,
                              "RegisterStatusNotifierItem"};

constexpr const char* kDescription = R"xml(
<node>
  <interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconThemePath" type="s" access="read"/>
    <property name="IconPixmap" type="a(iiay)" access="read"/>
    <property name="IconAccessibleDesc" type="s" access="read"/>
    <property name="OverlayIconName" type="s" access="read"/>
    <property name="AttentionIconName" type="s" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <property name="Menu" type="o" access="read"/>
    <method name="ContextMenu"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
    <method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
    <method name="SecondaryActivate">
      <arg type="i" direction="in"/><arg type="i" direction="in"/>
    </method>
    <method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
    <method name="ProvideXdgActivationToken"><arg type="s" direction="in"/></method>
    <signal name="NewTitle"/>
    <signal name="NewIcon"/>
    <signal name="NewToolTip"/>
    <signal name="NewStatus"><arg type="s"/></signal>
  </interface>
</node>)xml";

GVariant* pixmapArray(const std::vector<TrayPixmap>& pixmaps) {
  GVariantBuilder array;
  g_variant_builder_init(&array, G_VARIANT_TYPE("a(iiay)"));
  for (const auto& pixmap : pixmaps) {
    g_variant_builder_add(&array, "(ii@ay)", pixmap.width, pixmap.height,
                          g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixmap.pixels.data(),
                                                    pixmap.pixels.size(), 1));
  }
  return g_variant_builder_end(&array);
}

GVariant* text(const std::string& value) {
  return g_variant_new_string(value.c_str());
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(Bus& bus, std::string menuPath, bool opensMenu,
                                       Events events)
    : bus_(bus),
      menuPath_(std::move(menuPath)),
      opensMenu_(opensMenu),
      events_(std::move(events)),
      name_("org.kde.StatusNotifierItem-" + std::to_string(::getpid()) + "-1"),
      object_(bus, kPath, kDescription,
              {.call = [this](std::string_view method,
                              GVariant* parameters) { return call(method, parameters); },
               .property = [this](std::string_view name) { return property(name); }}) {
  bus.whenConnected(lifetime_.bind([this](GDBusConnection* connection) {
    if (connection == nullptr) return;
    nameOwner_ = g_bus_own_name_on_connection(
        connection, name_.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr, nullptr);
  }));
  watcher_ = bus.watchName(kWatcher, [this](const std::string& owner) { watcherChanged(owner); });
}

StatusNotifierItem::~StatusNotifierItem() {
  if (nameOwner_ != 0) g_bus_unown_name(nameOwner_);
}

void StatusNotifierItem::setAppearance(TrayAppearance appearance) {
  const TrayAppearance before = std::exchange(appearance_, std::move(appearance));
  if (before.title != appearance_.title) object_.emit("NewTitle", g_variant_new("()"));
  if (before.toolTip != appearance_.toolTip) object_.emit("NewToolTip", g_variant_new("()"));
  const bool sameIcon = before.iconName == appearance_.iconName &&
                        std::ranges::equal(before.pixmaps, appearance_.pixmaps, {},
                                           &TrayPixmap::pixels, &TrayPixmap::pixels);
  if (!sameIcon) object_.emit("NewIcon", g_variant_new("()"));
}

GVariant* StatusNotifierItem::call(std::string_view method, GVariant* parameters) {
  if (method == "Activate" || method == "ContextMenu") {
    int x = 0;
    int y = 0;
    g_variant_get(parameters, "(ii)", &x, &y);
    events_.activated(x, y);
  } else if (method == "ProvideXdgActivationToken") {
    const char* token = nullptr;
    g_variant_get(parameters, "(&s)", &token);
    events_.activationTokenGiven(token);
  } else if (method != "SecondaryActivate" && method != "Scroll") {
    return nullptr;
  }
  return g_variant_new("()");
}

GVariant* StatusNotifierItem::property(std::string_view name) const {
  if (name == "Category") return g_variant_new_string("Communications");
  if (name == "Id") return g_variant_new_string("brevanholt");
  if (name == "Title") return text(appearance_.title);
  if (name == "Status") return g_variant_new_string("Active");
  if (name == "WindowId") return g_variant_new_int32(0);
  if (name == "IconName") return text(appearance_.iconName);
  if (name == "IconThemePath") return text(appearance_.iconThemePath);
  if (name == "IconPixmap") return pixmapArray(appearance_.pixmaps);
  if (name == "IconAccessibleDesc") return text(appearance_.title);
  if (name == "OverlayIconName" || name == "AttentionIconName") return text("");
  if (name == "ToolTip") {
    return g_variant_new("(s@a(iiay)ss)", "", pixmapArray({}), appearance_.toolTip.c_str(), "");
  }
  if (name == "ItemIsMenu") return g_variant_new_boolean(opensMenu_ ? TRUE : FALSE);
  if (name == "Menu") return g_variant_new_object_path(menuPath_.c_str());
  return nullptr;
}

void StatusNotifierItem::watcherChanged(const std::string& owner) {
  events_.watcherChanged(!owner.empty());
  if (owner.empty()) return;
  bus_.call(kRegister, g_variant_new("(s)", name_.c_str()), "()",
            [](const Result<GVariantPointer>& reply) {
              if (!reply.ok()) {
                logWarning("the status tray refuses the icon: " + reply.error().message());
              }
            });
}

}  // namespace brevanholt::platform
