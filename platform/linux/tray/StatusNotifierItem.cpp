#include "platform/linux/tray/StatusNotifierItem.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;

constexpr const char* kPath = "/StatusNotifierItem";
constexpr auto kUpdateInterval = 100ms;

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
    <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
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
    <signal name="NewAttentionIcon"/>
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

const char* statusOf(const TrayAppearance& appearance) {
  return appearance.needsAttention ? "NeedsAttention" : "Active";
}

GVariant* text(const std::string& value) {
  return g_variant_new_string(value.c_str());
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(Bus& bus, std::string menuPath, bool opensMenu,
                                       Events events)
    : menuPath_(std::move(menuPath)),
      opensMenu_(opensMenu),
      events_(std::move(events)),
      object_(bus, kPath, kDescription,
              {.call = [this](std::string_view method,
                              GVariant* parameters) { return call(method, parameters); },
               .property = [this](std::string_view name) { return property(name); }}),
      registration_(bus, kPath, [this](bool isShown) { events_.shownChanged(isShown); }),
      throttle_(kUpdateInterval, [this] { tellOfChanges(); }) {}

void StatusNotifierItem::setAppearance(TrayAppearance appearance) {
  appearance_ = std::move(appearance);
  throttle_.schedule();
}

void StatusNotifierItem::tellOfChanges() {
  const TrayAppearance before = std::exchange(told_, appearance_);
  if (before.title != told_.title) object_.emit("NewTitle", g_variant_new("()"));
  if (before.toolTip != told_.toolTip) object_.emit("NewToolTip", g_variant_new("()"));
  const bool sameIcon = before.iconName == told_.iconName &&
                        std::ranges::equal(before.pixmaps, told_.pixmaps, {}, &TrayPixmap::pixels,
                                           &TrayPixmap::pixels);
  if (!sameIcon) object_.emit("NewIcon", g_variant_new("()"));
  if (before.needsAttention != told_.needsAttention) {
    object_.emit("NewStatus", g_variant_new("(s)", statusOf(told_)));
    object_.emit("NewAttentionIcon", g_variant_new("()"));
  }
}

GVariant* StatusNotifierItem::call(std::string_view method, GVariant* parameters) {
  if (method == "Activate" || method == "ContextMenu") {
    if (opensMenu_) return nullptr;  // so that the tray opens the menu
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
  if (name == "Status") return g_variant_new_string(statusOf(appearance_));
  if (name == "WindowId") return g_variant_new_int32(0);
  if (name == "IconName") return text(appearance_.iconName);
  if (name == "IconThemePath") return text(appearance_.iconThemePath);
  if (name == "IconPixmap") return pixmapArray(appearance_.pixmaps);
  if (name == "IconAccessibleDesc") return text(appearance_.title);
  if (name == "OverlayIconName") return text("");
  // The icon has its dot already, for trays that show the status in no other way.
  if (name == "AttentionIconName") return text(appearance_.iconName);
  if (name == "AttentionIconPixmap") return pixmapArray(appearance_.pixmaps);
  if (name == "ToolTip") {
    return g_variant_new("(s@a(iiay)ss)", "", pixmapArray({}), appearance_.toolTip.c_str(), "");
  }
  if (name == "ItemIsMenu") return g_variant_new_boolean(opensMenu_ ? TRUE : FALSE);
  if (name == "Menu") return g_variant_new_object_path(menuPath_.c_str());
  return nullptr;
}

}  // namespace brevanholt::platform
