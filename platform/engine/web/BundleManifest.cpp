#include "platform/engine/web/BundleManifest.h"

#include "platform/foundation/Log.h"

#include <simdjson.h>

namespace brevanholt::platform {
namespace {

namespace dom = simdjson::dom;

// The texts of a list; none where there is no such member.
std::vector<std::string> textsIn(const dom::object& object, std::string_view key) {
  std::vector<std::string> texts;
  dom::element list;
  if (object[key].get(list) == simdjson::NO_SUCH_FIELD) return texts;
  for (const dom::element text : list.get_array()) {
    texts.emplace_back(std::string_view(text));
  }
  return texts;
}

BundleNeeds needsIn(const dom::object& manifest) {
  BundleNeeds needs{.folders = {}, .datagrams = {}, .networks = textsIn(manifest, "networks")};
  for (const std::string& folder : textsIn(manifest, "folders")) needs.folders.emplace_back(folder);
  dom::element datagrams;
  if (manifest["datagrams"].get(datagrams) == simdjson::NO_SUCH_FIELD) return needs;
  for (const dom::object entry : datagrams.get_array()) {
    needs.datagrams.push_back(
        {.port = static_cast<int>(entry["port"].get_int64().value()), .to = textsIn(entry, "to")});
  }
  return needs;
}

}  // namespace

BundleNeeds readBundleManifest(const std::filesystem::path& bundle) {
  const std::filesystem::path file = bundle / "bundle.json";
  std::error_code error;
  if (!std::filesystem::exists(file, error)) return {};
  try {
    dom::parser parser;
    return needsIn(parser.load(file.native()).get_object());
  } catch (const simdjson::simdjson_error& failure) {
    logWarning("“" + file.string() + "” is not understood: " + failure.what());
    return {};
  }
}

}  // namespace brevanholt::platform
