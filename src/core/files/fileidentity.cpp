#include "core/files/fileidentity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <cerrno>

namespace sylvora {

bool readFileIdentity(int dirFd, const char* name, FileIdentity& out, bool followLinks) {
    // An empty name reads the object `dirFd` itself stands for (an O_PATH descriptor, say).
    const int common = (followLinks ? 0 : AT_SYMLINK_NOFOLLOW) | (name[0] == '\0' ? AT_EMPTY_PATH : 0);
    const int flags = AT_STATX_SYNC_AS_STAT | common;
    struct statx info {};
    if (::statx(dirFd, name, flags, STATX_TYPE | STATX_INO | STATX_BTIME | STATX_MNT_ID, &info) != 0) {
        if (errno != ENOSYS)
            return false;
        struct stat plain {};
        if (::fstatat(dirFd, name, &plain, common) != 0)
            return false;
        out = FileIdentity{plain.st_dev, plain.st_ino, std::nullopt, 0, S_ISDIR(plain.st_mode)};
        return true;
    }
    // Composed the way stat composes st_dev, so an identity never depends on which call read it.
    out.device = makedev(info.stx_dev_major, info.stx_dev_minor);
    out.inode = info.stx_ino;
    out.birthTime.reset();
    if (info.stx_mask & STATX_BTIME)
        out.birthTime = BirthTime{info.stx_btime.tv_sec, info.stx_btime.tv_nsec};
    out.mountId = (info.stx_mask & STATX_MNT_ID) ? info.stx_mnt_id : 0;
    out.isDirectory = S_ISDIR(info.stx_mode);
    return true;
}

}  // namespace sylvora
