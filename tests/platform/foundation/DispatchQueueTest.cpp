#include "platform/foundation/DispatchQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <vector>

namespace brevanholt::platform {
namespace {

TEST(DispatchQueueTest, RunsTasksInOrderOnOneOtherThread) {
  std::vector<int> order;
  std::thread::id thread;
  {
    DispatchQueue queue("a.queue.with.a.long.label");
    for (int index = 0; index < 1000; ++index) {
      queue.async([&order, &thread, index] {
        order.push_back(index);
        thread = std::this_thread::get_id();
      });
    }
  }  // what is queued is run before it ends
  ASSERT_EQ(order.size(), 1000U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  EXPECT_NE(thread, std::this_thread::get_id());
}

}  // namespace
}  // namespace brevanholt::platform
