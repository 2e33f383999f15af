#include "PointText.h"

#include "LineColumns.h"
#include "LineCommas.h"
#include "PeopleText.h"
#include "TextBuffer.h"

#include <algorithm>

namespace {

constexpr const char *doubtfulComma =
    QT_TRANSLATE_NOOP("QObject", "could be read as two numbers or as one with a decimal comma: give "
                                 "--decimal-comma, or --csv when commas separate");
constexpr const char *groupingComma =
    QT_TRANSLATE_NOOP("QObject", "commas could group thousands or be decimal marks: give --decimal-comma for "
                                 "decimals");
constexpr const char *groupingBlank =
    QT_TRANSLATE_NOOP("QObject", "blanks could group thousands: separate the columns by semicolons or tabs, "
                                 "or give --csv --delimiter \" \" where they separate");
constexpr const char *angleParts =
    QT_TRANSLATE_NOOP("QObject", "could be degrees, minutes and seconds: give their letters (55 45 21 N), or "
                                 "--csv with the columns of --x and --y");
constexpr const char *missing = QT_TRANSLATE_NOOP("QObject", "is missing");

bool refuse(Reason &why, const char *subject, const char *what)
{
    why = Reason(subject, what);
    return false;
}

void setColumns(Columns &columns, const char *xEnd, const char *yStart, const char *yEnd, const char *end)
{
    // NOLINTNEXTLINE(readability-suspicious-call-argument): what is between begins where x ends
    columns.second.before = view(xEnd, yStart);
    columns.rest = view(yEnd, end);
    columns.located = true;
}

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}

/// The coordinate at the beginning of a line, in quotes or not. Behind it, null when there is none.
const char *parseColumn(const char *p, const char *end, DecimalCommas commas, Angle &angle, const char *&why)
{
    if (p == end || *p != '"')
        return parseAngle(p, end, commas, angle, why);
    std::string text;
    for (++p; p != end; ++p) {
        if (*p != '"' || (p + 1 != end && p[1] == '"'))
            text += *p;
        if (*p == '"' && (p + 1 == end || p[1] != '"'))
            break;
        p += *p == '"';
    }
    return p != end && readAngle(text, angle, why) ? p + 1 : nullptr;
}

struct AnglePair
{
    Angle first;
    Angle second;
    const char *firstEnd = nullptr;
    const char *secondBegin = nullptr;
    const char *secondEnd = nullptr;
    Reason why; ///< it has the form, but cannot be used
};

/// Two angles whose parts are columns, hemisphere included: nothing else has such a form.
bool isPairOfAngleColumns(const char *p, const char *end, DecimalCommas commas, AnglePair &pair)
{
    constexpr int mostParts = 3;
    const AngleColumns first = parseAngleColumns(p, end, mostParts, commas, pair.first);
    if (!first.behind)
        return false;
    pair.firstEnd = first.behind;
    pair.secondBegin = skipSeparator(first.behind, end);
    const AngleColumns second = parseAngleColumns(pair.secondBegin, end, first.count, commas, pair.second);
    if (!second.behind || second.count != first.count || second.letterFirst != first.letterFirst)
        return false;
    pair.secondEnd = second.behind;
    if (!first.valid)
        pair.why = Reason(QT_TRANSLATE_NOOP("QObject", "the first angle"), first.why);
    else if (!second.valid)
        pair.why = Reason(QT_TRANSLATE_NOOP("QObject", "the second angle"), second.why);
    return true;
}

