#pragma once

// What the host and brevanholt-preview agree on.
//
//   brevanholt-preview MAXIMUM [URI MTIME] <image >picture.png
//
// reads one image on its standard input and writes it as PNG, MAXIMUM pixels on its longest edge at
// most. With URI and MTIME the image must be the thumbnail of that file as it was at that time
// (seconds since 1970). With "--check" instead it only tells, by ending with kPreviewed, that it
// can run where it was started.
namespace brevanholt::preview {

enum ExitStatus {
  kPreviewed = 0,
  // The statuses of a sandbox or a shell that failed lie outside of these.
  kNotAnImage = 40,  // no image at all, or one of a kind that nothing here reads
  kRefused = 41,     // larger than an image has any reason to be
  kDamaged = 42,
  kForeign = 43,     // the thumbnail of another file, or of another state of the file
  kUnconfined = 44,  // the child could not give up its rights, and read nothing
  kUnusable = 45,    // the call makes no sense
};

}  // namespace brevanholt::preview
