#include "HeightLine.h"

#include "CoordinateColumns.h"
#include "CsvFormat.h"
#include "Output.h"

#include <coordsys/NumberText.h>

#include <QObject>

#include <algorithm>
#include <numeric>

using nivora::cs::isSeparator;

namespace {

constexpr std::string_view likelyDelimiters = "\t;|,";
constexpr int axes = 3;

std::string_view takeWhile(std::string_view &text, bool separators)
{
    std::size_t end = 0;
    while (end < text.size() && isSeparator(text[end]) == separators)
        ++end;
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end);
    return taken;
}

/// The column's place among the names, -1 for none. Throws Failure for a name that stands twice.
int placeOf(const QString &wanted, const QStringList &names, bool &isName)
{
    bool isNumber = false;
    const int number = wanted.toInt(&isNumber);
    if (isNumber)
        return number >= 1 && number <= names.size() ? number - 1 : -1;
    for (const Qt::CaseSensitivity sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        const auto fits = [&](const QString &name) {
            return name.compare(wanted.trimmed(), sensitivity) == 0;
        };
        const auto count = std::count_if(names.begin(), names.end(), fits);
        if (count > 1)
            throw Failure(QObject::tr("the column \"%1\" stands twice in the table").arg(wanted));
        isName = isName || count == 1;
        if (count == 1)
            return static_cast<int>(std::find_if(names.begin(), names.end(), fits) - names.begin());
    }
    return -1;
}

bool readField(std::string_view field, const CoordinateNotation &notation, double &value)
{
    const std::string text = csvText(field);
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return false;
    const std::size_t last = text.find_last_not_of(" \t");
    Angle angle;
    Reason why;
    if (!readCoordinate(std::string_view(text).substr(first, last - first + 1), notation, angle, why))
        return false;
    value = angle.degrees;
    return true;
}

bool readOne(std::string_view text, const CoordinateNotation &notation, double &value)
{
    Angle number;
    Reason why;
    if (!readCoordinate(text, {false, notation.decimalComma}, number, why))
        return false;
    value = number.degrees;
    return true;
}

/// "10 50 100,25": nobody knows whether the comma is a decimal mark.
bool isDoubtful(std::string_view rest, const HeightLine &line)
{
    const auto hasComma = [](const HeightSlot &slot) {
        return slot.before.find(',') != std::string_view::npos;
    };
    return rest.size() > 1 && rest[0] == ',' && isDigit(rest[1]) &&
           std::none_of(line.slots.begin(), line.slots.end(), hasComma);
}

/// Behind the third number.
bool readNumbers(std::string_view &text, HeightLine &line)
{
    double *const targets[] = {&line.point.x, &line.point.y, &line.point.z};
    for (int i = 0; i < axes; ++i) {
        line.slots[static_cast<std::size_t>(i)] = {takeWhile(text, true), i, false};
        if (!nivora::cs::readNumber(takeWhile(text, false), *targets[i]))
            return false;
    }
    return true;
}

/// x and y as they are written without heights.
bool readNotations(std::string_view &text, const CoordinateNotation &notation, HeightLine &line)
{
    QPointF point;
    Columns columns;
    Reason why;
    if (!XyReader(notation).read(text, point, columns, why))
        return false;
    line.point.x = point.x();
    line.point.y = point.y();
    line.slots[0] = {columns.first.before, columns.yFirst ? 1 : 0, columns.first.quoted};
    line.slots[1] = {columns.second.before, columns.yFirst ? 0 : 1, columns.second.quoted};
    text = columns.rest;
    line.slots[2] = {takeWhile(text, true), 2, false};
    if (!notation.decimalComma)
        return readOne(takeWhile(text, false), notation, line.point.z);
    const std::string_view height = text.substr(0, text.find_first_of(" \t;"));
    text.remove_prefix(height.size());
    return readOne(height, notation, line.point.z);
}

} // namespace

