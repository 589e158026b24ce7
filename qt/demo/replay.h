// Replays the built-in signature through a signing surface's input path, as mouse events.
#pragma once

class QWidget;

namespace scrivlet {

// Sends the built-in signature's strokes to the widget as mouse presses, moves and releases with
// the recorded timestamps, scaled to fit the widget. Returns the number of points sent.
int replayBuiltInSignature(QWidget* widget);

}  // namespace scrivlet
