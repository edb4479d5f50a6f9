#include "tests/Runner/HostTest.h"
#include "tests/support/Hex.h"

namespace brevanholt {
namespace {

using namespace platform;

constexpr const char* kKey = "brevanholtAgreementPrivateKey";

class IdentityTest : public HostTest {
 protected:
  // The public key as it is in the next run.
  Reply publicKeyAfterRestart() {
    restart();
    Reply reply = call("cryptoCreateIdentity");
    EXPECT_EQ(std::get<Value>(reply).getIf<Bytes>()->size(), 65U);
    return reply;
  }
  void store(const Bytes& key) { platform_.userDefaults.setData(kKey, key); }
};

TEST_F(IdentityTest, IsTheSameInEveryRunAndMadeAnewInThePlaceOfWhatIsNoKey) {
  const std::vector<std::uint8_t> order =
      fromHex("ffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551");
  Reply last = publicKeyAfterRestart();
  EXPECT_EQ(publicKeyAfterRestart(), last);
  for (const auto& stored :
       {order, std::vector<std::uint8_t>(31, 1), std::vector<std::uint8_t>(33, 1),
        std::vector<std::uint8_t>(32, 0), std::vector<std::uint8_t>()}) {
    SCOPED_TRACE(toHex(stored));
    store(stored);
    const Reply publicKey = publicKeyAfterRestart();
    EXPECT_FALSE(publicKey == last);
    EXPECT_EQ(platform_.userDefaults.data(kKey)->size(), 32U);
    EXPECT_EQ(publicKeyAfterRestart(), publicKey);
    last = publicKey;
  }
  EXPECT_EQ(log_.count(LogLevel::kWarning, ""), 0);
}

TEST_F(IdentityTest, IsNotReplacedWhenItCannotBeRead) {
  const Reply publicKey = publicKeyAfterRestart();
  platform_.userDefaults.refusesReading = true;
  EXPECT_FALSE(publicKeyAfterRestart() == publicKey) << "one for this run alone";
  EXPECT_EQ(log_.count(LogLevel::kWarning, "the defaults cannot be read"), 1);

  platform_.userDefaults.refusesReading = false;
  EXPECT_EQ(publicKeyAfterRestart(), publicKey);
}

TEST_F(IdentityTest, ServesForOneRunWhenItCannotBeKept) {
  store(std::vector<std::uint8_t>(31, 1));
  platform_.userDefaults.refusesSetting = true;
  publicKeyAfterRestart();
  EXPECT_EQ(log_.count(LogLevel::kWarning, "the defaults cannot be kept"), 1);
}

}  // namespace
}  // namespace brevanholt
