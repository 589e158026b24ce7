// Advance preparation of the signature record after each stroke.
#include <scrivlet/scrivlet_controller.h>

namespace scrivlet {

// The record is prepared by the completion logic; until it exists a stroke's end arms nothing.
void QnScrivletController::cacheSignatureAfterDelay(double) {}

void QnScrivletController::invalidateCacheTimer() {}

}  // namespace scrivlet
