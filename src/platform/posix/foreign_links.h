// Opening the files of the POSIX layer (files, log files, registry keys and values) so
// that no symbolic link that another user planted leads it elsewhere. The kernel's rule
// for links in sticky world-writable directories (fs.protected_symlinks), kept whatever
// the system's setting and in every directory that others may write (world- or
// group-writable, sticky or not): a link there is followed only when its owner is the
// follower or the directory's owner. The rule holds for the last element of the path and
// of every link followed from it; what another user's link points at is never opened,
// and the open fails with EACCES.
#ifndef OVO_SRC_PLATFORM_POSIX_FOREIGN_LINKS_H
#define OVO_SRC_PLATFORM_POSIX_FOREIGN_LINKS_H

#include <sys/types.h>

namespace ovo {
namespace posix {

// openat() under the rule. `flags` must not ask for O_PATH without O_DIRECTORY (that would
// give the link itself); O_NOFOLLOW is implied.
int openWithoutForeignLinks(int directory, const char* path, int flags, mode_t mode = 0);

} // namespace posix
} // namespace ovo

#endif
