#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/engine/FileAccess.h"

namespace brevanholt::platform {

// Moves whole files to where received files go, and makes empty ones there, many with one call. For
// the main thread.
//
//   publish {files: [{path, relativePath}, {path: null, relativePath, modified}]}
//
// Replies with a list: for each file the path where it is, once that outlasts a power cut, or
// [code, text, the error's name].
void publishFiles(const MethodCall& call, FileAccess* access, MethodResult result);

}  // namespace brevanholt::platform
