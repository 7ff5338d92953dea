#include "core/files/fsref.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "core/files/nativepath.h"
#include "core/files/uniquefd.h"

namespace sylvora {

namespace {

constexpr qsizetype kMaxNameLength = 255;

OSStatus lastErrnoStatus() {
    return statusFromErrno(errno);
}

QString parentPath(const QString& path) {
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash <= 0)
        return QStringLiteral("/");
    return path.left(slash);
}

// Renames without ever replacing what is at `to`. Not every file system supports RENAME_NOREPLACE;
// there a hard link followed by removing the old name gives the same guarantee for files, and for
// directories (which cannot be hard-linked) an existence check narrows the race to nothing a single
// user's desktop can hit.
OSStatus renameNoReplace(const QByteArray& from, const QByteArray& to) {
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return noErr;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return lastErrnoStatus();

    struct stat info {};
    if (::lstat(from.constData(), &info) != 0)
        return lastErrnoStatus();
    if (!S_ISDIR(info.st_mode)) {
        if (::link(from.constData(), to.constData()) == 0) {
            if (::unlink(from.constData()) != 0) {
                const OSStatus status = lastErrnoStatus();
                ::unlink(to.constData());
                return status;
            }
            return noErr;
        }
        if (errno == EEXIST)
            return dupFNErr;
        if (errno != EPERM && errno != EOPNOTSUPP && errno != EMLINK)
            return lastErrnoStatus();
    }
    struct stat existing {};
    if (::lstat(to.constData(), &existing) == 0)
        return dupFNErr;
    if (errno != ENOENT)
        return lastErrnoStatus();
    if (::rename(from.constData(), to.constData()) != 0)
        return lastErrnoStatus();
    return noErr;
}

// Renames or moves `ref` to the path `target` without ever replacing what stands there.
OSStatus moveTo(const FSRef& ref, const QString& target, FSRef* out) {
    if (target != ref.path) {
        if (const OSStatus status = renameNoReplace(nativepath::encode(ref.path), nativepath::encode(target));
            status != noErr)
            return status;
    }
    if (out)
        out->path = target;
    return noErr;
}

}  // namespace

bool FSIsValidName(const QString& name) {
    if (name.isEmpty() || name.size() > kMaxNameLength)
        return false;
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    return !name.contains(QLatin1Char('/')) && !name.contains(QChar(0));
}

OSStatus FSPathMakeRef(const QString& path, FSRef& out) {
    if (path.isEmpty() || path.contains(QChar(0)))
        return paramErr;
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    struct stat info {};
    // lstat: a symbolic link is an object of its own, even when it points nowhere.
    if (::lstat(nativepath::encode(absolute).constData(), &info) != 0)
        return lastErrnoStatus();
    out.path = absolute;
    return noErr;
}

bool FSGetObjectIdentity(const FSRef& ref, FileIdentity& out) {
    return !ref.path.isEmpty() && readFileIdentity(AT_FDCWD, nativepath::encode(ref.path).constData(), out);
}

bool FSCompareFSRefs(const FSRef& a, const FSRef& b) {
    FileIdentity first;
    FileIdentity second;
    return FSGetObjectIdentity(a, first) && FSGetObjectIdentity(b, second) && first.device == second.device &&
           first.inode == second.inode;
}

QString FSGetName(const FSRef& ref) {
    const qsizetype slash = ref.path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? ref.path : ref.path.mid(slash + 1);
}

OSStatus FSGetParentRef(const FSRef& ref, FSRef& parent) {
    if (ref.path.isEmpty())
        return paramErr;
    if (ref.path == QLatin1String("/"))
        return fnfErr;  // the root has no parent
    return FSPathMakeRef(parentPath(ref.path), parent);
}

OSStatus FSIsDirectory(const FSRef& ref, bool& isDirectory) {
    if (ref.path.isEmpty())
        return paramErr;
    struct stat info {};
    if (::stat(nativepath::encode(ref.path).constData(), &info) != 0)
        return lastErrnoStatus();
    isDirectory = S_ISDIR(info.st_mode);
    return noErr;
}

OSStatus FSCreateDirectoryUnicode(const FSRef& parent, const QString& name, FSRef* out) {
    if (parent.path.isEmpty() || !FSIsValidName(name))
        return paramErr;
    const QString path = nativepath::join(parent.path, name);
    if (::mkdir(nativepath::encode(path).constData(), 0777) != 0)
        return lastErrnoStatus();
    if (out)
        out->path = path;
    return noErr;
}

