// Fuzzes a whole signing session on the headless backend. The first byte picks the level: the engine
// (the facade and its controller) or the host API (SignatureSession). The rest is decoded into touch
// phases of one to four touches at any doubles, view resizes, every setting, undo, redo, clearing,
// done, time passing (timers fire, preparations finish), loading strokes, and the facade or session
// destroyed mid-preparation. After every step the canvas must hold only finite positions and keep its
// points unless a cancel, an undo, a clear or a swipe took them; every record delivered must have
// outputs that parse and an SVG of finite numbers. On the host API every done() is answered exactly
// once, in order, with a record of the canvas as it was at that done(), and a failed load changes
// nothing.
#include <scrivlet/scrivlet.h>
#include <scrivlet/signature_session.h>
#include <scrivlet/stroke_json.h>

#include "capture/drawing_controller.h"
#include "platform/image.h"

#include <libxml/parser.h>
#include <zlib.h>

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
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
  // of the range picks the odd ones, or reads a raw double. Far off is 5,000 points: a canvas that
  // reaches it is big enough to be banded, and a million would make a record of minutes.
  double number() {
    uint16_t v = u16();
    if (v < 0xFF00) return v / 256.0;
    static const double kOdd[] = {std::nan(""), INFINITY, -INFINITY, 1e300, -1e300, -0.0, 1e-300, -50, 5e3, 0};
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

size_t pointsOf(const QnStrokeListRef& strokes) {
  size_t points = 0;
  for (const auto& stroke : strokes ? *strokes : QnStrokeList{}) points += stroke ? stroke->size() : 0;
  return points;
}

// The same strokes, every bit of every point.
bool sameStrokes(const QnStrokeListRef& a, const QnStrokeListRef& b) {
  size_t n = a ? a->size() : 0;
  if (n != (b ? b->size() : 0)) return false;
  for (size_t s = 0; s < n; ++s) {
    size_t m = (*a)[s] ? (*a)[s]->size() : 0;
    if (m != ((*b)[s] ? (*b)[s]->size() : 0)) return false;
    if (m && std::memcmp((*a)[s]->data(), (*b)[s]->data(), m * sizeof(QnSignaturePoint))) return false;
  }
  return true;
}

// printf writes a number that is not finite as "nan" or "inf" (signed or not): such a word that does
// not continue another ("dominant-baseline") is one. The texts drawn (dates, hashes of letters and
// digits) never hold either.
bool onlyFiniteNumbers(const std::string& svg) {
  for (const char* word : {"nan", "inf"})
    for (size_t at = svg.find(word); at != std::string::npos; at = svg.find(word, at + 1))
      if (at == 0 || !std::isalpha(static_cast<unsigned char>(svg[at - 1]))) return false;
  return true;
}

uint32_t bigEndian(const uint8_t* p) { return uint32_t(p[0]) << 24 | p[1] << 16 | p[2] << 8 | p[3]; }

// What a decoder checks, without the pixels' unfiltering (decoding every record took a fifth of the
// runs): the signature, every chunk's length and CRC, an 8-bit RGBA header first and the end last, and
// image data that inflates (its Adler-32 included) to exactly one filter byte of 0 to 4 and a row of
// pixels per row.
bool pngIsSound(const std::vector<uint8_t>& png) {
  static const uint8_t kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  if (png.size() < 8 || std::memcmp(png.data(), kSignature, 8)) return false;
  uint32_t width = 0, height = 0;
  z_stream z{};
  if (inflateInit(&z) != Z_OK) return false;
  std::vector<uint8_t> row;
  size_t filled = 0, rows = 0;
  bool sound = true, ended = false, streamEnded = false;
  for (size_t at = 8; sound && !ended;) {
    if (png.size() - at < 12) { sound = false; break; }
    uint32_t length = bigEndian(&png[at]);
    if (length > png.size() - at - 12) { sound = false; break; }
    const uint8_t* type = &png[at + 4];
    const uint8_t* data = type + 4;
    sound = uint32_t(crc32(0, type, length + 4)) == bigEndian(data + length);
    bool first = at == 8, header = !std::memcmp(type, "IHDR", 4);
    if (first != header) sound = false;
    if (sound && header) {
      width = bigEndian(data), height = bigEndian(data + 4);
      sound = length == 13 && width && height && !std::memcmp(data + 8, "\x08\x06\x00\x00\x00", 5);
      row.resize(1 + size_t(width) * 4);
    } else if (sound && !std::memcmp(type, "IDAT", 4)) {
      z.next_in = const_cast<uint8_t*>(data), z.avail_in = length;
      while (sound && z.avail_in && !streamEnded) {
        z.next_out = row.data() + filled, z.avail_out = uInt(row.size() - filled);
        int status = inflate(&z, Z_NO_FLUSH);
        filled = row.size() - z.avail_out;
        if (filled == row.size()) {
          sound = row[0] <= 4 && ++rows <= height;
          filled = 0;
        }
        streamEnded = status == Z_STREAM_END;
        if (status != Z_OK && !streamEnded) sound = false;
      }
      if (z.avail_in) sound = false;  // data past the stream's end
    } else if (sound && !std::memcmp(type, "IEND", 4)) {
      ended = true;
      sound = at + 12 == png.size();
    }
    at += 12 + length;
  }
  inflateEnd(&z);
  return sound && ended && streamEnded && filled == 0 && rows == height;
}

void checkRecord(const QnSignature& record) {
  if (record.imageData() && !pngIsSound(*record.imageData())) violated("the PNG is not sound");
  if (record.pdfData()) {
    auto pdf = QnPDFDocument::createWithData(*record.pdfData());
    if (!pdf || pdf->numberOfPages() != 1) violated("the PDF is not a one-page document");
  }
  if (const auto& svg = record.svgString()) {
    if (!wellFormed(*svg)) violated("the SVG is not well-formed");
    if (!onlyFiniteNumbers(*svg)) violated("the SVG holds a number that is not finite");
  }
  if (!record.xmlString() || !wellFormed(*record.xmlString())) violated("the XML is missing or not well-formed");
  if (occurrences(*record.xmlString(), "<sig:SamplePoint>") != pointsOf(record.rawPoints()))
    violated("the XML has not one sample per point");
}

// One run loop serves every run: starting its thread each time would cost more than most runs.
const std::shared_ptr<HeadlessRunLoop>& loop() {
  static const auto kLoop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual, 1);
  return kLoop;
}

