// Symbolic links planted in directories of every kind, the rows of the tests of the link rule (POSIX, as root):
// another user's link in a directory that others may write is never followed, also at the end of a chain; the
// follower's own link and the directory owner's are, and so is anybody's where only the owner may write.
#ifndef OVO_TESTS_SUPPORT_PLANTED_LINKS_H
#define OVO_TESTS_SUPPORT_PLANTED_LINKS_H

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace ovo_test {

struct PlantedLink {
    const char* name;
    mode_t directoryMode;
    uid_t directoryOwner, linkOwner;
    bool chain; // the follower's link leads to the link of `linkOwner` beside it
    bool followed;
};

const PlantedLink plantedLinks[] = {{"sticky", 01777, 0, 65534, false, false},
                                    {"group", 0770, 0, 65534, false, false},
                                    {"chain", 01777, 0, 65534, true, false},
                                    {"own link", 01777, 0, 0, false, true},
                                    {"owner's link", 01777, 65534, 65534, false, true},
                                    {"private", 0755, 0, 65534, false, true}};

// Gives the directory the row's mode and owner, and `name` in it a link to `target` as the row says; false on failure.
inline bool plantLink(const PlantedLink& row, const std::filesystem::path& directory, const std::string& name,
                      const std::filesystem::path& target)
{
    const std::filesystem::path link = directory / name, hop = directory / (name + ".hop");
    std::error_code ignored;
    std::filesystem::remove(link, ignored);
    std::filesystem::remove(hop, ignored);
    std::filesystem::create_symlink(row.chain ? hop : target, link);
    if (row.chain)
        std::filesystem::create_symlink(target, hop);
    return ::chmod(directory.c_str(), row.directoryMode) == 0 &&
           ::chown(directory.c_str(), row.directoryOwner, 0) == 0 &&
           ::lchown((row.chain ? hop : link).c_str(), row.linkOwner, 0) == 0;
}

} // namespace ovo_test

#endif
