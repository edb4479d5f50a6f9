#include "platform/linux/window/GtkOpenPanel.h"

#include "platform/foundation/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Utf8.h"

#include <gtk/gtk.h>

namespace brevanholt::platform {

namespace {

constexpr const char* kDefaultsKey = "openPanel";
constexpr const char* kFolder = "folder";

// Why an item cannot be taken; empty where it can.
std::string problemWith(const std::filesystem::path& item, OpenPanel::Choice choice) {
  const std::string name = "“" + repairedUtf8(item.filename().native()) + "” ";
  if (!isValidUtf8(item.native())) return name + "has a name or a folder that is not UTF-8.";
  if (!fileExists(item)) return name + "does not exist.";
  if (isDirectory(item) != (choice == OpenPanel::Choice::kFolder)) {
    return name + (choice == OpenPanel::Choice::kFolder ? "is not a folder." : "is a folder.");
  }
  return {};
}

}  // namespace

GtkOpenPanel::GtkOpenPanel(Gtk::Window& parent, UserDefaults& defaults)
    : parent_(parent), defaults_(defaults) {}

GtkOpenPanel::~GtkOpenPanel() {
  panel_.reset();
  for (auto& [choice, callback] : std::exchange(waiting_, {})) callback({});
}

void GtkOpenPanel::choose(Choice choice, Callback callback) {
  waiting_.emplace_back(choice, std::move(callback));
  if (waiting_.size() == 1) showNext();
}

void GtkOpenPanel::showNext() {
  const bool wantsFolder = waiting_.front().first == Choice::kFolder;
  panel_ = Gtk::FileChooserNative::create(
      wantsFolder ? "Choose a Folder to Send" : "Choose Files to Send", parent_,
      wantsFolder ? Gtk::FILE_CHOOSER_ACTION_SELECT_FOLDER : Gtk::FILE_CHOOSER_ACTION_OPEN,
      "_Select", "_Cancel");
  panel_->set_select_multiple(!wantsFolder);
  panel_->set_modal(true);
  panel_->set_current_folder(lastFolder());
  panel_->signal_response().connect([this](int response) { answered(response); });
  panel_->show();
}

std::string GtkOpenPanel::lastFolder() const {
  try {
    const auto kept = defaults_.stringDictionary(kDefaultsKey);
    const auto folder = kept.find(kFolder);
    if (folder != kept.end() && isDirectory(folder->second)) return folder->second;
  } catch (const PlatformError& error) {
    logInfo("the last folder is not known: " + error.message());
  }
  return g_get_home_dir();
}

void GtkOpenPanel::rememberFolder(const std::filesystem::path& folder) {
  try {
    defaults_.setStringDictionary(kDefaultsKey, {{kFolder, folder.native()}});
  } catch (const PlatformError& error) {
    logInfo("the last folder is not kept: " + error.message());
  }
}

void GtkOpenPanel::answered(int response) {
  Locations chosen;
  std::string problems;
  if (response == GTK_RESPONSE_ACCEPT) {
    for (const std::string& path : panel_->get_filenames()) {
      const std::string problem = problemWith(path, waiting_.front().first);
      if (problem.empty()) {
        chosen.emplace_back(path);
      } else {
        problems += problem + '\n';
      }
    }
    if (!chosen.empty()) rememberFolder(chosen.front().parent_path());
  }
  // Kept until this is over: it is in the middle of its own signal.
  const auto finished = std::exchange(panel_, {});
  Callback callback = std::move(waiting_.front().second);
  waiting_.pop_front();
  if (!waiting_.empty()) showNext();
  if (!problems.empty()) explain(problems);
  callback(std::move(chosen));
}

void GtkOpenPanel::explain(const std::string& problems) {
  explanation_ =
      std::make_unique<Gtk::MessageDialog>(parent_, "Not everything can be sent.", false,
                                           Gtk::MESSAGE_WARNING, Gtk::BUTTONS_CLOSE, true);
  explanation_->set_secondary_text(problems);
  explanation_->signal_response().connect([this](int) { explanation_->hide(); });
  explanation_->show();
}

}  // namespace brevanholt::platform
