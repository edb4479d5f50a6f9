#include "platform/engine/web/BundleScheme.h"

#include "platform/foundation/Log.h"
#include "platform/gtk/GLibPointers.h"

#include <algorithm>
#include <array>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr const char* kContentSecurityPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
    "font-src 'self'; media-src 'self' blob:; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'; require-trusted-types-for 'script'";

// A module only runs when its type is right, whatever this system's own database says.
const char* contentType(const fs::path& file) {
  struct Type {
    std::string_view extension;
    const char* type;
  };
  static constexpr std::array kTypes{
      Type{".html", "text/html"},        Type{".js", "text/javascript"},
      Type{".mjs", "text/javascript"},   Type{".css", "text/css"},
      Type{".json", "application/json"}, Type{".svg", "image/svg+xml"},
      Type{".png", "image/png"},         Type{".jpg", "image/jpeg"},
      Type{".webp", "image/webp"},       Type{".woff2", "font/woff2"},
      Type{".wasm", "application/wasm"}, Type{".txt", "text/plain"}};
  const std::string extension = file.extension();
  const auto* found = std::ranges::find(kTypes, extension, &Type::extension);
  return found != kTypes.end() ? found->type : "application/octet-stream";
}

void refuse(WebKitURISchemeRequest* request, int code, const char* text) {
  logInfo(std::string("the page asked for ") + webkit_uri_scheme_request_get_uri(request) + ": " +
          text);
  const GErrorPointer error(g_error_new_literal(G_IO_ERROR, code, text));
  webkit_uri_scheme_request_finish_error(request, error.get());
}

}  // namespace

BundleScheme::BundleScheme(const fs::path& bundle, Source source)
    : bundle_(fs::weakly_canonical(bundle)), source_(source) {
  if (source == Source::kMemory) keep();
}

void BundleScheme::keep() {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(bundle_, error)) {
    if (!entry.is_regular_file(error)) continue;
    char* content = nullptr;
    gsize size = 0;
    if (g_file_get_contents(entry.path().c_str(), &content, &size, nullptr) == FALSE) continue;
    kept_[entry.path()].reset(g_bytes_new_take(content, size));
  }
}

void BundleScheme::registerIn(WebKitWebContext* context) {
  webkit_security_manager_register_uri_scheme_as_secure(
      webkit_web_context_get_security_manager(context), kBundleScheme);
  webkit_web_context_register_uri_scheme(
      context, kBundleScheme,
      [](WebKitURISchemeRequest* request, gpointer self) {
        static_cast<const BundleScheme*>(self)->serve(request);
      },
      this, nullptr);
}

std::optional<fs::path> BundleScheme::fileFor(const std::string& uriPath) const {
  const GCharPointer decoded(g_uri_unescape_string(uriPath.c_str(), nullptr));
  if (!decoded || decoded.get()[0] != '/') return std::nullopt;
  const std::string relative = decoded.get() + 1;
  std::error_code error;
  const fs::path file = fs::weakly_canonical(
      bundle_ / (relative.empty() ? fs::path("index.html") : fs::path(relative)), error);
  const auto [rootEnd, rest] = std::ranges::mismatch(bundle_, file);
  if (error || rootEnd != bundle_.end()) return std::nullopt;
  const bool isThere =
      source_ == Source::kMemory ? kept_.contains(file) : fs::is_regular_file(file, error);
  return isThere ? std::optional(file) : std::nullopt;
}

GObjectPointer<GInputStream> BundleScheme::open(const fs::path& path, GError** failure) const {
  if (const auto kept = kept_.find(path); kept != kept_.end()) {
    return GObjectPointer<GInputStream>(g_memory_input_stream_new_from_bytes(kept->second.get()));
  }
  const GObjectPointer<GFile> file(g_file_new_for_path(path.c_str()));
  GFileInputStream* stream = g_file_read(file.get(), nullptr, failure);
  return GObjectPointer<GInputStream>(stream != nullptr ? G_INPUT_STREAM(stream) : nullptr);
}

void BundleScheme::serve(WebKitURISchemeRequest* request) const {
  const char* uri = webkit_uri_scheme_request_get_uri(request);
  const std::string_view method = webkit_uri_scheme_request_get_http_method(request);
  if (!isInBundle(uri) || method != "GET")
    return refuse(request, G_IO_ERROR_PERMISSION_DENIED, "refused");
  const auto path = fileFor(webkit_uri_scheme_request_get_path(request));
  if (!path) return refuse(request, G_IO_ERROR_NOT_FOUND, "not in the bundle");

  GError* failure = nullptr;
  const GObjectPointer<GInputStream> stream = open(*path, &failure);
  const GErrorPointer error(failure);
  if (!stream) return refuse(request, G_IO_ERROR_FAILED, error->message);

  const GObjectPointer<WebKitURISchemeResponse> response(
      webkit_uri_scheme_response_new(stream.get(), -1));
  const char* type = contentType(*path);
  webkit_uri_scheme_response_set_content_type(response.get(), type);
  SoupMessageHeaders* headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
  soup_message_headers_append(headers, "Content-Security-Policy", kContentSecurityPolicy);
  soup_message_headers_append(headers, "Content-Type", type);  // what "nosniff" goes by
  soup_message_headers_append(headers, "X-Content-Type-Options", "nosniff");
  soup_message_headers_append(headers, "Cache-Control", "no-store");
  webkit_uri_scheme_response_set_http_headers(response.get(), headers);  // takes them
  webkit_uri_scheme_request_finish_with_response(request, response.get());
}

}  // namespace brevanholt::platform