void applySetting(QnScrivlet& f, Reader& in, bool trace) {
  uint8_t which = in.byte() % 14;
  double value = in.number();
  bool flag = value != 0;
  if (trace) std::fprintf(stderr, "  setting %d: %g\n", which, value);
  switch (which) {
    case 0: f.setExportScale(float(value / 128)); break;  // mostly 0 to 2: big records are slow, not new
    case 1: f.setStrokeWidth(float(value / 16)); break;  // mostly 0 to 16: wide pens are slow, not new
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

// The touches of a run on one view, and what they do to it; shared by both levels.
struct Fingers {
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 256, 192));
  std::shared_ptr<HeadlessTouch> slots[4];
  double time = 1;

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
  // Operations 0 to 5: touches land, move, end, are cancelled or lost, and the view is resized. True
  // when the operation may take points away.
  bool apply(uint8_t op, uint8_t arg, Reader& in) {
    switch (op) {
      case 0: {  // touches land: 1 to 4 of them, replacing (and so losing) what the slots held
        QnTouchSet set;
        for (int i = 0, n = 1 + (arg & 3); i < n; ++i) {
          int slot = ((arg >> 2) + i) & 3;
          time += in.byte() / 1000.0;
          auto touch = std::make_shared<HeadlessTouch>(QnPoint{in.number(), in.number()}, time,
                                                       (arg & 0x40) ? kQnTouchTypeStylus : kQnTouchTypeDirect);
          if (arg & 0x80) touch->setForce(in.number(), in.number());
          if (arg & 0x40) touch->setAzimuthAngle(in.number()), touch->setAltitudeAngle(in.number());
          slots[slot] = touch;
          set.push_back(touch);
        }
        view->beginTouches(set);
        return false;
      }
      case 1: {  // the selected touches move; time may go back
        QnTouchSet set = selected(arg);
        for (auto& touch : set) {
          time += int8_t(in.byte()) / 1000.0;
          QnPoint to{in.number(), in.number()};
          auto precise = (arg & 0x10) ? std::optional(QnPoint{in.number(), in.number()}) : std::nullopt;
          static_cast<HeadlessTouch&>(*touch).moveTo(to, time, precise);
        }
        view->moveTouches(set);
        return false;
      }
      case 2: view->endTouches(selected(arg)), clear(arg); return false;
      case 3: {  // cancelled, possibly from a new position
        QnTouchSet set = selected(arg);
        if (arg & 0x10)
          for (auto& touch : set) static_cast<HeadlessTouch&>(*touch).moveTo({in.number(), in.number()}, time);
        view->cancelTouches(set), clear(arg);
        return true;
      }
      case 4: clear(arg); return false;  // touches lost without an end
      default: view->setFrame({{in.number(), in.number()}, {in.number(), in.number()}}); return false;
    }
  }
};

