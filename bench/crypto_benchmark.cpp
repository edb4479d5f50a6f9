// Identity and payloads as the UI meets them: a message in the codec's bytes to the window's
// handler, and the reply in the codec's bytes. Each round also times the bare cipher on the same
// payload, into a buffer that is used again and again, which is what `openssl speed` times.

#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/crypto/AesGcm.h"
#include "tests/fakes/FakePlatform.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <functional>

#include "bench/InTurns.h"

namespace brevanholt {
namespace {

using namespace platform;

class Host {
 public:
  // The length of the encoded reply; the call must not fail.
  std::size_t call(const Bytes& message) {
    std::size_t size = 0;
    window_->handlePlatformCall(StandardMethodCodec::decodeMethodCall(message),
                                MethodResult([&size](const Reply& reply) {
                                  if (!std::holds_alternative<Value>(reply)) std::abort();
                                  size = StandardMethodCodec::encodeReply(reply).size();
                                }));
    return size;
  }

 private:
  FakePlatform platform_;
  std::shared_ptr<MainFlutterWindow> window_ =
      std::make_shared<MainFlutterWindow>(platform_.services(), nullptr);
};

Bytes message(const std::string& method, Map arguments) {
  return StandardMethodCodec::encodeMethodCall({method, std::move(arguments)}).joined();
}

Bytes filled(std::size_t size) {
  return std::vector<std::uint8_t>(size, 7);
}

class BareCipher {
 public:
  explicit BareCipher(std::size_t size) : output_(size) {}
  ~BareCipher() { EVP_CIPHER_CTX_free(context_); }
  BareCipher(const BareCipher&) = delete;
  BareCipher& operator=(const BareCipher&) = delete;

  void run(const Bytes& input) {
    int written = 0;
    std::array<std::uint8_t, 16> tag{};
    EVP_EncryptInit_ex2(context_, EVP_aes_256_gcm(), key_.data(), nonce_.data(), nullptr);
    EVP_EncryptUpdate(context_, output_.data(), &written, input.data(),
                      static_cast<int>(input.size()));
    EVP_EncryptFinal_ex(context_, tag.data(), &written);
    EVP_CIPHER_CTX_ctrl(context_, EVP_CTRL_AEAD_GET_TAG, 16, tag.data());
  }

 private:
  EVP_CIPHER_CTX* context_ = EVP_CIPHER_CTX_new();
  std::vector<std::uint8_t> key_ = std::vector<std::uint8_t>(32, 1);
  std::vector<std::uint8_t> nonce_ = std::vector<std::uint8_t>(12, 2);
  std::vector<std::uint8_t> output_;
};

void beside(benchmark::State& state, const std::function<void()>& work, const Bytes& payload) {
  BareCipher cipher(payload.size());
  inTurns(state, [&] { return secondsOf(work); },
          {{"bare_cipher", [&] { return secondsOf([&] { cipher.run(payload); }); }}});
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(payload.size()));
}

void BM_Seal(benchmark::State& state) {
  Host host;
  const Bytes payload = filled(static_cast<std::size_t>(state.range(0)));
  const Bytes call = message("cryptoEncrypt", Map{{"key", filled(32)}, {"data", payload}});
  beside(
      state, [&] { benchmark::DoNotOptimize(host.call(call)); }, payload);
}

void BM_Open(benchmark::State& state) {
  Host host;
  const Bytes payload = filled(static_cast<std::size_t>(state.range(0)));
  const Bytes key = filled(32);
  const Bytes call =
      message("cryptoDecrypt", Map{{"key", key}, {"data", sealAesGcm(key.span(), payload.span())}});
  beside(
      state, [&] { benchmark::DoNotOptimize(host.call(call)); }, payload);
}

BENCHMARK(BM_Seal)->Arg(64 << 10)->Arg(1 << 20)->Arg(16 << 20)->Arg(64 << 20)->UseManualTime();
BENCHMARK(BM_Open)->Arg(64 << 10)->Arg(1 << 20)->Arg(16 << 20)->Arg(64 << 20)->UseManualTime();

void BM_DeriveSharedKey(benchmark::State& state) {
  Host host;
  const auto peer = P256PrivateKey::generate().publicKey();
  const Bytes call =
      message("cryptoDeriveSharedKey",
              Map{{"publicKey", Bytes(std::vector<std::uint8_t>(peer.begin(), peer.end()))}});
  for (auto _ : state) benchmark::DoNotOptimize(host.call(call));
}
BENCHMARK(BM_DeriveSharedKey)->Unit(benchmark::kMicrosecond);

void BM_LoadIdentity(benchmark::State& state) {
  const P256PrivateKey key = P256PrivateKey::generate();
  const SecretBytes raw = key.rawRepresentation();
  for (auto _ : state) {
    benchmark::DoNotOptimize(P256PrivateKey::fromRawRepresentation(raw.span())->publicKey());
  }
}
BENCHMARK(BM_LoadIdentity)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace brevanholt
