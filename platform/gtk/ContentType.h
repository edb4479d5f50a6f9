#pragma once

#include <filesystem>
#include <string>

namespace brevanholt::platform {

// The MIME type of a regular file by its content. The name may only make it more exact, as "report"
// in a ZIP archive's "report.docx" does. Throws FileError.
[[nodiscard]] std::string contentTypeOf(const std::filesystem::path& file);

}  // namespace brevanholt::platform
