#include "platform/engine/flutter/FlutterEngine.h"

#include "platform/engine/flutter/FlutterLibrary.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

std::atomic<bool> engineRuns = false;

// Runs at exit. Dart's exit() is the C library's and may come at any time, and the engine's library
// may keep its threads running when the view is gone. So no destructor of what they use may run.
void endAtOnce(int status, void*) {
  if (engineRuns) {
    logWarning("the user interface ended the program with status " + std::to_string(status));
  }
  std::fflush(nullptr);
  std::_Exit(status);
}

// What is registered last runs first at the exit, before the destructors that the engine's library
// has registered until now.
void watchForExit() {
  if (::on_exit(endAtOnce, nullptr) != 0) {
    logWarning("an exit of the user interface will not be noticed");
  }
}

// Dart's print() writes to standard output; the log is on standard error.
void sendPrintsToTheLog() {
  if (::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) logWarning("what Dart prints is not in the log");
}

void realizeAll(GtkWidget* widget, gpointer) {
  if (GTK_IS_CONTAINER(widget) != FALSE) {
    gtk_container_forall(GTK_CONTAINER(widget), realizeAll, nullptr);
  }
  gtk_widget_realize(widget);
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

FlutterFunctions functionsOf(const FlutterBundle& bundle) {
  bundle.expectWhole();
  return loadFlutterEngine(bundle.engine);
}

}  // namespace

FlutterEngine::FlutterEngine(const FlutterBundle& bundle,
                             const std::vector<std::string>& uiArguments)
    : functions_(functionsOf(bundle)), plugins_(bundle.libraries) {
  sendPrintsToTheLog();
  createView(bundle, uiArguments);
  placing_ = box_.signal_hierarchy_changed().connect([this](Gtk::Widget*) { placed(); });
}

FlutterEngine::~FlutterEngine() {
  placing_.disconnect();
  messenger_->stop();
  g_signal_handlers_disconnect_by_data(engine_, this);
  // Unrealized first: while it is destroyed the view has nothing left to draw with.
  if (gtk_widget_get_parent(widget_.get()) != nullptr) {
    gtk_container_remove(GTK_CONTAINER(box_.gobj()), widget_.get());
  }
  gtk_widget_destroy(widget_.get());
  widget_.reset();
  engineRuns = false;
  watchForExit();
}

void FlutterEngine::createView(const FlutterBundle& bundle,
                               const std::vector<std::string>& uiArguments) {
  const GObjectPointer<FlDartProject> project(functions_.fl_dart_project_new());
  std::string assets = bundle.assets;
  std::string characters = bundle.characters;
  std::vector<std::string> arguments = uiArguments;
  functions_.fl_dart_project_set_assets_path(project.get(), assets.data());
  functions_.fl_dart_project_set_icu_data_path(project.get(), characters.data());
  functions_.fl_dart_project_set_aot_library_path(project.get(), bundle.code.c_str());
  functions_.fl_dart_project_set_dart_entrypoint_arguments(project.get(),
                                                           pointersTo(arguments).data());
  FlView* view = functions_.fl_view_new(project.get());
  engine_ = view != nullptr ? functions_.fl_view_get_engine(view) : nullptr;
  if (engine_ == nullptr) throw PlatformError("Flutter's engine could not be created");

  auto* widget = reinterpret_cast<GtkWidget*>(view);
  widget_.reset(static_cast<GtkWidget*>(g_object_ref_sink(widget)));
  messenger_ = std::make_unique<FlutterBinaryMessenger>(
      functions_, functions_.fl_engine_get_binary_messenger(engine_));
  // A debug engine restarts its Dart code when the developer asks for it.
  if (g_signal_lookup("on-pre-engine-restart", G_OBJECT_TYPE(engine_)) != 0) {
    g_signal_connect(engine_, "on-pre-engine-restart", G_CALLBACK(+[](FlEngine*, gpointer self) {
                       static_cast<FlutterEngine*>(self)->messenger_->uiEnded();
                       static_cast<FlutterEngine*>(self)->uiDidEnd.emit();
                     }),
                     this);
  }
}

void FlutterEngine::placed() {
  if (GTK_IS_WINDOW(gtk_widget_get_toplevel(GTK_WIDGET(box_.gobj()))) == FALSE) return;
  placing_.disconnect();
  onStart_ = LoopSource::after(std::chrono::milliseconds(0), [this] { start(); });
}

// The engine starts when its view is realized, which otherwise waits until the window is shown.
void FlutterEngine::start() {
  gtk_widget_realize(GTK_WIDGET(box_.gobj()));
  gtk_box_pack_start(box_.gobj(), widget_.get(), TRUE, TRUE, 0);
  plugins_.registerIn(flutterView(), functions_);  // they look for the window
  gtk_widget_show(widget_.get());
  realizeAll(widget_.get(), nullptr);
  engineRuns = true;
  watchForExit();
  gtk_widget_grab_focus(widget_.get());
  messenger_->start();
}

}  // namespace brevanholt::platform
