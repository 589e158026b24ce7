// The library's version symbols.
#pragma once

#include <scrivlet/export.h>

namespace scrivlet {

// "@(#)PROGRAM:QnScrivlet  PROJECT:QnScrivlet-1" and a newline.
extern SCRIVLET_EXPORT const char QnScrivletVersionString[];
extern SCRIVLET_EXPORT const double QnScrivletVersionNumber;

}  // namespace scrivlet
