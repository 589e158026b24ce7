// A signing area in a window with a Done button; Done saves the signature as signature.png. Without a
// screen (QT_QPA_PLATFORM=offscreen) it presses Done by itself and ends.
#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_platform.h>
#include <scrivlet/scrivlet.h>

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  scrivlet::installQtPlatform();
  QWidget window;
  auto* area = new scrivlet::QnQtCaptureWidget;
  auto* done = new QPushButton("Done");
  auto* layout = new QVBoxLayout(&window);
  layout->addWidget(area, 1), layout->addWidget(done);
  window.resize(600, 360);

  auto delegate = std::make_shared<scrivlet::QnScrivletControllerDelegate>();
  delegate->scrivletDidCompleteWithSignature = [&app](auto, auto record) {
    QFile file("signature.png");
    if (file.open(QIODevice::WriteOnly) && record->imageData())
      file.write(reinterpret_cast<const char*>(record->imageData()->data()), record->imageData()->size());
    app.quit();
  };
  delegate->scrivletDidCompleteWithNoSignature = [&app](auto) { qInfo("Nothing was signed."), app.quit(); };
  auto signing = scrivlet::QnScrivlet::scrivletWithViewDelegate(area->view(), delegate);
  QObject::connect(done, &QPushButton::clicked, [&signing] { signing->done(); });
  window.show();
  if (QGuiApplication::platformName() == "offscreen") QTimer::singleShot(100, done, &QPushButton::click);
  return app.exec();
}
