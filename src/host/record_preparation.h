// The record of a canvas as it is at one moment: a copy of its strokes and every setting that shapes
// the outputs, made into a record by the pure record renderer.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/signature.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace scrivlet {

class QnContext;
class QnScrivletController;

// Every setting the record depends on: those of the ink, of the exports, the view's bounds when the
// record is clipped to them, the screen's scale, and the record's background.
struct RecordSettings {
  QnColor strokeColor;
  float strokeWidthMax = 4;  // the record's margin is one and a half of it
  bool showDate = false, dateIncludesTime = false, showHash = false;
  std::string dateText;  // the date (and time) a record made now would print, when it prints one
  std::optional<std::string> customHash;
  float exportScale = 1;
  float exportDateSize = 20, exportHashSizeWidth = 200, exportHashSizeHeight = 22, exportFontRatio = 0.55f,
        exportHashFontSize = 23, exportHashOpacity = 0.9f;
  bool clipSignatureToBounds = false;
  QnRect clipBounds;  // the view's bounds, when clipping
  bool skipPDF = false;
  double screenScale = 1;
  float metersPerPoint = (1.0f / 401.0f) * 0.0254f;  // of the device: the XML's pen-tip orientation scaling
  std::optional<QnColor> background;  // painted under the PNG's ink; none keeps it transparent

  bool operator==(const RecordSettings&) const = default;
};

struct RecordRequest {
  QnStrokeListRef strokes;  // the request's own copy
  RecordSettings settings;

  // The same strokes, bit for bit, with the same settings: the same record (but for its hash and time).
  bool sameRecordAs(const RecordRequest& other) const;
};

// A copy of the strokes that shares nothing with them: every bit of every point as it is.
QnStrokeListRef exactCopyOfStrokes(const QnStrokeListRef& strokes);

// The canvas of the live controller now, with its settings and the record's background.
RecordRequest requestOfCanvas(const QnScrivletController& live, std::optional<QnColor> background);

// The record, made here and now, of the time given (seconds since the Unix epoch) or now.
std::shared_ptr<QnSignature> prepareRecordNow(const RecordRequest& request,
                                              std::optional<double> unixTime = std::nullopt);
// The record, made on a background thread of the context's scheduler and handed to `ready` on its main
// thread, where the work was started (the same steps as the record's advance preparation). The context
// outlives the work.
void prepareRecordInBackground(QnContext& context, RecordRequest request,
                               std::function<void(std::shared_ptr<QnSignature>)> ready);

// A record of its own: the same outputs, and strokes that share nothing with the original's.
std::shared_ptr<QnSignature> copyOfRecord(const QnSignature& record);

}  // namespace scrivlet
