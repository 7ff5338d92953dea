#include "util/status.h"

#include <cerrno>

namespace sylvora {

OSStatus statusFromErrno(int error) noexcept {
    switch (error) {
        case 0: return noErr;
        case ENOENT: return fnfErr;
        case EEXIST: return dupFNErr;
        case ENOTDIR: return dirNFErr;
        case ENOSPC: return dskFulErr;
        case EACCES:
        case EPERM: return permErr;
        case EROFS: return wPrErr;
        default: return ioErr;
    }
}

}  // namespace sylvora
