#include "PointText.h"

#include "TextBuffer.h"

#include <algorithm>

namespace {

constexpr const char *doubtfulComma = "could be read as two numbers or as one with a decimal comma: give "
                                      "--decimal-comma, or --csv when commas separate";

constexpr const char *noNumber = "is no number";

std::string_view view(const char *begin, const char *end)
{
    return {begin, static_cast<std::size_t>(end - begin)};
}

bool complainAbout(const char *axis, const std::string &why, std::string &message)
{
    message = std::string(axis) + ' ' + why;
    return false;
}

/// Behind one separator: blanks with at most one comma or semicolon among them.
const char *skipSeparator(const char *p, const char *end)
{
    p = skipBlanks(p, end);
    if (p != end && isSeparator(*p))
        p = skipBlanks(p + 1, end);
    return p;
}

bool endsColumn(const char *p, const char *end) { return p == end || isSeparator(*p); }

void setColumns(Columns &columns, const char *xEnd, const char *yBegin, const char *yEnd, const char *end)
{
    columns.second.before = view(xEnd, yBegin);
    columns.rest = view(yEnd, end);
    columns.located = true;
}

/// How the commas of a line are meant.
enum class Commas { Separate, Decimal, Doubtful };

/// Behind a whole number, null when there is none.
const char *skipWhole(const char *p, const char *end)
{
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    const char *const behind = std::find_if_not(p, end, isDigit);
    return behind == p ? nullptr : behind;
}

/// Behind "1,5": digits on both sides of a bare comma. Null when there is none.
const char *skipCommaNumber(const char *p, const char *end)
{
    const char *const comma = skipWhole(p, end);
    if (!comma || comma == end || *comma != ',')
        return nullptr;
    const char *const behind = std::find_if_not(comma + 1, end, isDigit);
    return behind != comma + 1 && endsColumn(behind, end) ? behind : nullptr;
}

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}

bool beginsWithNumber(const char *p, const char *end)
{
    double number = 0.0;
    const char *why = nullptr;
    const char *const behind = p == end ? nullptr : parseNumber(p, end, number, why);
    return behind && endsColumn(behind, end);
}

/// \p p is at the beginning of the first column. Two numbers with commas and another separator between them
/// leave no doubt. One such number beside a plain one, or four whole numbers in a row, can be read both ways.
Commas commasOf(const char *p, const char *end, bool degrees)
{
    const char *const behind = skipCommaNumber(p, end);
    if (!behind) {
        const char *const whole = skipWhole(p, end);
        const char *const next = whole ? skipSeparator(whole, end) : nullptr;
        const bool otherSeparator = next && view(whole, next).find(',') == std::string_view::npos;
        return otherSeparator && next != whole && skipCommaNumber(next, end) ? Commas::Doubtful
                                                                             : Commas::Separate;
    }
    const char *const next = skipSeparator(behind, end);
    const char *const secondEnd = next == end ? nullptr : skipCommaNumber(next, end);
    const bool commaBetween = view(behind, next).find(',') != std::string_view::npos;
    if (!commaBetween)
        return secondEnd                     ? Commas::Decimal
               : beginsWithNumber(next, end) ? Commas::Doubtful
                                             : Commas::Separate;
    if (!secondEnd || skipBlanks(secondEnd, end) != end)
        return Commas::Separate;
    double latitude = 0.0;
    readNumber(view(next, std::find(next, end, ',')), latitude);
    return degrees && (latitude < -90.0 || latitude > 90.0) ? Commas::Separate : Commas::Doubtful;
}

/// The coordinate at the beginning of a line, in quotes or not. Behind it, null when there is none.
const char *parseColumn(const char *p, const char *end, Angle &angle, std::string &why)
{
    if (p == end || *p != '"')
        return parseAngle(p, end, angle, why);
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
};

/// Two angles whose parts are columns, hemisphere included: nothing else has such a form.
bool isPairOfAngleColumns(const char *p, const char *end, AnglePair &pair, std::string &why)
{
    constexpr int mostParts = 3;
    const AngleColumns first = parseAngleColumns(p, end, mostParts, pair.first);
    if (!first.behind)
        return false;
    pair.firstEnd = first.behind;
    pair.secondBegin = skipSeparator(first.behind, end);
    const AngleColumns second = parseAngleColumns(pair.secondBegin, end, first.count, pair.second);
    if (!second.behind || second.count != first.count || second.letterFirst != first.letterFirst)
        return false;
    pair.secondEnd = second.behind;
    if (!first.valid)
        complainAbout("the first angle", first.why, why);
    else if (!second.valid)
        complainAbout("the second angle", second.why, why);
    return true;
}

