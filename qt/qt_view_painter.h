// Drawing a view and its subviews into a QImage through cairo, at a device pixel ratio.
#pragma once

#include <scrivlet/qt_export.h>

#include <QImage>
#include <QRect>

namespace scrivlet {

class QnView;

// What the view shows within `area` (logical coordinates of the view), sharp at the ratio; transparent
// where it draws nothing. The image covers the area alone, so a repaint of a dirty rectangle costs that
// rectangle, not the whole view. Exported for the Qt Quick item; not a public API.
SCRIVLET_QT_EXPORT QImage renderViewTree(QnView& view, QRect area, qreal ratio);

}  // namespace scrivlet
