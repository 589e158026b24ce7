// The demo's window: a signing area, a control for every host setting, and the delivered record.
#pragma once

#include <scrivlet/engine/delegate.h>

#include <QMainWindow>

#include <functional>
#include <memory>

class QLabel;
class QPlainTextEdit;
class QTabWidget;

namespace scrivlet {

class SignaturePad;
class QnScrivlet;
class QnSignature;

class DemoWindow : public QMainWindow {
 public:
  DemoWindow();
  ~DemoWindow() override;

  // The surface the pad is signed on.
  QWidget* signingSurface() const;
  const std::shared_ptr<QnSignature>& record() const { return record_; }
  // Completes the signing in the window, as the "Done" button does.
  void done();
  // Opens the modal signing screen, as the "Modal screen" button does.
  void openModalScreen();
  // Writes the record's signature.png, .pdf, .svg and .xml to the folder.
  bool writeRecordFiles(const QString& folder) const;
  // Called whenever a record arrives.
  void setRecordHandler(std::function<void(std::shared_ptr<QnSignature>)> handler) {
    recordHandler_ = std::move(handler);
  }

 private:
  QWidget* makeControls();
  QWidget* makeRecordView();
  void showRecord(const std::shared_ptr<QnSignature>& record);
  void save(const QString& suffix);
  // The record's file of that suffix: png, pdf, svg or xml.
  QByteArray recordBytes(const QString& suffix) const;
  // The delegate of the modal screen.
  std::shared_ptr<QnScrivletControllerDelegate> makeDelegate();

  SignaturePad* pad_;
  std::shared_ptr<QnScrivletControllerDelegate> modalDelegate_;
  std::shared_ptr<QnScrivlet> modalScrivlet_;
  std::shared_ptr<QnSignature> record_;
  std::function<void(std::shared_ptr<QnSignature>)> recordHandler_;
  QTabWidget* recordTabs_ = nullptr;
  QLabel* pngView_ = nullptr;
  QLabel* pdfView_ = nullptr;
  QPlainTextEdit* svgView_ = nullptr;
  QPlainTextEdit* xmlView_ = nullptr;
  QLabel* recordSummary_ = nullptr;
};

}  // namespace scrivlet
