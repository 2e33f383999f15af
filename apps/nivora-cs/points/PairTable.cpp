#include "PairTable.h"

#include "CommandLine.h"
#include "CoordinateColumns.h"
#include "CsvOptions.h"
#include "Output.h"
#include "PeopleText.h"
#include "TableText.h"

#include <coordsys/CoordSystem.h>

#include <QObject>

#include <algorithm>
#include <memory>
#include <optional>

using nivora::cs::CalibrationPair;

namespace {

constexpr int columnsWithName = 5;

/// A column of words or numbers beside the coordinates.
struct Extra
{
    const char *option;
    void (*set)(CalibrationPair &, double);
};
constexpr Extra extras[] = {
    {"height", [](CalibrationPair &p, double v) { p.localHeightM = v; }},
    {"to-height", [](CalibrationPair &p, double v) { p.knownHeightM = v; }},
    {"weight", [](CalibrationPair &p, double v) { p.weight = v; }},
};

class PairReader
{
public:
    PairReader(const CommandLine &line, const nivora::cs::CoordSystem &known,
               const nivora::cs::CoordSystem *local)
        : m_line(line)
        , m_localNotation{local && local->isLatLong(), line.isSet("decimal-comma")}
        , m_knownNotation{known.isLatLong(), line.isSet("decimal-comma")}
    {}

    QVector<CalibrationPair> read(std::string_view text);

private:
    bool readHead(std::string_view line);
    FileHead headOf(std::string_view line, const char *x, const char *y, int first,
                    const CoordinateNotation &notation);
    CalibrationPair pairOf(std::string_view line) const;
    CalibrationPair coordinatesOf(std::string_view line) const;
    int columnOf(const char *option, int otherwise) const;
    std::optional<double> numberOf(const QString &text) const;
    void setExtras(const QStringList &values, CalibrationPair &pair) const;

    const CommandLine &m_line;
    CoordinateNotation m_localNotation;
    CoordinateNotation m_knownNotation;
    QStringList m_header;
    char m_delimiter = ',';
    int m_name = -1;
    std::shared_ptr<const PointReader> m_local, m_known;
};

/// The head of a table whose coordinates are asked for, or stand in two columns from the first on, y before x
/// where their names say so.
FileHead PairReader::headOf(std::string_view line, const char *x, const char *y, int first,
                            const CoordinateNotation &notation)
{
    CsvOptions options = csvOptions(m_line, notation);
    const QStringList names = m_header.mid(first - 1, 2);
    const bool isAsked = m_line.isSet(x) || m_line.isSet(y);
    const CoordinateColumns named = isAsked ? CoordinateColumns() : wantedColumns({}, {}, names);
    const bool yFirst = named.byHeader && named.y == names.first().trimmed();
    options.x = isAsked ? m_line.value(x) : QString::number(yFirst ? first + 1 : first);
    options.y = isAsked ? m_line.value(y) : QString::number(yFirst ? first : first + 1);
    if (m_line.isSet(x) != m_line.isSet(y))
        throw Failure(QObject::tr("--%1 and --%2 go together").arg(QLatin1String(x), QLatin1String(y)));
    return CsvFormat(options).head(line);
}

/// Index of a column by its name or number.
int PairReader::columnOf(const char *option, int otherwise) const
{
    if (!m_line.isSet(option))
        return otherwise;
    const QString wanted = m_line.value(option);
    bool isNumber = false;
    const int number = wanted.toInt(&isNumber);
    const int place = isNumber ? number - 1 : m_header.indexOf(wanted.trimmed());
    if (place < 0 || place >= m_header.size())
        throw Failure(QObject::tr("the table has no column \"%1\"").arg(wanted));
    return place;
}

/// True when the line is a header and no point.
bool PairReader::readHead(std::string_view line)
{
    CsvOptions probe = csvOptions(m_line, m_localNotation);
    probe.x = m_line.isSet("x") ? m_line.value("x") : QStringLiteral("1");
    probe.y = m_line.isSet("y") ? m_line.value("y") : QStringLiteral("2");
    m_delimiter = CsvFormat(probe).head(line).delimiters.front();
    m_header = csvValues(line, m_delimiter);
    const int first = m_header.size() >= columnsWithName ? 2 : 1;
    m_name = columnOf("name", first == 2 && !m_line.isSet("x") ? 0 : -1);
    const FileHead local = headOf(line, "x", "y", first, m_localNotation);
    const FileHead known = headOf(line, "to-x", "to-y", first + 2, m_knownNotation);
    m_local = local.reader;
    m_known = known.reader;
    return local.isHeader || known.isHeader;
}

/// A pair without name and extras. A failure tells which half it stands in: both have an x and a y.
CalibrationPair PairReader::coordinatesOf(std::string_view line) const
{
    CalibrationPair pair;
    Columns columns;
    Reason why;
    if (!m_local->read(line, pair.local, columns, why))
        throw Failure(QObject::tr("local coordinates: %1").arg(why.text()));
    if (m_known->read(line, pair.known, columns, why))
        return pair;
    const QString hint = m_knownNotation.angles
                             ? QString()
                             : QObject::tr("; --to names a plane, degrees need a geographic system");
    throw Failure(QObject::tr("known coordinates: %1").arg(why.text()) + hint);
}

std::optional<double> PairReader::numberOf(const QString &text) const
{
    const QString plain =
        m_line.isSet("decimal-comma") ? QString(text).replace(QLatin1Char(','), QLatin1Char('.')) : text;
    const std::string utf8 = plain.toStdString();
    double value = 0.0;
    return readNumber(utf8, value) ? std::make_optional(value) : std::nullopt;
}

/// Empty values are none.
void PairReader::setExtras(const QStringList &values, CalibrationPair &pair) const
{
    for (const Extra &extra : extras) {
        const int column = columnOf(extra.option, -1);
        const QString text = values.value(column);
        if (column < 0 || text.isEmpty())
            continue;
        const std::optional<double> value = numberOf(text);
        if (!value)
            throw Failure(QObject::tr("--%1: \"%2\" is no number").arg(QLatin1String(extra.option), text));
        extra.set(pair, *value);
    }
}

CalibrationPair PairReader::pairOf(std::string_view line) const
{
    CalibrationPair pair = coordinatesOf(line);
    const QStringList values = csvValues(line, m_delimiter);
    pair.name = m_name < 0 ? QString() : values.value(m_name);
    setExtras(values, pair);
    return pair;
}

QVector<CalibrationPair> PairReader::read(std::string_view text)
{
    QVector<CalibrationPair> pairs;
    forEachTableLine(m_line, text, [this, &pairs](std::string_view line) {
        if (!m_local && readHead(line))
            return;
        pairs << pairOf(line);
        if (pairs.last().name.isEmpty())
            pairs.last().name = QString::number(pairs.size());
    });
    return pairs;
}

} // namespace

QVector<CalibrationPair> readPairs(const CommandLine &line, const nivora::cs::CoordSystem &known,
                                   const nivora::cs::CoordSystem *local)
{
    return PairReader(line, known, local).read(tableText(line));
}
