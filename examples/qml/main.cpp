// Loads Main.qml, a signing area with a Done button, from beside the program.
#include <scrivlet/signature_area.h>

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  scrivlet::registerScrivletQuickTypes();
  QQmlApplicationEngine engine(QCoreApplication::applicationDirPath() + "/Main.qml");
  return engine.rootObjects().isEmpty() ? 1 : app.exec();
}
