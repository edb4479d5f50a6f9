#include "Runner/StatusMenu/StatusMenuViews.h"

#include "platform/foundation/DisplayText.h"

namespace brevanholt {

using platform::directionIsolated;
using platform::Dot;
using platform::FixedView;
using platform::FontWeight;
using platform::Label;
using platform::Stack;
using platform::SystemColor;
using platform::Truncation;
using platform::View;

namespace {

constexpr double kPadding = 12;
constexpr double kDotDiameter = 7;

}  // namespace

SystemColor stateColor(const std::string& stateKey) {
  if (stateKey == "complete") return SystemColor::kGreen;
  if (stateKey == "failed") return SystemColor::kRed;
  if (stateKey == "cancelled") return SystemColor::kSecondaryLabel;
  return SystemColor::kBlue;
}

std::shared_ptr<View> statusDot(SystemColor color, double diameter) {
  return std::make_shared<Dot>(color, diameter);
}

std::shared_ptr<Label> label(std::string text, double size, FontWeight weight, SystemColor color,
                             Truncation truncation) {
  return std::make_shared<Label>(
      std::move(text),
      platform::TextStyle{
          .size = size, .weight = weight, .color = color, .truncation = truncation});
}

std::shared_ptr<Stack> column(double spacing, std::vector<std::shared_ptr<View>> children) {
  return std::make_shared<Stack>(Stack::Axis::kVertical, spacing, std::move(children));
}

std::shared_ptr<Stack> dotAndLines(SystemColor color, std::shared_ptr<Label> first,
                                   std::shared_ptr<Label> second) {
  return std::make_shared<Stack>(
      Stack::Axis::kHorizontal, 8,
      std::vector<std::shared_ptr<View>>{statusDot(color, kDotDiameter),
                                         column(1, {std::move(first), std::move(second)})});
}

std::shared_ptr<FixedView> fixedView(std::shared_ptr<View> content, double height,
                                     double horizontalPadding) {
  return std::make_shared<FixedView>(kStatusMenuWidth, height, horizontalPadding,
                                     std::move(content));
}

std::shared_ptr<FixedView> sectionHeading(std::string text) {
  return fixedView(label(std::move(text), 9.5, FontWeight::kSemibold, SystemColor::kSecondaryLabel),
                   24, kPadding);
}

std::shared_ptr<FixedView> recentView(const DesktopTransferSnapshot& snapshot) {
  return fixedView(dotAndLines(stateColor(snapshot.stateKey),
                               label(snapshot.title, 12, FontWeight::kMedium, SystemColor::kLabel),
                               label(directionIsolated(snapshot.item) + "  ·  " +
                                         directionIsolated(snapshot.progressLabel),
                                     10, FontWeight::kRegular, SystemColor::kSecondaryLabel,
                                     Truncation::kMiddle)),
                   46, kPadding);
}

std::shared_ptr<FixedView> emptyView() {
  return fixedView(
      column(2, {label("No recent transfers", 12, FontWeight::kMedium, SystemColor::kLabel),
                 label("New transfer activity will appear here.", 10.5, FontWeight::kRegular,
                       SystemColor::kSecondaryLabel)}),
      46, kPadding);
}

}  // namespace brevanholt
