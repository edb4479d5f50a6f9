#include "platform/linux/session/GioNetworkMonitor.h"

#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Log.h"
#include "platform/linux/session/LinkChanges.h"

#include <glib-unix.h>

#include <array>
#include <cerrno>

#include <linux/rtnetlink.h>
#include <pthread.h>
#include <sys/socket.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kThreadNameLength = 15;

// A monitor that signals changes in this thread's main context. GIO's shared monitor signals them
// in the context of the thread that used it first, which would be a race between threads.
GObjectPointer<GNetworkMonitor> monitorOfThisThread(GCancellable* cancellable) {
  g_vfs_get_default();  // loads GIO's modules and extension points
  GIOExtensionPoint* point = g_io_extension_point_lookup(G_NETWORK_MONITOR_EXTENSION_POINT_NAME);
  if (point == nullptr) return nullptr;
  for (GList* kind = g_io_extension_point_get_extensions(point); kind; kind = kind->next) {
    const GType type = g_io_extension_get_type(static_cast<GIOExtension*>(kind->data));
    void* monitor = g_initable_new(type, cancellable, nullptr, nullptr);
    if (monitor != nullptr) return GObjectPointer<GNetworkMonitor>(G_NETWORK_MONITOR(monitor));
  }
  return nullptr;
}

void networkChanged(GNetworkMonitor*, gboolean, gpointer updated) {
  (*static_cast<std::function<void()>*>(updated))();
}

// A socket on which the kernel announces links and addresses; invalid where it refuses.
FileDescriptor linkSocket() {
  FileDescriptor socket(
      ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
  if (!socket ||
      ::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
    logWarning("links and addresses go unwatched: " + std::string(g_strerror(errno)));
    return {};
  }
  return socket;
}

// Announces the links and addresses of one thread's main context while it exists.
class LinkWatch {
 public:
  LinkWatch(GMainContext* context, std::function<void()>& updated) : updated_(updated) {
    if (!socket_) return;
    source_.reset(g_unix_fd_source_new(socket_.get(), G_IO_IN));
    const GUnixFDSourceFunc act = [](int, GIOCondition, gpointer self) -> gboolean {
      static_cast<LinkWatch*>(self)->readable();
      return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(source_.get(), G_SOURCE_FUNC(act), this, nullptr);
    g_source_attach(source_.get(), context);
  }
  ~LinkWatch() {
    if (source_) g_source_destroy(source_.get());
  }
  LinkWatch(const LinkWatch&) = delete;
  LinkWatch& operator=(const LinkWatch&) = delete;

 private:
  void readable() {
    alignas(nlmsghdr) std::array<std::byte, 16 << 10> buffer;
    const ssize_t size = ::recv(socket_.get(), buffer.data(), buffer.size(), 0);
    if (size < 0 && errno != ENOBUFS) return;
    // Datagrams that did not fit the socket's buffer may have held a change.
    if (size < 0 || changes_.take({buffer.data(), static_cast<std::size_t>(size)})) updated_();
  }

  FileDescriptor socket_ = linkSocket();
  std::unique_ptr<GSource, FreeWith<g_source_unref>> source_;
  LinkChanges changes_;
  std::function<void()>& updated_;
};

void watch(GMainLoop* loop, GCancellable* cancellable, std::function<void()> updated) {
  GMainContext* context = g_main_loop_get_context(loop);
  g_main_context_push_thread_default(context);
  const LinkWatch links(context, updated);
  if (const auto monitor = monitorOfThisThread(cancellable)) {
    g_signal_connect(monitor.get(), "network-changed", G_CALLBACK(networkChanged), &updated);
    updated();
    g_main_loop_run(loop);
    g_signal_handlers_disconnect_by_data(monitor.get(), &updated);
  } else if (g_cancellable_is_cancelled(cancellable) == FALSE) {
    logWarning("GIO has no network monitor; changes of routes go unnoticed");
    updated();
    g_main_loop_run(loop);
  }
  g_main_context_pop_thread_default(context);
}

}  // namespace

void GioNetworkMonitor::start(const std::string& queueLabel, std::function<void()> updated) {
  cancel();
  context_.reset(g_main_context_new());
  loop_.reset(g_main_loop_new(context_.get(), FALSE));
  cancellable_.reset(g_cancellable_new());
  thread_ = std::thread(watch, loop_.get(), cancellable_.get(), std::move(updated));
  const std::size_t length = queueLabel.size();
  const std::size_t excess = length > kThreadNameLength ? length - kThreadNameLength : 0;
  ::pthread_setname_np(thread_.native_handle(), queueLabel.c_str() + excess);
}

void GioNetworkMonitor::cancel() {
  if (!thread_.joinable()) return;
  g_cancellable_cancel(cancellable_.get());
  // From within the loop: a loop that does not run yet would forget it.
  GSource* source = g_idle_source_new();
  g_source_set_callback(
      source,
      [](gpointer loop) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop*>(loop));
        return G_SOURCE_REMOVE;
      },
      loop_.get(), nullptr);
  g_source_attach(source, context_.get());
  g_source_unref(source);
  thread_.join();
}

}  // namespace brevanholt::platform
