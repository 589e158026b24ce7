// The device's model from the environment or uname; the other facts are the default context's.
#include <scrivlet/engine/device.h>

#include <sys/utsname.h>

#include <cstdlib>

namespace scrivlet {

std::string QnDevice::modelIdentifier() {
  if (const char* simulated = std::getenv("SIMULATOR_MODEL_IDENTIFIER")) return simulated;
  struct utsname name;
  if (uname(&name) != 0) return {};
  return name.machine;
}

}  // namespace scrivlet
