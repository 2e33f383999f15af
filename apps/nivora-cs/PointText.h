#pragma once

#include <QPointF>
#include <QString>

#include <string>
#include <string_view>

class Output;

/// The parts of a line beside its coordinates, verbatim.
struct Columns
{
    std::string_view separator; ///< between x and y
    std::string_view rest;      ///< from the separator behind the last coordinate to the end
};

/// Reads the coordinates at the beginning of a line.
class PointReader
{
public:
    virtual ~PointReader() = default;
    /// False when there are none; then \p why says what is wrong. The line has no line end.
    virtual bool read(std::string_view line, QPointF &point, Columns &columns, std::string &why) const = 0;
};

/// Writes a line's coordinates.
class PointWriter
{
public:
    virtual ~PointWriter() = default;
    /// False, nothing written, when the point cannot be expressed; then \p why says what is wrong.
    virtual bool write(const QPointF &point, const Columns &columns, Output &out, std::string &why) const = 0;
};

/// "x y": decimal numbers, separated by blanks, tabs, one comma or one semicolon.
class XyReader : public PointReader
{
public:
    bool read(std::string_view line, QPointF &point, Columns &columns, std::string &why) const override;
};

/// "x y" with a fixed number of decimals and the separator that was read.
class XyWriter : public PointWriter
{
public:
    static constexpr int MostDecimals = 15;
    explicit XyWriter(int decimals)
        : m_decimals(decimals)
    {}
    bool write(const QPointF &point, const Columns &columns, Output &out, std::string &why) const override;

private:
    int m_decimals;
};

/// A number that takes up the whole text. False for anything else, "nan", "inf" and numbers no double holds
/// too.
bool readNumber(std::string_view text, double &value);

/// A number with a fixed count of decimals, never "-0.0".
QString numberText(double value, int decimals);

/// Blanks, tabs and, between columns, commas and semicolons.
bool isBlank(char c);
bool isSeparator(char c);
