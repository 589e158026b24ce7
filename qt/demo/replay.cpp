// Replaying the built-in signature.
#include "replay.h"

#include "built_in_signature.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QWidget>

#include <algorithm>

namespace scrivlet {

namespace {

void send(QWidget* widget, QEvent::Type type, QPointF position, double seconds, Qt::MouseButtons held) {
  Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
  QMouseEvent event(type, position, widget->mapToGlobal(position), button, held, Qt::NoModifier);
  event.setTimestamp(static_cast<quint64>(seconds * 1000.0));
  QCoreApplication::sendEvent(widget, &event);
}

}  // namespace

int replayBuiltInSignature(QWidget* widget) {
  // The signature was recorded on a 540 x 300 view; fit it to the widget, centred.
  double scale = std::min(widget->width() / 540.0, widget->height() / 300.0);
  QPointF offset((widget->width() - 540.0 * scale) / 2, (widget->height() - 300.0 * scale) / 2);
  double start = 1000;  // seconds on the event clock
  int points = 0;
  for (const auto& stroke : demo::builtInSignature()) {
    for (size_t i = 0; i < stroke.size(); ++i) {
      QPointF position = offset + QPointF(stroke[i].x, stroke[i].y) * scale;
      double time = start + stroke[i].t;
      if (i == 0)
        send(widget, QEvent::MouseButtonPress, position, time, Qt::LeftButton);
      else if (i + 1 == stroke.size())
        send(widget, QEvent::MouseButtonRelease, position, time, Qt::NoButton);
      else
        send(widget, QEvent::MouseMove, position, time, Qt::LeftButton);
      ++points;
    }
  }
  return points;
}

}  // namespace scrivlet
