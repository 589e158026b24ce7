// Installing the Qt backend.
#include <scrivlet/qt_platform.h>

#include <scrivlet/engine/device.h>

#include "qt_scheduler.h"

#include <QGuiApplication>
#include <QScreen>

namespace scrivlet {

namespace {
constexpr double kPadShortSide = 700;
}

void installQtPlatform(int userInterfaceIdiom) {
  QnScheduler::setCurrent(std::make_shared<QtScheduler>());
  QScreen* screen = QGuiApplication::primaryScreen();
  double ratio = screen ? screen->devicePixelRatio() : 1.0;
  QnDevice::setScreenScale(ratio);
  QnDevice::setNativeScale(ratio);
  if (userInterfaceIdiom < 0) {
    QSize size = screen ? screen->size() : QSize();
    bool pad = std::min(size.width(), size.height()) > kPadShortSide;
    userInterfaceIdiom = pad ? kQnUserInterfaceIdiomPad : kQnUserInterfaceIdiomPhone;
  }
  QnDevice::setUserInterfaceIdiom(userInterfaceIdiom);
}

}  // namespace scrivlet
