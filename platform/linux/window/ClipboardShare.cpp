#include "platform/linux/window/ClipboardShare.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/Uuid.h"
#include "platform/gtk/FileUri.h"
#include "platform/gtk/GLibPointers.h"

#include <gtkmm/clipboard.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using Callback = std::function<void(const ServicePasteboard&)>;

std::string pictureName() {
  const std::unique_ptr<GDateTime, FreeWith<g_date_time_unref>> now(g_date_time_new_now_local());
  return GCharPointer(g_date_time_format(now.get(), "Picture %Y-%m-%d %H-%M-%S.png")).get();
}

struct Saving {
  fs::path file;
  Callback callback;
};

void pictureSaved(GObject*, GAsyncResult* asyncResult, gpointer data) {
  const std::unique_ptr<Saving> saving(static_cast<Saving*>(data));
  GError* failure = nullptr;
  gdk_pixbuf_save_to_stream_finish(asyncResult, &failure);
  const GErrorPointer error(failure);
  if (error) return logWarning(std::string("the picture was not pasted: ") + error->message);
  saving->callback({.files = {saving->file}, .text = {}});
}

void savePicture(const Glib::RefPtr<Gdk::Pixbuf>& picture, const fs::path& folder,
                 Callback callback) {
  const fs::path place = folder / makeUuid();
  std::error_code error;
  fs::create_directories(place, error);
  const fs::path path = place / pictureName();
  const GObjectPointer<GFile> file(g_file_new_for_path(path.c_str()));
  GError* failure = nullptr;
  const GObjectPointer<GFileOutputStream> stream(
      g_file_create(file.get(), G_FILE_CREATE_PRIVATE, nullptr, &failure));
  const GErrorPointer reason(failure);
  if (!stream) return logWarning(std::string("the picture was not pasted: ") + reason->message);
  gdk_pixbuf_save_to_stream_async(picture->gobj(), G_OUTPUT_STREAM(stream.get()), "png", nullptr,
                                  pictureSaved, new Saving{path, std::move(callback)}, nullptr);
}

void shareUris(const std::vector<Glib::ustring>& uris, const Callback& callback) {
  ServicePasteboard pasteboard;
  for (const auto& uri : uris) {
    if (auto path = pathOfFileUri(uri.raw())) pasteboard.files.emplace_back(std::move(*path));
  }
  if (!pasteboard.files.empty()) callback(pasteboard);
}

}  // namespace

void readClipboard(fs::path folder, Callback callback) {
  Gtk::Clipboard::get()->request_targets(
      [folder = std::move(folder),
       callback = std::move(callback)](const std::vector<Glib::ustring>& targets) {
        const auto clipboard = Gtk::Clipboard::get();
        const auto has = [&targets](const char* start) {
          return std::ranges::any_of(targets, [start](const Glib::ustring& target) {
            return g_str_has_prefix(target.c_str(), start) != FALSE;
          });
        };
        if (has("text/uri-list")) {
          clipboard->request_uris(
              [callback](const std::vector<Glib::ustring>& uris) { shareUris(uris, callback); });
        } else if (has("image/")) {
          clipboard->request_image([folder, callback](const Glib::RefPtr<Gdk::Pixbuf>& picture) {
            if (picture) savePicture(picture, folder, callback);
          });
        } else {
          clipboard->request_text([callback](const Glib::ustring& text) {
            if (!text.empty()) callback({.files = {}, .text = text});
          });
        }
      });
}

}  // namespace brevanholt::platform
