// The error of a saved document that did not load: the library's one Error (kept for source
// compatibility; new code includes <scrivlet/error.h>).
#pragma once

#include <scrivlet/error.h>

namespace scrivlet {

using LoadError = Error;

}  // namespace scrivlet