/// Two angles, each in a column.
bool isPairOfAngles(const char *p, const char *end, AnglePair &pair, std::string &why)
{
    std::string reason;
    pair.firstEnd = parseColumn(p, end, pair.first, reason);
    if (!pair.firstEnd)
        return reason == noNumber ? false : complainAbout("x", reason, why);
    pair.secondBegin = skipSeparator(pair.firstEnd, end);
    if (pair.secondBegin == end)
        return complainAbout("y", "is missing", why);
    if (pair.secondBegin == pair.firstEnd)
        return false;
    pair.secondEnd = parseColumn(pair.secondBegin, end, pair.second, reason);
    if (!pair.secondEnd || !endsColumn(pair.secondEnd, end))
        return complainAbout("y", pair.secondEnd ? noNumber : reason, why);
    return true;
}

bool takePair(const AnglePair &pair, const char *end, QPointF &point, Columns &columns, std::string &why)
{
    setColumns(columns, pair.firstEnd, pair.secondBegin, pair.secondEnd, end);
    return why.empty() && placeCoordinates(pair.first, pair.second, point, why);
}

using NumberParser = const char *(*)(const char *, const char *, double &, const char *&);

template <NumberParser parse>
bool readPair(std::string_view line, QPointF &point, Columns &columns, std::string &why)
{
    const char *const end = line.data() + line.size();
    const char *reason = nullptr;
    const char *const xEnd = parse(skipBlanks(line.data(), end), end, point.rx(), reason);
    if (!xEnd)
        return complainAbout("x", reason, why);
    const char *const yBegin = skipSeparator(xEnd, end);
    if (yBegin == end)
        return complainAbout("y", "is missing", why);
    if (yBegin == xEnd)
        return complainAbout("x", noNumber, why);
    const char *const yEnd = parse(yBegin, end, point.ry(), reason);
    if (!yEnd || !endsColumn(yEnd, end))
        return complainAbout("y", yEnd ? noNumber : reason, why);
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

bool readCoordinate(std::string_view text, const CoordinateNotation &notation, Angle &value, std::string &why)
{
    const char *const end = text.data() + text.size();
    const char *const begin = skipBlanks(text.data(), end);
    const char *reason = noNumber;
    const char *const behind = begin == end ? nullptr : parseCommaNumber(begin, end, value.degrees, reason);
    if (behind && skipBlanks(behind, end) == end)
        return true;
    why = behind ? noNumber : reason;
    Angle angle;
    std::string angleWhy;
    if (notation.angles && readAngle(view(begin, end), angle, angleWhy)) {
        value = angle;
        return true;
    }
    if (notation.angles && angleWhy != noNumber)
        why = angleWhy;
    return false;
}

bool placeCoordinates(const Angle &first, const Angle &second, QPointF &point, std::string &why)
{
    if (first.axis != Axis::Unknown && first.axis == second.axis) {
        why = first.axis == Axis::Latitude ? "both coordinates are latitudes"
                                           : "both coordinates are longitudes";
        return false;
    }
    const bool yFirst = first.axis == Axis::Latitude || second.axis == Axis::Longitude;
    point = yFirst ? QPointF(second.degrees, first.degrees) : QPointF(first.degrees, second.degrees);
    return true;
}

bool XyReader::read(std::string_view line, QPointF &point, Columns &columns, std::string &why) const
{
    const bool numbers = m_notation.decimalComma ? readPair<parseCommaNumber>(line, point, columns, why)
                                                 : readPair<parseNumber>(line, point, columns, why);
    if (!numbers)
        return m_notation.angles && readAnglePair(line, point, columns, why);
    return columns.rest.empty() || readAgain(line, point, columns, why);
}

/// Numbers with something behind them may be numbers of another kind.
bool XyReader::readAgain(std::string_view line, QPointF &point, Columns &columns, std::string &why) const
{
    const char *const end = line.data() + line.size();
    const char *const begin = skipBlanks(line.data(), end);
    if (!m_notation.decimalComma && line.find(',') != std::string_view::npos) {
        const Commas commas = commasOf(begin, end, m_notation.angles);
        if (commas == Commas::Decimal)
            return readPair<parseCommaNumber>(line, point, columns, why);
        columns.located = commas == Commas::Separate;
        if (!columns.located)
            why = doubtfulComma;
        if (!columns.located)
            return false;
    }
    AnglePair pair;
    if (!m_notation.angles || !hasLoneHemisphere(columns.rest.data(), end) ||
        !isPairOfAngleColumns(begin, end, pair, why))
        return true;
    return takePair(pair, end, point, columns, why);
}

bool XyReader::readAnglePair(std::string_view line, QPointF &point, Columns &columns, std::string &why)
{
    const char *const end = line.data() + line.size();
    const char *const begin = skipBlanks(line.data(), end);
    AnglePair pair;
    std::string reason;
    if (isPairOfAngleColumns(begin, end, pair, reason) || isPairOfAngles(begin, end, pair, reason)) {
        why = reason;
        return takePair(pair, end, point, columns, why);
    }
    if (!reason.empty())
        why = reason;
    return false;
}

bool XyWriter::write(const QPointF &point, const Columns &columns, TextBuffer &out, std::string &) const
{
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
        writeStar(columns.second, columns, out);
        out.write(columns.rest);
        return;
    }
    const char separator = separatorOf(line);
    for (int i = 0; i < 2; ++i) {
        if (i > 0)
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
