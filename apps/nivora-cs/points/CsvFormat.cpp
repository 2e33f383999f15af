#include "CsvFormat.h"

#include "CoordinateColumns.h"
#include "Output.h"
#include "PeopleText.h"

#include <QObject>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <optional>
#include <vector>

namespace {

// In the order in which they are tried: a comma may be a decimal mark between the others.
constexpr std::string_view likelyDelimiters = "\t;|,";
constexpr int newColumn = -1;

/// Behind a field: at its delimiter or the end. A field that begins with a quote goes on to the one that
/// closes it; two quotes stand for one.
const char *fieldEnd(const char *p, const char *end, char delimiter)
{
    if (p != end && *p == '"')
        for (++p; p != end; ++p) {
            if (*p != '"')
                continue;
            if (p + 1 == end || p[1] != '"')
                break;
            ++p;
        }
    return std::find(p, end, delimiter);
}

bool isQuoted(std::string_view field) { return !field.empty() && field.front() == '"'; }

} // namespace

std::vector<std::string_view> csvFields(std::string_view line, char delimiter)
{
    std::vector<std::string_view> fields;
    const char *const end = line.data() + line.size();
    for (const char *p = line.data();; ++p) {
        const char *const behind = fieldEnd(p, end, delimiter);
        fields.emplace_back(p, static_cast<std::size_t>(behind - p));
        if (behind == end)
            return fields;
        p = behind;
    }
}

std::string csvText(std::string_view field)
{
    if (!isQuoted(field))
        return std::string(field);
    std::string text;
    for (std::size_t i = 1; i < field.size(); ++i) {
        if (field[i] == '"' && ++i == field.size())
            break;
        text += field[i];
    }
    return text;
}

namespace {

QString nameOf(std::string_view field) { return QString::fromStdString(csvText(field)).trimmed(); }

std::string quotedWhereNeeded(const QString &name, char delimiter)
{
    const std::string text = name.toStdString();
    if (text.find(delimiter) == std::string::npos && text.find_first_of("\"\r\n") == std::string::npos)
        return text;
    return (QLatin1Char('"') + QString(name).replace(QLatin1Char('"'), QStringLiteral("\"\"")) +
            QLatin1Char('"'))
        .toStdString();
}

std::string newName(const QString &name, char delimiter)
{
    return delimiter + quotedWhereNeeded(name, delimiter);
}

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// A table's columns by what the command line calls them.
class ColumnNames
{
public:
    explicit ColumnNames(const std::vector<std::string_view> &fields)
    {
        for (const std::string_view field : fields)
            m_names << nameOf(field);
    }

    /// Null when there is no such column.
    std::optional<int> find(const QString &wanted)
    {
        bool isNumber = false;
        const int number = wanted.toInt(&isNumber);
        if (isNumber)
            return number >= 1 && number <= m_names.size() ? std::optional(number - 1) : std::nullopt;
        for (const Qt::CaseSensitivity sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
            std::optional<int> found;
            for (int i = 0; i < m_names.size(); ++i) {
                if (m_names.at(i).compare(wanted.trimmed(), sensitivity) != 0)
                    continue;
                if (found)
                    throw DoubtfulColumns(
                        QObject::tr("the column \"%1\" stands twice in the table").arg(wanted));
                found = i;
            }
            m_foundByName = m_foundByName || found;
            if (found)
                return found;
        }
        return std::nullopt;
    }

    /// The column, or several with commas between. Throws Failure.
    std::vector<int> findAll(const QString &wanted)
    {
        if (const std::optional<int> one = find(wanted))
            return {*one};
        std::vector<int> columns;
        for (const QString &part : wanted.split(QLatin1Char(','))) {
            const std::optional<int> column = find(part);
            if (!column)
                throw Failure(QObject::tr("the table has no column \"%1\"").arg(wanted));
            columns.push_back(*column);
        }
        return columns;
    }

    /// The column to write to; newColumn when there is none of that name.
    int findOut(const QString &wanted, bool isNew, const std::vector<int> &in, const char *option)
    {
        bool isNumber = false;
        wanted.toInt(&isNumber);
        if (wanted.isEmpty() && in.size() > 1)
            throw Failure(QObject::tr("--%1 is needed where a coordinate has several columns")
                              .arg(QLatin1String(option)));
        if (wanted.isEmpty())
            return in.front();
        const std::optional<int> column = find(wanted);
        if (column && isNew)
            throw Failure(QObject::tr("the table has a column \"%1\" already: give --%2")
                              .arg(wanted, QLatin1String(option)));
        if (!column && isNumber)
            throw Failure(QObject::tr("the table has no column \"%1\"").arg(wanted));
        return column.value_or(newColumn);
    }

