#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Hex.h"
#include "tests/support/PrintValue.h"

#include <gtest/gtest.h>

namespace brevanholt {
namespace {

using namespace platform;

constexpr const char* kKey = "brevanholtAgreementPrivateKey";

// A device: its defaults outlast the runs of the application.
class Device {
 public:
  Device() { launch(); }
  void launch() {
    window_ = std::make_shared<MainFlutterWindow>(platform.services(), nullptr);
    window_->awakeFromNib();
  }
  Reply call(const std::string& method, Value arguments = {}) {
    return platform.call(method, std::move(arguments));
  }
  // The reply's bytes; a failed call has none.
  Bytes bytes(const std::string& method, Value arguments = {}) {
    const Reply reply = call(method, std::move(arguments));
    const auto* value = std::get_if<Value>(&reply);
    const auto* content = value != nullptr ? value->getIf<Bytes>() : nullptr;
    return content != nullptr ? *content : Bytes();
  }
  Bytes publicKey() { return bytes("cryptoCreateIdentity"); }
  Bytes sharedKey(const Bytes& peer) {
    return bytes("cryptoDeriveSharedKey", Map{{"publicKey", peer}});
  }
  Bytes seal(const Bytes& key, const Bytes& data) {
    return bytes("cryptoEncrypt", Map{{"key", key}, {"data", data}});
  }

  FakePlatform platform;

 private:
  std::shared_ptr<MainFlutterWindow> window_;
};

class IdentityTest : public testing::Test {
 protected:
  CapturedLog log_;
  Device device_;
};

TEST_F(IdentityTest, IsTheSameInEveryRun) {
  const Bytes publicKey = device_.publicKey();
  EXPECT_EQ(publicKey.size(), 65U);
  EXPECT_EQ(device_.platform.userDefaults.data(kKey)->size(), 32U);
  device_.launch();
  EXPECT_EQ(device_.publicKey(), publicKey);
  EXPECT_FALSE(Device().publicKey() == publicKey);
}

TEST_F(IdentityTest, IsMadeAnewInThePlaceOfWhatIsNoKey) {
  const std::vector<std::uint8_t> order =
      fromHex("ffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551");
  Bytes last = device_.publicKey();
  for (const auto& stored :
       {order, std::vector<std::uint8_t>(31, 1), std::vector<std::uint8_t>(33, 1),
        std::vector<std::uint8_t>(32, 0), std::vector<std::uint8_t>()}) {
    device_.platform.userDefaults.setData(kKey, stored);
    device_.launch();
    const Bytes publicKey = device_.publicKey();
    EXPECT_FALSE(publicKey == last) << toHex(stored);
    EXPECT_EQ(device_.platform.userDefaults.data(kKey)->size(), 32U);
    device_.launch();
    EXPECT_EQ(device_.publicKey(), publicKey);
    last = publicKey;
  }
  EXPECT_EQ(log_.count(LogLevel::kWarning, ""), 0);
}

TEST_F(IdentityTest, ServesForOneRunWhenItCannotBeKept) {
  device_.platform.userDefaults.setData(kKey, std::vector<std::uint8_t>(31, 1));
  device_.platform.userDefaults.refusesSetting = true;
  device_.launch();
  EXPECT_EQ(device_.publicKey().size(), 65U);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "the defaults cannot be kept"), 1);
}

TEST_F(IdentityTest, IsNotReplacedWhenItCannotBeRead) {
  const Bytes publicKey = device_.publicKey();
  device_.platform.userDefaults.refusesReading = true;
  device_.launch();
  EXPECT_FALSE(device_.publicKey() == publicKey);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "the defaults cannot be read"), 1);

  device_.platform.userDefaults.refusesReading = false;
  device_.launch();
  EXPECT_EQ(device_.publicKey(), publicKey);
}

TEST_F(IdentityTest, DerivesTheSameKeyOnBothDevices) {
  Device peer;
  const Bytes key = device_.sharedKey(peer.publicKey());
  EXPECT_EQ(key.size(), 32U);
  EXPECT_EQ(peer.sharedKey(device_.publicKey()), key);
  EXPECT_FALSE(device_.sharedKey(device_.publicKey()) == key);
}

// The secret is that of RFC 5903, section 8.1; what HKDF makes of it with this product's salt was
// computed with `openssl kdf`.
TEST_F(IdentityTest, DerivesWhatOtherImplementationsDerive) {
  device_.platform.userDefaults.setData(
      kKey, fromHex("C88F01F5 10D9AC3F 70A292DA A2316DE5 44E9AAB8 AFE84049 C62A9C57 862D1433"));
  device_.launch();
  const Bytes key = device_.sharedKey(
      fromHex("04 D12DFB52 89C8D4F8 1208B702 70398C34 2296970A 0BCCB74C 736FC755 4494BF63"
              "56FBF3CA 366CC23E 8157854C 13C58D6A AC23F046 ADA30F83 53E74F33 039872AB"));
  EXPECT_EQ(toHex(key.span()), "379675d9d13f47073786f93733e60b5442c4e26057c03b1b0b76fe96a9cbafcd");
}

TEST_F(IdentityTest, SealsForThePeerAlone) {
  Device peer;
  const Bytes key = device_.sharedKey(peer.publicKey());
  for (const std::size_t size : {0U, 1U, 5000U, 1U << 20U}) {
    const Bytes data = std::vector<std::uint8_t>(size, 7);
    const Bytes sealed = device_.seal(key, data);
    EXPECT_EQ(sealed.size(), size + 28);
    EXPECT_FALSE(device_.seal(key, data) == sealed);
    EXPECT_EQ(peer.call("cryptoDecrypt", Map{{"key", key}, {"data", sealed}}), Reply(Value(data)));
  }
  const Bytes otherKey = device_.sharedKey(device_.publicKey());
  EXPECT_EQ(
      peer.call("cryptoDecrypt", Map{{"key", otherKey}, {"data", device_.seal(key, Bytes())}}),
      failure("The sealed payload was changed, or sealed with another key."));
}

TEST_F(IdentityTest, AnswersFailuresInWords) {
  const Bytes key = std::vector<std::uint8_t>(32, 1);
  const Bytes shortKey = key.slice(0, 31);
  EXPECT_EQ(device_.call("cryptoDeriveSharedKey", Map{{"publicKey", key}}),
            failure("The public key is not an uncompressed P-256 point of 65 bytes."));
  EXPECT_EQ(device_.call("cryptoEncrypt", Map{{"key", shortKey}, {"data", key}}),
            failure("An AES key has 16, 24 or 32 bytes, not 31."));
  EXPECT_EQ(device_.call("cryptoDecrypt", Map{{"key", shortKey}, {"data", key}}),
            failure("An AES key has 16, 24 or 32 bytes, not 31."));
  EXPECT_EQ(device_.call("cryptoDecrypt", Map{{"key", key}, {"data", key.slice(0, 27)}}),
            failure("The sealed payload is too short to be one."));
  EXPECT_EQ(device_.seal(key.slice(0, 16), key).size(), 60U) << "AES-128";
}

}  // namespace
}  // namespace brevanholt
