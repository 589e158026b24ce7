// The capture view of a program without a screen: the plain view model, with a snapshot of what it shows.
#pragma once

#include <scrivlet/view.h>

#include "platform/image.h"

#include <memory>

namespace scrivlet {

class HeadlessView : public QnView {
 public:
  static std::shared_ptr<HeadlessView> create(QnRect frame) {
    return std::make_shared<HeadlessView>(frame);
  }
  explicit HeadlessView(QnRect frame) : QnView(frame) {}

  // What the view and its subviews would show on a screen of the given scale.
  QnImage snapshot(double scale = 1.0);
};

}  // namespace scrivlet
