// Replays the built-in signature through a capture widget's input path, as mouse events.
#pragma once

namespace scrivlet {

class QnQtCaptureWidget;

// Sends the built-in signature's strokes to the widget as mouse presses, moves and releases with
// the recorded timestamps, scaled to fit the widget. Returns the number of points sent.
int replayBuiltInSignature(QnQtCaptureWidget* widget);

}  // namespace scrivlet
