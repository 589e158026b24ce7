// The library's version symbols.
#pragma once

namespace scrivlet {

// "@(#)PROGRAM:QnScrivlet  PROJECT:QnScrivlet-1" and a newline.
extern const char QnScrivletVersionString[];
extern const double QnScrivletVersionNumber;

}  // namespace scrivlet
