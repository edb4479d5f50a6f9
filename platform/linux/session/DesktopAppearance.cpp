#include "platform/linux/session/DesktopAppearance.h"

#include "platform/foundation/Log.h"
#include "platform/linux/portal/PortalRequest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace brevanholt::platform {
namespace {

constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr BusMethod kReadAll = portalMethod(kInterface, "ReadAll");
constexpr BusSignal kSettingChanged{kPortal, kPortalPath, kInterface, "SettingChanged", "(ssv)"};
constexpr guint32 kPrefersDark = 1;
constexpr guint32 kHighContrast = 1;

constexpr const char* kInterfaceSchema = "org.gnome.desktop.interface";
constexpr const char* kContrastSchema = "org.gnome.desktop.a11y.interface";

struct NamedAccent {
  std::string_view name;
  const char* color;
};
// As libadwaita has them.
constexpr std::array kAccents{
    NamedAccent{"blue", "#3584e4"},   NamedAccent{"teal", "#2190a4"},
    NamedAccent{"green", "#3a944a"},  NamedAccent{"yellow", "#c88800"},
    NamedAccent{"orange", "#ed5b00"}, NamedAccent{"red", "#e62d42"},
    NamedAccent{"pink", "#d56199"},   NamedAccent{"purple", "#9141ac"},
    NamedAccent{"slate", "#6f8396"},
};

// Each part from 0 to 1; others say that there is none.
std::string colorText(double red, double green, double blue) {
  std::string text = "#";
  for (const double part : {red, green, blue}) {
    if (!(part >= 0 && part <= 1)) return {};
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto byte = static_cast<unsigned>(std::lround(part * 255));
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
  return text;
}

guint32 number(GVariant* values, const char* key) {
  guint32 value = 0;
  g_variant_lookup(values, key, "u", &value);
  return value;
}

Appearance appearanceIn(GVariant* values) {
  Appearance appearance;
  appearance.isDark = number(values, "color-scheme") == kPrefersDark;
  appearance.hasHighContrast = number(values, "contrast") == kHighContrast;
  double red = 0;
  double green = 0;
  double blue = 0;
  if (g_variant_lookup(values, "accent-color", "(ddd)", &red, &green, &blue) != FALSE) {
    appearance.accent = colorText(red, green, blue);
  }
  return appearance;
}

// Null where this desktop has no such settings.
GObjectPointer<GSettings> settingsOf(const char* schema, const char* key) {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  GSettingsSchema* found =
      source != nullptr ? g_settings_schema_source_lookup(source, schema, TRUE) : nullptr;
  if (found == nullptr) return nullptr;
  const bool hasKey = g_settings_schema_has_key(found, key) != FALSE;
  g_settings_schema_unref(found);
  return GObjectPointer<GSettings>(hasKey ? g_settings_new(schema) : nullptr);
}

std::string textOf(GSettings* settings, const char* key) {
  return GCharPointer(g_settings_get_string(settings, key)).get();
}

}  // namespace

DesktopAppearance::DesktopAppearance(Bus& sessionBus,
                                     std::function<void(const Appearance&)> changed)
    : sessionBus_(sessionBus),
      changed_(std::move(changed)),
      changes_(sessionBus.subscribe(kSettingChanged, [this](GVariant* parameters) {
        const char* space = nullptr;
        g_variant_get_child(parameters, 0, "&s", &space);
        if (space == std::string_view(kNamespace)) read();
      })) {
  read();
}

void DesktopAppearance::read() {
  const char* const wanted[] = {kNamespace, nullptr};
  sessionBus_.call(
      kReadAll, g_variant_new("(^as)", wanted), "(a{sa{sv}})",
      lifetime_.bind([this](const Result<GVariantPointer>& reply) {
        if (!reply.ok()) {
          logInfo("no appearance from the portal: " + reply.error().message());
          return readSettings();
        }
        const GVariantPointer spaces(g_variant_get_child_value(reply.value().get(), 0));
        const GVariantPointer values(
            g_variant_lookup_value(spaces.get(), kNamespace, G_VARIANT_TYPE_VARDICT));
        if (!values) return readSettings();
        take(appearanceIn(values.get()));
      }));
}

void DesktopAppearance::readSettings() {
  Appearance appearance;
  const auto watch = [this](GObjectPointer<GSettings> settings) {
    g_signal_connect(settings.get(), "changed",
                     G_CALLBACK(+[](GSettings*, const char*, gpointer self) {
                       static_cast<DesktopAppearance*>(self)->readSettings();
                     }),
                     this);
    settings_.push_back(std::move(settings));
  };
  settings_.clear();
  if (auto settings = settingsOf(kInterfaceSchema, "color-scheme")) {
    appearance.isDark = textOf(settings.get(), "color-scheme") == "prefer-dark";
    watch(std::move(settings));
  }
  if (auto settings = settingsOf(kInterfaceSchema, "accent-color")) {
    const std::string name = textOf(settings.get(), "accent-color");
    const auto* accent = std::ranges::find(kAccents, name, &NamedAccent::name);
    if (accent != kAccents.end()) appearance.accent = accent->color;
  }
  if (auto settings = settingsOf(kContrastSchema, "high-contrast")) {
    appearance.hasHighContrast = g_settings_get_boolean(settings.get(), "high-contrast") != FALSE;
    watch(std::move(settings));
  }
  take(appearance);
}

void DesktopAppearance::take(const Appearance& appearance) {
  if (appearance == appearance_) return;
  appearance_ = appearance;
  changed_(appearance_);
}

}  // namespace brevanholt::platform
