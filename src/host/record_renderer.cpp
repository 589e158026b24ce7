// Saved strokes drawn into a record by the pure record renderer, away from any screen.
#include <scrivlet/record_renderer.h>

#include <scrivlet/engine/device.h>

#include "capture/dpi_calculator.h"
#include "host/record_preparation.h"
#include "host/shared_value.h"
#include "platform/clock.h"
#include "platform/log.h"

#include <cmath>

namespace scrivlet {

struct RecordRenderSettings::Data {
  float exportScale = 1;
  std::optional<QnColor> strokeColor;
  bool showDate = false;
  bool dateIncludesTime = false;
  bool showHash = false;
  std::optional<std::string> hash;
  std::optional<double> timestamp;
  std::optional<QnColor> background;
  std::optional<CaptureDevice> device;
};

SCRIVLET_SHARED_SCALAR(RecordRenderSettings, float, exportScale, setExportScale)
SCRIVLET_SHARED_FIELD(RecordRenderSettings, std::optional<QnColor>, strokeColor, setStrokeColor)
SCRIVLET_SHARED_SCALAR(RecordRenderSettings, bool, showDate, setShowDate)
SCRIVLET_SHARED_SCALAR(RecordRenderSettings, bool, dateIncludesTime, setDateIncludesTime)
SCRIVLET_SHARED_SCALAR(RecordRenderSettings, bool, showHash, setShowHash)
SCRIVLET_SHARED_FIELD(RecordRenderSettings, std::optional<std::string>, hash, setHash)
SCRIVLET_SHARED_FIELD(RecordRenderSettings, std::optional<double>, timestamp, setTimestamp)
SCRIVLET_SHARED_FIELD(RecordRenderSettings, std::optional<QnColor>, background, setBackground)
SCRIVLET_SHARED_FIELD(RecordRenderSettings, std::optional<CaptureDevice>, device, setDevice)

std::shared_ptr<QnSignature> renderRecordOfStrokes(const QnStrokeListRef& strokes,
                                                   const RecordRenderSettings& settings) {
  // Points whose position is not finite are never drawn, as a signing session never stores them.
  RecordRequest request;
  request.strokes = std::make_shared<QnStrokeList>();
  bool anyPoint = false;
  for (const QnStrokeRef& stroke : strokes ? *strokes : QnStrokeList{}) {
    request.strokes->push_back(std::make_shared<QnStroke>());
    for (const QnSignaturePoint& p : stroke ? *stroke : QnStroke{})
      if (std::isfinite(p.location.x) && std::isfinite(p.location.y)) request.strokes->back()->push_back(p), anyPoint = true;
  }
  if (!anyPoint) {
    logLine("Scrivlet: no record drawn: there are no points to draw");
    return nullptr;
  }
  ExportSettings& s = request.settings.exports;
  s.exportScale = settings.exportScale();
  if (settings.strokeColor()) s.ink.color = *settings.strokeColor();
  s.showDate = settings.showDate();
  s.dateIncludesTime = settings.dateIncludesTime();
  s.showHash = settings.showHash();
  s.customHash = settings.hash();
  const std::optional<CaptureDevice>& device = settings.device();
  if (device && std::isfinite(device->screenScale()) && device->screenScale() > 0) {
    int dpi = device->pixelsPerInch() > 0 ? device->pixelsPerInch() : QnDPICalculator::deviceDpiOf(device->model());
    s.screenScale = device->screenScale();
    s.metersPerPoint = QnDPICalculator::metersPerPointAt(dpi, device->screenScale());
  } else {
    s.screenScale = QnDevice::screenScale();
    s.metersPerPoint = QnDPICalculator::metersPerPoint();
  }
  request.settings.background = settings.background();
  // The date line and the record's time are those of the signing when one is given.
  std::optional<double> time;
  if (settings.timestamp() && std::isfinite(*settings.timestamp())) time = *settings.timestamp() + kReferenceDateOffset;
  return prepareRecordNow(request, time);
}

}  // namespace scrivlet
