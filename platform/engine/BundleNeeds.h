#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace brevanholt::platform {

// What a bundle's manifest says that its code needs, beyond what every bundle may do.
struct BundleNeeds {
  // A port that datagrams leave from and go to (0: any), and the addresses and networks that they
  // go to.
  struct Datagrams {
    int port = 0;
    std::vector<std::string> to;
  };

  std::vector<std::filesystem::path> folders;  // it may change what is in them
  std::vector<Datagrams> datagrams;
  std::vector<std::string> networks;  // for connections, beside the local ones: "127.0.0.0/8"
};

}  // namespace brevanholt::platform
