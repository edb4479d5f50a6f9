#pragma once

#include "platform/engine/web/sockets/SocketAddress.h"
#include "platform/foundation/Bytes.h"
#include "platform/gtk/LoopSource.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace brevanholt::platform {

// Datagrams that are sent again and again, all of them with one timer, so that the page can sleep.
class Announcements {
 public:
  struct Datagram {
    std::int64_t socket = 0;
    Bytes bytes;
    SocketAddress to;
  };
  // The pause between two rounds is a random one of these, so that devices do not all speak at
  // once.
  struct Pauses {
    std::chrono::milliseconds shortest{};
    std::chrono::milliseconds longest{};
  };
  // Sends one datagram; a failure is ignored.
  using Send = std::function<void(const Datagram&)>;

  // Takes the place of what was repeated before. The first round is after a pause.
  void repeat(std::vector<Datagram> datagrams, Pauses pauses, Send send);
  void stop() { onTime_.stop(); }

 private:
  void wait();

  std::vector<Datagram> datagrams_;
  Pauses pauses_;
  Send send_;
  std::minstd_rand random_{std::random_device{}()};
  LoopSource onTime_;
};

}  // namespace brevanholt::platform