OSStatus FSCreateFileUnicode(const FSRef& parent, const QString& name, FSRef* out) {
    if (parent.path.isEmpty() || !FSIsValidName(name))
        return paramErr;
    const QString path = nativepath::join(parent.path, name);
    UniqueFd fd(::open(nativepath::encode(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!fd.valid())
        return lastErrnoStatus();
    if (const int error = fd.close(); error != 0)
        return statusFromErrno(error);
    if (out)
        out->path = path;
    return noErr;
}

OSStatus FSDeleteObject(const FSRef& ref) {
    if (ref.path.isEmpty())
        return paramErr;
    const QByteArray path = nativepath::encode(ref.path);
    struct stat info {};
    if (::lstat(path.constData(), &info) != 0)
        return lastErrnoStatus();
    const int result = S_ISDIR(info.st_mode) ? ::rmdir(path.constData()) : ::unlink(path.constData());
    return result == 0 ? noErr : lastErrnoStatus();
}

OSStatus FSRenameUnicode(const FSRef& ref, const QString& newName, FSRef* out) {
    if (ref.path.isEmpty() || !FSIsValidName(newName))
        return paramErr;
    return moveTo(ref, nativepath::join(parentPath(ref.path), newName), out);
}

OSStatus FSMoveObject(const FSRef& ref, const FSRef& destinationDirectory, FSRef* out) {
    if (ref.path.isEmpty() || destinationDirectory.path.isEmpty())
        return paramErr;
    bool isDirectory = false;
    if (const OSStatus status = FSIsDirectory(destinationDirectory, isDirectory); status != noErr)
        return status;
    if (!isDirectory)
        return dirNFErr;
    return moveTo(ref, nativepath::join(destinationDirectory.path, FSGetName(ref)), out);
}

OSStatus FSExchangeObjects(const FSRef& a, const FSRef& b) {
    if (a.path.isEmpty() || b.path.isEmpty())
        return paramErr;
    if (::renameat2(AT_FDCWD, nativepath::encode(a.path).constData(), AT_FDCWD, nativepath::encode(b.path).constData(),
                    RENAME_EXCHANGE) == 0)
        return noErr;
    if (errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP)
        return unimpErr;
    return lastErrnoStatus();
}

OSStatus FSListDirectory(const FSRef& directory, std::vector<FSRef>& entries) {
    if (directory.path.isEmpty())
        return paramErr;
    std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(nativepath::encode(directory.path).constData()),
                                            ::closedir);
    if (!dir)
        return lastErrnoStatus();
    std::vector<FSRef> found;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(dir.get());
        if (!entry) {
            if (errno != 0)
                return lastErrnoStatus();
            break;
        }
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        found.push_back(FSRef{nativepath::join(directory.path, nativepath::decode(name))});
    }
    entries = std::move(found);
    return noErr;
}

OSStatus FSOpenRegularFile(const FSRef& file, int& fd) {
    fd = -1;
    if (file.path.isEmpty())
        return paramErr;
    UniqueFd opened(::open(nativepath::encode(file.path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!opened.valid())
        return lastErrnoStatus();
    struct stat info {};
    if (::fstat(opened.get(), &info) != 0)
        return lastErrnoStatus();
    if (!S_ISREG(info.st_mode))
        return fnfErr;
    // A regular file's reads ignore the flag; cleared, it cannot surprise whoever the descriptor goes to.
    const int flags = ::fcntl(opened.get(), F_GETFL);
    if (flags >= 0)
        ::fcntl(opened.get(), F_SETFL, flags & ~O_NONBLOCK);
    fd = opened.release();
    return noErr;
}

bool FSIsInside(const FSRef& file, const FSRef& container) {
    const auto realPath = [](const QString& path) {
        std::unique_ptr<char, void (*)(void*)> resolved(::realpath(nativepath::encode(path).constData(), nullptr),
                                                         ::free);
        return resolved ? QByteArray(resolved.get()) : QByteArray();
    };
    const QByteArray inner = realPath(file.path);
    QByteArray outer = realPath(container.path);
    if (inner.isEmpty() || outer.isEmpty())
        return false;
    if (!outer.endsWith('/'))
        outer += '/';
    return inner.startsWith(outer);
}

OSStatus FSSyncObject(const FSRef& ref) {
    if (ref.path.isEmpty())
        return paramErr;
    UniqueFd fd(::open(nativepath::encode(ref.path).constData(), O_RDONLY | O_CLOEXEC));
    if (!fd.valid())
        return lastErrnoStatus();
    if (::fsync(fd.get()) != 0)
        return lastErrnoStatus();
    return noErr;
}

}  // namespace sylvora
