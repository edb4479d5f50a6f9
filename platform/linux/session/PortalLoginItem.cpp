#include "platform/linux/session/PortalLoginItem.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {
namespace {

constexpr BusMethod kRequestBackground =
    portalMethod("org.freedesktop.portal.Background", "RequestBackground");
constexpr const char* kReason = "Receive files from devices nearby";

// What is kept of the portal's answer, under one key; nothing where none was asked for.
constexpr const char* kStored = "loginItem";
constexpr const char* kState = "state";
constexpr const char* kGranted = "granted";
constexpr const char* kNotGranted = "not granted";

bool isGranted(GVariant* results, const char* what) {
  gboolean granted = FALSE;
  return g_variant_lookup(results, what, "b", &granted) != FALSE && granted != FALSE;
}

GVariant* stringArray(const std::vector<std::string>& strings) {
  GVariantBuilder array;
  g_variant_builder_init(&array, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string& string : strings) g_variant_builder_add(&array, "s", string.c_str());
  return g_variant_builder_end(&array);
}

}  // namespace

PortalLoginItem::PortalLoginItem(Bus& sessionBus, UserDefaults& store,
                                 std::vector<std::string> command)
    : sessionBus_(sessionBus), store_(store), command_(std::move(command)) {}

LoginItem::Status PortalLoginItem::status() const {
  const auto stored = store_.stringDictionary(kStored);
  const auto state = stored.find(kState);
  if (state == stored.end()) return Status::kNotRegistered;
  return state->second == kGranted ? Status::kEnabled : Status::kRequiresApproval;
}

void PortalLoginItem::registerItem() {
  keep(kNotGranted);
  request(true);
}

void PortalLoginItem::unregisterItem() {
  store_.setStringDictionary(kStored, {});
  request(false);
}

void PortalLoginItem::askToRunInBackground() {
  if (std::exchange(hasAsked_, true)) return;
  request(status() != Status::kNotRegistered);
}

void PortalLoginItem::keep(const std::string& state) {
  store_.setStringDictionary(kStored, {{kState, state}});
}

void PortalLoginItem::request(bool startsAtLogin) {
  request_ = std::make_unique<PortalRequest>(
      sessionBus_, kRequestBackground,
      PortalRequest::Parameters{
          .arguments = {g_variant_new_string("")},
          .options = {{"reason", g_variant_new_string(kReason)},
                      {"autostart", g_variant_new_boolean(startsAtLogin ? TRUE : FALSE)},
                      {"commandline", stringArray(command_)}},
          .descriptor = {}},
      [this, startsAtLogin](const Result<GVariantPointer>& results) {
        answered(startsAtLogin, results);
      });
}

void PortalLoginItem::answered(bool wantedStart, const Result<GVariantPointer>& results) {
  GVariant* granted = results.ok() ? results.value().get() : nullptr;
  if (granted == nullptr || !isGranted(granted, "background")) {
    logWarning("the desktop may end the program while its window is hidden: " +
               (granted != nullptr ? "it was not allowed" : results.error().message()));
  }
  if (!wantedStart) return;
  const bool starts = granted != nullptr && isGranted(granted, "autostart");
  if (!starts) logWarning("the desktop does not start the program at login: it was not allowed");
  try {
    keep(starts ? kGranted : kNotGranted);
  } catch (const PlatformError& error) {
    logWarning("whether the program starts at login is not kept: " + error.message());
  }
}

}  // namespace brevanholt::platform
