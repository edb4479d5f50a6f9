#include "platform/linux/session/HostnamedHostName.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/Utf8.h"

#include <glib.h>

#include <array>
#include <climits>
#include <fstream>
#include <string_view>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;

constexpr const char* kService = "org.freedesktop.hostname1";
constexpr const char* kPath = "/org/freedesktop/hostname1";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr std::string_view kPrettyName = "PRETTY_HOSTNAME=";

std::string kernelHostName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  ::gethostname(name.data(), name.size() - 1);
  return name.data();
}

// The file's values are quoted as in a shell. Empty where there is none.
std::string prettyNameIn(const std::filesystem::path& machineInfo) {
  std::ifstream file(machineInfo);
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with(kPrettyName)) continue;
    const GCharPointer value(g_shell_unquote(line.c_str() + kPrettyName.size(), nullptr));
    return value && isValidUtf8(value.get()) ? value.get() : "";
  }
  return {};
}

}  // namespace

HostnamedHostName::HostnamedHostName(Bus& systemBus, const std::filesystem::path& machineInfo)
    : systemBus_(systemBus),
      prettyName_(prettyNameIn(machineInfo)),
      changes_(systemBus.subscribe({kService, kPath, kProperties, "PropertiesChanged"},
                                   [this](GVariant*) { refresh(); })) {
  refresh();
}

std::string HostnamedHostName::localizedName() const {
  return prettyName_.empty() ? kernelHostName() : prettyName_;
}

void HostnamedHostName::refresh() {
  systemBus_.call(
      {kService, kPath, kProperties, "Get"}, g_variant_new("(ss)", kService, "PrettyHostname"),
      "(v)", lifetime_.bind([this](Result<GVariantPointer> reply) {
        if (!reply.ok()) return logInfo("no pretty host name: " + reply.error().message());
        GVariant* boxed = nullptr;
        g_variant_get(reply.value().get(), "(v)", &boxed);
        const GVariantPointer name(boxed);
        const bool isText = g_variant_is_of_type(name.get(), G_VARIANT_TYPE_STRING) != FALSE;
        if (isText) prettyName_ = g_variant_get_string(name.get(), nullptr);
      }),
      2s);
}

}  // namespace brevanholt::platform
