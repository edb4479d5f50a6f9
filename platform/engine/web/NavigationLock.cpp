#include "platform/engine/web/NavigationLock.h"

#include "platform/engine/web/BundleScheme.h"
#include "platform/foundation/Log.h"

namespace brevanholt::platform {
namespace {

bool staysInBundle(WebKitPolicyDecision* decision) {
  auto* action = webkit_navigation_policy_decision_get_navigation_action(
      WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const char* uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  if (BundleScheme::isInBundle(uri)) return true;
  logWarning(std::string("the page tried to go to ") + uri);
  return false;
}

gboolean decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                      gpointer) {
  bool allowed = false;
  switch (type) {
    case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
      allowed = staysInBundle(decision);
      break;
    case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION:
      allowed = false;
      break;
    case WEBKIT_POLICY_DECISION_TYPE_RESPONSE:
      allowed = webkit_response_policy_decision_is_mime_type_supported(
                    WEBKIT_RESPONSE_POLICY_DECISION(decision)) != FALSE;
      break;
  }
  if (allowed) {
    webkit_policy_decision_use(decision);
  } else {
    webkit_policy_decision_ignore(decision);
  }
  return TRUE;
}

gboolean showContextMenu(WebKitWebView*, WebKitContextMenu*, GdkEvent*, WebKitHitTestResult* target,
                         gpointer developerTools) {
  const bool wanted = GPOINTER_TO_INT(developerTools) != 0 ||
                      webkit_hit_test_result_context_is_editable(target) != FALSE ||
                      webkit_hit_test_result_context_is_selection(target) != FALSE;
  return wanted ? FALSE : TRUE;
}

}  // namespace

void lockToBundle(WebKitWebView* view, bool developerTools) {
  g_signal_connect(view, "decide-policy", G_CALLBACK(decidePolicy), nullptr);
  g_signal_connect(view, "context-menu", G_CALLBACK(showContextMenu),
                   GINT_TO_POINTER(developerTools ? 1 : 0));
  g_signal_connect(view, "create",
                   G_CALLBACK(+[](WebKitWebView*, WebKitNavigationAction*, gpointer) -> GtkWidget* {
                     return nullptr;
                   }),
                   nullptr);
  g_signal_connect(
      view, "permission-request",
      G_CALLBACK(+[](WebKitWebView*, WebKitPermissionRequest* request, gpointer) -> gboolean {
        webkit_permission_request_deny(request);
        return TRUE;
      }),
      nullptr);
  g_signal_connect(
      view, "print",
      G_CALLBACK(+[](WebKitWebView*, WebKitPrintOperation*, gpointer) -> gboolean { return TRUE; }),
      nullptr);
}

void refuseDownloads(WebKitWebContext* context) {
  g_signal_connect(context, "download-started",
                   G_CALLBACK(+[](WebKitWebContext*, WebKitDownload* download, gpointer) {
                     logWarning("a download was refused");
                     webkit_download_cancel(download);
                   }),
                   nullptr);
}

}  // namespace brevanholt::platform
