// The demo window.
#include "demo_window.h"

#include <scrivlet/engine/facade.h>
#include <scrivlet/engine/pdf_document.h>
#include <scrivlet/engine/scrivlet_controller.h>
#include <scrivlet/engine/signature.h>

#include <scrivlet/signature_pad.h>
#include <scrivlet/qt_modal_dialog.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace scrivlet {

namespace {

const char* const kPrompt = "Please sign on the line below";

QByteArray bytesOf(const std::optional<std::vector<uint8_t>>& data) {
  return data ? QByteArray(reinterpret_cast<const char*>(data->data()), static_cast<qsizetype>(data->size()))
              : QByteArray();
}

// What the PDF holds, read back from its bytes; a PDF reader shows the page itself once it is saved.
QString describePdf(const QnSignature& record) {
  const std::shared_ptr<QnPDFDocument>& pdf = record.pdf();
  if (!pdf || pdf->numberOfPages() < 1) return "No PDF.";
  QnSize page = pdf->pageSize(0);
  return QString("%1 page of %2 × %3 points, %4 bytes: save it to open it in a PDF reader.")
      .arg(pdf->numberOfPages())
      .arg(page.width)
      .arg(page.height)
      .arg(record.pdfData() ? record.pdfData()->size() : 0);
}

}  // namespace

DemoWindow::DemoWindow() {
  setWindowTitle("Scrivlet demo");
  auto* central = new QWidget(this);
  auto* layout = new QVBoxLayout(central);
  auto* top = new QHBoxLayout();
  pad_ = new SignaturePad(central);
  pad_->setMinimumSize(540, 300);
  connect(pad_, &SignaturePad::strokeEnded, this, [this](int index, int points) {
    statusBar()->showMessage(QString("Stroke %1 ended with %2 points").arg(index + 1).arg(points));
  });
  connect(pad_, &SignaturePad::signatureReady, this, [this](const SignatureRecord& r) { showRecord(r.signature()); });
  connect(pad_, &SignaturePad::signedNothing, this, [this] { statusBar()->showMessage("Done with nothing signed."); });
  top->addWidget(pad_, 1);
  top->addWidget(makeControls());
  layout->addLayout(top, 3);
  layout->addWidget(makeRecordView(), 2);
  setCentralWidget(central);
  statusBar()->showMessage("Sign in the white area with a finger, a pen or the mouse.");
  resize(1100, 760);
}

DemoWindow::~DemoWindow() = default;

std::shared_ptr<QnScrivletControllerDelegate> DemoWindow::makeDelegate() {
  auto delegate = std::make_shared<QnScrivletControllerDelegate>();
  delegate->scrivletDidCompleteWithSignature = [this](auto, std::shared_ptr<QnSignature> record) {
    showRecord(record);
  };
  delegate->scrivletDidCompleteWithNoSignature = [this](auto) {
    statusBar()->showMessage("Done with nothing signed.");
  };
  delegate->scrivletDidCancelModalView = [this](auto) {
    statusBar()->showMessage("The signing screen was cancelled.");
  };
  delegate->presentViewControllerAnimatedCompletion = [this](auto container, bool, auto completion) {
    QnQtModalDialog::present(container, this);
    if (completion) completion();
  };
  return delegate;
}

QWidget* DemoWindow::makeControls() {
  auto* panel = new QWidget(this);
  auto* form = new QFormLayout(panel);
  SignaturePad* pad = pad_;

  auto* colour = new QComboBox(panel);
  const std::pair<const char*, QColor> colours[] = {{"Black", QColor(0, 0, 0)},
                                                    {"Blue", QColor::fromRgbF(0.05, 0.2, 0.65)},
                                                    {"Dark red", QColor::fromRgbF(0.55, 0.05, 0.1)},
                                                    {"Green", QColor::fromRgbF(0.05, 0.45, 0.2)}};
  for (const auto& [name, value] : colours) colour->addItem(name);
  connect(colour, &QComboBox::currentIndexChanged, this, [pad, colours](int i) {
    if (i >= 0) pad->setPenColor(colours[i].second);
  });
  form->addRow("Ink colour", colour);

  auto spin = [&](double low, double high, double step, double value, void (SignaturePad::*setter)(double)) {
    auto* box = new QDoubleSpinBox(panel);
    box->setRange(low, high);
    box->setSingleStep(step);
    box->setValue(value);
    connect(box, &QDoubleSpinBox::valueChanged, pad, setter);
    return box;
  };
  form->addRow("Pen width", spin(0.5, 20, 0.5, pad->penWidth(), &SignaturePad::setPenWidth));
  form->addRow("Velocity reduction", spin(0, 1, 0.05, pad->velocityReduction(), &SignaturePad::setVelocityReduction));
  form->addRow("Export scale", spin(0.5, 4, 0.5, pad->exportScale(), &SignaturePad::setExportScale));

  auto check = [&](const char* label, bool value, void (SignaturePad::*setter)(bool)) {
    auto* box = new QCheckBox(label, panel);
    box->setChecked(value);
    connect(box, &QCheckBox::toggled, pad, setter);
    form->addRow(box);
  };
  check("Calligraphic pen", pad->calligraphic(), &SignaturePad::setCalligraphic);
  check("Guideline", pad->guidelineVisible(), &SignaturePad::setGuidelineVisible);
  check("Date on the exports", pad->dateStamp(), &SignaturePad::setDateStamp);
  check("Time with the date", pad->timeStamp(), &SignaturePad::setTimeStamp);
  check("Hash on the exports", pad->hashStamp(), &SignaturePad::setHashStamp);
  check("Clip to the signing area", pad->clipToBounds(), &SignaturePad::setClipToBounds);
  check("Draw only with a pen", pad->stylusOnly(), &SignaturePad::setStylusOnly);
  check("Three-finger swipes undo and redo", pad->swipeToUndo(), &SignaturePad::setSwipeToUndo);

  auto* customHash = new QLineEdit(panel);
  customHash->setPlaceholderText("generated");
  connect(customHash, &QLineEdit::textChanged, pad, &SignaturePad::setCustomHash);
  form->addRow("Custom hash", customHash);

  auto* buttons = new QHBoxLayout();
  auto* clear = new QPushButton("Clear", panel);
  auto* undo = new QPushButton("Undo", panel);
  auto* done = new QPushButton("Done", panel);
  auto* modal = new QPushButton("Modal screen…", panel);
  connect(clear, &QPushButton::clicked, pad, &SignaturePad::clear);
  connect(undo, &QPushButton::clicked, pad, &SignaturePad::undo);
  connect(done, &QPushButton::clicked, this, [this] { this->done(); });
  connect(modal, &QPushButton::clicked, this, [this] { openModalScreen(); });
  buttons->addWidget(clear);
  buttons->addWidget(undo);
  buttons->addWidget(done);
  buttons->addWidget(modal);
  form->addRow(buttons);
  return panel;
}

