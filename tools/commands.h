// Subcommands of tavrin-tool.
#pragma once

namespace tavrin::tool {

int perftCommand(int argc, char** argv);
int evalCommand(int argc, char** argv);
int benchCommand(int argc, char** argv);
int matchCommand(int argc, char** argv);
int fuzzCommand(int argc, char** argv);
int datagenCommand(int argc, char** argv);
int tuneCommand(int argc, char** argv);
int clockCommand(int argc, char** argv);

}  // namespace tavrin::tool
