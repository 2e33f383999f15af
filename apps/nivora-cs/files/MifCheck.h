#pragma once

#include <QString>

class Losses;

/// What the driver passes over in a damaged MIF without a word: lines that are none, numbers that are none, a
/// text that breaks off, more or fewer records in the MID than objects. Added as losses.
void checkMif(const QString &path, Losses &losses);
