#include "Runner/Intake/ShareEntries.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

namespace fs = std::filesystem;
using platform::List;
using platform::MethodResult;
using platform::OpenPanel;
using platform::Value;

namespace {

// Nothing where the argument is absent or is anything but a list of strings.
std::vector<std::string> pathsOf(const CallArguments& arguments) {
  std::vector<std::string> paths;
  const auto* values = arguments.optional<List>("paths");
  if (values == nullptr) return paths;
  for (const Value& value : *values) {
    const auto* path = value.getIf<std::string>();
    if (path == nullptr) return {};
    paths.push_back(*path);
  }
  return paths;
}

DeliveryOrder::Deliver replyWith(MethodResult result) {
  return [result = std::move(result)](List entries) mutable {
    std::move(result).success(std::move(entries));
  };
}

}  // namespace

void MainFlutterWindow::pickFiles(const CallArguments& /*arguments*/, MethodResult result) {
  choose(OpenPanel::Choice::kFiles, std::move(result),
         [this](const PickedFiles::Locations& files, DeliveryOrder::Deliver answer) {
           List entries;
           for (const fs::path& file : files) entries.push_back(pickedFileEntry(file));
           pickAnswers_.add(std::move(entries), std::move(answer));
         });
}

void MainFlutterWindow::pickFolder(const CallArguments& /*arguments*/, MethodResult result) {
  choose(OpenPanel::Choice::kFolder, std::move(result),
         [this](const PickedFiles::Locations& folders, DeliveryOrder::Deliver answer) {
           if (folders.empty()) return pickAnswers_.add({}, std::move(answer));
           pickAnswers_.make(
               [folder = folders.front()](const std::stop_token& stop) {
                 return folderEntries(folder, stop);
               },
               std::move(answer));
         });
}

void MainFlutterWindow::choose(
    OpenPanel::Choice choice, MethodResult result,
    platform::UniqueFunction<void(const PickedFiles::Locations&, DeliveryOrder::Deliver)> use) {
  services_.openPanel.choose(
      choice, [weak = weak_from_this(), use = std::move(use),
               answer = replyWith(std::move(result))](PickedFiles::Locations chosen) mutable {
        const auto self = weak.lock();
        if (!self) return answer({});
        eraseUnnameable(chosen);
        if (!chosen.empty()) self->pickedFiles_.keep(chosen);
        use(chosen, std::move(answer));
      });
}

Value MainFlutterWindow::restorePickedFiles(const CallArguments& arguments) {
  pickedFiles_.restore(pathsOf(arguments));
  return {};
}

void MainFlutterWindow::releasePickedFiles(const CallArguments& arguments, MethodResult result) {
  std::vector<std::string> paths = pathsOf(arguments);
  pickedFiles_.release(paths);
  // A share may hold a great many files: they are deleted off the main thread, before the reply.
  services_.utilityQueue.async([&mainQueue = services_.mainQueue, shareStore = shareStore_,
                                paths = std::move(paths), result = std::move(result)]() mutable {
    shareStore.discardStagedItems(paths);
    mainQueue.post([result = std::move(result)]() mutable { std::move(result).success(); });
  });
}

}  // namespace brevanholt
