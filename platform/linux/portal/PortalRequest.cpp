#include "platform/linux/portal/PortalRequest.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

constexpr const char* kRequest = "org.freedesktop.portal.Request";
enum class Response : std::uint32_t { kSuccess = 0, kCancelled = 1 };

std::string newToken() {
  static unsigned count = 0;
  return "brevanholt" + std::to_string(++count) + "_" + std::to_string(g_random_int());
}

// Where the request's object will be, so that no answer comes too early to be heard.
std::string requestPath(GDBusConnection* connection, const std::string& token) {
  const char* name = g_dbus_connection_get_unique_name(connection);
  std::string sender = name != nullptr ? name + 1 : "";
  std::ranges::replace(sender, '.', '_');
  return std::string(kPortalPath) + "/request/" + sender + "/" + token;
}

GVariant* tupleOf(const PortalRequest::Parameters& parameters, const std::string& token) {
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
  for (const auto& [name, value] : parameters.options) {
    g_variant_builder_add(&options, "{sv}", name, value);
  }
  std::vector<GVariant*> members = parameters.arguments;
  members.push_back(g_variant_builder_end(&options));
  return g_variant_new_tuple(members.data(), members.size());
}

}  // namespace

PortalRequest::PortalRequest(Bus& sessionBus, const BusMethod& method, Parameters parameters,
                             Callback callback)
    : sessionBus_(sessionBus), callback_(std::move(callback)) {
  const std::string token = newToken();
  GVariantPointer tuple(g_variant_ref_sink(tupleOf(parameters, token)));
  sessionBus.whenConnected(
      lifetime_.bind([this, method, token, tuple = std::move(tuple),
                      parameters = std::move(parameters)](GDBusConnection* connection) mutable {
        if (connection != nullptr) listenAt(requestPath(connection, token));
        sessionBus_.callWithDescriptor(
            method, tuple.get(), parameters.descriptor, "(o)",
            lifetime_.bind([this](Result<GVariantPointer> reply) {
              if (!reply.ok()) return finish(reply.error());
              const char* path = nullptr;
              g_variant_get(reply.value().get(), "(&o)", &path);
              if (path != path_) listenAt(path);  // portals before version 0.9 choose their own
            }));
      }));
}

PortalRequest::~PortalRequest() {
  if (!callback_ || path_.empty()) return;
  sessionBus_.call({kPortal, path_.c_str(), kRequest, "Close"}, nullptr, "()",
                   [](const Result<GVariantPointer>&) {});
}

void PortalRequest::listenAt(const std::string& path) {
  path_ = path;
  response_ =
      sessionBus_.subscribe({kPortal, path_.c_str(), kRequest, "Response", "(ua{sv})"},
                            lifetime_.bind([this](GVariant* response) { answered(response); }));
}

void PortalRequest::answered(GVariant* response) {
  std::uint32_t code = 0;
  GVariant* results = nullptr;
  g_variant_get(response, "(u@a{sv})", &code, &results);
  GVariantPointer owned(results);
  switch (static_cast<Response>(code)) {
    case Response::kSuccess:
      return finish(std::move(owned));
    case Response::kCancelled:
      return finish(PlatformError("it was not allowed"));
  }
  finish(PlatformError("the portal failed"));
}

void PortalRequest::finish(Result<GVariantPointer> results) {
  if (auto callback = std::exchange(callback_, nullptr)) callback(std::move(results));
}

}  // namespace brevanholt::platform
