#pragma once

#include "platform/crypto/P256PrivateKey.h"
#include "platform/services/UserDefaults.h"

namespace brevanholt {

// The device's identity: the private key kept in the defaults, or a new one that is kept there from
// now on. A value that is not a key is replaced. Where the defaults cannot be read or changed just
// now, or the cryptographic library fails, the new key lasts until the application ends. Throws
// PlatformError where the library makes no key at all.
[[nodiscard]] platform::P256PrivateKey PersistentAgreementKey(platform::UserDefaults& defaults);

}  // namespace brevanholt
