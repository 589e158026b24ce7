// Drawing a view and its subviews into a QImage through cairo, at a device pixel ratio.
#pragma once

#include <scrivlet/qt_export.h>

#include <QImage>
#include <QSize>

namespace scrivlet {

class QnView;

// What the view shows at the given logical size, sharp at the ratio; transparent where it draws nothing.
// Exported for the Qt Quick item; not a public API.
SCRIVLET_QT_EXPORT QImage renderViewTree(QnView& view, QSize size, qreal ratio);

}  // namespace scrivlet