QWidget* DemoWindow::makeRecordView() {
  auto* box = new QWidget(this);
  auto* layout = new QVBoxLayout(box);
  recordSummary_ = new QLabel("No record yet.", box);
  recordSummary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(recordSummary_);
  recordTabs_ = new QTabWidget(box);
  auto imageTab = [this](QLabel*& view, const char* title) {
    auto* scroll = new QScrollArea(recordTabs_);
    view = new QLabel(scroll);
    view->setAlignment(Qt::AlignCenter);
    scroll->setWidget(view);
    scroll->setWidgetResizable(true);
    recordTabs_->addTab(scroll, title);
  };
  imageTab(pngView_, "PNG");
  imageTab(pdfView_, "PDF");
  svgView_ = new QPlainTextEdit(recordTabs_);
  svgView_->setReadOnly(true);
  recordTabs_->addTab(svgView_, "SVG");
  xmlView_ = new QPlainTextEdit(recordTabs_);
  xmlView_->setReadOnly(true);
  recordTabs_->addTab(xmlView_, "ISO/IEC 19794-7 XML");
  layout->addWidget(recordTabs_, 1);
  auto* saves = new QHBoxLayout();
  for (const char* suffix : {"png", "pdf", "svg", "xml"}) {
    auto* button = new QPushButton(QString("Save %1…").arg(QString(suffix).toUpper()), box);
    connect(button, &QPushButton::clicked, this, [this, suffix] { save(suffix); });
    saves->addWidget(button);
  }
  saves->addStretch(1);
  layout->addLayout(saves);
  return box;
}

void DemoWindow::done() { pad_->done(); }

QWidget* DemoWindow::signingSurface() const { return pad_->focusProxy(); }

void DemoWindow::openModalScreen() {
  modalDelegate_ = makeDelegate();
  modalScrivlet_ = QnScrivlet::scrivletWithDelegateModalDisplayString(modalDelegate_, kPrompt);
}

void DemoWindow::showRecord(const std::shared_ptr<QnSignature>& record) {
  record_ = record;
  QImage png = QImage::fromData(bytesOf(record->imageData()), "PNG");
  pngView_->setPixmap(QPixmap::fromImage(png));
  pdfView_->setText(describePdf(*record));
  svgView_->setPlainText(QString::fromStdString(record->svgString().value_or("")));
  xmlView_->setPlainText(QString::fromStdString(record->xmlString().value_or("")));
  unsigned long points = 0;
  if (record->rawPoints())
    for (const auto& stroke : *record->rawPoints()) points += stroke ? stroke->size() : 0;
  recordSummary_->setText(QString("Hash %1 · %2 points in %3 strokes · canvas %4 × %5 · PNG %6 bytes, PDF %7 bytes")
                              .arg(QString::fromStdString(record->hashString().value_or("")))
                              .arg(points)
                              .arg(record->rawPoints() ? record->rawPoints()->size() : 0)
                              .arg(record->frame().size.width)
                              .arg(record->frame().size.height)
                              .arg(record->imageData() ? record->imageData()->size() : 0)
                              .arg(record->pdfData() ? record->pdfData()->size() : 0));
  statusBar()->showMessage("Signature record delivered.");
  if (recordHandler_) recordHandler_(record);
}

QByteArray DemoWindow::recordBytes(const QString& suffix) const {
  if (!record_) return {};
  if (suffix == "png") return bytesOf(record_->imageData());
  if (suffix == "pdf") return bytesOf(record_->pdfData());
  if (suffix == "svg") return QByteArray::fromStdString(record_->svgString().value_or(""));
  return QByteArray::fromStdString(record_->xmlString().value_or(""));
}

void DemoWindow::save(const QString& suffix) {
  if (!record_) return;
  QString path = QFileDialog::getSaveFileName(this, "Save", "signature." + suffix);
  if (path.isEmpty()) return;
  QFile file(path);
  if (file.open(QIODevice::WriteOnly)) file.write(recordBytes(suffix));
}

bool DemoWindow::writeRecordFiles(const QString& folder) const {
  for (const char* suffix : {"png", "pdf", "svg", "xml"}) {
    QFile file(folder + "/signature." + suffix);
    QByteArray bytes = recordBytes(suffix);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) return false;
  }
  return true;
}

}  // namespace scrivlet
