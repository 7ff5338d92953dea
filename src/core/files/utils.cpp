#include "core/files/utils.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <QCoreApplication>
#include <cerrno>
#include <memory>

#include "core/files/morefilesx.h"
#include "core/files/nativepath.h"
#include "core/files/uniquefd.h"

namespace sylvora {

OSStatus FSMakeFSRefCFString(const FSRef& parent, const QString& name, unsigned textEncodingHint,
                             FSRef& out) {
    // Linux names are bytes in the locale's encoding; there is nothing for a hint to choose.
    (void)textEncodingHint;
    if (parent.path.isEmpty() || !FSIsValidName(name))
        return paramErr;
    const QString path = nativepath::join(parent.path, name);
    struct stat info {};
    if (::lstat(nativepath::encode(path).constData(), &info) != 0)
        return statusFromErrno(errno);
    out.path = path;
    return noErr;
}

int findAliasInList(const Alias& alias, std::span<const Alias* const> list) {
    FSRef target;
    if (FSResolveAlias(alias, target) != noErr)
        return -1;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (!list[i])
            continue;
        FSRef candidate;
        if (FSResolveAlias(*list[i], candidate) == noErr && FSCompareFSRefs(target, candidate))
            return static_cast<int>(i);
    }
    return -1;
}

bool isFileAliasInList(const Alias& alias, std::span<const Alias* const> list) {
    return findAliasInList(alias, list) >= 0;
}

OSStatus myCopyFileDataForkAndType(const FSRef& source, const FSRef& destinationDirectory) {
    if (source.path.isEmpty() || destinationDirectory.path.isEmpty())
        return paramErr;
    // Opened before the copy is created, so that an unreadable source leaves no empty file behind.
    UniqueFd input(::open(nativepath::encode(source.path).constData(), O_RDONLY | O_CLOEXEC));
    if (!input.valid())
        return statusFromErrno(errno);
    struct stat info {};
    if (::fstat(input.get(), &info) != 0)
        return statusFromErrno(errno);
    if (!S_ISREG(info.st_mode))
        return paramErr;  // only a file has data to copy

    // Linux files carry no type or creator code: the data and the permission bits are all there is.
    const QString name = FSGetName(source);
    if (!FSIsValidName(name))
        return paramErr;
    const QString destination = nativepath::join(destinationDirectory.path, name);
    const mode_t permissions = info.st_mode & 0777;
    UniqueFd output(::open(nativepath::encode(destination).constData(),
                           O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions));
    if (!output.valid())
        return statusFromErrno(errno);
    // The umask narrowed the bits at creation; the copy keeps the source's own.
    if (::fchmod(output.get(), permissions) != 0)
        return statusFromErrno(errno);

    auto buffer = std::make_unique_for_overwrite<std::byte[]>(COPY_BUFFER_SIZE);
    const OSStatus status = FSCopyFork(input.get(), output.get(), buffer.get(), COPY_BUFFER_SIZE);
    buffer.reset();
    const int closeError = output.close();
    input.close();
    if (status != noErr)
        return status;
    return statusFromErrno(closeError);
}

bool isValidIntegerCFString(const QString& text) {
    // The original converted to a 255-character ASCII string first; anything that does not fit fails.
    if (text.isEmpty() || text.size() > 255)
        return false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c == u'-' && i == 0 && text.size() > 1)
            continue;
        if (c < u'0' || c > u'9')
            return false;
    }
    return true;
}

QString copyApplicationNameCFString() {
    if (!QCoreApplication::instance())
        return QString();
    const QString name = QCoreApplication::applicationName();
    return name.isEmpty() ? QString() : name;
}

}  // namespace sylvora
