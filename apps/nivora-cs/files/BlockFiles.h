#pragma once

#include <QByteArray>

/// Drivers that jump about in a file while they write it ask the system twice for every feature. Under this
/// prefix a file's blocks are kept in memory and written when there are many, and when it is closed.
/// Registers the prefix at the first call. Messages of GDAL have the prefix in them.
QByteArray inBlocks(const QByteArray &path);
/// Such a message without it.
QByteArray withoutBlocks(QByteArray message);