size_t pointsOnCanvas(const QnScrivletController& controller) {
  for (const auto& stroke : *controller.drawingController()->drawingArray())
    for (const QnSignaturePoint& p : *stroke)
      if (!std::isfinite(p.location.x) || !std::isfinite(p.location.y)) violated("a stored position is not finite");
  return pointsOf(controller.drawingController()->drawingArray());
}

// The engine: the facade, its controller and a delegate.
void runEngine(Reader& in, bool trace) {
  Fingers fingers;
  auto delegate = std::make_shared<QnScrivletControllerDelegate>();
  delegate->scrivletDidCompleteWithSignature = [](auto, auto record) {
    if (record) checkRecord(*record);
  };
  auto facade = QnScrivlet::scrivletWithViewDelegate(fingers.view, delegate);
  for (int step = 0; !in.done(); ++step) {
    currentStep = step;
    size_t before = pointsOnCanvas(*facade->scrivletController());
    bool mayRemove = fingers.view->touchesDown().size() >= 3;  // three fingers cancel and swipe
    uint8_t op = in.byte() % 13;
    uint8_t arg = in.byte();
    if (trace) std::fprintf(stderr, "step %d: operation %d (%d), %zu points\n", step, op, arg, before);
    if (op <= 5) mayRemove |= fingers.apply(op, arg, in);
    switch (op) {
      case 6: applySetting(*facade, in, trace); break;
      case 7: facade->scrivletController()->undo(), mayRemove = true; break;
      case 8: facade->scrivletController()->redo(), mayRemove = true; break;  // it cancels an open stroke
      case 9: facade->reset(), mayRemove = true; break;
      case 10: facade->done(); break;
      case 11: loop()->advance(arg / 50.0); break;
      case 12:  // possibly mid-preparation
        facade.reset(), facade = QnScrivlet::scrivletWithViewDelegate(fingers.view, delegate), mayRemove = true;
        break;
    }
    mayRemove = mayRemove || fingers.view->touchesDown().size() >= 3;
    if (!mayRemove && pointsOnCanvas(*facade->scrivletController()) < before) violated("captured points were lost");
  }
  facade.reset();
}

// The host API: a signing session, whose every done() is answered once.
struct HostRun {
  Fingers fingers;
  std::unique_ptr<SignatureSession> session;
  // For each done() not yet answered: the strokes its record must hold (none for an empty canvas).
  std::deque<std::optional<QnStrokeListRef>> owed;

