#pragma once

#include "Runner/Intake/PickedFiles.h"
#include "Runner/ReceiveFolder/ReceiveFolder.h"
#include "platform/engine/FileAccess.h"

#include <set>
#include <string>
#include <vector>

namespace brevanholt {

// Which files the UI may use: it changes what is in the folders that are its own, and reads there,
// what the person has handed in and not taken back, and what was received in this run, as long as
// that is where it was placed. A path that is refused is logged once.
class PageFiles final : public platform::FileAccess {
 public:
  using Path = std::filesystem::path;

  // `own` are its folders beside the scratch area. Borrows the rest.
  PageFiles(std::vector<Path> own, ReceiveFolder& received, const PickedFiles& picked)
      : own_(std::move(own)), received_(received), picked_(picked) {}

  [[nodiscard]] platform::Reach toRead(const Path& path) override;
  [[nodiscard]] platform::Reach toChange(const Path& path) override;
  void publish(std::vector<platform::ReceivedFile> files, Published done) override;
  // Whether the path is of something that the UI may change, with no link on the way.
  [[nodiscard]] bool isOwn(const Path& path) const;

 private:
  [[nodiscard]] std::optional<platform::Reach> inOwnFolder(const Path& path) const;
  [[noreturn]] void refuse(const Path& path, const char* why);

  std::vector<Path> own_;
  ReceiveFolder& received_;
  const PickedFiles& picked_;
  std::set<std::string> logged_;
};

}  // namespace brevanholt
