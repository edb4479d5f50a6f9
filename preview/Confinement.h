#pragma once

namespace brevanholt::preview {

// Gives up for good what decoding an image does not take: memory beyond 1 GiB, processor time
// beyond 10 seconds, core dumps, files of any size, other processes, sockets, opening anything to
// write, outliving the host. False where the system cannot enforce it.
[[nodiscard]] bool confineThisProcess();

}  // namespace brevanholt::preview
