// A signature pad with a Done button that saves signature.png; offscreen, Done is pressed by itself.
#include <scrivlet/signature_pad.h>

#include <QApplication>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QWidget window;
  auto* pad = new scrivlet::SignaturePad;
  auto* done = new QPushButton("Done");
  auto* layout = new QVBoxLayout(&window);
  layout->addWidget(pad, 1), layout->addWidget(done);
  QObject::connect(done, &QPushButton::clicked, pad, &scrivlet::SignaturePad::done);
  QObject::connect(pad, &scrivlet::SignaturePad::signatureReady, [&app](const scrivlet::SignatureRecord& record) {
    record.image().save("signature.png"), app.quit();
  });
  QObject::connect(pad, &scrivlet::SignaturePad::signedNothing, [&app] { qInfo("Nothing was signed."), app.quit(); });
  window.resize(600, 360), window.show();
  if (QGuiApplication::platformName() == "offscreen") QTimer::singleShot(100, done, &QPushButton::click);
  return app.exec();
}
