// Reading back the ISO/IEC 19794-7 time series this library writes, as strokes that draw as signed.
#pragma once

#include <scrivlet/error.h>
#include <scrivlet/export.h>
#include <scrivlet/engine/signature_point.h>

#include <memory>
#include <string_view>

namespace scrivlet {

// The pen the samples are drawn again with: live capture's unless the signing pad had another.
class SCRIVLET_EXPORT TimeSeriesPen {
 public:
  float strokeWidthMax() const;  // the facade's strokeWidth, the pad's penWidth; 4
  float velocityReduction() const;  // 0.85
  bool calligraphic() const;        // false
  void setStrokeWidthMax(float strokeWidthMax);
  void setVelocityReduction(float velocityReduction);
  void setCalligraphic(bool calligraphic);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// The samples of the document's sample point list, to the precision its channels keep: positions to
// a tenth of a point (relative to the signature's top-left corner), time steps to the millisecond,
// force, and the pen's elevation to the degree. The document keeps the azimuth only modulo 2/pi
// radians: it comes back in [-pi/2, 2/pi - pi/2).
//
// The samples run through the stroke model as the touches did while signing: each point gets its
// velocity and acceleration from the positions and times (in the signing device's metres per point,
// which the document gives), its diameter from the pen, and its id, from 100. A signature signed with
// the given pen draws again as it was signed, to the precision of the channels (the force's 1/1961
// moves a diameter by at most 0.0008 points).
//
// The document does not mark strokes: a sample starts a new stroke where the pen was at rest (no
// velocity, no acceleration, as every stroke's first point is), after a pause of at least 30 ms, and
// the stroke before has its two points at least.
//
// A document this reader cannot read in full gives the error: NotXml; NotThisFormat (another root);
// Malformed (more than one representation, anything but sample points in the sample list, a sample
// without its channels or with others, numbers out of their range, a pen above the surface: Z other
// than 0); TooLarge (more than a million samples).
SCRIVLET_EXPORT Result<QnStrokeListRef> strokesFromTimeSeriesXml(std::string_view xml, const TimeSeriesPen& pen = {});

}  // namespace scrivlet
