#include "Shared/ShareManifest.h"

#include "Shared/JsonScalar.h"

#include <simdjson.h>

namespace brevanholt {
namespace {

namespace ondemand = simdjson::ondemand;
using Items = BrevanholtNativeShareStore::Items;
using Text = std::optional<std::string>;
using Type = ondemand::json_type;

constexpr int kDeepestLevel = 128;

[[noreturn]] void refuse(const std::string& why) {
  throw StoreError("The native share's manifest cannot be used: " + why + ".");
}

[[noreturn]] void refuseSyntax() {
  refuse("it is not JSON");
}

// The token of a scalar, without the white space that the parser counts to it.
std::string_view tokenOf(ondemand::value& value) {
  const std::string_view token = value.raw_json_token();
  return token.substr(0, token.find_last_not_of(" \t\n\r") + 1);
}

// A field's name, decoded; empty for one that is not Unicode text.
std::string_view nameOf(ondemand::field& field) {
  const char* const start = field.key().raw();
  const char* end = start;
  while (*end != '"') end += *end == '\\' ? 2 : 1;
  if (!isJsonStringContent({start, end})) refuseSyntax();
  std::string_view name;
  return field.unescaped_key().get(name) == simdjson::SUCCESS ? name : std::string_view();
}

// Passes over a value under an unknown key. The parser checks structure, encoding and control
// characters on the way; it does not parse scalars that are not read.
void skip(ondemand::value value, int level) {
  if (level > kDeepestLevel) refuse("it is nested too deeply");
  const Type type = value.type();
  if (type == Type::array) {
    for (auto element : value.get_array()) skip(element.value(), level + 1);
  } else if (type == Type::object) {
    for (ondemand::field field : value.get_object()) {
      nameOf(field);
      skip(field.value(), level + 1);
    }
  } else if (!isJsonScalar(tokenOf(value))) {
    refuseSyntax();
  }
}

Text optionalText(ondemand::value value, const char* key) {
  const bool isString = value.type() == Type::string;
  if (!isString && tokenOf(value) == "null") return std::nullopt;
  if (!isString) refuse("\"" + std::string(key) + "\" is not a text");
  std::string_view text;
  if (value.get_string().get(text) != simdjson::SUCCESS) {
    refuse("\"" + std::string(key) + "\" is not Unicode text");
  }
  return std::string(text);
}

void addItem(ondemand::value value, Items& items) {
  if (value.type() != Type::object) refuse("an item is not an object");
  BrevanholtNativeShareItem item;
  for (ondemand::field field : value.get_object()) {
    const std::string_view name = nameOf(field);
    if (name == "path") {
      item.path = optionalText(field.value(), "path");
    } else if (name == "text") {
      item.text = optionalText(field.value(), "text");
    } else {
      skip(field.value(), 4);
    }
  }
  if (item.path || item.text) items.push_back(std::move(item));
}

Items itemsIn(ondemand::document& manifest) {
  std::optional<Items> items;
  if (manifest.type() != Type::object) refuse("it has no list of items");
  for (ondemand::field field : manifest.get_object()) {
    if (nameOf(field) != "items") {
      skip(field.value(), 2);
      continue;
    }
    items.emplace();  // the last one counts
    if (field.value().type() != Type::array) refuse("it has no list of items");
    for (auto item : field.value().get_array()) addItem(item.value(), *items);
  }
  // There must be nothing after the object: at the end of the text there is no location.
  if (manifest.current_location().error() != simdjson::OUT_OF_BOUNDS) refuseSyntax();
  if (!items) refuse("it has no list of items");
  return std::move(*items);
}

}  // namespace

Items decodeManifest(std::string json) {
  const std::size_t size = json.size();
  json.reserve(size + simdjson::SIMDJSON_PADDING);
  try {
    ondemand::parser parser;
    ondemand::document manifest =
        parser.iterate(simdjson::padded_string_view(json.data(), size, json.capacity()));
    return itemsIn(manifest);
  } catch (const simdjson::simdjson_error&) {  // its own words may quote the manifest
    refuseSyntax();
  }
}

}  // namespace brevanholt
