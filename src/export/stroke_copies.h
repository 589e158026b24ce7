// Copies of strokes for export, and their bounding box.
#pragma once

#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/signature_point.h>

namespace scrivlet {

// Copies of the points inside the rectangle (left and top edges in, right and bottom out); a stroke
// with none becomes an empty stroke in its place.
QnStrokeListRef clippedCopyOfStrokes(const QnStrokeListRef& strokes, QnRect bounds);
// The smallest rectangle holding every point, from the first point of the first stroke that has one;
// the zero rectangle when no stroke has a point.
QnRect boundingRectOfStrokes(const QnStrokeListRef& strokes);

}  // namespace scrivlet
