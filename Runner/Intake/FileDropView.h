#pragma once

#include "Runner/Intake/PickedFiles.h"
#include "platform/channel/MethodChannel.h"
#include "platform/desktop/DragDestination.h"

#include <memory>

namespace brevanholt {

// Takes the files that are dragged onto the window, and no folders. Tells the UI while a drag that
// it would take hovers ("dragActiveChanged"), and what was dropped ("filesDropped").
class FileDropView final : public platform::DragDestination {
 public:
  // Borrows the container and the picked files.
  FileDropView(std::shared_ptr<platform::MethodChannel> channel, platform::DropContainer& container,
               PickedFiles& pickedFiles);
  ~FileDropView() override;
  FileDropView(const FileDropView&) = delete;
  FileDropView& operator=(const FileDropView&) = delete;

  platform::DragOperation draggingEntered(const platform::DraggingInfo& drag) override;
  platform::DragOperation draggingUpdated(const platform::DraggingInfo& drag) override;
  void draggingExited() override;
  bool performDragOperation(const platform::DraggingInfo& drag) override;

 private:
  void endDrag();

  std::shared_ptr<platform::MethodChannel> channel_;
  platform::DropContainer& container_;
  PickedFiles& pickedFiles_;
  bool acceptsCurrentDrag_ = false;
};

}  // namespace brevanholt
