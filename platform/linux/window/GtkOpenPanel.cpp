#include "platform/linux/window/GtkOpenPanel.h"

#include "platform/files/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Utf8.h"
#include "platform/linux/portal/Flatpak.h"

#include <gtk/gtk.h>

namespace brevanholt::platform {

namespace {

constexpr const char* kDefaultsKey = "openPanel";
constexpr const char* kFolder = "folder";
constexpr const char* kSelect = "_Select";
constexpr const char* kCancel = "_Cancel";
constexpr const char* kExplanation = "Not everything can be sent";
// The dialog's own accepting response. To one of GTK's, GTK reacts first, and makes a folder that
// was typed and is missing.
constexpr int kTake = 1;

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

struct Selection {
  OpenPanel::Locations fitting;
  std::string problems;  // a line for each of the others
};

Selection selectionOf(const Gtk::FileChooser& panel, OpenPanel::Choice choice) {
  Selection selection;
  for (const std::string& path : panel.get_filenames()) {
    const std::string problem = problemWith(path, choice);
    if (problem.empty()) {
      selection.fitting.emplace_back(path);
    } else {
      selection.problems += problem + '\n';
    }
  }
  return selection;
}

const char* titleFor(OpenPanel::Choice choice) {
  return choice == OpenPanel::Choice::kFolder ? "Choose a Folder to Send" : "Choose Files to Send";
}

Gtk::FileChooserAction actionFor(OpenPanel::Choice choice) {
  return choice == OpenPanel::Choice::kFolder ? Gtk::FILE_CHOOSER_ACTION_SELECT_FOLDER
                                              : Gtk::FILE_CHOOSER_ACTION_OPEN;
}

}  // namespace

GtkOpenPanel::GtkOpenPanel(Gtk::Window& parent, UserDefaults& defaults)
    : parent_(parent), defaults_(defaults) {}

GtkOpenPanel::~GtkOpenPanel() {
  portal_.reset();
  dialog_.reset();
  for (auto& [choice, callback] : std::exchange(waiting_, {})) callback({});
}

void GtkOpenPanel::choose(Choice choice, Callback callback) {
  waiting_.emplace_back(choice, std::move(callback));
  if (waiting_.size() == 1) showNext();
}

void GtkOpenPanel::showNext() {
  const Choice choice = waiting_.front().first;
  if (isInFlatpak()) {
    showPortal(choice);
  } else {
    showDialog(choice);
  }
}

void GtkOpenPanel::showPortal(Choice choice) {
  portal_ = Gtk::FileChooserNative::create(titleFor(choice), parent_, actionFor(choice), kSelect,
                                           kCancel);
  portal_->set_modal(true);
  prepare(*portal_.operator->(), choice);
  portal_->signal_response().connect([this](int response) { portalAnswered(response); });
  portal_->show();
}

void GtkOpenPanel::showDialog(Choice choice) {
  dialog_ = std::make_unique<Gtk::FileChooserDialog>(parent_, titleFor(choice), actionFor(choice));
  dialog_->set_modal(true);
  prepare(*dialog_, choice);
  dialog_->add_button(kCancel, GTK_RESPONSE_CANCEL);
  dialog_->add_button(kSelect, kTake);
  dialog_->set_default_response(kTake);
  dialog_->signal_response().connect([this](int response) { dialogAnswered(response); });
  dialog_->show();
}

void GtkOpenPanel::prepare(Gtk::FileChooser& panel, Choice choice) const {
  panel.set_select_multiple(choice == Choice::kFiles);
  panel.set_create_folders(false);
  panel.set_current_folder(lastFolder());
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

void GtkOpenPanel::portalAnswered(int response) {
  Selection selection;
  if (response == GTK_RESPONSE_ACCEPT) {
    selection = selectionOf(*portal_.operator->(), waiting_.front().first);
  }
  if (!selection.problems.empty()) explain(parent_, selection.problems);
  // Kept until this is over: it is in the middle of its own signal.
  const auto finished = std::exchange(portal_, {});
  finish(std::move(selection.fitting));
}

void GtkOpenPanel::dialogAnswered(int response) {
  Selection selection;
  if (response == kTake) {
    const Choice choice = waiting_.front().first;
    const std::vector<std::string> paths = dialog_->get_filenames();
    if (choice == Choice::kFiles && paths.size() == 1 && isDirectory(paths.front())) {
      dialog_->set_current_folder(paths.front());
      return;
    }
    selection = selectionOf(*dialog_, choice);
    const bool isDone = !selection.fitting.empty();
    if (!selection.problems.empty()) explain(isDone ? parent_ : *dialog_, selection.problems);
    if (!isDone) return;
  }
  const auto finished = std::exchange(dialog_, {});
  finished->hide();
  finish(std::move(selection.fitting));
}

void GtkOpenPanel::finish(Locations chosen) {
  if (!chosen.empty()) rememberFolder(chosen.front().parent_path());
  Callback callback = std::move(waiting_.front().second);
  waiting_.pop_front();
  if (!waiting_.empty()) showNext();
  callback(std::move(chosen));
}

void GtkOpenPanel::explain(Gtk::Window& over, const std::string& problems) {
  explanation_ = std::make_unique<Gtk::MessageDialog>(
      over, kExplanation, false, Gtk::MESSAGE_WARNING, Gtk::BUTTONS_CLOSE, true);
  explanation_->set_title(kExplanation);
  explanation_->set_secondary_text(problems);
  explanation_->signal_response().connect([this](int) { explanation_->hide(); });
  explanation_->show();
}

}  // namespace brevanholt::platform
