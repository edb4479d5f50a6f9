// The least that a transfer has to do: reads files, seals them in records of a mebibyte and sends
// them; receives, opens, writes, flushes and renames. Nothing is agreed on, asked or checked; the
// key is a constant. What other programs take longer is theirs.
//
//     transfer_bound receive PORT FOLDER          until it is killed; one sender after the other
//     transfer_bound send ADDRESS PORT FILE...    ends when everything is on the other side's disk

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kChunk = 1 << 20;
constexpr std::size_t kTag = 16;

struct Header {
  std::uint32_t file = 0;    // one more for each; 0 ends the transfer
  std::uint32_t length = 0;  // of what follows
  std::uint64_t left = 0;    // bytes of the file after that
};

std::size_t checked(ssize_t count, const char* what) {
  if (count < 0) throw std::system_error(errno, std::generic_category(), what);
  return static_cast<std::size_t>(count);
}

// Calls `move` until all bytes were moved; false at the end.
template <class F>
bool whole(std::size_t size, const char* what, F move) {
  for (std::size_t done = 0; done < size;) {
    const std::size_t count = checked(move(done, size - done), what);
    if (count == 0) return false;
    done += count;
  }
  return true;
}

bool readAll(int from, void* data, std::size_t size) {
  auto* bytes = static_cast<char*>(data);
  return whole(size, "read", [&](auto at, auto rest) { return ::read(from, bytes + at, rest); });
}

void writeAll(int to, const void* data, std::size_t size) {
  const auto* bytes = static_cast<const char*>(data);
  whole(size, "write", [&](auto at, auto rest) { return ::write(to, bytes + at, rest); });
}

class Cipher {
 public:
  explicit Cipher(int isSealing) : context_(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free) {
    const std::array<unsigned char, 32> key{};
    EVP_CipherInit_ex2(context_.get(), EVP_aes_256_gcm(), key.data(), nullptr, isSealing, nullptr);
  }
  // In place. False where the tag is another.
  bool run(const Header& header, unsigned char* text, std::size_t size, unsigned char* tag) {
    std::array<unsigned char, 12> nonce{};
    std::memcpy(nonce.data(), &counter_, sizeof(counter_));
    ++counter_;
    EVP_CIPHER_CTX* context = context_.get();
    const bool isSealing = EVP_CIPHER_CTX_is_encrypting(context) != 0;
    int written = 0;
    EVP_CipherInit_ex2(context, nullptr, nullptr, nonce.data(), -1, nullptr);
    if (!isSealing) EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_SET_TAG, kTag, tag);
    EVP_CipherUpdate(context, nullptr, &written, reinterpret_cast<const unsigned char*>(&header),
                     sizeof(header));
    if (size > 0) EVP_CipherUpdate(context, text, &written, text, static_cast<int>(size));
    if (EVP_CipherFinal_ex(context, text, &written) <= 0) return false;
    if (isSealing) EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_GET_TAG, kTag, tag);
    return true;
  }

 private:
  std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context_;
  std::uint64_t counter_ = 0;
};

sockaddr_in addressOf(const char* address, const char* port) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port)));
  inet_pton(AF_INET, address, &result.sin_addr);
  return result;
}

void sendFiles(int connection, const std::vector<std::string>& files) {
  Cipher cipher(1);
  std::vector<unsigned char> buffer(sizeof(Header) + kChunk + kTag);
  unsigned char* text = buffer.data() + sizeof(Header);
  const auto send = [&](const Header& header) {
    std::memcpy(buffer.data(), &header, sizeof(header));
    cipher.run(header, text, header.length, text + header.length);
    writeAll(connection, buffer.data(), sizeof(header) + header.length + kTag);
  };
  std::uint32_t number = 0;
  for (const std::string& path : files) {
    const int file = static_cast<int>(checked(::open(path.c_str(), O_RDONLY), "open"));
    struct stat information {};
    checked(::fstat(file, &information), "stat");
    auto left = static_cast<std::uint64_t>(information.st_size);
    ++number;
    do {
      const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, kChunk));
      if (!readAll(file, text, length)) throw std::runtime_error("the file became shorter");
      left -= length;
      send({number, length, left});
    } while (left > 0);
    ::close(file);
  }
  send({});
  char done = 0;
  if (!readAll(connection, &done, 1)) throw std::runtime_error("the other side hung up");
}

void receiveFiles(int connection, const std::string& folder) {
  Cipher cipher(0);
  std::vector<unsigned char> buffer(kChunk + kTag);
  const std::string part = folder + "/part";
  int file = -1;
  Header header;
  while (readAll(connection, &header, sizeof(header))) {
    if (header.length > kChunk) throw std::runtime_error("a record is too long");
    readAll(connection, buffer.data(), header.length + kTag);
    if (!cipher.run(header, buffer.data(), header.length, buffer.data() + header.length)) {
      throw std::runtime_error("a record does not open");
    }
    if (header.file == 0) break;
    if (file < 0) {
      file = static_cast<int>(
          checked(::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644), "create"));
    }
    writeAll(file, buffer.data(), header.length);
    if (header.left > 0) continue;
    checked(::fsync(file), "flush");
    ::close(file);
    file = -1;
    std::filesystem::rename(part, folder + "/" + std::to_string(header.file));
  }
  const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
  ::fsync(directory);
  ::close(directory);
  writeAll(connection, "", 1);
}

int run(const std::vector<std::string>& arguments) {
  const bool isSender = arguments.at(0) == "send";
  const int yes = 1;
  const int own = ::socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = isSender ? addressOf(arguments.at(1).c_str(), arguments.at(2).c_str())
                                       : addressOf("0.0.0.0", arguments.at(1).c_str());
  const auto* generic = reinterpret_cast<const sockaddr*>(&address);
  if (isSender) {
    checked(::connect(own, generic, sizeof(address)), "connect");
    ::setsockopt(own, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
    sendFiles(own, {arguments.begin() + 3, arguments.end()});
    return 0;
  }
  ::setsockopt(own, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  checked(::bind(own, generic, sizeof(address)), "bind");
  checked(::listen(own, 1), "listen");
  for (;;) {
    const int connection = static_cast<int>(checked(::accept(own, nullptr, nullptr), "accept"));
    receiveFiles(connection, arguments.at(2));
    ::close(connection);
  }
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return run({arguments + 1, arguments + count});
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
