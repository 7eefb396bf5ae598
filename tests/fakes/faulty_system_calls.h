// The POSIX layer's system calls, linked in place of the real ones in its fault tests: each does what the real one
// does until a failure is scripted for it.
#ifndef OVO_TESTS_FAKES_FAULTY_SYSTEM_CALLS_H
#define OVO_TESTS_FAKES_FAULTY_SYSTEM_CALLS_H

namespace ovo_fake {

// The next `times` calls named ("open", "read", "write", "ftruncate", "rename", "fsync",
// "fallocate") fail with errno `error`, instead of what was scripted before; no name: none
// fails. "open" stands for openat too, "read" for readv, "rename" for renameat.
void failCall(const char* call = "", int error = 0, int times = 1);

} // namespace ovo_fake

#endif
