#include "core/files/morefilesx.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>

#include "core/files/nativepath.h"
#include "core/files/uniquefd.h"

namespace sylvora {

namespace {

constexpr std::size_t kPageSize = 4096;
constexpr std::size_t kMinDropPass = 1024 * 1024;

OSStatus lastErrnoStatus() {
    return statusFromErrno(errno);
}

// Reserves `size` bytes so that a full disk shows up before anything is copied, and sets the file's
// length to exactly `size` (posix_fallocate only ever grows a file).
OSStatus reserveSize(int fd, off_t size) {
    if (size > 0) {
        const int error = ::posix_fallocate(fd, 0, size);
        // File systems without fallocate still get the exact length below, only not the reservation.
        if (error != 0 && error != EOPNOTSUPP && error != ENOSYS && error != EINVAL)
            return statusFromErrno(error);
    }
    if (::ftruncate(fd, size) != 0)
        return lastErrnoStatus();
    return noErr;
}

// Reads until `want` bytes or the end of the file; returns the count read or -1 with errno set.
ssize_t readFully(int fd, char* buffer, std::size_t want, off_t offset) {
    std::size_t done = 0;
    while (done < want) {
        const ssize_t n = ::pread(fd, buffer + done, want - done, offset + static_cast<off_t>(done));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return -1;
        }
        if (n == 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    return static_cast<ssize_t>(done);
}

OSStatus writeFully(int fd, const char* buffer, std::size_t count, off_t offset) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t n = ::pwrite(fd, buffer + done, count - done, offset + static_cast<off_t>(done));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return lastErrnoStatus();
        }
        if (n == 0)
            return ioErr;
        done += static_cast<std::size_t>(n);
    }
    return noErr;
}

