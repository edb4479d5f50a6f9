#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/crypto/AesGcm.h"
#include "platform/crypto/Hkdf.h"

namespace brevanholt {

using platform::Bytes;
using platform::SecretBytes;
using platform::Value;

namespace {

// Peers derive with the same; changing either parts them.
constexpr std::string_view kTransferKeySalt = "Brevanholt-v1";
constexpr std::size_t kTransferKeySize = 32;

}  // namespace

Value MainFlutterWindow::cryptoCreateIdentity(const CallArguments& /*arguments*/) {
  const auto& publicKey = agreementKey_.publicKey();
  return Bytes(std::vector<std::uint8_t>(publicKey.begin(), publicKey.end()));
}

Value MainFlutterWindow::cryptoDeriveSharedKey(const CallArguments& arguments) {
  const auto& peer = arguments.required<Bytes>("publicKey");
  const SecretBytes secret = agreementKey_.sharedSecret(peer.span());
  return platform::hkdfSha256(secret, kTransferKeySalt, {}, kTransferKeySize).intoBytes();
}

Value MainFlutterWindow::cryptoEncrypt(const CallArguments& arguments) {
  const auto& key = arguments.required<Bytes>("key");
  return platform::sealAesGcm(key.span(), arguments.required<Bytes>("data").span());
}

Value MainFlutterWindow::cryptoDecrypt(const CallArguments& arguments) {
  const auto& key = arguments.required<Bytes>("key");
  return platform::openAesGcm(key.span(), arguments.required<Bytes>("data").span());
}

}  // namespace brevanholt
