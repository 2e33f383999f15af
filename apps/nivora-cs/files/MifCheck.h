#pragma once

#include <QRectF>
#include <QString>

#include <optional>

class Losses;

/// What the driver passes over in a damaged MIF without a word: lines that are none, numbers that are none, a
/// text that breaks off, more or fewer records in the MID than objects. Added as losses. The result holds all
/// places of the file; none where only the driver can tell.
std::optional<QRectF> checkMif(const QString &path, Losses &losses);
