#pragma once

#include "platform/files/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <span>

namespace brevanholt::platform {

// A connected stream that blocks, with one thread that sends and one that receives.
class RecordSocket {
 public:
  // `silence` is how long the other side may send nothing while something is waited for.
  RecordSocket(FileDescriptor connected, std::chrono::milliseconds silence);

  // Receives exactly so many bytes; false where the other side's end comes before the first. Throws
  // SystemError: ECONNRESET where the end comes later, ETIMEDOUT after silence.
  [[nodiscard]] bool receive(std::span<std::uint8_t> bytes);
  // Receives and drops what comes until the other side's end.
  void drain();
  // Returns when the system has taken all of it. Throws SystemError.
  void send(std::span<const std::uint8_t> bytes);
  // Sends nothing more; what the other side sends can still be received.
  void finish();
  // Wakes both threads, whose calls fail from now on. Safe on any thread.
  void interrupt();

 private:
  void awaitEvent(short event, int limitMilliseconds) const;
  [[nodiscard]] std::size_t receiveSome(std::span<std::uint8_t> bytes);

  FileDescriptor socket_;
  int silence_;  // in milliseconds
};

}  // namespace brevanholt::platform
