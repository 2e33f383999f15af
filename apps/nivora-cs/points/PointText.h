#pragma once

#include "GroupedPair.h"
#include "PeopleText.h"
#include "Reason.h"

#include <QPointF>

#include <algorithm>
#include <string_view>

class TextBuffer;

/// Where a coordinate goes in a line.
struct Slot
{
    std::string_view before; ///< what stands before it, verbatim
    bool delimited = false;  ///< a new column: a delimiter comes before it
    bool quoted = false;     ///< it stood in quotes
    bool missing = false;    ///< the line has no such column
};

/// The parts of a line beside its coordinates, verbatim.
struct Columns
{
    Slot first;
    Slot second;
    std::string_view rest; ///< from behind the second to the end
    bool yFirst = false;   ///< the first slot is that of y
    bool single = false;   ///< there is no second one
    bool csv = false;      ///< quotes inside of values are doubled
    char delimiter = ' ';
    bool located = false; ///< the slots are known, whether or not the coordinates can be read
};

/// Reads the coordinates of a line.
class PointReader
{
public:
    virtual ~PointReader() = default;
    /// Where the first line ends: at its line feed, or behind the text.
    virtual std::size_t lineLength(std::string_view text) const
    {
        return std::min(text.find('\n'), text.size());
    }
    /// False when there are none; then \p why says what is wrong. The line has no line end.
    virtual bool read(std::string_view line, QPointF &point, Columns &columns, Reason &why) const = 0;
};

/// Writes a line's coordinates.
class PointWriter
{
public:
    virtual ~PointWriter() = default;
    /// False, nothing written, when the point cannot be expressed; then \p why says what is wrong.
    virtual bool write(const QPointF &point, const Columns &columns, TextBuffer &out, Reason &why) const = 0;
    /// x and y become one column.
    virtual bool isSingle() const { return false; }
};

/// How coordinates may be written.
struct CoordinateNotation
{
    bool angles = false;       ///< degrees, minutes and seconds, hemispheres
    bool decimalComma = false; ///< every comma inside of a number is a decimal mark
};

/// A coordinate that takes up the whole text.
bool readCoordinate(std::string_view text, const CoordinateNotation &notation, Angle &value, Reason &why);

/// x and y of two coordinates in the order they were found: x is first unless hemispheres say otherwise.
bool placeCoordinates(const Angle &first, const Angle &second, QPointF &point, Reason &why);

/// "x y": separated by blanks, tabs, one comma or one semicolon.
class XyReader : public PointReader
{
public:
    explicit XyReader(const CoordinateNotation &notation = {})
        : m_notation(notation)
    {}
    bool read(std::string_view line, QPointF &point, Columns &columns, Reason &why) const override;

private:
    bool readAgain(std::string_view line, QPointF &point, Columns &columns, Reason &why) const;
    static Groups readGroups(std::string_view line, QPointF &point, Columns &columns, Reason &why);
    static Groups readParts(std::string_view line, Columns &columns, Reason &why);
    static bool readAnglePair(std::string_view line, QPointF &point, Columns &columns, Reason &why);

    CoordinateNotation m_notation;
};

/// "x y" with a fixed number of decimals, or degrees, minutes and seconds, and the separator that was read.
class XyWriter : public PointWriter
{
public:
    explicit XyWriter(int decimals)
        : m_decimals(decimals)
    {}
    XyWriter(int secondDecimals, Letters letters)
        : m_decimals(secondDecimals)
        , m_angles(true)
        , m_letters(letters)
    {}
    bool write(const QPointF &point, const Columns &columns, TextBuffer &out, Reason &why) const override;

private:
    char *put(char *at, double value, bool y, const Columns &columns, const Slot &slot) const;

    int m_decimals;
    bool m_angles = false;
    Letters m_letters = Letters::Latin;
};

/// The line with "*" in place of its coordinates, before the whole line when nobody knows where they are.
void writeFailed(std::string_view line, const Columns &columns, TextBuffer &out);

/// Whether the first two columns are words, so that the line may be a table's head.
bool looksLikeHeader(std::string_view line);
/// Whether a text begins like a coordinate.
bool beginsLikeNumber(std::string_view text);