// Waits for a written range to reach the disk and lets the kernel forget it. Advice only: a file
// system that cannot do either still has the data, and a real write error shows at close.
void dropWrittenPages(int fd, off_t offset, off_t count) {
    if (count <= 0)
        return;
    ::sync_file_range(fd, offset, count,
                      SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
    ::posix_fadvise(fd, offset, count, POSIX_FADV_DONTNEED);
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// A Linux file cannot be locked the way the original's files could; what stops a deletion here is a
// folder without write (or search) permission. Granting the owner those bits is the unlock.
bool unlockFolder(int dirFd) {
    struct stat info {};
    if (::fstat(dirFd, &info) != 0)
        return false;
    const mode_t wanted = info.st_mode | S_IRUSR | S_IWUSR | S_IXUSR;
    if ((info.st_mode & 07777) == (wanted & 07777))
        return false;  // nothing to unlock
    return ::fchmod(dirFd, wanted & 07777) == 0;
}

// Deletes the entry `name` of the open folder `dirFd`, unlocking the folder once when it refuses.
OSStatus deleteEntry(int dirFd, const char* name, bool isDirectory) {
    const int flags = isDirectory ? AT_REMOVEDIR : 0;
    if (::unlinkat(dirFd, name, flags) == 0)
        return noErr;
    const int error = errno;
    if (error != EACCES && error != EPERM)
        return statusFromErrno(error);
    if (!unlockFolder(dirFd))
        return statusFromErrno(error);  // not ours to unlock: the refusal stands
    return ::unlinkat(dirFd, name, flags) == 0 ? noErr : lastErrnoStatus();
}

// Opens a subfolder for deletion. O_NOFOLLOW: a link that took the folder's place since it was
// looked at is never entered. A folder we may not read is unlocked like one we may not write.
UniqueFd openFolderForDeletion(int parentFd, const char* name) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd fd(::openat(parentFd, name, kFlags));
    if (!fd.valid() && errno == EACCES) {
        struct stat info {};
        if (::fstatat(parentFd, name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode) &&
            ::fchmodat(parentFd, name, (info.st_mode | S_IRWXU) & 07777, 0) == 0)
            fd = UniqueFd(::openat(parentFd, name, kFlags));
        else
            errno = EACCES;
    }
    return fd;
}

// One level of the deletion: an open folder and the entry in hand, nothing else. Every name is taken
// relative to the open folder, so a link met on the way is only ever removed, never followed into
// another tree, and no path grows with the depth.
void deleteLevel(UniqueFd folder, DeleteContainerState& state) {
    const int folderFd = folder.get();
    DIR* dir = ::fdopendir(folderFd);
    if (!dir) {
        state.result = lastErrnoStatus();
        return;
    }
    folder.release();  // `dir` owns the descriptor now
    while (state.result == noErr) {
        errno = 0;
        const dirent* entry = ::readdir(dir);
        if (!entry) {
            // The end of the folder counts as success; a read error does not.
            state.itemCount = 0;
            state.result = errno == 0 ? noErr : lastErrnoStatus();
            break;
        }
        if (isDotOrDotDot(entry->d_name))
            continue;
        state.itemCount = 1;
        struct stat info {};
        if (::fstatat(folderFd, entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
            state.result = lastErrnoStatus();
            break;
        }
        state.isDirectory = S_ISDIR(info.st_mode);
        if (state.isDirectory) {
            UniqueFd child = openFolderForDeletion(folderFd, entry->d_name);
            if (!child.valid()) {
                state.result = lastErrnoStatus();
                break;
            }
            deleteLevel(std::move(child), state);
            if (state.result != noErr)
                break;
            state.isDirectory = true;  // the recursion used the shared record for its own items
        }
        state.result = deleteEntry(folderFd, entry->d_name, state.isDirectory);
    }
    ::closedir(dir);
}

}  // namespace

OSStatus FSCopyFork(int sourceFd, int destinationFd, void* buffer, std::size_t bufferSize) {
    if (!buffer || bufferSize == 0)
        return paramErr;
    struct stat source {};
    if (::fstat(sourceFd, &source) != 0)
        return lastErrnoStatus();
    if (const OSStatus status = reserveSize(destinationFd, source.st_size); status != noErr)
        return status;

    const std::size_t bytesPerPass =
        bufferSize >= kPageSize ? bufferSize - bufferSize % kPageSize : bufferSize;
    char* bytes = static_cast<char*>(buffer);
    off_t offset = 0;
    off_t previousOffset = 0;
    off_t previousCount = 0;
    // Waiting for the disk once per pass only pays with passes of a useful size.
    const bool dropDestinationPages = bytesPerPass >= kMinDropPass;
    for (;;) {
        const ssize_t got = readFully(sourceFd, bytes, bytesPerPass, offset);
        if (got < 0)
            return lastErrnoStatus();
        if (got == 0)
            break;
        const auto count = static_cast<std::size_t>(got);
        if (const OSStatus status = writeFully(destinationFd, bytes, count, offset); status != noErr)
            return status;
        // Copies are one-off streams of whole sound files: keeping them cached would only push out
        // pages that something else still needs. Dirty pages cannot be dropped, so this pass's
        // writing is started now and the previous pass, written back meanwhile, is dropped.
        ::posix_fadvise(sourceFd, offset, got, POSIX_FADV_DONTNEED);
        if (dropDestinationPages) {
            ::sync_file_range(destinationFd, offset, got, SYNC_FILE_RANGE_WRITE);
            dropWrittenPages(destinationFd, previousOffset, previousCount);
            previousOffset = offset;
            previousCount = got;
        }
        offset += got;
        if (count < bytesPerPass)
            break;  // a short pass is the last one
    }
    dropWrittenPages(destinationFd, previousOffset, previousCount);
    if (offset != source.st_size) {
        // The source changed length while it was being copied: the copy is not what the user had.
        if (offset < source.st_size)
            ::ftruncate(destinationFd, offset);
        return ioErr;
    }
    return noErr;
}

void FSDeleteContainerLevel(const FSRef& directory, DeleteContainerState& state) {
    if (directory.path.isEmpty()) {
        state.result = paramErr;
        return;
    }
    const QByteArray path = nativepath::encode(directory.path);
    struct stat info {};
    if (::lstat(path.constData(), &info) != 0) {
        state.result = lastErrnoStatus();
        return;
    }
    if (!S_ISDIR(info.st_mode)) {  // a link to a folder is not entered either
        state.result = dirNFErr;
        return;
    }
    UniqueFd folder(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.valid()) {
        state.result = lastErrnoStatus();
        return;
    }
    deleteLevel(std::move(folder), state);
}

OSStatus FSDeleteContainerContents(const FSRef& directory) {
    DeleteContainerState state;
    FSDeleteContainerLevel(directory, state);
    return state.result;
}

OSStatus FSDeleteContainer(const FSRef& directory) {
    if (directory.path.isEmpty())
        return paramErr;
    struct stat info {};
    if (::lstat(nativepath::encode(directory.path).constData(), &info) != 0)
        return lastErrnoStatus();
    if (!S_ISDIR(info.st_mode))
        return dirNFErr;  // a link to a folder is not a folder of ours either

    DeleteContainerState state;
    FSDeleteContainerLevel(directory, state);
    if (state.result != noErr)
        return state.result;

    FSRef parent;
    if (const OSStatus status = FSGetParentRef(directory, parent); status != noErr)
        return status;
    UniqueFd parentFd(
        ::open(nativepath::encode(parent.path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parentFd.valid())
        return lastErrnoStatus();
    // Only the folder being deleted is ours to unlock; the folder holding it keeps its permissions,
    // and when it refuses, the refusal is the result.
    if (::unlinkat(parentFd.get(), nativepath::encode(FSGetName(directory)).constData(), AT_REMOVEDIR) != 0)
        return lastErrnoStatus();
    return noErr;
}

}  // namespace sylvora
