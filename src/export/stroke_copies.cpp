// Copies of the strokes for export: clipped to the view, shifted, and their bounding box.
#include "export/stroke_copies.h"

#include <algorithm>

namespace scrivlet {

QnStrokeListRef clippedCopyOfStrokes(const QnStrokeListRef& strokes, QnRect bounds) {
  auto copy = std::make_shared<QnStrokeList>();
  if (!strokes) return copy;
  copy->reserve(strokes->size());
  for (const QnStrokeRef& stroke : *strokes) {
    auto kept = std::make_shared<QnStroke>();
    if (stroke)
      for (const QnSignaturePoint& point : *stroke)
        if (rectContainsPoint(bounds, point.location)) kept->push_back(point.copyWithZone());
    copy->push_back(std::move(kept));
  }
  return copy;
}

QnRect boundingRectOfStrokes(const QnStrokeListRef& strokes) {
  const QnSignaturePoint* first = nullptr;
  if (strokes)
    for (const QnStrokeRef& stroke : *strokes)
      if (stroke && !stroke->empty()) {
        first = &stroke->front();
        break;
      }
  // Clipping can empty the first stroke, or all of them; nothing is read past a stroke's end.
  if (!first) return QnRectZero;
  double minX = first->location.x, maxX = minX, minY = first->location.y, maxY = minY;
  for (const QnStrokeRef& stroke : *strokes) {
    if (!stroke) continue;
    for (const QnSignaturePoint& point : *stroke) {
      minX = std::min(minX, point.location.x);
      maxX = std::max(maxX, point.location.x);
      minY = std::min(minY, point.location.y);
      maxY = std::max(maxY, point.location.y);
    }
  }
  return makeRect(minX, minY, maxX - minX, maxY - minY);
}

}  // namespace scrivlet
