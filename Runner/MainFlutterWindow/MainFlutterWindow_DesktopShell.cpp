#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

using platform::Value;

Value MainFlutterWindow::updateDesktopShell(const CallArguments& arguments) {
  const platform::Map& state = arguments.map();
  if (delegate_ != nullptr) delegate_->updateDesktopStatus(state);
  return {};
}

}  // namespace brevanholt
