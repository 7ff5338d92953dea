#include "core/files/uniquefd.h"

#include <unistd.h>
#include <cerrno>

namespace sylvora {

UniqueFd::~UniqueFd() {
    close();
}

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
        close();
        fd_ = other.release();
    }
    return *this;
}

int UniqueFd::close() {
    if (fd_ < 0)
        return 0;
    // Linux releases the descriptor even when close fails, so it is never retried.
    const int result = ::close(release());
    return result == 0 ? 0 : errno;
}

}  // namespace sylvora
