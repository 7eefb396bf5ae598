// Paths followed through no symbolic link that another user owns: the rule that the kernel
// keeps in world-writable sticky directories (fs.protected_symlinks), kept here for every
// link on the way, wherever it stands and whatever the system's setting. Links of this user
// and of root are followed.
#ifndef OVO_SRC_PLATFORM_POSIX_OWN_LINKS_H
#define OVO_SRC_PLATFORM_POSIX_OWN_LINKS_H

#include <string>
#include <sys/types.h>

namespace ovo {
namespace posix {

// Opens the path as open() does (O_CLOEXEC added), or gives -1 with errno set: EACCES when a
// link on the way, or the path itself, is another user's.
int openThroughOwnLinks(const std::string& path, int flags, mode_t mode = 0);

} // namespace posix
} // namespace ovo

#endif
