#pragma once

#include "platform/desktop/NativeView.h"

namespace brevanholt::platform {

class WindowDelegate {
 public:
  virtual ~WindowDelegate() = default;
  // The user asked to close the window; nothing has happened to it yet.
  virtual void performClose() = 0;
  virtual void windowDidBecomeKey() = 0;
};

struct Frame {
  int width = 0;
  int height = 0;
};

// A top-level window. It is made hidden.
class Window {
 public:
  virtual ~Window() = default;
  // Borrowed; null to let go.
  virtual void setDelegate(WindowDelegate* delegate) = 0;
  [[nodiscard]] virtual Frame frame() const = 0;
  virtual void setFrame(Frame frame) = 0;
  // Borrowed; fills the window.
  virtual void setContentView(NativeView& view) = 0;
  [[nodiscard]] virtual bool isVisible() const = 0;
  // Shows the window, raises it and asks for the keyboard.
  virtual void makeKeyAndOrderFront() = 0;
  // Hides the window; its content lives on.
  virtual void orderOut() = 0;
  // Closes the window for good.
  virtual void close() = 0;
};

}  // namespace brevanholt::platform
