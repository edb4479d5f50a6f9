#pragma once

#include "platform/linux/Bus.h"

namespace brevanholt::platform {

inline constexpr const char* kTumblerService = "org.freedesktop.thumbnails.Thumbnailer1";
inline constexpr const char* kTumblerPath = "/org/freedesktop/thumbnails/Thumbnailer1";

constexpr BusMethod tumblerMethod(const char* method) {
  return {kTumblerService, kTumblerPath, kTumblerService, method};
}

constexpr BusSignal tumblerSignal(const char* signal, const char* type) {
  return {kTumblerService, kTumblerPath, kTumblerService, signal, type};
}

}  // namespace brevanholt::platform
