#include "Runner/MainFlutterWindow/PersistentAgreementKey.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

namespace brevanholt {

using platform::P256PrivateKey;
using platform::PlatformError;
using platform::UserDefaults;

namespace {

constexpr const char* kAgreementPrivateKey = "brevanholtAgreementPrivateKey";

std::optional<P256PrivateKey> storedKey(const UserDefaults& defaults) {
  const auto raw = defaults.data(kAgreementPrivateKey);
  if (!raw) return std::nullopt;
  auto key = P256PrivateKey::fromRawRepresentation(raw->span());
  if (!key) platform::logInfo("the stored identity is not a key; the device gets a new one");
  return key;
}

}  // namespace

P256PrivateKey PersistentAgreementKey(UserDefaults& defaults) {
  std::optional<P256PrivateKey> key;
  try {
    key = storedKey(defaults);
    if (!key) {
      key = P256PrivateKey::generate();
      defaults.setData(kAgreementPrivateKey, key->rawRepresentation().intoBytes());
    }
  } catch (const PlatformError& error) {
    platform::logWarning("the device's identity lasts only until the application ends: " +
                         error.message());
  }
  return key ? std::move(*key) : P256PrivateKey::generate();
}

}  // namespace brevanholt
