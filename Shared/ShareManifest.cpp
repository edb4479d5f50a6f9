#include "Shared/ShareManifest.h"

#include <nlohmann/json.hpp>

namespace brevanholt {
namespace {

using nlohmann::json;

constexpr int kDeepestLevel = 128;

[[noreturn]] void refuse(const std::string& why) {
  throw StoreError("The native share's manifest cannot be used: " + why + ".");
}

json parse(const std::string& text) {
  const auto withinLimit = [](int depth, json::parse_event_t, const json&) {
    if (depth > kDeepestLevel) refuse("it is nested too deeply");
    return true;
  };
  try {
    return json::parse(text, withinLimit);
  } catch (const json::parse_error& error) {
    // The library's own words quote the manifest, which is nobody's but the user's.
    refuse("it is not JSON at byte " + std::to_string(error.byte));
  } catch (const json::exception&) {
    refuse("it holds a number that is out of range");
  }
}

std::optional<std::string> optionalText(const json& item, const char* key) {
  const auto found = item.find(key);
  if (found == item.end() || found->is_null()) return std::nullopt;
  if (!found->is_string()) refuse("\"" + std::string(key) + "\" is not a text");
  return found->get<std::string>();
}

}  // namespace

BrevanholtNativeShareStore::Items decodeManifest(const std::string& text) {
  const json manifest = parse(text);
  const auto items = manifest.find("items");
  if (items == manifest.end() || !items->is_array()) refuse("it has no list of items");
  BrevanholtNativeShareStore::Items decoded;
  decoded.reserve(items->size());
  for (const json& item : *items) {
    if (!item.is_object()) refuse("an item is not an object");
    decoded.push_back({optionalText(item, "path"), optionalText(item, "text")});
  }
  return decoded;
}

}  // namespace brevanholt
