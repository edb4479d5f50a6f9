#include "tests/Runner/HostTest.h"

namespace brevanholt {
namespace {

using namespace platform;

using MainFlutterWindowTest = HostTest;

TEST_F(MainFlutterWindowTest, OpensOnlyWebLinks) {
  for (const char* url :
       {"HTTPS://example.org", "ftp://example.org", "file:///etc/passwd", "mailto:a@b",
        "javascript:alert(1)", "httpss://x", "https", "", "https://x\ny"}) {
    EXPECT_EQ(call("openExternalUrl", Map{{"url", url}}),
              failure("The web link could not be opened."))
        << url;
  }
  const std::vector<std::string> links{"https://example.org/?q=1", "http://example.org",
                                       "https://example.org/M%FCnchen", "https://example.org/x#%E9",
                                       "https://münchen.example/ä"};
  for (const std::string& url : links) {
    EXPECT_EQ(call("openExternalUrl", Map{{"url", url}}), Reply(Value()));
  }
  EXPECT_EQ(platform_.desktop.opened, links) << "as they were given";
}

TEST_F(MainFlutterWindowTest, SaysWhatTheDesktopRefused) {
  platform_.desktop.refuses = true;
  EXPECT_EQ(call("writeClipboardText", Map{{"text", "x"}}),
            failure("Clipboard text could not be saved."));
  EXPECT_EQ(call("openExternalUrl", Map{{"url", "https://example.org"}}),
            failure("The web link could not be opened."));
  EXPECT_EQ(call("openReceiveFolder"), failure("The receive folder could not be opened."));
}

TEST_F(MainFlutterWindowTest, EndsTheProcessWhenARequiredArgumentIsMissing) {
  setLogSink(nullptr);
  const auto write = [this](const Value& arguments) {
    setLogSink([](LogLevel, std::string_view text) { std::fprintf(stderr, "%s\n", text.data()); });
    call("writeClipboardText", arguments);
  };
  const std::string complaint = "\"writeClipboardText\" was called without a valid ";
  EXPECT_DEATH(write({}), complaint + "\"arguments\"");
  EXPECT_DEATH(write(List{"text"}), complaint + "\"arguments\"");
  EXPECT_DEATH(write(Map{{"text", 1.0}}), complaint + "\"text\"");
  Map numbered{{"text", "x"}};
  numbered.add(1.0, "not a string's");
  EXPECT_DEATH(write(numbered), complaint + "\"arguments\"");
}

}  // namespace
}  // namespace brevanholt
