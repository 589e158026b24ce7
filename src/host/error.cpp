// The host and evidence APIs' error.
#include <scrivlet/error.h>

#include "host/shared_value.h"

namespace scrivlet {

struct Error::Data {
  ErrorCode code = ErrorCode::None;
  std::string message;
};

Error::Error() = default;
Error::Error(ErrorCode code, std::string message) {
  setCode(code);
  setMessage(std::move(message));
}
SCRIVLET_SHARED_SCALAR(Error, ErrorCode, code, setCode)
SCRIVLET_SHARED_FIELD(Error, std::string, message, setMessage)

}  // namespace scrivlet
