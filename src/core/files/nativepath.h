#pragma once

// Conversions between the QString paths that file references carry and the bytes the kernel uses.

#include <QByteArray>
#include <QFile>
#include <QString>

namespace sylvora::nativepath {

inline QByteArray encode(const QString& path) {
    return QFile::encodeName(path);
}
inline QString decode(const char* name) {
    return QFile::decodeName(name);
}

// `name` inside `directory`, without doubling the slash of the root folder.
inline QString join(const QString& directory, const QString& name) {
    return directory.endsWith(QLatin1Char('/')) ? directory + name : directory + QLatin1Char('/') + name;
}

}  // namespace sylvora::nativepath
