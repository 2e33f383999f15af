#pragma once

#include "PointText.h"

#include <coordsys/SpatialTransform.h>

#include <QString>

#include <array>
#include <string>
#include <string_view>
#include <vector>

/// Where a coordinate goes in a line.
struct HeightSlot
{
    std::string_view before; ///< what stands before it, verbatim
    int axis = 0;            ///< 0 x, 1 y, 2 z
    bool quoted = false;     ///< it stood in quotes
};

/// A line's point and what stands around its numbers, verbatim.
struct HeightLine
{
    nivora::cs::SpatialPoint point;
    std::array<HeightSlot, 3> slots;
    std::string_view rest;
    bool located = false; ///< the slots are known, whether or not the numbers can be read
};

/// Which columns of a table hold what; names or numbers from 1.
struct HeightColumns
{
    char delimiter = '\0'; ///< 0: to be found
    QString x;             ///< neither this nor y given: the columns that the header names, or the first two
    QString y;
    QString z = QStringLiteral("3");
    QString t; ///< empty: no times
    CoordinateNotation notation;
};

/// x, y, z and, where times are wanted, a decimal year, with separators between; x and y also as degrees are
/// written, in either order where hemispheres tell. False when there are not as many numbers as are needed.
bool readPlainHeights(std::string_view text, const CoordinateNotation &notation, bool hasTime,
                      HeightLine &line);

/// Lines of a table.
class HeightTable
{
public:
    /// By the first line of the table. Throws Failure when it lacks a column.
    HeightTable(const HeightColumns &columns, std::string_view firstLine);

    /// What delimits fields before the table is known.
    static std::string delimiters(const HeightColumns &columns);
    char delimiter() const { return m_delimiter; }
    /// Whether the first line has names.
    bool hasHeader() const { return m_hasHeader; }
    bool read(std::string_view text, HeightLine &line) const;

private:
    bool find(const HeightColumns &columns, std::string_view firstLine, char delimiter);
    static void place(const std::vector<std::string_view> &fields, const std::array<int, 4> &columns,
                      std::string_view text, HeightLine &line);

    CoordinateNotation m_notation;
    char m_delimiter = ',';
    std::array<int, 4> m_columns{{-1, -1, -1, -1}}; ///< x, y, z, t; -1 for none
    bool m_hasHeader = false;
    QString m_missing; ///< the column that the last try lacked
};
