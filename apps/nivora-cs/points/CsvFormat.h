#pragma once

#include "FileFormat.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// What the command line says about a table.
struct CsvOptions
{
    std::string delimiter; ///< empty: to be found
    QString x;             ///< a column's name or its number, from 1; several for an angle in parts
    QString y;             ///< neither given: the columns that the header names, or the first two
    QString outX;          ///< empty: where x was
    QString outY;
    CoordinateNotation notation;

    /// Reads x and y from one value.
    using ReadBoth = std::function<bool(std::string_view text, QPointF &point, Reason &why)>;
    ReadBoth readBoth;      ///< set: x is the column of both, y means nothing
    bool oneResult = false; ///< what is written goes into one column, outX
    bool newOutX = false;   ///< no column may have that name yet
    bool newOutY = false;
};

/// The fields of a table's line as they stand. The line has no line end.
std::vector<std::string_view> csvFields(std::string_view line, char delimiter);
/// A field's text, without quotes.
std::string csvText(std::string_view field);

/// The values of a table's line, without quotes and the blanks around them. The line has no line end.
QStringList csvValues(std::string_view line, char delimiter);

/// Whether a line is the first of spreadsheets' tables that tells the delimiter: sep=;
bool isSeparatorLine(std::string_view line);

/// Tables as RFC 4180 describes them, the delimiter aside: comma, semicolon, tab or bar, whichever gives the
/// columns. The first line is a header when columns are asked for by name or its coordinates are words.
class CsvFormat : public FileFormat
{
public:
    explicit CsvFormat(CsvOptions options);
    std::string delimiters() const override;
    FileHead head(std::string_view firstLine) const override;
    bool passesOn(std::string_view line) const override
    {
        return line.find_first_not_of(" \t\r") == std::string_view::npos || isSeparatorLine(line);
    }
    bool keepsBytes() const override { return true; }

private:
    CsvOptions m_options;
};
