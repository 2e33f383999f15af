#pragma once

#include <QPointF>

/// Whether the thousands of two numbers are set apart.
enum class Groups {
    None,
    Apart,    ///< and the columns are told from them
    Doubtful, ///< blanks or commas may separate columns as well
};

/// x and y of a line whose numbers have their thousands set apart: "7 411 000,5;6 182 000".
struct GroupedPair
{
    Groups groups = Groups::None;
    QPointF point;
    const char *xEnd = nullptr;
    const char *yBegin = nullptr;
    const char *yEnd = nullptr;
};

/// Blanks group only where a semicolon or a tab separates the columns; no-break spaces and apostrophes
/// always.
GroupedPair readGroupedPair(const char *p, const char *end);

/// Whether six plain numbers stand there that are the degrees, minutes and seconds of two angles, most
/// likely.
bool mayBeAngleParts(const char *p, const char *end);
