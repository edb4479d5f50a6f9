#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/Intake/ShareEntries.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/files/Files.h"
#include "platform/formats/Url.h"
#include "platform/foundation/Log.h"

#include <algorithm>

namespace brevanholt {

using platform::List;
using platform::Url;

namespace {

using Items = BrevanholtNativeShareStore::Items;
using Share = BrevanholtNativeShareStore::Share;

bool isShareLink(const Url& url) {
  return url.scheme() == "brevanholt" && url.host() == "share";
}

List entriesOf(const Items& items, const std::stop_token& stop) {
  List entries;
  for (const auto& item : items) {
    if (stop.stop_requested()) break;
    if (item.path) {
      for (auto& entry : shareEntries(*item.path, stop)) entries.push_back(std::move(entry));
    } else if (item.text && !item.text->empty()) {
      entries.push_back(textEntry(*item.text));
    }
  }
  return entries;
}

bool hasPaths(const Items& items) {
  return std::ranges::any_of(items, [](const auto& item) { return item.path.has_value(); });
}

}  // namespace

void AppDelegate::shareWithBrevanholt(const platform::ServicePasteboard& pasteboard) {
  Items items;
  for (const auto& file : pasteboard.files) {
    items.push_back({.path = withoutTrailingSlash(file).native(), .text = std::nullopt});
  }
  if (items.empty()) items.push_back({.path = std::nullopt, .text = pasteboard.text});
  publishNative(items);
  services_.application.activate();
  if (const auto window = mainWindow()) window->window().makeKeyAndOrderFront();
}

void AppDelegate::chooseFilesToShare() {
  showMainWindow();
  services_.openPanel.choose(platform::OpenPanel::Choice::kFiles,
                             lifetime_.bind([this](platform::OpenPanel::Locations chosen) {
                               if (!chosen.empty()) {
                                 shareWithBrevanholt({.files = std::move(chosen), .text = {}});
                               }
                             }));
}

void AppDelegate::applicationOpen(const std::vector<std::string>& urls) {
  for (const std::string& text : urls) {
    const auto url = Url::parse(text);
    if (url && isShareLink(*url)) {
      openShareLink(*url);
    } else {
      platform::logInfo("nothing here opens " + text);
    }
  }
}

void AppDelegate::openShareLink(const Url& link) {
  const auto identifier = link.queryItem("id");
  if (!identifier) return;
  std::vector<Share> shares;
  try {
    shares.push_back(shareStore_.consumeIdentifier(*identifier));
  } catch (const platform::PlatformError& error) {
    return platform::logDebug(error.message());
  }
  publishShares(std::move(shares));
  showMainWindow();
}

void AppDelegate::publishNative(const Items& items) {
  publishShares({{.items = items, .receipt = {}}});
}

void AppDelegate::publishShares(std::vector<Share> shares) {
  keepItems(shares);
  for (Share& share : shares) {
    auto items = std::exchange(share.items, {});
    auto publish = [this, share](List entries) {
      bridge_.publish(std::move(entries),
                      [share] { BrevanholtNativeShareStore::delivered(share); });
    };
    if (hasPaths(items)) {
      batches_.make([items = std::move(items)](
                        const std::stop_token& stop) { return entriesOf(items, stop); },
                    std::move(publish));
    } else {
      batches_.add(entriesOf(items, {}), std::move(publish));
    }
  }
}

void AppDelegate::keepItems(std::vector<Share>& shares) {
  PickedFiles::Locations locations;
  for (Share& share : shares) {
    for (const auto& item : share.items) {
      if (item.path) locations.emplace_back(*item.path);
    }
    std::erase_if(share.items,
                  [](const auto& item) { return item.path && !canBeNamed(*item.path); });
  }
  eraseUnnameable(locations);
  const auto window = mainWindow();
  if (window && !locations.empty()) window->pickedFiles().keep(locations);
}

}  // namespace brevanholt
