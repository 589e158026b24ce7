// Device facts held in atomics, with the model from the environment or uname.
#include <scrivlet/device.h>

#include <sys/utsname.h>

#include <atomic>
#include <cstdlib>

namespace scrivlet {

namespace {

std::atomic<double> gScreenScale{1.0};
std::atomic<double> gNativeScale{1.0};
std::atomic<int> gIdiom{kQnUserInterfaceIdiomPhone};
std::atomic<bool> gReportsIdiom{true};

}  // namespace

std::string QnDevice::modelIdentifier() {
  if (const char* simulated = std::getenv("SIMULATOR_MODEL_IDENTIFIER")) return simulated;
  struct utsname name;
  if (uname(&name) != 0) return {};
  return name.machine;
}

double QnDevice::screenScale() { return gScreenScale.load(); }
void QnDevice::setScreenScale(double scale) { gScreenScale.store(scale); }
double QnDevice::nativeScale() { return gNativeScale.load(); }
void QnDevice::setNativeScale(double scale) { gNativeScale.store(scale); }
int QnDevice::userInterfaceIdiom() { return gIdiom.load(); }
void QnDevice::setUserInterfaceIdiom(int idiom) { gIdiom.store(idiom); }
bool QnDevice::reportsUserInterfaceIdiom() { return gReportsIdiom.load(); }
void QnDevice::setReportsUserInterfaceIdiom(bool reports) { gReportsIdiom.store(reports); }

void QnDevice::resetToDefaults() {
  setScreenScale(1.0);
  setNativeScale(1.0);
  setUserInterfaceIdiom(kQnUserInterfaceIdiomPhone);
  setReportsUserInterfaceIdiom(true);
}

}  // namespace scrivlet
