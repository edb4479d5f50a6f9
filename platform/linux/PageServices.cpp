#include "platform/linux/PageServices.h"

#include "platform/engine/web/link/EngineArguments.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Utf8.h"
#include "platform/linux/session/PersonLocale.h"

#include <gtkmm/settings.h>

#include <utility>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kMostLogged = 100;
constexpr std::size_t kLongestLogged = 500;

Value localeValue() {
  const PersonLocale locale = PersonLocale::ofThisProcess();
  return Map{{"languages", List(locale.languages.begin(), locale.languages.end())},
             {"time", locale.time},
             {"numbers", locale.numbers}};
}

Value appearanceValue(const Appearance& appearance) {
  return Map{{"hasHighContrast", appearance.hasHighContrast}, {"accent", appearance.accent}};
}

Value dragValue(DragPlace place, const DraggingInfo& drag) {
  bool hasFiles = false;
  List folders;
  for (const std::string& path : drag.filePaths) {
    if (path.ends_with('/')) {
      const auto folder = std::filesystem::path(path).parent_path().filename();
      folders.emplace_back(repairedUtf8(folder.native()));
    } else {
      hasFiles = true;
    }
  }
  return Map{{"x", static_cast<std::int64_t>(place.x)},
             {"y", static_cast<std::int64_t>(place.y)},
             {"hasFiles", hasFiles},
             {"folders", std::move(folders)}};
}

}  // namespace

PageServices::PageServices(Bus& sessionBus, const Access& access)
    : access_(access),
      prefersDarkAnyway_(
          Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme()),
      appearance_(sessionBus,
                  [this](const Appearance& appearance) { appearanceChanged(appearance); }) {
  answerPage();
  watchDrags();
  access_.window.setCloseQuestion([this] { return asksBeforeClosing(); });
}

void PageServices::answerPage() {
  EngineApplication& page = access_.page;
  const auto does = [&page](const char* method, std::function<void(const Map&)> run) {
    page.answer(method, [run = std::move(run)](const Map& arguments) {
      run(arguments);
      return Value();
    });
  };
  page.answer("locale", [](const Map&) { return localeValue(); });
  page.answer("appearance", [this](const Map&) { return appearanceValue(appearance_.current()); });
  does("quit", [this](const Map&) { access_.application.terminate(); });
  does("askToClose", [this](const Map&) { access_.window.gtk().close(); });
  does("closeWindow", [this](const Map&) { access_.window.closeToBackground(); });
  does("paste", [this](const Map&) { access_.application.shareClipboard(); });
  does("log", [this](const Map& arguments) {
    if (logged_++ < kMostLogged) {
      logWarning("the user interface: " + textIn(arguments, "text").substr(0, kLongestLogged));
    }
  });
  does("setNeedsAttention", [this](const Map& arguments) {
    access_.statusItem.setNeedsAttention(flagIn(arguments, "needs"));
  });
  page.answerLater("openHelp", [this](const Map& arguments, MethodResult result) {
    const Value* language = arguments.find("language");
    const auto* name = language != nullptr ? language->getIf<std::string>() : nullptr;
    openHelp(name != nullptr ? *name : "en", std::move(result));
  });
}

void PageServices::openHelp(const std::string& language, MethodResult result) {
  const bool isName = language.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
  auto guide = access_.help / (isName ? language : "en") / "index.html";
  std::error_code error;
  if (!std::filesystem::exists(guide, error)) guide = access_.help / "en/index.html";
  access_.workspace.openFile(guide, [result = std::move(result)](const Result<Done>& done) mutable {
    if (done.ok()) return std::move(result).success();
    std::move(result).error(engineError("application_error", done.error()));
  });
}

void PageServices::watchDrags() {
  EngineApplication& page = access_.page;
  access_.dropContainer.setSpectator({.moved =
                                          [&page](DragPlace place, const DraggingInfo& drag) {
                                            page.tell("dragMoved", dragValue(place, drag));
                                          },
                                      .dropped =
                                          [&page](DragPlace place, const DraggingInfo& drag) {
                                            page.tell("dropped", dragValue(place, drag));
                                          },
                                      .left = [&page] { page.tell("dragLeft"); }});
}

// Once a run: a page that does not answer does not keep the window open.
bool PageServices::asksBeforeClosing() {
  if (access_.statusItem.isShown() || !access_.page.isHeard()) return false;
  if (std::exchange(hasAskedBeforeClosing_, true)) return false;
  access_.page.tell("closeAsked");
  return true;
}

void PageServices::appearanceChanged(const Appearance& appearance) {
  Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme() =
      appearance.isDark || prefersDarkAnyway_;
  access_.page.tell("appearanceChanged", appearanceValue(appearance));
}

}  // namespace brevanholt::platform
