#pragma once

#include <QStringList>

/// What a store's file holds that is not read, so that the next save drops it: "line:column: what", in the
/// order of the file. Nothing for a file that cannot be read.
QStringList lostBySave(const QString &path);
