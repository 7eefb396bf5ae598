// ChildProcess and waitForFile stand with the other process helpers.
#include "support/process.h"
