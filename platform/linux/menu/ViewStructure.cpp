#include "platform/linux/menu/ViewStructure.h"

#include <sstream>

namespace brevanholt::platform {
namespace {

class StructureWriter final : public ViewVisitor {
 public:
  void visit(const Label& label) override {
    const TextStyle& style = label.style();
    text_ << "label " << style.size << ' ' << static_cast<int>(style.weight) << ' '
          << static_cast<int>(style.color) << ' ' << static_cast<int>(style.truncation) << ';';
  }
  void visit(const Dot& dot) override { text_ << "dot " << dot.diameter() << ';'; }
  void visit(const ProgressBar&) override { text_ << "bar;"; }
  void visit(const Stack& stack) override {
    text_ << (stack.axis() == Stack::Axis::kVertical ? "column " : "row ") << stack.spacing()
          << '{';
    for (const auto& child : stack.children()) child->accept(*this);
    text_ << '}';
  }
  void visit(const FixedView& view) override {
    text_ << "view " << view.width() << ' ' << view.height() << ' ' << view.horizontalPadding()
          << '{';
    view.content().accept(*this);
    text_ << '}';
  }

  [[nodiscard]] std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
};

}  // namespace

std::string structureOf(const FixedView& view) {
  StructureWriter writer;
  view.accept(writer);
  return writer.text();
}

}  // namespace brevanholt::platform
