#pragma once

#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/MainQueue.h"
#include "platform/foundation/Result.h"
#include "platform/transfer/IncomingContent.h"
#include "platform/transfer/OutgoingContent.h"
#include "platform/transfer/RecordSocket.h"
#include "platform/transfer/TransferParts.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace brevanholt::platform {

// A connection to another device after the handshake. It seals, sends, receives and opens records,
// and reads and writes the files whose content they carry, on two threads of its own; with at most
// 3 MiB of buffers. For the main thread, which nothing here blocks; callbacks come through its
// queue.
//
// What goes wrong with the connection is a SystemError: EBADMSG for a record that does not open,
// EPROTO for one that makes no sense, ECONNRESET and the like where it is cut, ETIMEDOUT after
// silence, ECANCELED once it is closed. It stays the answer to every later call.
class SealedConnection {
 public:
  template <class T>
  using Callback = UniqueFunction<void(Outcome<T>)>;

  struct Options {
    FileDescriptor socket;
    std::span<const std::uint8_t> sendingKey;
    std::span<const std::uint8_t> receivingKey;
    std::chrono::milliseconds silence{};
  };
  // What may be received now.
  struct Terms {
    std::size_t largestFrame = 0;
    // Whether to receive before the page asks: files are written, and up to 16 records wait.
    bool readsAhead = false;
  };

  // Throws PlatformError for a key that has not 32 bytes.
  SealedConnection(Options options, MainQueue& mainQueue);
  // Waits for what the threads are doing: close() first, and wait for its callback.
  ~SealedConnection();

  // Called back when the system has taken the record. Records leave in the order of the calls.
  void send(std::uint8_t type, Bytes body, Callback<Done> sent);
  // Called back, with what could not be sent, when the system has taken the rest.
  void sendContent(std::vector<OutgoingPart> parts, Callback<std::vector<PartFailure>> sent);

  void expect(std::vector<IncomingPart> parts);
  // Called back with what has come: when there is a control record, when something is wanted or has
  // failed, or four times a second while content comes. An entry that was wanted has to be expected
  // before the next call. One at a time.
  void receive(Terms terms, Callback<Arrival> received);

  // Sends one more record, or none, and nothing after it; called back at the other side's end. What
  // comes until then is dropped, and content that was not sent yet ends with ECANCELED.
  void part(std::optional<Arrival::Control> last, Callback<Done> parted);
  // Ends everything; `closed` comes last, when this can be destroyed without waiting.
  void close(UniqueFunction<void()> closed);

 private:
  template <class T, class F>
  [[nodiscard]] Outcome<T> attempt(F& work);
  template <class T>
  void answer(Callback<T> callback, Outcome<T> outcome);
  template <class T, class F>
  void run(DispatchQueue& queue, Callback<T> callback, F work);

  // On the receiving thread.
  void receiveWhileWanted();
  [[nodiscard]] Arrival nextArrival(std::size_t largestFrame);
  [[nodiscard]] std::optional<Record> nextRecord(std::size_t largestFrame);
  [[nodiscard]] std::optional<IncomingPart> takeExpected(std::uint32_t entry);

  // With the mutex held.
  [[nodiscard]] bool mayReceive() const;
  void receiveIfWanted();
  void add(Arrival news);
  [[nodiscard]] bool hasReport() const;
  void report();

  MainQueue& mainQueue_;
  RecordSocket socket_;
  std::atomic<bool> isClosed_ = false;
  std::atomic<bool> contentIsCanceled_ = false;

  OutgoingContent outgoing_;  // for the sending thread

  RecordCipher cipher_;  // these four for the receiving thread
  IncomingContent content_;
  std::vector<std::uint8_t> buffer_;
  SegmentReader segments_;

  std::mutex mutex_;  // guards what follows
  std::map<std::uint32_t, IncomingPart> expected_;
  std::deque<Arrival> arrived_;  // each ends with a record; what came after them is the news
  Arrival news_;
  std::chrono::steady_clock::time_point reported_;
  std::optional<SystemError> failure_;
  std::optional<Terms> terms_;
  Callback<Arrival> receiver_;
  bool isReceiving_ = false;
  bool isWaitingForPart_ = false;
  bool isDraining_ = false;

  DispatchQueue receiving_{"brevanholt.receive"};
  DispatchQueue sending_{"brevanholt.send"};  // uses the other one, so it ends first
};

}  // namespace brevanholt::platform
