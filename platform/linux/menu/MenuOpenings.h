#pragma once

namespace brevanholt::platform {

// Tells one opening of a menu from another. Hosts announce an opening in one way or in two ("about
// to show", then "opened"), and not all of them say when it closed.
class MenuOpenings {
 public:
  // Each is true for the first notice of an opening.
  [[nodiscard]] bool aboutToShow() { return notice(aboutToShow_); }
  [[nodiscard]] bool opened() { return notice(opened_); }
  void closed() { aboutToShow_ = opened_ = false; }

 private:
  bool notice(bool& kind) {
    const bool isNext = kind || !(aboutToShow_ || opened_);
    if (isNext) closed();
    kind = true;
    return isNext;
  }

  bool aboutToShow_ = false;
  bool opened_ = false;
};

}  // namespace brevanholt::platform
