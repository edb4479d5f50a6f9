#include "platform/engine/web/PageConsole.h"

#include "platform/gtk/GLibPointers.h"

#include <cstdio>
#include <string>

namespace brevanholt::platform {
namespace {

constexpr const char* kHandler = "brevanholtConsole";

// The engine's own setting for this writes into the page's process, whose output goes nowhere.
constexpr const char* kScript = R"js((() => {
  const host = window.webkit.messageHandlers.brevanholtConsole;
  const shown = (value) => {
    if (value instanceof Error) return `${value}\n${value.stack}`;
    if (typeof value !== 'object' || value === null) return String(value);
    try {
      return JSON.stringify(value) ?? String(value);
    } catch {
      return String(value);
    }
  };
  const say = (level, values) => host.postMessage(`${level}: ${values.map(shown).join(' ')}`);
  for (const level of ['debug', 'log', 'info', 'warn', 'error']) {
    const original = console[level].bind(console);
    console[level] = (...values) => {
      original(...values);
      say(level, values);
    };
  }
  addEventListener('error', (event) =>
    say('uncaught error', [event.message, `(${event.filename}:${event.lineno})`]),
  );
  addEventListener('unhandledrejection', (event) => say('unhandled rejection', [event.reason]));
})())js";

void show(WebKitUserContentManager*, WebKitJavascriptResult* message, gpointer) {
  const GCharPointer text(jsc_value_to_string(webkit_javascript_result_get_js_value(message)));
  std::fprintf(stderr, "page: %s\n", text.get());
}

}  // namespace

void showPageConsole(WebKitWebView* view) {
  WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(view);
  const std::string signal = std::string("script-message-received::") + kHandler;
  g_signal_connect(manager, signal.c_str(), G_CALLBACK(show), nullptr);
  webkit_user_content_manager_register_script_message_handler(manager, kHandler);
  WebKitUserScript* script =
      webkit_user_script_new(kScript, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
  webkit_user_content_manager_add_script(manager, script);
  webkit_user_script_unref(script);
}

}  // namespace brevanholt::platform
