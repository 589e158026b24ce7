// The tool's commands; each takes the whole command line and answers the exit status.
#pragma once

namespace scrivlet::tool {

int renderCommand(int argc, char** argv);
int sealCommand(int argc, char** argv);
int verifyCommand(int argc, char** argv);
int openCommand(int argc, char** argv);
int stampCommand(int argc, char** argv);

}  // namespace scrivlet::tool
