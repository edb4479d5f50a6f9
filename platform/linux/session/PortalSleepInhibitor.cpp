#include "platform/linux/session/PortalSleepInhibitor.h"

#include "platform/foundation/Log.h"
#include "platform/linux/portal/PortalRequest.h"

namespace brevanholt::platform {
namespace {

constexpr BusMethod kInhibit = portalMethod("org.freedesktop.portal.Inhibit", "Inhibit");
constexpr const char* kRequest = "org.freedesktop.portal.Request";
constexpr std::uint32_t kSuspend = 4;

// The request whose object inhibits; known once the portal answers.
class Inhibition {
 public:
  explicit Inhibition(Bus& sessionBus) : sessionBus_(sessionBus) {}
  ~Inhibition() {
    if (!path_.empty()) close(sessionBus_, path_);
  }
  Inhibition(const Inhibition&) = delete;
  Inhibition& operator=(const Inhibition&) = delete;

  void begun(const std::string& path) { path_ = path; }
  static void close(Bus& bus, const std::string& path) {
    bus.call({kPortal, path.c_str(), kRequest, "Close"}, nullptr, "()",
             [](const Result<GVariantPointer>&) {});
  }

 private:
  Bus& sessionBus_;
  std::string path_;
};

GVariant* parametersFor(const std::string& reason) {
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&options, "{sv}", "reason", g_variant_new_string(reason.c_str()));
  return g_variant_new("(sua{sv})", "", kSuspend, &options);
}

}  // namespace

std::shared_ptr<void> PortalSleepInhibitor::inhibit(const std::string& reason) {
  auto inhibition = std::make_shared<Inhibition>(sessionBus_);
  sessionBus_.call(
      kInhibit, parametersFor(reason), "(o)",
      lifetime_.bind([this, weak = std::weak_ptr(inhibition)](Result<GVariantPointer> reply) {
        if (reply.ok()) {
          const char* path = nullptr;
          g_variant_get(reply.value().get(), "(&o)", &path);
          if (const auto waiting = weak.lock()) return waiting->begun(path);
          Inhibition::close(sessionBus_, path);
        } else if (!std::exchange(hasWarned_, true)) {
          logWarning("the system may sleep during a transfer: " + reply.error().message());
        }
      }));
  return inhibition;
}

}  // namespace brevanholt::platform
