// The demo application. On a screen it opens the demo window; without one (or with --replay) it
// replays the built-in signature through the window's input path and writes the record's files.
#include <scrivlet/engine/facade.h>
#include <scrivlet/engine/navigation_controller.h>
#include <scrivlet/engine/popup.h>
#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_modal_dialog.h>
#include <scrivlet/qt_platform.h>
#include <scrivlet/engine/signature.h>

#include "demo_window.h"
#include "replay.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <cstdio>
#include <cstring>

using namespace scrivlet;

namespace {

// Platforms that show nothing to a person: on them the demo replays instead of waiting for input.
bool showsNothing(const QString& platform) { return platform == "offscreen" || platform == "minimal"; }

// The platforms Qt tries in turn: the one asked for (or the usual screen ones), and then offscreen, so
// that a display that cannot be opened leads to the replay instead of an abort.
QByteArray platformsToTry(bool replayMode) {
  if (replayMode) return "offscreen";
  QByteArray asked = qgetenv("QT_QPA_PLATFORM");
  if (asked.isEmpty()) {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) asked = "wayland;xcb";
    else if (!qEnvironmentVariableIsEmpty("DISPLAY")) asked = "xcb";
    else return "offscreen";
  }
  return asked + ";offscreen";
}

// Runs the event loop until the condition holds or the time is up.
bool waitFor(const std::function<bool()>& condition, int milliseconds = 15000) {
  QElapsedTimer clock;
  clock.start();
  while (!condition() && clock.elapsed() < milliseconds)
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  return condition();
}

int replay(DemoWindow& window, const QString& folder) {
  QDir().mkpath(folder);
  window.show();
  waitFor([] { return false; }, 200);
  window.grab().save(folder + "/window-before.png");

  std::shared_ptr<QnSignature> record;
  window.setRecordHandler([&record](std::shared_ptr<QnSignature> r) { record = r; });
  int points = replayBuiltInSignature(window.signingSurface());
  window.done();
  if (!waitFor([&record] { return record != nullptr; })) {
    std::fprintf(stderr, "demo: no signature record arrived\n");
    return 1;
  }
  waitFor([] { return false; }, 200);
  window.grab().save(folder + "/window-after.png");

  if (!window.writeRecordFiles(folder)) {
    std::fprintf(stderr, "demo: could not write to %s\n", qPrintable(folder));
    return 1;
  }

  // The modal signing screen, signed through the same input path, and a picture of it.
  window.openModalScreen();
  waitFor([] { return false; }, 200);
  for (QWidget* top : QApplication::topLevelWidgets()) {
    auto* dialog = dynamic_cast<QnQtModalDialog*>(top);
    if (!dialog || !dialog->isVisible()) continue;
    replayBuiltInSignature(dialog->captureWidget());
    waitFor([] { return false; }, 200);
    dialog->grab().save(folder + "/modal.png");
    dialog->close();  // the window's close button: "Cancel"
  }
  waitFor([] { return false; }, 200);

  std::printf("Replayed %d points. Hash %s; canvas %.0f x %.0f.\n", points,
              record->hashString().value_or("").c_str(), record->frame().size.width,
              record->frame().size.height);
  std::printf("Wrote signature.png, signature.pdf, signature.svg, signature.xml, window-before.png,\n"
              "window-after.png and modal.png to %s\n",
              qPrintable(QDir(folder).absolutePath()));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  bool replayMode = false;
  QString folder = "out";
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--replay") == 0) {
      replayMode = true;
      if (i + 1 < argc) folder = argv[++i];
    }
  }
  qputenv("QT_QPA_PLATFORM", platformsToTry(replayMode));
  QApplication app(argc, argv);
  replayMode = replayMode || showsNothing(QGuiApplication::platformName());
  installQtPlatform();
  DemoWindow window;
  if (replayMode) return replay(window, folder);
  window.show();
  return app.exec();
}
