#pragma once

#include <QString>

/// The CoordSys clause in the header of a MIF, on one line; longitude/latitude without a datum when there is
/// none, which is what the format says then. Throws Failure for a file that cannot be read and for one
/// without a MIF's header.
QString coordSysOfMif(const QString &path);

/// Puts the clause in the place of the one that the driver wrote, or of none. Throws Failure.
void replaceCoordSysOfMif(const QString &path, const QString &clause);

/// The file beside \p path that has the same name and the suffix, in any letter case; empty when there is
/// none.
QString siblingOf(const QString &path, const QString &suffix);

/// The character encoding to write MapInfo files in: that of \p source when it is one of them and says so,
/// else Windows-1251, since the driver cannot mark a file as UTF-8.
QByteArray encodingLike(const QString &source);
