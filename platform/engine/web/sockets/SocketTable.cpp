#include "platform/engine/web/sockets/SocketTable.h"

#include "platform/engine/web/link/EngineArguments.h"
#include "platform/engine/web/sockets/TcpConnection.h"
#include "platform/engine/web/sockets/TcpListener.h"
#include "platform/engine/web/sockets/UdpSocket.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kMostSockets = 256;
constexpr std::int64_t kShortestPause = 100;        // milliseconds
constexpr std::int64_t kLongestPause = 86'400'000;  // milliseconds

SocketAddress addressIn(const Map& arguments) {
  return {textIn(arguments, "address"), sizeIn(arguments, "port")};
}

// The description with the handle in it.
Value withHandle(std::int64_t handle, const Value& description) {
  Map map = *description.getIf<Map>();
  map.add("handle", handle);
  return map;
}

}  // namespace

void SocketTable::perform(const MethodCall& call, MethodResult result) {
  try {
    if (performUdp(call, result) || performTcp(call, result)) return;
    if (call.method == "interfaces") return std::move(result).success(networkInterfaces());
    if (call.method != "close") return std::move(result).notImplemented();
    open_.erase(sizeIn(argumentsOf(call), "handle"));
    std::move(result).success();
  } catch (const std::exception& error) {
    std::move(result).error(socketError(error));
  }
}

bool SocketTable::performUdp(const MethodCall& call, MethodResult& result) {
  const Map& arguments = argumentsOf(call);
  if (call.method == "udpBind") {
    expectRoom();
    const SocketAddress address = addressIn(arguments);
    rules_.expectDatagramPort(address);
    auto socket = std::make_unique<UdpSocket>(address, flagIn(arguments, "isShared"));
    const Value description = socket->description();
    std::move(result).success(add(std::move(socket), description));
  } else if (call.method == "udpJoin") {
    rules_.expectDatagramsTo(SocketAddress(textIn(arguments, "group"), 0));
    at<UdpSocket>(arguments).join(textIn(arguments, "group"), textIn(arguments, "interface"));
    std::move(result).success();
  } else if (call.method == "udpSend") {
    rules_.expectDatagramsTo(addressIn(arguments));
    at<UdpSocket>(arguments).send(bytesIn(arguments), addressIn(arguments));
    std::move(result).success();
  } else if (call.method == "udpFarewell") {
    rules_.expectDatagramsTo(addressIn(arguments));
    at<UdpSocket>(arguments).setFarewell(bytesIn(arguments), addressIn(arguments));
    std::move(result).success();
  } else if (call.method == "udpRepeat") {
    repeat(arguments);
    std::move(result).success();
  } else if (call.method == "udpReceive") {
    at<UdpSocket>(arguments).receive(result);
  } else {
    return false;
  }
  return true;
}

void SocketTable::repeat(const Map& arguments) {
  std::vector<Announcements::Datagram> datagrams;
  for (const Value& one : listIn(arguments, "datagrams")) {
    const Map& datagram = mapIn(one);
    rules_.expectDatagramsTo(addressIn(datagram));
    at<UdpSocket>(datagram).ignore(bytesIn(datagram));
    datagrams.push_back({sizeIn(datagram, "handle"), bytesIn(datagram), addressIn(datagram)});
  }
  const std::chrono::milliseconds shortest(
      std::clamp(sizeIn(arguments, "shortest"), kShortestPause, kLongestPause));
  const std::chrono::milliseconds longest(
      std::clamp(sizeIn(arguments, "longest"), shortest.count(), kLongestPause));
  announcements_.repeat(std::move(datagrams), {shortest, longest},
                        [this](const auto& datagram) { sendAgain(datagram); });
}

void SocketTable::sendAgain(const Announcements::Datagram& datagram) {
  const auto found = open_.find(datagram.socket);
  if (found == open_.end()) return;
  try {
    dynamic_cast<UdpSocket&>(*found->second).send(datagram.bytes, datagram.to);
  } catch (const SystemError&) {
    // Its interface is going away; the page is told of network changes by an event.
  }
}

void SocketTable::closeAll() {
  announcements_.stop();
  open_.clear();
}

bool SocketTable::performTcp(const MethodCall& call, MethodResult& result) {
  const Map& arguments = argumentsOf(call);
  if (call.method == "tcpListen") {
    expectRoom();
    auto socket = std::make_unique<TcpListener>(
        addressIn(arguments), static_cast<int>(sizeIn(arguments, "backlog")), rules_,
        [this](std::unique_ptr<TcpConnection> connection) {
          expectRoom();
          const Value description = connection->description();
          return add(std::move(connection), description);
        });
    const Value description = socket->description();
    std::move(result).success(add(std::move(socket), description));
  } else if (call.method == "tcpAccept") {
    at<TcpListener>(arguments).accept(result);
  } else if (call.method == "tcpConnect") {
    connect(arguments, result);
  } else if (call.method == "tcpRead") {
    at<TcpConnection>(arguments).read(sizeIn(arguments, "minimum"), sizeIn(arguments, "maximum"),
                                      result);
  } else if (call.method == "tcpWrite") {
    const Bytes* head = optionalBytesIn(arguments, "head");
    at<TcpConnection>(arguments).write(head != nullptr ? *head : Bytes(), bytesIn(arguments),
                                       result);
  } else if (call.method == "tcpFinish") {
    at<TcpConnection>(arguments).finish();
    std::move(result).success();
  } else {
    return false;
  }
  return true;
}

void SocketTable::connect(const Map& arguments, MethodResult& result) {
  expectRoom();
  const std::int64_t limit = sizeIn(arguments, "limit");
  const SocketAddress address = addressIn(arguments);
  rules_.expectPeer(address);
  auto owned = std::make_unique<TcpConnection>(address);
  TcpConnection& connection = *owned;
  const std::int64_t handle = ++lastHandle_;
  open_.emplace(handle, std::move(owned));
  connection.whenConnected(
      limit, result, [&connection, handle] { return withHandle(handle, connection.description()); },
      [this, handle] { open_.erase(handle); });
}

template <class Socket>
Socket& SocketTable::at(const Map& arguments) const {
  const auto found = open_.find(sizeIn(arguments, "handle"));
  auto* socket = found != open_.end() ? dynamic_cast<Socket*>(found->second.get()) : nullptr;
  if (socket == nullptr) throw PlatformError("There is no such socket.");
  return *socket;
}

Value SocketTable::add(std::unique_ptr<EngineSocket> socket, const Value& description) {
  open_.emplace(++lastHandle_, std::move(socket));
  return withHandle(lastHandle_, description);
}

FileDescriptor SocketTable::release(std::int64_t handle) {
  FileDescriptor descriptor = at<TcpConnection>(Map{{"handle", handle}}).release();
  open_.erase(handle);
  return descriptor;
}

void SocketTable::expectRoom() const {
  if (open_.size() >= kMostSockets) throw PlatformError("Too many sockets are open.");
}

}  // namespace brevanholt::platform
