// The record of a canvas as it is at one moment: a copy of its strokes and every setting that shapes
// the outputs, made into a record by the pure record renderer.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/signature.h>

#include "export/export_settings.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace scrivlet {

class QnContext;
class QnScrivletController;

// Every setting the record depends on: the exports' settings as the pure renderer takes them (their
// time is the record's, set when it is made), the date a record made now would print, and the
// record's background.
struct RecordSettings {
  ExportSettings exports;
  std::string dateText;  // when the record prints a date
  std::optional<QnColor> background;  // painted under the PNG's ink; none keeps it transparent

  // The same outputs but for the time they are made at.
  bool operator==(const RecordSettings& other) const;
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
