#pragma once

// General-purpose file-system helpers: copying one open file's content into another and deleting
// directory trees.

#include <cstddef>

#include "core/files/fsref.h"

namespace sylvora {

// Copies the whole content of the open file `sourceFd` into `destinationFd`: reserves the full size
// first, then copies in passes of bufferSize rounded down to whole 4096-byte pages, asking the
// kernel not to keep the copied pages cached. paramErr for a null buffer or a size of 0.
OSStatus FSCopyFork(int sourceFd, int destinationFd, void* buffer, std::size_t bufferSize);

// State shared by every level of one recursive deletion.
struct DeleteContainerState {
    OSStatus result = noErr;
    int itemCount = 0;
    bool isDirectory = false;
};

// On Linux an item is "locked" when its folder denies us write permission; unlocking grants the
// owner write permission on that folder, and only ever on a folder that is being emptied: the folder
// that holds the one being deleted keeps its permissions. Symbolic links are deleted as links, never
// followed.
void FSDeleteContainerLevel(const FSRef& directory, DeleteContainerState& state);
OSStatus FSDeleteContainerContents(const FSRef& directory);
OSStatus FSDeleteContainer(const FSRef& directory);  // dirNFErr when it is not a directory

}  // namespace sylvora
