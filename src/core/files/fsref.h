#pragma once

// File references: the absolute path of an object that existed when the reference was made.
// These free functions are the file-system calls the world and its packages are written against;
// each returns a status from util/status.h and maps errno through statusFromErrno.

#include <QString>
#include <vector>

#include "core/files/fileidentity.h"
#include "util/status.h"

namespace sylvora {

struct FSRef {
    QString path;  // absolute, no trailing slash
};

// Makes a reference to an existing object; fnfErr when there is none.
OSStatus FSPathMakeRef(const QString& path, FSRef& out);

// Identity of two resolved objects: same device and inode. Two paths of one file are the same
// object; two files with the same name are not.
bool FSCompareFSRefs(const FSRef& a, const FSRef& b);
// The identity of the object a reference names, to look many objects up by (FSCompareFSRefs
// compares its device and inode); false when the object cannot be looked at.
bool FSGetObjectIdentity(const FSRef& ref, FileIdentity& out);

// The object's own name (last path component), as the catalogue stores it.
QString FSGetName(const FSRef& ref);
OSStatus FSGetParentRef(const FSRef& ref, FSRef& parent);
OSStatus FSIsDirectory(const FSRef& ref, bool& isDirectory);

// A name that can only ever mean an entry of its own folder: not empty, not "." or "..", without
// "/" or NUL, and at most 255 UTF-16 code units.
bool FSIsValidName(const QString& name);

// Creation is exclusive: an existing object of that name gives dupFNErr and is not touched.
OSStatus FSCreateDirectoryUnicode(const FSRef& parent, const QString& name, FSRef* out);
OSStatus FSCreateFileUnicode(const FSRef& parent, const QString& name, FSRef* out);

// Deletes one file, link or empty directory (a link is deleted as a link).
OSStatus FSDeleteObject(const FSRef& ref);
// Renames within the same directory; dupFNErr when the new name is taken.
OSStatus FSRenameUnicode(const FSRef& ref, const QString& newName, FSRef* out);
// Moves an object into another directory of the same volume, keeping its name.
OSStatus FSMoveObject(const FSRef& ref, const FSRef& destinationDirectory, FSRef* out);
// Exchanges two objects of one volume in a single step (renameat2 with RENAME_EXCHANGE): at every
// instant each path names one of the two. unimpErr when the file system cannot exchange.
OSStatus FSExchangeObjects(const FSRef& a, const FSRef& b);
// The immediate entries of a directory ("." and ".." excluded), in no particular order.
OSStatus FSListDirectory(const FSRef& directory, std::vector<FSRef>& entries);
// Opens `file` for reading without ever waiting on it and keeps it only when it is a regular file:
// O_NONBLOCK lets a FIFO's open return at once, and a FIFO, a device, a socket or a folder is
// refused as fnfErr, as if it were missing. `fd` receives the open descriptor (O_NONBLOCK cleared).
OSStatus FSOpenRegularFile(const FSRef& file, int& fd);
// Whether `file`, every symbolic link on its way followed, lies inside the folder `container`.
bool FSIsInside(const FSRef& file, const FSRef& container);
// Flushes a file's data, or a directory's entries, to the disk (fsync).
OSStatus FSSyncObject(const FSRef& ref);

}  // namespace sylvora
