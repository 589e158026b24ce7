// A signature pad for Qt hosts: a widget to sign on, with properties, signals and slots.
#pragma once

#include <scrivlet/qt_export.h>
#include <scrivlet/signature_properties.h>

#include <QWidget>

#include <memory>

namespace scrivlet {

class SignaturePadCore;

// The properties, signals and slots are those of scrivlet/signature_properties.h, shared with the QML
// item. Accessible as a canvas named "Signature", described "empty", "1 stroke", "3 strokes".
// Disabled or read-only, it takes no input of any kind; the standard Undo and Redo keys work when it
// has focus.
class SCRIVLET_QT_EXPORT SignaturePad : public QWidget {
  Q_OBJECT
  SCRIVLET_SIGNATURE_PROPERTIES

 public:
  // Installs the Qt platform on first use; the QApplication must exist.
  explicit SignaturePad(QWidget* parent = nullptr);
  ~SignaturePad() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  class Surface;

  void settingChanged();
  void describe();

  std::unique_ptr<SignaturePadCore> core_;
  Surface* surface_;
};

}  // namespace scrivlet
