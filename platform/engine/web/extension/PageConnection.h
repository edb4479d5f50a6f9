#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/gtk/GLibPointers.h"
#include "platform/gtk/LoopSource.h"

#include <jsc/jsc.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace brevanholt::platform {

// The page's end of the socket that joins it to the host, inside the page's own process. It hands
// frames to one JavaScript function as Uint8Arrays, and writes what JavaScript sends.
class PageConnection : public std::enable_shared_from_this<PageConnection> {
 public:
  explicit PageConnection(FileDescriptor socket);
  PageConnection(const PageConnection&) = delete;
  PageConnection& operator=(const PageConnection&) = delete;

  // Puts the object `brevanholtEngineLink` into the page: connect(function) and send(...arrays).
  void exposeTo(JSCContext* context);

 private:
  static void connectFromScript(JSCValue* receiver, std::weak_ptr<PageConnection>* self);
  static void sendFromScript(GPtrArray* arrays, std::weak_ptr<PageConnection>* self);

  void connect(JSCValue* receiver);
  void send(const GPtrArray* arrays);
  void writeQueued();
  void readable();
  bool readIntoBuffer();
  bool readIntoFrame();
  void takeFramesFromBuffer();
  void beginFrame(std::size_t size);
  void deliver();

  FileDescriptor socket_;
  GObjectPointer<JSCValue> receiver_;
  std::vector<std::uint8_t> buffer_;  // what has been read and is not a whole frame yet
  std::size_t buffered_ = 0;
  GObjectPointer<JSCValue> frame_;  // a large frame that is read straight into its array
  std::size_t frameSize_ = 0;
  std::size_t frameFilled_ = 0;
  std::vector<std::uint8_t> outgoing_;
  std::size_t written_ = 0;
  LoopSource onReadable_;
  LoopSource onWritable_;
};

}  // namespace brevanholt::platform