    bool foundByName() const { return m_foundByName; }

private:
    QStringList m_names;
    bool m_foundByName = false;
};

struct CsvLayout
{
    char delimiter = ',';
    CoordinateColumns wanted;
    std::vector<int> x;
    std::vector<int> y;
    int outX = newColumn;
    int outY = newColumn;
    bool oneResult = false; ///< for outX
    bool hasHeader = false; ///< columns were found by their names
};

CsvLayout layoutOf(const CsvOptions &options, std::string_view firstLine, char delimiter)
{
    ColumnNames names(csvFields(firstLine, delimiter));
    CsvLayout layout;
    layout.delimiter = delimiter;
    layout.wanted = wantedColumns(options.x, options.y, csvValues(firstLine, delimiter));
    layout.x = names.findAll(layout.wanted.x);
    layout.y = options.readBoth ? layout.y : names.findAll(layout.wanted.y);
    layout.oneResult = options.oneResult;
    layout.outX = names.findOut(options.outX, options.newOutX, layout.x, options.oneResult ? "ref" : "out-x");
    layout.outY =
        options.oneResult ? newColumn : names.findOut(options.outY, options.newOutY, layout.y, "out-y");
    if (layout.x == layout.y || (layout.outX == layout.outY && layout.outX != newColumn))
        throw Failure(QObject::tr("x and y cannot be one column"));
    layout.hasHeader = names.foundByName();
    return layout;
}

bool standsOutsideQuotes(std::string_view line, char delimiter)
{
    return csvFields(line, delimiter).size() > 1;
}

/// The first delimiter with which the columns are there.
CsvLayout findLayout(const CsvOptions &options, std::string_view firstLine)
{
    if (!options.delimiter.empty())
        return layoutOf(options, firstLine, options.delimiter.front());
    for (const char delimiter : likelyDelimiters.substr(0, likelyDelimiters.size() - 1)) {
        if (!standsOutsideQuotes(firstLine, delimiter))
            continue;
        try {
            return layoutOf(options, firstLine, delimiter);
        } catch (const DoubtfulColumns &) {
            throw;
        } catch (const Failure &) {
            continue; // the next may do; the last one says what is wrong
        }
    }
    return layoutOf(options, firstLine, likelyDelimiters.back());
}

/// Reads the coordinates of a table's line.
class CsvReader : public PointReader
{
public:
    CsvReader(CsvLayout layout, const CsvOptions &options)
        : m_layout(std::move(layout))
        , m_notation(options.notation)
        , m_readBoth(options.readBoth)
    {}

    std::size_t lineLength(std::string_view text) const override;
    bool read(std::string_view line, QPointF &point, Columns &columns, Reason &why) const override;

    bool isHeader(std::string_view line) const;

private:
    std::optional<std::string_view> fieldAt(std::string_view line, int column) const;
    void locate(std::string_view line, Columns &columns) const;
    const char *place(std::string_view line, const char *from, int column, Slot &slot) const;
    bool readPoint(std::string_view line, QPointF &point, Reason &why) const;
    bool readAxis(std::string_view line, const std::vector<int> &axis, Angle &value, Reason &why) const;
    bool mayBeThousands(std::string_view field) const;

