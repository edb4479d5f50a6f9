#include "platform/transfer/SealedConnection.h"

#include <cerrno>
#include <iterator>
#include <utility>

namespace brevanholt::platform {
namespace {

using Clock = std::chrono::steady_clock;
using Layout = RecordLayout;

constexpr std::size_t kMostWaiting = 16;  // records
constexpr std::size_t kFirstBuffer = 4 << 10;
constexpr std::chrono::milliseconds kReportEvery{250};

SystemError canceled() {
  return {"use the connection", ECANCELED};
}

bool isEmpty(const Arrival& news) {
  return news.taken == 0 && news.whole.empty() && news.failed.empty() && !news.wanted;
}

template <class T>
void append(std::vector<T>& to, std::vector<T>& from) {
  to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

}  // namespace

SealedConnection::SealedConnection(Options options, MainQueue& mainQueue)
    : mainQueue_(mainQueue),
      socket_(std::move(options.socket), options.silence),
      outgoing_(socket_, options.sendingKey),
      cipher_(RecordCipher::Direction::kOpen, options.receivingKey),
      content_([this](std::uint32_t entry) { return takeExpected(entry); }) {}

SealedConnection::~SealedConnection() {
  isClosed_ = true;
  socket_.interrupt();
}

template <class T, class F>
Outcome<T> SealedConnection::attempt(F& work) {
  try {
    if (isClosed_) return canceled();
    Outcome<T> outcome = work();
    // close() has ended the work, whatever its outcome.
    if (isClosed_) outcome = canceled();
    return outcome;
  } catch (const SystemError& error) {
    return isClosed_ ? canceled() : error;
  } catch (const std::exception&) {
    return SystemError("use the connection", EIO);
  }
}

template <class T>
void SealedConnection::answer(Callback<T> callback, Outcome<T> outcome) {
  mainQueue_.post([callback = std::move(callback), outcome = std::move(outcome)]() mutable {
    callback(std::move(outcome));
  });
}

template <class T, class F>
void SealedConnection::run(DispatchQueue& queue, Callback<T> callback, F work) {
  queue.async([this, callback = std::move(callback), work = std::move(work)]() mutable {
    answer<T>(std::move(callback), attempt<T>(work));
  });
}

void SealedConnection::send(std::uint8_t type, Bytes body, Callback<Done> sent) {
  run<Done>(sending_, std::move(sent), [this, type, body = std::move(body)] {
    outgoing_.sendControl(type, body);
    return Done{};
  });
}

void SealedConnection::sendContent(std::vector<OutgoingPart> parts,
                                   Callback<std::vector<PartFailure>> sent) {
  run<std::vector<PartFailure>>(sending_, std::move(sent), [this, parts = std::move(parts)] {
    return outgoing_.send(parts, contentIsCanceled_);
  });
}

void SealedConnection::part(std::optional<Arrival::Control> last, Callback<Done> parted) {
  contentIsCanceled_ = true;
  run<Done>(
      sending_, [](const Outcome<Done>&) {},  // the other side's end is what counts
      [this, last = std::move(last)] {
        if (last) outgoing_.sendControl(last->type, last->body);
        socket_.finish();
        return Done{};
      });
  {
    const std::lock_guard lock(mutex_);
    isDraining_ = true;
    if (receiver_) answer<Arrival>(std::exchange(receiver_, nullptr), canceled());
  }
  run<Done>(receiving_, std::move(parted), [this] {
    socket_.drain();
    return Done{};
  });
}

void SealedConnection::close(UniqueFunction<void()> closed) {
  isClosed_ = true;
  socket_.interrupt();
  {
    const std::lock_guard lock(mutex_);
    if (receiver_) answer<Arrival>(std::exchange(receiver_, nullptr), canceled());
  }
  sending_.async([this, closed = std::move(closed)]() mutable {
    receiving_.async([this, closed = std::move(closed)]() mutable {
      mainQueue_.post([closed = std::move(closed)]() mutable { closed(); });
    });
  });
}

void SealedConnection::expect(std::vector<IncomingPart> parts) {
  const std::lock_guard lock(mutex_);
  for (IncomingPart& part : parts) {
    const std::uint32_t entry = part.entry;
    expected_.insert_or_assign(entry, std::move(part));
  }
}

std::optional<IncomingPart> SealedConnection::takeExpected(std::uint32_t entry) {
  const std::lock_guard lock(mutex_);
  auto found = expected_.extract(entry);
  if (!found) return std::nullopt;
  return std::move(found.mapped());
}

void SealedConnection::receive(Terms terms, Callback<Arrival> received) {
  const std::lock_guard lock(mutex_);
  if (isClosed_ || isDraining_) return answer<Arrival>(std::move(received), canceled());
  if (receiver_) {
    return answer<Arrival>(std::move(received), SystemError("receive twice at once", EBUSY));
  }
  receiver_ = std::move(received);
  terms_ = terms;
  if (!news_.wanted) isWaitingForPart_ = false;
  report();
  receiveIfWanted();
}

bool SealedConnection::mayReceive() const {
  if (isClosed_ || isDraining_ || isWaitingForPart_ || failure_ || !terms_) return false;
  return terms_->readsAhead ? arrived_.size() < kMostWaiting : receiver_ && arrived_.empty();
}

void SealedConnection::receiveIfWanted() {
  if (isReceiving_ || !mayReceive()) return;
  isReceiving_ = true;
  receiving_.async([this] { receiveWhileWanted(); });
}

void SealedConnection::receiveWhileWanted() {
  for (;;) {
    std::size_t largestFrame = 0;
    {
      const std::lock_guard lock(mutex_);
      isReceiving_ = mayReceive();
      if (!isReceiving_) return;
      largestFrame = terms_->largestFrame;
    }
    const auto receive = [this, largestFrame] { return nextArrival(largestFrame); };
    Outcome<Arrival> news = attempt<Arrival>(receive);
    const std::lock_guard lock(mutex_);
    if (auto* arrival = std::get_if<Arrival>(&news)) {
      add(std::move(*arrival));
    } else {
      failure_ = std::get<SystemError>(news);
    }
    report();
  }
}

Arrival SealedConnection::nextArrival(std::size_t largestFrame) {
  Arrival news;
  const bool wasStalled = content_.isStalled();
  if (wasStalled) {
    content_.take(segments_, news);
    // The caller was told of the entry and still does not expect it.
    if (news.wanted && news.taken == 0 && news.whole.empty() && news.failed.empty()) {
      throw SystemError("understand the content", EPROTO);
    }
    return news;
  }
  const auto record = nextRecord(largestFrame);
  if (!record) {
    news.isEnd = true;
  } else if (record->type == Layout::kContent) {
    segments_ = SegmentReader(record->body);
    content_.take(segments_, news);
  } else {
    const std::vector<std::uint8_t> body(record->body.begin(), record->body.end());
    news.record = Arrival::Control{record->type, Bytes(body)};
  }
  return news;
}

std::optional<Record> SealedConnection::nextRecord(std::size_t largestFrame) {
  if (buffer_.size() < Layout::kSize) buffer_.resize(kFirstBuffer);
  const auto sizeField = std::span(buffer_).first<Layout::kSize>();
  if (!socket_.receive(sizeField)) return std::nullopt;
  const std::size_t size = frameSize(sizeField);
  if (size == 0 || size > std::min(largestFrame, Layout::kLargestFrame)) {
    throw SystemError("understand the record", EPROTO);
  }
  const std::size_t whole = Layout::kSize + size;
  if (buffer_.size() < whole) buffer_.resize(std::min(2 * whole, Layout::kLargestRecord));
  const auto frame = std::span(buffer_).subspan(Layout::kSize, size);
  if (!socket_.receive(frame)) throw SystemError("read from the connection", ECONNRESET);
  return openRecord(cipher_, std::span(buffer_).first(whole));
}

void SealedConnection::add(Arrival news) {
  news_.taken += news.taken;
  append(news_.whole, news.whole);
  append(news_.failed, news.failed);
  if (news.wanted) {
    news_.wanted = news.wanted;
    isWaitingForPart_ = true;
  }
  // After the end every later call gets this error.
  if (news.isEnd) failure_ = SystemError("read from the connection", ECONNRESET);
  if (!news.record && !news.isEnd) return;
  news_.record = std::move(news.record);
  news_.isEnd = news.isEnd;
  arrived_.push_back(std::exchange(news_, {}));
}

bool SealedConnection::hasReport() const {
  const bool isUrgent = failure_ || !news_.failed.empty() || news_.wanted;
  return !arrived_.empty() || isUrgent ||
         (!isEmpty(news_) && Clock::now() - reported_ >= kReportEvery);
}

void SealedConnection::report() {
  if (!receiver_ || !hasReport()) return;
  reported_ = Clock::now();
  auto receiver = std::exchange(receiver_, nullptr);
  if (!arrived_.empty()) {
    answer<Arrival>(std::move(receiver), std::move(arrived_.front()));
    arrived_.pop_front();
  } else if (!isEmpty(news_)) {
    answer<Arrival>(std::move(receiver), std::exchange(news_, {}));
  } else {
    answer<Arrival>(std::move(receiver), *failure_);
  }
}

}  // namespace brevanholt::platform
