#pragma once

#include "platform/transfer/RecordSocket.h"
#include "platform/transfer/Records.h"
#include "platform/transfer/TransferParts.h"

#include <atomic>
#include <vector>

namespace brevanholt::platform {

// Seals and sends records, in one buffer that is used again and again. Blocks; for one thread.
// While a record is sealed the system reads ahead in the file and sends the records before.
class OutgoingContent {
 public:
  OutgoingContent(RecordSocket& socket, std::span<const std::uint8_t> key);

  // Throws SystemError or PlatformError, as send() below.
  void sendControl(std::uint8_t type, const Bytes& body);

  // Sends the parts in as few records as they fit in, nothing of empty ones, and returns those that
  // were not sent whole. Throws where the connection fails, and ECANCELED once `isCanceled`, within
  // a record's time.
  [[nodiscard]] std::vector<PartFailure> send(const std::vector<OutgoingPart>& parts,
                                              const std::atomic<bool>& isCanceled);

 private:
  struct Place {
    std::size_t filled = 0;  // bytes of the body
    std::size_t content = 0;
    std::size_t segments = 0;
  };

  void sendPart(const OutgoingPart& part, const std::atomic<bool>& isCanceled);
  void flush();
  [[nodiscard]] std::span<std::uint8_t> bodyFrom(std::size_t at, std::size_t size);
  void sealAndSend(std::uint8_t type, std::size_t bodySize);

  RecordSocket& socket_;
  RecordCipher cipher_;
  std::vector<std::uint8_t> buffer_;
  Place place_;
  Place before_;  // where what the record holds of the current part begins
};

}  // namespace brevanholt::platform