    CsvLayout m_layout;
    CoordinateNotation m_notation;
    CsvOptions::ReadBoth m_readBoth;
};

std::size_t CsvReader::lineLength(std::string_view text) const
{
    const std::size_t lineFeed = std::min(text.find('\n'), text.size());
    if (text.substr(0, lineFeed).find('"') == std::string_view::npos)
        return lineFeed;
    bool begins = true;
    const char *const end = text.data() + text.size();
    for (const char *p = text.data(); p != end; ++p) {
        if (begins && *p == '"') {
            for (++p; p != end && (*p != '"' || (p + 1 != end && p[1] == '"')); ++p)
                p += *p == '"';
            if (p == end)
                break;
        }
        if (*p == '\n')
            return static_cast<std::size_t>(p - text.data());
        begins = *p == m_layout.delimiter;
    }
    return text.size();
}

std::optional<std::string_view> CsvReader::fieldAt(std::string_view line, int column) const
{
    const char *const end = line.data() + line.size();
    const char *p = line.data();
    for (; column > 0; --column) {
        p = fieldEnd(p, end, m_layout.delimiter);
        if (p == end)
            return std::nullopt;
        ++p;
    }
    return std::string_view(p, static_cast<std::size_t>(fieldEnd(p, end, m_layout.delimiter) - p));
}

/// Fills the slot of a column; \p from is behind the slot before it. Behind the slot.
const char *CsvReader::place(std::string_view line, const char *from, int column, Slot &slot) const
{
    const char *const end = line.data() + line.size();
    const std::optional<std::string_view> field = column == newColumn ? std::nullopt : fieldAt(line, column);
    const char *const to = field ? field->data() : end;
    slot.before = {from, static_cast<std::size_t>(to - from)};
    slot.delimited = column == newColumn;
    slot.missing = column != newColumn && !field;
    slot.quoted = field && isQuoted(*field);
    return field ? to + field->size() : end;
}

void CsvReader::locate(std::string_view line, Columns &columns) const
{
    // New columns come last, x before y.
    const auto order = [](int column) {
        return column == newColumn ? std::numeric_limits<int>::max() : column;
    };
    columns.yFirst = !m_layout.oneResult && order(m_layout.outY) < order(m_layout.outX);
    columns.single = m_layout.oneResult;
    columns.csv = true;
    columns.delimiter = m_layout.delimiter;
    const int first = columns.yFirst ? m_layout.outY : m_layout.outX;
    const int second = columns.yFirst ? m_layout.outX : m_layout.outY;
    const char *behind = place(line, line.data(), first, columns.first);
    if (!columns.single)
        behind = place(line, behind, second, columns.second);
    columns.rest = {behind, static_cast<std::size_t>(line.data() + line.size() - behind)};
    columns.located = true;
}

/// "413,224" in quotes between commas: programs that group thousands write that too.
bool CsvReader::mayBeThousands(std::string_view field) const
{
    const std::size_t comma = field.find(',');
    if (m_layout.delimiter != ',' || m_notation.decimalComma || comma == std::string_view::npos)
        return false;
    const std::size_t digits = field.find_first_not_of("0123456789", comma + 1);
    return digits == comma + 4 || (digits == std::string_view::npos && field.size() == comma + 4);
}

bool CsvReader::readAxis(std::string_view line, const std::vector<int> &axis, Angle &value, Reason &why) const
{
    std::string text;
    for (const int column : axis) {
        const std::optional<std::string_view> field = fieldAt(line, column);
        why = QT_TRANSLATE_NOOP("QObject", "is missing");
        if (!field)
            return false;
        why =
            QT_TRANSLATE_NOOP("QObject", "could be read as one number with thousands or with decimals: give "
                                         "--decimal-comma for decimals");
        if (isQuoted(*field) && mayBeThousands(field->substr(1)))
            return false;
        if (axis.size() == 1 && !isQuoted(*field))
            return readCoordinate(*field, m_notation, value, why);
        text += (text.empty() ? "" : " ") + csvText(*field);
    }
    return readCoordinate(text, m_notation, value, why);
}

bool CsvReader::read(std::string_view line, QPointF &point, Columns &columns, Reason &why) const
{
    locate(line, columns);
    if (!readPoint(line, point, why))
        return false;
    why = QT_TRANSLATE_NOOP("QObject", "the line has too few columns for the result");
    return !columns.first.missing && !columns.second.missing;
}

bool CsvReader::readPoint(std::string_view line, QPointF &point, Reason &why) const
{
    if (m_readBoth)
        return m_readBoth(csvText(fieldAt(line, m_layout.x.front()).value_or(std::string_view())), point,
                          why);
    Angle x;
    Angle y;
    if (!readAxis(line, m_layout.x, x, why)) {
        why = Reason("x", why.what());
        return false;
    }
    if (!readAxis(line, m_layout.y, y, why)) {
        why = Reason("y", why.what());
        return false;
    }
    return placeCoordinates(x, y, point, why);
}

bool CsvReader::isHeader(std::string_view line) const
{
    QPointF point;
    Columns columns;
    Reason why;
    if (m_layout.hasHeader || read(line, point, columns, why))
        return m_layout.hasHeader;
    const auto isWord = [&](int column) {
        const std::string text = csvText(fieldAt(line, column).value_or(std::string_view()));
        return !text.empty() && !beginsLikeNumber(text);
    };
    return isWord(m_layout.x.front()) && (m_readBoth || isWord(m_layout.y.front()));
}

} // namespace

QStringList csvValues(std::string_view line, char delimiter)
{
    QStringList values;
    for (const std::string_view field : csvFields(line, delimiter))
        values << nameOf(field);
    return values;
}

bool isSeparatorLine(std::string_view line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r' || line.back() == '"'))
        line.remove_suffix(1);
    if (!line.empty() && line.front() == '"')
        line.remove_prefix(1);
    constexpr std::size_t size = 5; // "sep=;"
    return line.size() == size && (line.substr(0, 4) == "sep=" || line.substr(0, 4) == "SEP=");
}

CsvFormat::CsvFormat(CsvOptions options)
    : m_options(std::move(options))
{}

std::string CsvFormat::delimiters() const
{
    return m_options.delimiter.empty() ? std::string(likelyDelimiters) : m_options.delimiter;
}

FileHead CsvFormat::head(std::string_view firstLine) const
{
    const bool encoded = isUtf8(firstLine);
    try {
        const CsvLayout layout = findLayout(m_options, firstLine);
        tellColumns(layout.wanted, csvValues(firstLine, layout.delimiter));
        const auto reader = std::make_shared<CsvReader>(layout, m_options);
        FileHead head{reader, std::string(1, layout.delimiter), std::string(firstLine),
                      reader->isHeader(firstLine)};
        if (layout.outX == newColumn)
            head.header += newName(m_options.outX, layout.delimiter);
        if (layout.outY == newColumn && !layout.oneResult)
            head.header += newName(m_options.outY, layout.delimiter);
        if (!encoded && !isAscii(std::string_view(head.header).substr(firstLine.size())))
            throw Failure(QObject::tr("the new columns' names would be UTF-8 in a table that is not"));
        return head;
    } catch (const Failure &failure) {
        if (encoded)
            throw;
        throw Failure(
            QObject::tr("%1 (the line is not UTF-8: see --encoding)").arg(QString::fromUtf8(failure.what())));
    }
}
