// The ink view's segment outlines and the vector geometry they and the corner test use.
#include "render/drawing_view.h"

#include "platform/cg_context.h"
#include "platform/narrowing.h"
#include "render/combo_context.h"

#include <cmath>

namespace scrivlet {

namespace {

constexpr double kHalfPi = 1.5707963267948966;
constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr float kHalfPiFloat = 1.5707963705062866f;
// An exact zero distance becomes this, so that dividing by a distance stays finite.
constexpr double kMinimumDistance = 0.0001;

// A sine or cosine narrowed from double: the correctly rounded single-precision value, where cosf and
// sinf may differ in the last bit.
float narrowedCos(float angle) { return narrowToFloat(std::cos(static_cast<double>(angle))); }
float narrowedSin(float angle) { return narrowToFloat(std::sin(static_cast<double>(angle))); }

// Both angles take x as the first argument of atan2: the angle between the vectors is unchanged
// once wrapped, while the collinearity test sees the swapped angles.
// The components are narrowed to float; atan2 itself runs in double and its result is narrowed.
float swappedAngle(QnPoint v) {
  double x = narrowToFloat(v.x), y = narrowToFloat(v.y);
  return narrowToFloat(std::atan2(x, y));
}

}  // namespace

double QnDrawingView::pointIsAboveThreshold(QnPoint vector, float threshold) {
  return std::sqrt(vector.x * vector.x + vector.y * vector.y) > threshold ? 1.0 : 0.0;
}

double QnDrawingView::squaredDistanceBetweenAnd(QnPoint a, QnPoint b) {
  double dx = b.x - a.x, dy = b.y - a.y;
  double squared = dx * dx + dy * dy;
  return squared == 0 ? kMinimumDistance : squared;
}

double QnDrawingView::distanceBetweenAnd(QnPoint a, QnPoint b) {
  double dx = b.x - a.x, dy = b.y - a.y;
  double distance = std::sqrt(dx * dx + dy * dy);
  return distance == 0 ? kMinimumDistance : distance;
}

float QnDrawingView::angleBetweenVector1Vector2(QnPoint v1, QnPoint v2) {
  float d = std::fabs(swappedAngle(v2) - swappedAngle(v1));
  if (static_cast<double>(d) > kPi) return narrowToFloat(kTwoPi - d);
  return d;
}

bool QnDrawingView::angleBetweenVector1Vector2IsGreaterThan(QnPoint v1, QnPoint v2,
                                                            float threshold) {
  return angleBetweenVector1Vector2(v1, v2) > threshold;
}

bool QnDrawingView::vectorIsOppositeVector(QnPoint v1, QnPoint v2) {
  return angleBetweenVector1Vector2IsGreaterThan(v1, v2, kHalfPiFloat);
}

bool QnDrawingView::vectorIsCollinearToVectorWithinRange(QnPoint v1, QnPoint v2, float range) {
  return std::fabs(swappedAngle(v2) - swappedAngle(v1)) < range;
}

bool QnDrawingView::vectorIsCollinearToVector(QnPoint v1, QnPoint v2) {
  return vectorIsCollinearToVectorWithinRange(v1, v2, kHalfPiFloat);
}

void QnDrawingView::
    drawSegmentInContextWithOriginDestinationDiameterStartingControlPointEndingControlPoint(
        QnComboContext* context, QnPoint origin, QnPoint destination, float diameter,
        QnPoint startingControlPoint, QnPoint endingControlPoint) {
  // The round ends come from the cap and join set when the stroke began.
  context->beginPath();
  context->moveToPoint(origin);
  context->addCurveToPointCp1Cp2Point(startingControlPoint, endingControlPoint, destination);
  context->setLineWidth(diameter);
  context->strokePath();
}

void QnDrawingView::
    drawSegmentInContextWithOriginDestinationStartingDiameterEndingDiameterStartingControlPointEndingControlPoint(
        QnComboContext* context, QnPoint origin, QnPoint destination, float startingDiameter,
        float endingDiameter, QnPoint startingControlPoint, QnPoint endingControlPoint) {
  // The arms of each end, u2 pointing from the destination back towards its control point.
  float u1x = narrowToFloat(startingControlPoint.x - origin.x);
  float u1y = narrowToFloat(startingControlPoint.y - origin.y);
  float u2x = narrowToFloat(endingControlPoint.x - destination.x);
  float u2y = narrowToFloat(endingControlPoint.y - destination.y);

  float a = narrowToFloat(std::atan2(double(u1y), double(u1x)) - kHalfPi);
  float aOpposite = narrowToFloat(a + kPi);
  // The radii, the arms' scale factors and every product are formed in double; only the arms, the
  // angles, their sines and cosines, and the side lengths are single precision.
  double r0 = startingDiameter * 0.5;
  QnPoint s1{origin.x + r0 * narrowedCos(a), origin.y + r0 * narrowedSin(a)};
  QnPoint s2{origin.x + r0 * narrowedCos(aOpposite), origin.y + r0 * narrowedSin(aOpposite)};

  float b = narrowToFloat(std::atan2(double(u2y), double(u2x)) + kHalfPi);
  float bOpposite = narrowToFloat(b + kPi);
  double r1 = endingDiameter * 0.5;
  QnPoint e1{destination.x + r1 * narrowedCos(b), destination.y + r1 * narrowedSin(b)};
  QnPoint e2{destination.x + r1 * narrowedCos(bOpposite), destination.y + r1 * narrowedSin(bOpposite)};

  // Each side's arms are scaled by its length against the mean, so the outer edge of a bend gets
  // the longer arms.
  float l1 = narrowToFloat(distanceBetweenAnd(s1, e1));
  float l2 = narrowToFloat(distanceBetweenAnd(s2, e2));
  double m = (static_cast<double>(l1) + l2) * 0.5;
  double k1 = l1 / m;
  double k2 = l2 / m;

  context->beginPath();
  context->moveToPoint(s1);
  context->addCurveToPointCp1Cp2Point({s1.x + k1 * u1x, s1.y + k1 * u1y},
                                      {e1.x + k1 * u2x, e1.y + k1 * u2y}, e1);
  context->addArcRadiusStartAngleEndAngleClockwise(destination, r1, b, bOpposite, 0);
  context->addCurveToPointCp1Cp2Point({e2.x + k2 * u2x, e2.y + k2 * u2y},
                                      {s2.x + k2 * u1x, s2.y + k2 * u1y}, s2);
  context->addArcRadiusStartAngleEndAngleClockwise(origin, r0, aOpposite, a, 0);
  if (showDebug_) {
    context->setStrokeColorWithColor(QnColor(0, 1, 0, 1));
    context->setLineWidth(1.0);
    context->drawPath(kQnPathStroke);
  } else {
    context->closePath();
    context->fillPath();
  }
}

}  // namespace scrivlet
