#pragma once

#include "platform/desktop/NativeView.h"

#include <string>
#include <vector>

namespace brevanholt::platform {

enum class DragOperation { kNone, kCopy };

// What is being dragged.
struct DraggingInfo {
  // The absolute paths of its files and folders on this computer, in its order. A folder's ends in
  // "/". The bytes are the file system's: they need not be UTF-8.
  std::vector<std::string> filePaths;
};

// Is told of a drag in this order: entered, any number of times updated, then either exited or,
// where it said that it takes the drag, performed.
class DragDestination {
 public:
  virtual ~DragDestination() = default;
  virtual DragOperation draggingEntered(const DraggingInfo& drag) = 0;
  virtual DragOperation draggingUpdated(const DraggingInfo& drag) = 0;
  virtual void draggingExited() = 0;
  // Dropped. True where something was taken.
  virtual bool performDragOperation(const DraggingInfo& drag) = 0;
};

// A view that another view fills, and that receives the drags over both.
class DropContainer {
 public:
  virtual ~DropContainer() = default;
  [[nodiscard]] virtual NativeView& view() = 0;
  // Borrowed.
  virtual void addSubview(NativeView& view) = 0;
  // Borrowed; null to receive no more drags.
  virtual void registerForDraggedFiles(DragDestination* destination) = 0;
};

}  // namespace brevanholt::platform
