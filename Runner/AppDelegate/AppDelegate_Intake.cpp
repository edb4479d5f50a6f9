#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/ShareEntries.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Url.h"

#include <algorithm>

namespace brevanholt {

using platform::List;
using platform::Url;

namespace {

using Items = BrevanholtNativeShareStore::Items;

bool isShareLink(const Url& url) {
  return url.scheme() == "brevanholt" && url.host() == "share";
}

List entriesOf(const Items& items) {
  List entries;
  for (const auto& item : items) {
    if (item.path) {
      for (auto& entry : shareEntries(*item.path)) entries.push_back(std::move(entry));
    } else if (item.text && !item.text->empty()) {
      entries.push_back(textEntry(*item.text));
    }
  }
  return entries;
}

bool holdsFolder(const Items& items) {
  return std::ranges::any_of(
      items, [](const auto& item) { return item.path && platform::isDirectory(*item.path); });
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
  Items items;
  try {
    items = shareStore_.consumeIdentifier(*identifier);
  } catch (const platform::PlatformError& error) {
    return platform::logDebug(error.message());
  }
  publishNative(items);
  showMainWindow();
}

void AppDelegate::publishPendingShares(const std::vector<Items>& shares) {
  for (const Items& items : shares) publishNative(items);
}

void AppDelegate::publishNative(const Items& items) {
  const Items kept = keptItems(items);
  const auto publish = [this](List entries) { bridge_.publish(std::move(entries)); };
  if (holdsFolder(kept)) return batches_.make([kept] { return entriesOf(kept); }, publish);
  batches_.add(entriesOf(kept), publish);
}

Items AppDelegate::keptItems(const Items& items) {
  Items kept;
  PickedFiles::Locations locations;
  for (const auto& item : items) {
    if (item.path && !canBeNamed(*item.path)) continue;
    if (item.path) locations.emplace_back(*item.path);
    kept.push_back(item);
  }
  const auto window = mainWindow();
  if (window && !locations.empty()) window->pickedFiles().keep(locations);
  return kept;
}

}  // namespace brevanholt
