#pragma once

#include "tests/support/CapturedLog.h"
#include "tests/support/RunningHost.h"

#include <gtest/gtest.h>

namespace brevanholt {

// A test of the whole host on the fake platform.
class HostTest : public testing::Test {
 protected:
  platform::Reply call(const std::string& method, platform::Value arguments = {}) {
    return host_.call(method, std::move(arguments));
  }

  platform::CapturedLog log_;
  RunningHost host_;
  platform::FakePlatform& platform_ = host_.platform;
};

}  // namespace brevanholt