/// Two angles, each in a column.
bool isPairOfAngles(const char *p, const char *end, DecimalCommas commas, AnglePair &pair)
{
    const char *reason = noNumber;
    pair.firstEnd = parseColumn(p, end, commas, pair.first, reason);
    if (!pair.firstEnd)
        return Reason(reason).is(noNumber) ? false : refuse(pair.why, "x", reason);
    pair.secondBegin = skipSeparator(pair.firstEnd, end);
    if (pair.secondBegin == end)
        return refuse(pair.why, "y", missing);
    if (pair.secondBegin == pair.firstEnd)
        return false;
    pair.secondEnd = parseColumn(pair.secondBegin, end, commas, pair.second, reason);
    if (!pair.secondEnd || !endsColumn(pair.secondEnd, end))
        return refuse(pair.why, "y", pair.secondEnd ? noNumber : reason);
    return true;
}

using PairParser = bool (*)(const char *, const char *, DecimalCommas, AnglePair &);

bool isSame(const AnglePair &a, const AnglePair &b)
{
    return a.firstEnd == b.firstEnd && a.secondEnd == b.secondEnd && a.first.degrees == b.first.degrees &&
           a.second.degrees == b.second.degrees;
}

bool hasBothLetters(const AnglePair &pair)
{
    return pair.first.axis != Axis::Unknown && pair.second.axis != Axis::Unknown &&
           view(pair.firstEnd, pair.secondBegin).find(',') == std::string_view::npos;
}

/// A comma before a letter is a decimal mark unless it can separate. "37,55N 12" can be read both ways.
bool parsePair(PairParser parse, const char *p, const char *end, AnglePair &pair)
{
    const bool separates = parse(p, end, DecimalCommas::BeforeMarks, pair);
    if (std::find(p, end, ',') == end)
        return separates;
    AnglePair decimal;
    if (!parse(p, end, DecimalCommas::BeforeLetters, decimal))
        return separates;
    const bool doubtful = separates && !isSame(pair, decimal) && !hasBothLetters(decimal);
    pair = decimal;
    if (doubtful)
        pair.why = doubtfulComma;
    return true;
}

/// Whether x or y is a whole number of up to three digits, so that more of it may stand behind it.
bool hasShortColumn(const char *begin, const Columns &columns)
{
    const auto isShort = [](const char *p, const char *end) {
        constexpr std::ptrdiff_t most = 3;
        p += p != end && (*p == '-' || *p == '+');
        return end - p <= most && std::all_of(p, end, isDigit);
    };
    const std::string_view between = columns.second.before;
    return isShort(begin, between.data()) || isShort(between.data() + between.size(), columns.rest.data());
}

bool takePair(const AnglePair &pair, const char *end, QPointF &point, Columns &columns, Reason &why)
{
    why = pair.why;
    if (!why.is(doubtfulComma))
        setColumns(columns, pair.firstEnd, pair.secondBegin, pair.secondEnd, end);
    return why.isEmpty() && placeCoordinates(pair.first, pair.second, point, why);
}

using NumberParser = const char *(*)(const char *, const char *, double &, const char *&);

template <NumberParser parse>
bool readPair(std::string_view line, QPointF &point, Columns &columns, Reason &why)
{
    const char *const end = line.data() + line.size();
    const char *reason = nullptr;
    const char *const xEnd = parse(skipBlanks(line.data(), end), end, point.rx(), reason);
    if (!xEnd)
        return refuse(why, "x", reason);
    const char *const yBegin = skipSeparator(xEnd, end);
    if (yBegin == end)
        return refuse(why, "y", missing);
    if (yBegin == xEnd)
        return refuse(why, "x", noNumber);
    const char *const yEnd = parse(yBegin, end, point.ry(), reason);
    if (!yEnd || !endsColumn(yEnd, end))
        return refuse(why, "y", yEnd ? noNumber : reason);
    setColumns(columns, xEnd, yBegin, yEnd, end);
    return true;
}

char *putText(char *at, std::string_view text) { return at + text.copy(at, text.size()); }

/// The text with its quotes doubled, in quotes.
char *quoteText(char *begin, char *end)
{
    const std::string text(begin, end);
    *begin++ = '"';
    for (const char c : text) {
        if (c == '"')
            *begin++ = '"';
        *begin++ = c;
    }
    *begin++ = '"';
    return begin;
}

