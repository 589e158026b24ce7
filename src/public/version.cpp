// The version symbols.
#include <scrivlet/version.h>

namespace scrivlet {

const char QnScrivletVersionString[] = "@(#)PROGRAM:QnScrivlet  PROJECT:QnScrivlet-1\n";
const double QnScrivletVersionNumber = 1.0;

}  // namespace scrivlet
