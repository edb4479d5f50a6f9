#include "platform/linux/HostnamedHostName.h"

#include "platform/foundation/Log.h"

#include <array>
#include <climits>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;

constexpr const char* kService = "org.freedesktop.hostname1";
constexpr const char* kPath = "/org/freedesktop/hostname1";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

std::string kernelHostName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  ::gethostname(name.data(), name.size() - 1);
  return name.data();
}

}  // namespace

HostnamedHostName::HostnamedHostName(Bus& systemBus)
    : systemBus_(systemBus),
      changes_(systemBus.subscribe({kService, kPath, kProperties, "PropertiesChanged"},
                                   [this](GVariant*) { refresh(); })) {
  refresh();
}

void HostnamedHostName::localizedName(UniqueFunction<void(std::string)> callback) {
  if (!prettyName_) return waiting_.push_back(std::move(callback));
  callback(prettyName_->empty() ? kernelHostName() : *prettyName_);
}

void HostnamedHostName::refresh() {
  systemBus_.call(
      {kService, kPath, kProperties, "Get"}, g_variant_new("(ss)", kService, "PrettyHostname"),
      "(v)", lifetime_.bind([this](Result<GVariantPointer> reply) {
        if (!reply.ok()) {
          logInfo("no pretty host name: " + reply.error().message());
          return known({});
        }
        GVariant* boxed = nullptr;
        g_variant_get(reply.value().get(), "(v)", &boxed);
        const GVariantPointer name(boxed);
        const bool isText = g_variant_is_of_type(name.get(), G_VARIANT_TYPE_STRING) != FALSE;
        known(isText ? g_variant_get_string(name.get(), nullptr) : "");
      }),
      2s);
}

void HostnamedHostName::known(std::string prettyName) {
  prettyName_ = std::move(prettyName);
  for (auto& callback : std::exchange(waiting_, {})) localizedName(std::move(callback));
}

}  // namespace brevanholt::platform
