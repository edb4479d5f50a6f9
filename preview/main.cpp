// The child that decodes one image and ends. Its input is a stranger's, so everything it does with
// it happens behind confineThisProcess(); the host adds a sandbox around that where it can.

#include "preview/Confinement.h"
#include "preview/ImageFormat.h"
#include "preview/PreviewMaker.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace brevanholt::preview;

// No image that anybody sends is larger; some formats are read into memory whole.
constexpr off_t kLargestFile = 256 << 20;

template <class T>
bool parse(const char* text, T& number) {
  const char* end = text + std::strlen(text);
  const auto [stopped, error] = std::from_chars(text, end, number);
  return error == std::errc() && stopped == end;
}

std::optional<PreviewRequest> requestIn(int argc, char** argv) {
  PreviewRequest request;
  if (argc != 2 && argc != 4) return std::nullopt;
  if (!parse(argv[1], request.maximumDimension) || request.maximumDimension <= 0) {
    return std::nullopt;
  }
  if (argc == 2) return request;
  request.thumbnailOf.emplace(ThumbnailOrigin{.uri = argv[2]});
  if (!parse(argv[3], request.thumbnailOf->modified)) return std::nullopt;
  return request;
}

// A file that is cut while it is read ends the process, as it should.
std::variant<std::string, ExitStatus> previewOfInput(const PreviewRequest& request) {
  struct stat information {};
  if (::fstat(STDIN_FILENO, &information) != 0 || !S_ISREG(information.st_mode)) return kUnusable;
  if (information.st_size == 0) return kNotAnImage;
  const bool isTooLarge = information.st_size > kLargestFile;
  const auto size = static_cast<std::size_t>(std::min(information.st_size, kLargestFile));
  void* input = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, STDIN_FILENO, 0);
  if (input == MAP_FAILED) return kDamaged;
  const ByteSpan file(static_cast<const std::uint8_t*>(input), size);
  if (isTooLarge) return formatOf(file) ? kRefused : kNotAnImage;
  return makePreview(file, request);
}

bool writeOutput(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (!confineThisProcess()) return kUnconfined;
  if (argc == 2 && std::strcmp(argv[1], "--check") == 0) return kPreviewed;
  const auto request = requestIn(argc, argv);
  if (!request) return kUnusable;
  const auto preview = previewOfInput(*request);
  if (const auto* failure = std::get_if<ExitStatus>(&preview)) return *failure;
  return writeOutput(std::get<std::string>(preview)) ? kPreviewed : kDamaged;
}