char separatorOf(std::string_view line)
{
    const std::size_t at = line.find_first_of(",;\t");
    return at == std::string_view::npos ? ' ' : line[at];
}

void writeStar(const Slot &slot, const Columns &columns, TextBuffer &out)
{
    out.write(slot.before);
    if (slot.delimited)
        out.write({&columns.delimiter, 1});
    if (!slot.missing)
        out.write("*");
}

} // namespace

bool readCoordinate(std::string_view text, const CoordinateNotation &notation, Angle &value, Reason &why)
{
    const char *const end = text.data() + text.size();
    const char *const begin = skipBlanks(text.data(), end);
    const char *reason = noNumber;
    const char *const behind = begin == end ? nullptr : parseCommaNumber(begin, end, value.degrees, reason);
    if (behind && skipBlanks(behind, end) == end)
        return true;
    why = behind ? noNumber : reason;
    Angle angle;
    const char *angleWhy = noNumber;
    if (!notation.angles && begin != end && parseGroupedNumber(begin, end, true, value.degrees) == end)
        return true;
    if (notation.angles && readAngle(view(begin, end), angle, angleWhy)) {
        value = angle;
        return true;
    }
    if (notation.angles && !Reason(angleWhy).is(noNumber))
        why = angleWhy;
    return false;
}

bool placeCoordinates(const Angle &first, const Angle &second, QPointF &point, Reason &why)
{
    if (first.axis != Axis::Unknown && first.axis == second.axis) {
        why = first.axis == Axis::Latitude ? QT_TRANSLATE_NOOP("QObject", "both coordinates are latitudes")
                                           : QT_TRANSLATE_NOOP("QObject", "both coordinates are longitudes");
        return false;
    }
    const bool yFirst = first.axis == Axis::Latitude || second.axis == Axis::Longitude;
    point = yFirst ? QPointF(second.degrees, first.degrees) : QPointF(first.degrees, second.degrees);
    return true;
}

bool XyReader::read(std::string_view line, QPointF &point, Columns &columns, Reason &why) const
{
    const bool numbers = m_notation.decimalComma ? readPair<parseCommaNumber>(line, point, columns, why)
                                                 : readPair<parseNumber>(line, point, columns, why);
    if (!numbers)
        return m_notation.angles ? readAnglePair(line, point, columns, why)
                                 : readGroups(line, point, columns, why) == Groups::Apart;
    return columns.rest.empty() || readAgain(line, point, columns, why);
}

/// Numbers with something behind them may be numbers of another kind.
bool XyReader::readAgain(std::string_view line, QPointF &point, Columns &columns, Reason &why) const
{
    const char *const end = line.data() + line.size();
    const char *const begin = skipBlanks(line.data(), end);
    AnglePair pair;
    if (m_notation.angles && hasHemisphereColumn(columns.rest.data(), end) &&
        parsePair(isPairOfAngleColumns, begin, end, pair))
        return takePair(pair, end, point, columns, why);
    if (hasShortColumn(begin, columns)) {
        const Groups parts =
            m_notation.angles ? readParts(line, columns, why) : readGroups(line, point, columns, why);
        if (parts != Groups::None)
            return parts == Groups::Apart;
    }
    if (m_notation.decimalComma || line.find(',') == std::string_view::npos)
        return true;
    const Commas commas = commasOf(begin, end, m_notation.angles);
    if (commas == Commas::Decimal)
        return readPair<parseCommaNumber>(line, point, columns, why);
    if (commas == Commas::Separate)
        return true;
    columns.located = false;
    why = commas == Commas::Grouping ? groupingComma : doubtfulComma;
    return false;
}

