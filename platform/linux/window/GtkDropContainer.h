#pragma once

#include "platform/desktop/DragDestination.h"
#include "platform/gtk/GtkNativeView.h"
#include "platform/linux/bus/Bus.h"

#include <gtkmm/box.h>

#include <functional>
#include <optional>

namespace brevanholt::platform {

// Where a drag is, in pixels of the container.
struct DragPlace {
  int x = 0;
  int y = 0;
};

// A box that is GTK's drop target for all that is in it.
//
// GTK says where a drag is, not what it brings: that is asked of its source at the first motion and
// comes later, and until then the source waits for an answer. GTK says that a drag has left before
// it says that it was dropped, so leaving waits for the next turn of the main loop.
class GtkDropContainer final : public DropContainer {
 public:
  explicit GtkDropContainer(Bus& sessionBus);

  [[nodiscard]] NativeView& view() override { return view_; }
  void addSubview(NativeView& view) override;
  void registerForDraggedFiles(DragDestination* destination) override;

  // Who is shown a drag besides the one that takes it.
  struct Spectator {
    std::function<void(DragPlace, const DraggingInfo&)> moved;
    // Before it is taken.
    std::function<void(DragPlace, const DraggingInfo&)> dropped;
    std::function<void()> left;
  };
  void setSpectator(Spectator spectator) { spectator_ = std::move(spectator); }

 private:
  using Context = Glib::RefPtr<Gdk::DragContext>;

  struct Drag {
    Context context;
    std::optional<DraggingInfo> info;  // once it is known
    DragOperation operation = DragOperation::kNone;
    DragPlace place;
    std::optional<guint> dropTime;  // where it was dropped before that
  };

  bool dragMotion(const Context& context, DragPlace place, guint time);
  void dragLeave(const Context& context);
  bool dragDrop(const Context& context, DragPlace place, guint time);
  void dragDataReceived(const Context& context, const Gtk::SelectionData& data, guint time);

  void begin(const Context& context, DragPlace place, guint time);
  void retrieveFromPortal(const std::string& key, guint time);
  void arrived(DraggingInfo info, guint time);
  void answer(guint time);
  void finish(guint time);
  void leave();
  [[nodiscard]] bool isCurrent(const Context& context) const {
    return drag_ && drag_->context == context;
  }

  Bus& sessionBus_;
  Gtk::Box box_;
  GtkNativeView view_{box_};
  DragDestination* destination_ = nullptr;
  Spectator spectator_;
  std::optional<Drag> drag_;
  sigc::connection leaving_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
