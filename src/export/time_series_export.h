// The signature's time series as an ISO/IEC 19794-7 XML document.
#pragma once

#include <scrivlet/engine/signature_point.h>

#include <string>

namespace scrivlet {

struct ExportSettings;
class QnXMLSerializer;

// The document of the strokes (clipped to the view's bounds when the settings clip), captured at the
// settings' time.
std::string timeSeriesXml(const QnStrokeListRef& strokes, const ExportSettings& settings);
// The time in UTC as yyyy-MM-ddTHH:mm:ssZ.
std::string xmlDateText(double unixSeconds);
// Every point of every stroke as one sample, its values multiplied by the prescalers.
void writeSamplePoints(QnXMLSerializer& xml, const QnStrokeListRef& strokes, float locationPrescaler,
                       float timePrescaler, float velocityPrescaler, float accelerationPrescaler,
                       float pressurePrescaler, float azimuthPrescaler, float elevationPrescaler);
// Signed and unsigned 16-bit texts: values above the range are clamped, values below it wrap.
std::string shortCappedText(int value);
std::string uShortCappedText(int value);

}  // namespace scrivlet
