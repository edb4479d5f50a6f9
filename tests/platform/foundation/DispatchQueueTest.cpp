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

TEST(DispatchQueueTest, SyncWaitsBehindWhatIsQueuedAndPassesErrorsOn) {
  DispatchQueue queue("queue", QueuePriority::kUtility);
  int value = 0;
  queue.async([&value] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    value = 1;
  });
  int seen = 0;
  queue.sync([&] { seen = value; });
  EXPECT_EQ(seen, 1);
  EXPECT_THROW(queue.sync([] { throw std::runtime_error("no"); }), std::runtime_error);
}

}  // namespace
}  // namespace brevanholt::platform
