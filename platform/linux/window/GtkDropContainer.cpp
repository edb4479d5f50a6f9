#include "platform/linux/window/GtkDropContainer.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/Utf8.h"
#include "platform/linux/window/DraggedFiles.h"

#include <glibmm/main.h>

namespace brevanholt::platform {
namespace {

constexpr const char* kUriList = "text/uri-list";
// A key to files that the portal hands out; the second is its earlier name.
constexpr const char* kFileTransfer = "application/vnd.portal.filetransfer";
constexpr const char* kOldFileTransfer = "application/vnd.portal.files";
constexpr BusMethod kRetrieveFiles{"org.freedesktop.portal.Documents",
                                   "/org/freedesktop/portal/documents",
                                   "org.freedesktop.portal.FileTransfer", "RetrieveFiles"};

std::vector<std::string> pathsIn(GVariant* reply) {
  GVariantIter* strings = nullptr;
  g_variant_get(reply, "(as)", &strings);
  const std::unique_ptr<GVariantIter, FreeWith<g_variant_iter_free>> owned(strings);
  std::vector<std::string> paths;
  for (const char* path = nullptr; g_variant_iter_next(strings, "&s", &path) != FALSE;) {
    paths.emplace_back(path);
  }
  return paths;
}

}  // namespace

GtkDropContainer::GtkDropContainer(Bus& sessionBus) : sessionBus_(sessionBus) {
  // In this order a source that offers both is asked for.
  box_.drag_dest_set({Gtk::TargetEntry(kUriList), Gtk::TargetEntry(kFileTransfer),
                      Gtk::TargetEntry(kOldFileTransfer)},
                     Gtk::DestDefaults(0), Gdk::ACTION_COPY);
  box_.signal_drag_motion().connect(
      [this](const Context& context, int x, int y, guint time) {
        return dragMotion(context, {x, y}, time);
      },
      false);
  box_.signal_drag_leave().connect([this](const Context& context, guint) { dragLeave(context); },
                                   false);
  box_.signal_drag_drop().connect(
      [this](const Context& context, int x, int y, guint time) {
        return dragDrop(context, {x, y}, time);
      },
      false);
  box_.signal_drag_data_received().connect(
      [this](const Context& context, int, int, const Gtk::SelectionData& data, guint, guint time) {
        dragDataReceived(context, data, time);
      },
      false);
}

void GtkDropContainer::addSubview(NativeView& view) {
  auto& widget = dynamic_cast<GtkNativeView&>(view).widget();
  box_.pack_start(widget, true, true);
  widget.show();
}

void GtkDropContainer::registerForDraggedFiles(DragDestination* destination) {
  leaving_.disconnect();
  drag_.reset();
  destination_ = destination;
}

bool GtkDropContainer::dragMotion(const Context& context, DragPlace place, guint time) {
  if (destination_ == nullptr) return false;
  if (leaving_.connected() || !isCurrent(context)) {
    begin(context, place, time);
  } else if (drag_->info) {
    drag_->place = place;
    if (spectator_.moved) spectator_.moved(place, *drag_->info);
    drag_->operation = destination_->draggingUpdated(*drag_->info);
    answer(time);
  }
  return true;
}

void GtkDropContainer::dragLeave(const Context& context) {
  if (!isCurrent(context)) return;
  leaving_.disconnect();
  leaving_ = Glib::signal_idle().connect([this] {
    leave();
    return false;
  });
}

bool GtkDropContainer::dragDrop(const Context& context, DragPlace place, guint time) {
  leaving_.disconnect();
  if (!isCurrent(context)) return false;
  drag_->place = place;
  drag_->dropTime = time;
  if (drag_->info) finish(time);
  return true;
}

void GtkDropContainer::dragDataReceived(const Context& context, const Gtk::SelectionData& data,
                                        guint time) {
  if (!isCurrent(context) || drag_->info) return;
  const std::string text = data.get_data_as_string();
  if (data.get_target() == kUriList) return arrived(draggedFiles(text), time);
  const std::string key =
      text.substr(0, text.find('\0'));  // some sources send its terminating zero too
  if (!key.empty() && isValidUtf8(key)) return retrieveFromPortal(key, time);
  logInfo("no dragged files from the portal: the source gave no valid key");
  arrived({}, time);
}

void GtkDropContainer::begin(const Context& context, DragPlace place, guint time) {
  if (drag_) leave();
  drag_ = Drag{.context = context, .info = {}, .place = place, .dropTime = {}};
  const std::string target = box_.drag_dest_find_target(context);
  if (target == "NONE") return arrived({}, time);
  box_.drag_get_data(context, target, time);
}

void GtkDropContainer::retrieveFromPortal(const std::string& key, guint time) {
  sessionBus_.call(
      kRetrieveFiles, g_variant_new("(sa{sv})", key.c_str(), nullptr), "(as)",
      lifetime_.bind([this, context = drag_->context, time](Result<GVariantPointer> reply) {
        if (!isCurrent(context) || drag_->info) return;
        if (!reply.ok()) logInfo("no dragged files from the portal: " + reply.error().message());
        arrived(reply.ok() ? draggedFiles(pathsIn(reply.value().get())) : DraggingInfo(), time);
      }));
}

void GtkDropContainer::arrived(DraggingInfo info, guint time) {
  drag_->info = std::move(info);
  drag_->operation = destination_->draggingEntered(*drag_->info);
  if (spectator_.moved) spectator_.moved(drag_->place, *drag_->info);
  if (drag_->dropTime) return finish(*drag_->dropTime);
  if (!leaving_.connected()) answer(time);
}

void GtkDropContainer::answer(guint time) {
  const bool takes = drag_->operation == DragOperation::kCopy;
  drag_->context->drag_status(takes ? Gdk::ACTION_COPY : Gdk::DragAction(0), time);
}

void GtkDropContainer::finish(guint time) {
  const Drag drag = *std::exchange(drag_, std::nullopt);
  const bool takes = drag.operation == DragOperation::kCopy;
  if (takes && spectator_.dropped) spectator_.dropped(drag.place, *drag.info);
  if (!takes && spectator_.left) spectator_.left();
  const bool taken = takes && destination_->performDragOperation(*drag.info);
  if (!takes) destination_->draggingExited();
  drag.context->drag_finish(taken, false, time);
}

void GtkDropContainer::leave() {
  leaving_.disconnect();
  const Drag drag = *std::exchange(drag_, std::nullopt);
  if (drag.info && spectator_.left) spectator_.left();
  if (drag.info) destination_->draggingExited();
}

}  // namespace brevanholt::platform
