#pragma once

#include "Runner/StatusMenu/DesktopTransferSnapshot.h"
#include "platform/desktop/View.h"

#include <memory>
#include <string>
#include <vector>

namespace brevanholt {

// What the rows of the status menu are made of.

inline constexpr double kStatusMenuWidth = 280;

// The colour of a transfer's state.
[[nodiscard]] platform::SystemColor stateColor(const std::string& stateKey);

[[nodiscard]] std::shared_ptr<platform::View> statusDot(platform::SystemColor color,
                                                        double diameter);
[[nodiscard]] std::shared_ptr<platform::Label> label(
    std::string text, double size, platform::FontWeight weight, platform::SystemColor color,
    platform::Truncation truncation = platform::Truncation::kTail);
[[nodiscard]] std::shared_ptr<platform::Stack> column(
    double spacing, std::vector<std::shared_ptr<platform::View>> children);
// A dot, and beside it two lines.
[[nodiscard]] std::shared_ptr<platform::Stack> dotAndLines(platform::SystemColor color,
                                                           std::shared_ptr<platform::Label> first,
                                                           std::shared_ptr<platform::Label> second);
[[nodiscard]] std::shared_ptr<platform::FixedView> fixedView(
    std::shared_ptr<platform::View> content, double height, double horizontalPadding);

[[nodiscard]] std::shared_ptr<platform::FixedView> sectionHeading(std::string text);
[[nodiscard]] std::shared_ptr<platform::FixedView> recentView(
    const DesktopTransferSnapshot& snapshot);
[[nodiscard]] std::shared_ptr<platform::FixedView> emptyView();

}  // namespace brevanholt
