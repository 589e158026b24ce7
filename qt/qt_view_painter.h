// Drawing a view and its subviews into a QImage through cairo, at a device pixel ratio.
#pragma once

#include <QImage>
#include <QSize>

namespace scrivlet {

class QnView;

// What the view shows at the given logical size, sharp at the ratio; transparent where it draws nothing.
QImage renderViewTree(QnView& view, QSize size, qreal ratio);

}  // namespace scrivlet
