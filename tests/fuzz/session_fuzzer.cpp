// Fuzzes a whole signing session on the headless backend: the input is decoded into touch phases of
// one to four touches at any doubles, view resizes, every setting, undo, redo, reset, done, time
// passing (timers fire, preparations finish), and the facade destroyed mid-preparation. After every
// step the canvas must hold only finite positions and keep its points unless a cancel, an undo, a
// reset or a swipe took them; every record delivered must have outputs that parse.
#include <scrivlet/scrivlet.h>

#include "capture/drawing_controller.h"
#include "platform/image.h"

#include <libxml/parser.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

using namespace scrivlet;

namespace {

int currentStep = -1;  // the step being checked, to report with a violation

[[noreturn]] void violated(const char* what) {
  std::fprintf(stderr, "session fuzzer: invariant violated at step %d: %s\n", currentStep, what);
  std::abort();
}

// Reads the input from the front; past its end every read is 0.
class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool done() const { return at_ >= size_; }
  uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  uint16_t u16() { return uint16_t(byte() | (byte() << 8)); }
  // Most values are positions 0 to 255 in 1/256 steps (small canvases keep the runs fast); the top
  // of the range picks the odd ones, or reads a raw double.
  double number() {
    uint16_t v = u16();
    if (v < 0xFF00) return v / 256.0;
    static const double kOdd[] = {std::nan(""), INFINITY, -INFINITY, 1e300, -1e300, -0.0, 1e-300, -50, 1e6, 0};
    uint8_t pick = v & 0xFF;
    if (pick < std::size(kOdd)) return kOdd[pick];
    double raw;
    uint64_t bits = uint64_t(u16()) | uint64_t(u16()) << 16 | uint64_t(u16()) << 32 | uint64_t(u16()) << 48;
    std::memcpy(&raw, &bits, sizeof raw);
    return raw;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

bool wellFormed(const std::string& text) {
  xmlDocPtr doc = xmlReadMemory(text.data(), int(text.size()), "record.xml", nullptr,
                                XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (doc) xmlFreeDoc(doc);
  return doc != nullptr;
}

size_t occurrences(const std::string& text, const std::string& what) {
  size_t count = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

void checkRecord(const QnSignature& record) {
  size_t points = 0;
  if (record.rawPoints())
    for (const auto& stroke : *record.rawPoints()) points += stroke ? stroke->size() : 0;
  if (record.imageData() && QnImage::decodePNG(*record.imageData()).isNull()) violated("the PNG does not decode");
  if (record.pdfData()) {
    auto pdf = QnPDFDocument::createWithData(*record.pdfData());
    if (!pdf || pdf->numberOfPages() != 1) violated("the PDF is not a one-page document");
  }
  if (record.svgString() && !wellFormed(*record.svgString())) violated("the SVG is not well-formed");
  if (!record.xmlString() || !wellFormed(*record.xmlString())) violated("the XML is missing or not well-formed");
  if (occurrences(*record.xmlString(), "<sig:SamplePoint>") != points) violated("the XML has not one sample per point");
}

struct Session {
  Session() {
    QnDevice::resetToDefaults();
    QnScheduler::setCurrent(loop);
    delegate->scrivletDidCompleteWithSignature = [](auto, auto record) {
      if (record) checkRecord(*record);
    };
    makeFacade();
  }
  ~Session() {
    facade.reset();
    loop->runUntilIdle();
  }
  void makeFacade() { facade = QnScrivlet::scrivletWithViewDelegate(view, delegate); }
  size_t pointsOnCanvas() const {
    size_t n = 0;
    for (const auto& stroke : *facade->scrivletController()->drawingController()->drawingArray()) {
      for (const QnSignaturePoint& p : *stroke)
        if (!std::isfinite(p.location.x) || !std::isfinite(p.location.y)) violated("a stored position is not finite");
      n += stroke->size();
    }
    return n;
  }
  QnTouchSet selected(uint8_t mask) const {
    QnTouchSet set;
    for (int k = 0; k < 4; ++k)
      if ((mask & (1 << k)) && slots[k]) set.push_back(slots[k]);
    return set;
  }
  void clear(uint8_t mask) {
    for (int k = 0; k < 4; ++k)
      if (mask & (1 << k)) slots[k].reset();
  }

  // One run loop serves every run: starting its thread each time would cost more than most runs.
  static inline const std::shared_ptr<HeadlessRunLoop> loop =
      std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual, 1);
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 256, 192));
  std::shared_ptr<QnScrivletControllerDelegate> delegate = std::make_shared<QnScrivletControllerDelegate>();
  std::shared_ptr<QnScrivlet> facade;
  std::shared_ptr<HeadlessTouch> slots[4];
  double time = 1;
};

void applySetting(Session& s, Reader& in) {
  QnScrivlet& f = *s.facade;
  uint8_t which = in.byte() % 14;
  double value = in.number();
  bool flag = value != 0;
  switch (which) {
    case 0: f.setExportScale(float(value)); break;
    case 1: f.setStrokeWidth(float(value)); break;
    case 2: f.setVelocityReduction(float(value)); break;
    case 3: f.setShowDate(flag); break;
    case 4: f.setDateIncludesTime(flag); break;
    case 5: f.setShowHash(flag); break;
    case 6: f.setClipSignatureToBounds(flag); break;
    case 7: f.setDrawOnlyWithApplePencil(flag); break;
    case 8: f.setUseCalligraphicBrush(flag); break;
    case 9: f.setSwipeToUndoEnabled(flag); break;
    case 10: f.setShowGuideline(flag); break;
    case 11: f.setStrokeColor(QnColor(value / 255, 0.2, 0.5, 1)); break;
    case 12: f.scrivletController()->setSkipPDFData(flag); break;
    default: {
      // Markup in a custom hash goes into the SVG unescaped, as documented: letters and digits only.
      std::string hash;
      for (int i = in.byte() % 12; i > 0; --i) hash += "0123456789abcdefXYZ"[in.byte() % 19];
      f.setCustomHash(hash.empty() ? std::nullopt : std::optional(hash));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool trace = std::getenv("SESSION_FUZZER_TRACE") != nullptr;
  Reader in(data, size);
  Session s;
  for (int step = 0; !in.done(); ++step) {
    currentStep = step;
    size_t before = s.pointsOnCanvas();
    bool mayRemove = s.view->touchesDown().size() >= 3;  // three fingers cancel and swipe
    uint8_t op = in.byte() % 13;
    uint8_t arg = in.byte();
    if (trace) std::fprintf(stderr, "step %d: operation %d (%d), %zu points\n", step, op, arg, before);
    switch (op) {
      case 0: {  // touches land: 1 to 4 of them, replacing (and so losing) what the slots held
        QnTouchSet set;
        for (int i = 0, n = 1 + (arg & 3); i < n; ++i) {
          int slot = ((arg >> 2) + i) & 3;
          s.time += in.byte() / 1000.0;
          auto touch = std::make_shared<HeadlessTouch>(QnPoint{in.number(), in.number()}, s.time,
                                                       (arg & 0x40) ? kQnTouchTypeStylus : kQnTouchTypeDirect);
          if (arg & 0x80) touch->setForce(in.number(), in.number());
          if (arg & 0x40) touch->setAzimuthAngle(in.number()), touch->setAltitudeAngle(in.number());
          s.slots[slot] = touch;
          set.push_back(touch);
        }
        s.view->beginTouches(set);
        break;
      }
      case 1: {  // the selected touches move; time may go back
        QnTouchSet set = s.selected(arg);
        for (auto& touch : set) {
          s.time += int8_t(in.byte()) / 1000.0;
          QnPoint to{in.number(), in.number()};
          auto precise = (arg & 0x10) ? std::optional(QnPoint{in.number(), in.number()}) : std::nullopt;
          static_cast<HeadlessTouch&>(*touch).moveTo(to, s.time, precise);
        }
        s.view->moveTouches(set);
        break;
      }
      case 2: s.view->endTouches(s.selected(arg)), s.clear(arg); break;
      case 3: s.view->cancelTouches(s.selected(arg)), s.clear(arg), mayRemove = true; break;
      case 4: s.clear(arg); break;  // touches lost without an end
      case 5: s.view->setFrame({{in.number(), in.number()}, {in.number(), in.number()}}); break;
      case 6: applySetting(s, in); break;
      case 7: s.facade->scrivletController()->undo(), mayRemove = true; break;
      case 8: s.facade->scrivletController()->redo(), mayRemove = true; break;  // it cancels an open stroke
      case 9: s.facade->reset(), mayRemove = true; break;
      case 10: s.facade->done(); break;
      case 11: s.loop->advance(arg / 50.0); break;
      case 12: s.facade.reset(), s.makeFacade(), mayRemove = true; break;  // possibly mid-preparation
    }
    mayRemove = mayRemove || s.view->touchesDown().size() >= 3;
    if (!mayRemove && s.pointsOnCanvas() < before) {
      std::fprintf(stderr, "operation %d (%d): %zu points, then %zu\n", op, arg, before, s.pointsOnCanvas());
      violated("captured points were lost");
    }
  }
  // Preparations under way finish before the session goes (an input that wants a record asks for
  // one with "Done" and time passing).
  s.loop->runUntilIdle();
  return 0;
}