/// Numbers whose thousands are set apart; nothing changes where there are none.
Groups XyReader::readGroups(std::string_view line, QPointF &point, Columns &columns, Reason &why)
{
    const char *const end = line.data() + line.size();
    const GroupedPair pair = readGroupedPair(skipBlanks(line.data(), end), end);
    if (pair.groups == Groups::Apart) {
        point = pair.point;
        setColumns(columns, pair.xEnd, pair.yBegin, pair.yEnd, end);
    }
    if (pair.groups == Groups::Doubtful) {
        columns.located = false;
        why = groupingBlank;
    }
    return pair.groups;
}

/// Doubtful when the columns may be the parts of two angles without letters.
Groups XyReader::readParts(std::string_view line, Columns &columns, Reason &why)
{
    const char *const end = line.data() + line.size();
    if (!mayBeAngleParts(skipBlanks(line.data(), end), end))
        return Groups::None;
    columns.located = false;
    why = angleParts;
    return Groups::Doubtful;
}

bool XyReader::readAnglePair(std::string_view line, QPointF &point, Columns &columns, Reason &why)
{
    const char *const end = line.data() + line.size();
    const char *const begin = skipBlanks(line.data(), end);
    AnglePair columnPair;
    AnglePair pair;
    if (parsePair(isPairOfAngleColumns, begin, end, columnPair))
        return takePair(columnPair, end, point, columns, why);
    if (parsePair(isPairOfAngles, begin, end, pair))
        return takePair(pair, end, point, columns, why);
    if (!pair.why.isEmpty())
        why = pair.why;
    return false;
}

bool XyWriter::write(const QPointF &point, const Columns &columns, TextBuffer &out, Reason &why) const
{
    // The degree sign is UTF-8 too.
    why = QT_TRANSLATE_NOOP("QObject", "the line is not UTF-8: see --encoding");
    if (m_angles && !(isUtf8(columns.first.before) && isUtf8(columns.second.before) && isUtf8(columns.rest)))
        return false;
    const Slot &first = columns.first;
    const Slot &second = columns.second;
    char *at = out.reserve(first.before.size() + second.before.size() + columns.rest.size() +
                           2 * (longestNumber + longestAngle));
    at = put(at, columns.yFirst ? point.y() : point.x(), columns.yFirst, columns, first);
    at = put(at, columns.yFirst ? point.x() : point.y(), !columns.yFirst, columns, second);
    out.advance(putText(at, columns.rest));
    return true;
}

char *XyWriter::put(char *at, double value, bool y, const Columns &columns, const Slot &slot) const
{
    at = putText(at, slot.before);
    if (slot.delimited)
        *at++ = columns.delimiter;
    char *const end =
        m_angles ? putAngle(at, value, y, m_decimals, m_letters) : putNumber(at, value, m_decimals);
    return slot.quoted || (columns.csv && m_angles) ? quoteText(at, end) : end;
}

void writeFailed(std::string_view line, const Columns &columns, TextBuffer &out)
{
    if (columns.located) {
        writeStar(columns.first, columns, out);
        if (!columns.single)
            writeStar(columns.second, columns, out);
        out.write(columns.rest);
        return;
    }
    const char separator = separatorOf(line);
    out.write("*");
    if (!columns.single) {
        out.write({&separator, 1});
        out.write("*");
    }
    if (!line.empty())
        out.write({&separator, 1});
    out.write(line);
}

bool beginsLikeNumber(std::string_view text)
{
    const std::size_t digit = text.find_first_not_of(" \t\"+-.,");
    return digit != std::string_view::npos && (isDigit(text[digit]) || text[digit] == '*');
}

bool looksLikeHeader(std::string_view line)
{
    const char *const end = line.data() + line.size();
    const char *const first = skipBlanks(line.data(), end);
    const char *const firstEnd = std::find_if(first, end, isSeparator);
    const char *const second = skipSeparator(firstEnd, end);
    return std::any_of(first, end, isLetter) && !beginsLikeNumber(view(first, firstEnd)) &&
           !beginsLikeNumber(view(second, end));
}
