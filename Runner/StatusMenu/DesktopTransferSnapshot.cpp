#include "Runner/StatusMenu/DesktopTransferSnapshot.h"

namespace brevanholt {

using platform::Map;
using platform::Value;

namespace {

const std::string* textIn(const Map& map, std::string_view key) {
  const Value* value = map.find(key);
  return value != nullptr ? value->getIf<std::string>() : nullptr;
}

}  // namespace

std::optional<DesktopTransferSnapshot> DesktopTransferSnapshot::parse(const Value* value) {
  const auto* map = value != nullptr ? value->getIf<Map>() : nullptr;
  if (map == nullptr || !map->hasOnlyStringKeys()) return std::nullopt;
  const auto* title = textIn(*map, "title");
  const auto* item = textIn(*map, "item");
  const auto* stateKey = textIn(*map, "stateKey");
  const auto* progressLabel = textIn(*map, "progressLabel");
  if (title == nullptr || item == nullptr || stateKey == nullptr || progressLabel == nullptr) {
    return std::nullopt;
  }
  const Value* progress = map->find("progress");
  return DesktopTransferSnapshot{
      .title = *title,
      .item = *item,
      .stateKey = *stateKey,
      .progress = progress != nullptr ? progress->number().value_or(0.0) : 0.0,
      .progressLabel = *progressLabel};
}

bool DesktopTransferSnapshot::isSameTransfer(const DesktopTransferSnapshot& other) const {
  return title == other.title && item == other.item;
}

bool DesktopTransferSnapshot::makesSameRow(const DesktopTransferSnapshot& other) const {
  return isSameTransfer(other) && stateKey == other.stateKey &&
         progressLabel == other.progressLabel;
}

}  // namespace brevanholt
