// Loads Main.qml from beside the program. Linking Scrivlet::quick makes `import Scrivlet` work.
#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  QQmlApplicationEngine engine;
  QObject::connect(&engine, &QQmlApplicationEngine::objectCreationFailed, &app, [] { QCoreApplication::exit(1); },
                   Qt::QueuedConnection);
  engine.load(QUrl::fromLocalFile(QCoreApplication::applicationDirPath() + "/Main.qml"));
  return app.exec();
}