  void open() {
    session = std::make_unique<SignatureSession>(fingers.view);
    owed.clear();  // a session let go owes nothing
    session->setOnSignatureReady([this](std::shared_ptr<QnSignature> record) {
      if (owed.empty()) violated("an answer no done() asked for");
      if (!owed.front()) violated("a record where the canvas was empty");
      if (!record || !sameStrokes(record->rawPoints(), *owed.front()))
        violated("a record that is not of the canvas at its done()");
      owed.pop_front();
      checkRecord(*record);
    });
    session->setOnSignedNothing([this] {
      if (owed.empty()) violated("an answer no done() asked for");
      if (owed.front()) violated("no record where the canvas had points");
      owed.pop_front();
    });
  }
  void done() {
    auto& controller = *session->scrivlet().scrivletController();
    QnStrokeListRef canvas = session->strokes();
    if (controller.clipSignatureToBounds())
      canvas = QnScrivletController::copyOfStrokesClippedToBounds(canvas, fingers.view->bounds());
    owed.push_back(session->isEmpty() ? std::nullopt : std::optional(canvas));
    session->done();
  }
  void load(Reader& in) {
    std::string json = strokesToJson(session->strokes());
    if (in.byte() & 1) {  // a document cut short or changed: nothing may change
      json.resize(in.byte() * json.size() / 256);
      QnStrokeListRef before = session->strokes();
      if (session->loadStrokes(json) && !sameStrokes(session->strokes(), before)) violated("a failed load changed the canvas");
    } else if (session->loadStrokes(json)) {
      violated("the canvas's own strokes did not load");
    }
  }
};

void runHost(Reader& in, bool trace) {
  HostRun run;
  run.open();
  for (int step = 0; !in.done(); ++step) {
    currentStep = step;
    auto controller = run.session->scrivlet().scrivletController();
    size_t before = pointsOnCanvas(*controller);
    bool mayRemove = run.fingers.view->touchesDown().size() >= 3;
    uint8_t op = in.byte() % 15;
    uint8_t arg = in.byte();
    if (trace) std::fprintf(stderr, "step %d: host operation %d (%d), %zu points\n", step, op, arg, before);
    if (op <= 5) mayRemove |= run.fingers.apply(op, arg, in);
    switch (op) {
      case 6: applySetting(run.session->scrivlet(), in, trace); break;
      case 7: run.session->undo(), mayRemove = true; break;
      case 8: run.session->redo(), mayRemove = true; break;
      case 9: run.session->clear(), mayRemove = true; break;
      case 10: run.done(); break;
      case 11: loop()->advance(arg / 50.0); break;
      case 12: run.session.reset(), run.open(), mayRemove = true; break;  // possibly mid-preparation
      case 13: run.load(in), mayRemove = true; break;
      case 14: run.session->setRecordBackground(arg & 1 ? std::optional(QnColor(arg / 255.0, 1)) : std::nullopt); break;
    }
    mayRemove = mayRemove || run.fingers.view->touchesDown().size() >= 3;
    if (!mayRemove && pointsOnCanvas(*run.session->scrivlet().scrivletController()) < before)
      violated("captured points were lost");
  }
  // Every preparation under way finishes: then every done() has had its answer.
  loop()->runUntilIdle();
  if (!run.owed.empty()) violated("a done() was never answered");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool trace = std::getenv("SESSION_FUZZER_TRACE") != nullptr;
  if (size == 0) return 0;
  QnDevice::resetToDefaults();
  QnScheduler::setCurrent(loop());
  Reader in(data + 1, size - 1);
  if (data[0] & 1)
    runHost(in, trace);
  else
    runEngine(in, trace);
  // Preparations under way finish, and the timers of the facades and sessions gone fire as nothing,
  // before the next run: the loop carries nothing over.
  loop()->runUntilIdle();
  loop()->advance(1000);
  loop()->runUntilIdle();
  return 0;
}
