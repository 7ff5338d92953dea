// The world's picture: the alias of its file, the file held open while it is the picture, and the
// image decoded on first use.

#include <unistd.h>

#include "core/picture/pictureutils.h"
#include "core/strings/stringresources.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

// Opens the picture's data for reading. Only a regular file has a picture to read: a folder, a FIFO
// (which would block the open) or a device is refused as the platform's fork call refuses it.
int openPictureFork(const FSRef& ref) {
    int fd = -1;
    return FSOpenRegularFile(ref, fd) == noErr ? fd : -1;
}

}  // namespace

void World::closePictureFork() {
    if (pictureForkRef != -1) {
        ::close(pictureForkRef);
        pictureForkRef = -1;
    }
}

void World::setPictureFileAlias(const Alias* alias) {
    // Copied first: the caller may hand in the world's own alias.
    AliasHandle copy = alias ? alias->copy() : nullptr;

    closePictureFork();
    pictureFileAlias.reset();
    picture = QImage();

    if (copy) {
        FSRef ref;
        if (FSResolveAlias(*copy, ref) == noErr) {
            pictureForkRef = openPictureFork(ref);
            if (pictureForkRef != -1) {
                pictureFileAlias = std::move(copy);
            }
        }
    }
    // Even a refused or null picture is a change the user made.
    modified = true;
}

QImage World::getPicture() {
    if (!picture.isNull()) {
        return picture;
    }
    if (!pictureFileAlias) {
        return QImage();
    }
    picture = makeCGImageFromImageFileAlias(pictureFileAlias.get());
    if (picture.isNull()) {
        // Forget a picture that cannot be decoded; its file stays open until the next picture.
        pictureFileAlias.reset();
    }
    return picture;
}

QString World::copyPictureDisplayFilename() const {
    if (!pictureFileAlias) {
        return copyLocalizedString(NO_PICTURE_FILE_SELECTED_KEY, MISC_STRINGS_FILE);
    }
    FSRef ref;
    if (FSResolveAlias(*pictureFileAlias, ref) != noErr) {
        return QString();
    }
    return FSGetName(ref);
}

}  // namespace sylvora
