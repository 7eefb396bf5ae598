// ovo: the library's own command-line tool, for engineers who work with card readers,
// serial devices and processes that talk through message channels.
#include "tool.h"

int main(int argc, char** argv) { return ovo_tool::runCommandLine(ovo_tool::commandLineWords(argc, argv)); }
