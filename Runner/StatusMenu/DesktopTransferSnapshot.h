#pragma once

#include "platform/channel/Value.h"

#include <optional>
#include <string>

namespace brevanholt {

// One transfer as the UI reports it. All its texts are ready-made.
struct DesktopTransferSnapshot {
  std::string title;
  std::string item;
  std::string stateKey;  // "complete", "failed", "cancelled", or anything else while it goes on
  double progress = 0;   // 0 to 1, as given: neither clamped nor rounded
  std::string progressLabel;

  // Nothing for null, for what is no map, and for a map that lacks a text. Only the progress may be
  // missing.
  [[nodiscard]] static std::optional<DesktopTransferSnapshot> parse(const platform::Value* value);

  // Whether both are the same transfer, at whatever point.
  [[nodiscard]] bool isSameTransfer(const DesktopTransferSnapshot& other) const;
  // Whether both make the same row among the recent transfers.
  [[nodiscard]] bool makesSameRow(const DesktopTransferSnapshot& other) const;
};

}  // namespace brevanholt
