// Reading back the ISO/IEC 19794-7 time series this library writes, as strokes.
#pragma once

#include <scrivlet/export.h>
#include <scrivlet/signature_point.h>

#include <string_view>

namespace scrivlet {

// The samples of the document's sample point list, to the precision its channels keep: positions to
// a tenth of a point (relative to the signature's top-left corner), time steps to the millisecond,
// velocity and acceleration to a hundredth, force, and the pen's elevation to the degree. The document
// keeps the azimuth only modulo 2/pi radians: it comes back in [-pi/2, 2/pi - pi/2). Pen diameters
// are not in the document and come back as 0; ids run from 100.
//
// The document does not mark strokes: a sample starts a new stroke where the pen was at rest (no
// velocity, no acceleration, as every stroke's first point is), after a pause of at least 30 ms, and
// the stroke before has its two points at least.
//
// Anything else (not XML, another root, a sample without its channels, numbers out of their range,
// more than a million samples) gives nothing, with one line on standard error.
SCRIVLET_EXPORT QnStrokeListRef strokesFromTimeSeriesXml(std::string_view xml);

}  // namespace scrivlet
