#include "platform/engine/web/sockets/Announcements.h"

#include <utility>

namespace brevanholt::platform {

void Announcements::repeat(std::vector<Datagram> datagrams, Pauses pauses, Send send) {
  datagrams_ = std::move(datagrams);
  pauses_ = pauses;
  send_ = std::move(send);
  stop();
  if (!datagrams_.empty()) wait();
}

void Announcements::wait() {
  std::uniform_int_distribution pause(pauses_.shortest.count(), pauses_.longest.count());
  onTime_ = LoopSource::after(std::chrono::milliseconds(pause(random_)), [this] {
    for (const Datagram& datagram : datagrams_) send_(datagram);
    wait();
  });
}

}  // namespace brevanholt::platform
