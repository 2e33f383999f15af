#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace nivora::cs {

/// The text of a coordinate system in a file: what a .prj, .qpj or .wkt holds, the CoordSys clause of a .mif,
/// that of a raster .tab, and for other .tab files (and .map) a CoordSys string made from the map header.
/// What had to be assumed goes into \p notes. Throws std::runtime_error that names the file when it cannot be
/// read, is no regular file, is too large or holds nothing.
QString systemTextInFile(const QString &path, QStringList &notes);

/// Text of unknown encoding: by its byte order mark, UTF-16 without one, UTF-8, else the locale's encoding.
QString decodedText(const QByteArray &bytes);

} // namespace nivora::cs
