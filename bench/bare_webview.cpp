// The least that a window with a sandboxed page takes with WebKitGTK, for host_benchmark to compare
// with: an empty page, drawn as the program draws its own.

#include <webkit2/webkit2.h>

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  WebKitWebContext* context = webkit_web_context_new_ephemeral();
  webkit_web_context_set_sandbox_enabled(context, TRUE);
  GtkWidget* view = webkit_web_view_new_with_context(context);
  webkit_settings_set_hardware_acceleration_policy(
      webkit_web_view_get_settings(WEBKIT_WEB_VIEW(view)),
      WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_container_add(GTK_CONTAINER(window), view);
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(view), "<p>Empty", nullptr);
  gtk_widget_show_all(window);
  gtk_main();
}
