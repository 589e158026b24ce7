// The demo application. On a screen it opens the demo window; without one (or with --replay) it
// replays the built-in signature through the window's input path and writes the record's files.
#include <scrivlet/facade.h>
#include <scrivlet/navigation_controller.h>
#include <scrivlet/popup.h>
#include <scrivlet/signature.h>

#include "demo_window.h"
#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_modal_dialog.h>
#include <scrivlet/qt_platform.h>
#include "replay.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <cstdio>
#include <cstring>

using namespace scrivlet;

namespace {

bool hasScreen() {
  return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY") ||
         !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
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
  int points = replayBuiltInSignature(window.captureWidget());
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
  bool replayMode = !hasScreen();
  QString folder = "out";
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--replay") == 0) {
      replayMode = true;
      if (i + 1 < argc) folder = argv[++i];
    }
  }
  if (replayMode && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  installQtPlatform();
  DemoWindow window;
  if (replayMode) return replay(window, folder);
  window.show();
  return app.exec();
}
