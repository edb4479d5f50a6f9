#include "platform/linux/storage/PathSecurityScopes.h"

#include "platform/files/Files.h"

namespace brevanholt::platform {
namespace {

class CountedScope final : public SecurityScope {
 public:
  explicit CountedScope(std::shared_ptr<int> count) : count_(std::move(count)) { ++*count_; }
  ~CountedScope() override { --*count_; }
  CountedScope(const CountedScope&) = delete;
  CountedScope& operator=(const CountedScope&) = delete;

 private:
  std::shared_ptr<int> count_;
};

}  // namespace

std::unique_ptr<SecurityScope> PathSecurityScopes::begin(
    const std::filesystem::path& /*location*/) {
  return std::make_unique<CountedScope>(openScopes_);
}

std::optional<std::string> PathSecurityScopes::bookmark(
    const std::filesystem::path& location) const {
  if (!location.is_absolute() || !nameIsTaken(location)) return std::nullopt;
  return location.native();
}

std::optional<ResolvedBookmark> PathSecurityScopes::resolve(const std::string& bookmark) const {
  const auto location = pathFrom(bookmark);
  if (!location || !location->is_absolute() || !nameIsTaken(*location)) return std::nullopt;
  return ResolvedBookmark{.location = *location};
}

}  // namespace brevanholt::platform