bool readPlainHeights(std::string_view text, const CoordinateNotation &notation, bool hasTime,
                      HeightLine &line)
{
    std::string_view rest = text;
    const char *const end = text.data() + text.size();
    const bool hasGroups =
        !notation.angles && readGroupedPair(skipBlanks(text.data(), end), end).groups != Groups::None;
    if (notation.decimalComma || hasGroups || !readNumbers(rest, line)) {
        rest = text;
        if (!readNotations(rest, notation, line))
            return false;
    }
    if (isDoubtful(rest, line))
        return false;
    line.rest = rest;
    line.located = true;
    double year = 0.0;
    takeWhile(rest, true);
    const bool hasYear = hasTime && readOne(takeWhile(rest, false), notation, year);
    if (hasYear)
        line.point.t = year;
    return hasYear || !hasTime;
}

std::string HeightTable::delimiters(const HeightColumns &columns)
{
    return columns.delimiter == '\0' ? std::string(likelyDelimiters) : std::string(1, columns.delimiter);
}

HeightTable::HeightTable(const HeightColumns &columns, std::string_view firstLine)
    : m_notation(columns.notation)
{
    const std::string tried = delimiters(columns);
    const bool isFound = std::any_of(tried.begin(), tried.end(),
                                     [&](char delimiter) { return find(columns, firstLine, delimiter); });
    if (!isFound)
        throw Failure(QObject::tr("the table has no column \"%1\"").arg(m_missing));
    for (int i = 0; i < axes; ++i)
        if (std::count(m_columns.begin(), m_columns.end(), m_columns[static_cast<std::size_t>(i)]) > 1)
            throw Failure(QObject::tr("x, y and z cannot be one column"));
    HeightLine line;
    const std::string x = csvText(csvFields(firstLine, m_delimiter)[static_cast<std::size_t>(m_columns[0])]);
    m_hasHeader = m_hasHeader || (!read(firstLine, line) && !x.empty() && !beginsLikeNumber(x));
}

bool HeightTable::find(const HeightColumns &columns, std::string_view firstLine, char delimiter)
{
    const QStringList names = csvValues(firstLine, delimiter);
    const CoordinateColumns plane = wantedColumns(columns.x, columns.y, names);
    bool isName = false;
    std::size_t axis = 0;
    for (const QString &wanted : {plane.x, plane.y, columns.z, columns.t}) {
        m_columns[axis] = wanted.isEmpty() ? -1 : placeOf(wanted, names, isName);
        if (m_columns[axis++] < 0 && !wanted.isEmpty()) {
            m_missing = wanted;
            return false;
        }
    }
    tellColumns(plane, names);
    m_delimiter = delimiter;
    m_hasHeader = isName;
    return true;
}

/// The slots in the order in which they stand.
void HeightTable::place(const std::vector<std::string_view> &fields, const std::array<int, 4> &columns,
                        std::string_view text, HeightLine &line)
{
    std::array<int, axes> order{};
    std::iota(order.begin(), order.end(), 0);
    const auto columnOf = [&columns](int axis) { return columns[static_cast<std::size_t>(axis)]; };
    std::sort(order.begin(), order.end(), [&](int a, int b) { return columnOf(a) < columnOf(b); });
    const char *behind = text.data();
    for (std::size_t i = 0; i < order.size(); ++i) {
        const std::string_view field = fields[static_cast<std::size_t>(columnOf(order[i]))];
        const bool isQuoted = !field.empty() && field.front() == '"';
        line.slots[i] = {{behind, static_cast<std::size_t>(field.data() - behind)}, order[i], isQuoted};
        behind = field.data() + field.size();
    }
    line.rest = {behind, static_cast<std::size_t>(text.data() + text.size() - behind)};
    line.located = true;
}

bool HeightTable::read(std::string_view text, HeightLine &line) const
{
    const std::vector<std::string_view> fields = csvFields(text, m_delimiter);
    if (*std::max_element(m_columns.begin(), m_columns.end()) >= static_cast<int>(fields.size()))
        return false;
    place(fields, m_columns, text, line);
    const CoordinateNotation plain{false, m_notation.decimalComma};
    const auto fieldAt = [&](std::size_t axis) { return fields[static_cast<std::size_t>(m_columns[axis])]; };
    if (!readField(fieldAt(0), m_notation, line.point.x) ||
        !readField(fieldAt(1), m_notation, line.point.y) || !readField(fieldAt(2), plain, line.point.z))
        return false;
    double year = 0.0;
    const bool hasYear = m_columns[3] >= 0 && readField(fieldAt(3), plain, year);
    if (hasYear)
        line.point.t = year;
    return hasYear || m_columns[3] < 0;
}
