#include "platform/foundation/DisplayText.h"

#include "platform/foundation/Text.h"
#include "platform/foundation/Utf8.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <vector>

namespace brevanholt::platform {
namespace {

constexpr const char* kFirstStrongIsolate = "\u2068";
constexpr const char* kPopDirectionalIsolate = "\u2069";
constexpr const char* kPopDirectionalFormatting = "\u202C";
constexpr const char* kEllipsis = "…";

enum class Direction { kNone, kRightToLeft, kEmbedding, kIsolate, kPopEmbedding, kPopIsolate };

Direction directionOf(UChar32 codePoint) {
  switch (u_charDirection(codePoint)) {
    case U_RIGHT_TO_LEFT:
    case U_RIGHT_TO_LEFT_ARABIC:
      return Direction::kRightToLeft;
    case U_LEFT_TO_RIGHT_EMBEDDING:
    case U_LEFT_TO_RIGHT_OVERRIDE:
    case U_RIGHT_TO_LEFT_EMBEDDING:
    case U_RIGHT_TO_LEFT_OVERRIDE:
      return Direction::kEmbedding;
    case U_FIRST_STRONG_ISOLATE:
    case U_LEFT_TO_RIGHT_ISOLATE:
    case U_RIGHT_TO_LEFT_ISOLATE:
      return Direction::kIsolate;
    case U_POP_DIRECTIONAL_FORMAT:
      return Direction::kPopEmbedding;
    case U_POP_DIRECTIONAL_ISOLATE:
      return Direction::kPopIsolate;
    default:
      return Direction::kNone;
  }
}

// Where each user-perceived character ends, and how many columns it takes.
struct Cluster {
  std::size_t end = 0;
  std::size_t columns = 0;
};

std::size_t columnsOf(std::string_view cluster) {
  std::size_t position = 0;
  const UChar32 first = nextCodePoint(cluster, position);
  if (first < 0) return 1;
  const int width = u_getIntPropertyValue(first, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::vector<Cluster> clustersOf(std::string_view text) {
  std::vector<Cluster> clusters;
  std::size_t start = 0;
  for (const std::size_t end : characterEnds(text)) {
    clusters.push_back({.end = end, .columns = columnsOf(text.substr(start, end - start))});
    start = end;
  }
  return clusters;
}

}  // namespace

std::string onOneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const UChar32 codePoint = nextCodePoint(text, position);
    const bool isBreak = codePoint >= 0 && (U_GET_GC_MASK(codePoint) &
                                            (U_GC_CC_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK)) != 0;
    line += isBreak ? std::string_view(" ") : text.substr(start, position - start);
  }
  return line;
}

std::string directionIsolated(std::string_view text) {
  std::string isolated = kFirstStrongIsolate;
  std::vector<Direction> open;
  bool setsDirection = false;
  const auto close = [&] {
    isolated +=
        open.back() == Direction::kIsolate ? kPopDirectionalIsolate : kPopDirectionalFormatting;
    open.pop_back();
  };
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const UChar32 codePoint = nextCodePoint(text, position);
    const Direction direction = codePoint < 0 ? Direction::kNone : directionOf(codePoint);
    if (direction != Direction::kNone) setsDirection = true;
    if (direction == Direction::kPopIsolate) {
      // It also closes the embeddings within its isolate. Without one it would close the isolate
      // around all of the text.
      if (std::ranges::find(open, Direction::kIsolate) == open.end()) continue;
      while (open.back() != Direction::kIsolate) close();
      open.pop_back();
    } else if (direction == Direction::kPopEmbedding) {
      if (open.empty() || open.back() != Direction::kEmbedding) continue;
      open.pop_back();
    } else if (direction == Direction::kEmbedding || direction == Direction::kIsolate) {
      open.push_back(direction);
    }
    isolated += text.substr(start, position - start);
  }
  if (!setsDirection) return std::string(text);
  while (!open.empty()) close();
  return isolated + kPopDirectionalIsolate;
}

std::string cutToColumns(std::string_view text, std::size_t columns, Cut cut) {
  if (text.size() <= columns) return std::string(text);
  const auto clusters = clustersOf(text);
  std::size_t total = 0;
  for (const auto& cluster : clusters) total += cluster.columns;
  if (total <= columns) return std::string(text);

  const std::size_t kept = columns - 1;  // the ellipsis takes one
  const std::size_t atEnd = cut == Cut::kMiddle ? kept / 2 : 0;
  std::size_t head = 0;
  std::size_t used = 0;
  for (const auto& cluster : clusters) {
    if (used + cluster.columns > kept - atEnd) break;
    used += cluster.columns;
    head = cluster.end;
  }
  std::size_t tail = text.size();
  used = 0;
  for (std::size_t index = clusters.size(); index-- > 1;) {
    if (used + clusters[index].columns > atEnd) break;
    used += clusters[index].columns;
    tail = clusters[index - 1].end;
  }
  // What is open where the text is cut off ends there.
  return directionIsolated(text.substr(0, head)) + kEllipsis + directionIsolated(text.substr(tail));
}

}  // namespace brevanholt::platform
