#include "Runner/Intake/FileDropView.h"

#include "Runner/Intake/ShareEntries.h"

#include <algorithm>

namespace brevanholt {

using platform::DraggingInfo;
using platform::DragOperation;
using platform::List;

namespace {

PickedFiles::Locations droppedFiles(const DraggingInfo& drag) {
  PickedFiles::Locations files;
  for (const std::string& path : drag.filePaths) {
    if (!path.ends_with('/')) files.emplace_back(path);
  }
  return files;
}

}  // namespace

FileDropView::FileDropView(std::shared_ptr<platform::MethodChannel> channel,
                           platform::DropContainer& container, PickedFiles& pickedFiles)
    : channel_(std::move(channel)), container_(container), pickedFiles_(pickedFiles) {
  container_.registerForDraggedFiles(this);
}

FileDropView::~FileDropView() {
  container_.registerForDraggedFiles(nullptr);
}

DragOperation FileDropView::draggingEntered(const DraggingInfo& drag) {
  acceptsCurrentDrag_ = std::ranges::any_of(droppedFiles(drag), canBeNamed);
  if (acceptsCurrentDrag_) channel_->invokeMethod("dragActiveChanged", true);
  return draggingUpdated(drag);
}

DragOperation FileDropView::draggingUpdated(const DraggingInfo& /*drag*/) {
  return acceptsCurrentDrag_ ? DragOperation::kCopy : DragOperation::kNone;
}

void FileDropView::draggingExited() {
  endDrag();
}

bool FileDropView::performDragOperation(const DraggingInfo& drag) {
  PickedFiles::Locations files = droppedFiles(drag);
  eraseUnnameable(files);
  if (!files.empty()) {
    pickedFiles_.keepSoon(files);
    List entries;
    for (const auto& file : files) entries.push_back(pickedFileEntry(file));
    channel_->invokeMethodUntilHandled("filesDropped", std::move(entries), [] {});
  }
  endDrag();
  return !files.empty();
}

void FileDropView::endDrag() {
  acceptsCurrentDrag_ = false;
  channel_->invokeMethod("dragActiveChanged", false);
}

}  // namespace brevanholt
