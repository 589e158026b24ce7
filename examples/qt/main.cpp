// A signature pad with Undo, Clear and Done buttons (Tab reaches each, Space presses it); Done saves
// signature.png. Offscreen, Done is pressed by itself.
#include <scrivlet/signature_pad.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QWidget window;
  auto* pad = new scrivlet::SignaturePad;
  auto* undo = new QPushButton("&Undo");
  auto* clear = new QPushButton("&Clear");
  auto* done = new QPushButton("&Done");
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(), buttons->addWidget(undo), buttons->addWidget(clear), buttons->addWidget(done);
  auto* layout = new QVBoxLayout(&window);
  layout->addWidget(pad, 1), layout->addLayout(buttons);
  undo->setEnabled(false), clear->setEnabled(false);
  QObject::connect(pad, &scrivlet::SignaturePad::canUndoChanged, undo, &QPushButton::setEnabled);
  QObject::connect(pad, &scrivlet::SignaturePad::emptyChanged, clear, [clear](bool empty) { clear->setEnabled(!empty); });
  QObject::connect(undo, &QPushButton::clicked, pad, &scrivlet::SignaturePad::undo);
  QObject::connect(clear, &QPushButton::clicked, pad, &scrivlet::SignaturePad::clear);
  QObject::connect(done, &QPushButton::clicked, pad, &scrivlet::SignaturePad::done);
  QObject::connect(pad, &scrivlet::SignaturePad::signatureReady, [&app](const scrivlet::SignatureRecord& record) {
    record.save(QUrl::fromLocalFile("signature.png")), app.quit();
  });
  QObject::connect(pad, &scrivlet::SignaturePad::signedNothing, [&app] { qInfo("Nothing was signed."), app.quit(); });
  window.resize(600, 360), window.show();
  pad->setFocus();
  if (QGuiApplication::platformName() == "offscreen") QTimer::singleShot(100, done, &QPushButton::click);
  return app.exec();
}
