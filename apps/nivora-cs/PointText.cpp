#include "PointText.h"

#include "Output.h"

#include <array>
#include <charconv>

namespace {

// The largest double has 309 digits before the point.
constexpr std::size_t longestNumber = 309 + 2 + XyWriter::MostDecimals;

const char *skipBlanks(const char *p, const char *end)
{
    while (p != end && isBlank(*p))
        ++p;
    return p;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Behind the number at \p p, null when there is none; then \p why tells the reason.
const char *parseNumber(const char *p, const char *end, double &value, const char *&why)
{
    why = "is no number";
    if (p != end && *p == '+' && (p + 1 == end || p[1] == '-'))
        return nullptr;
    if (p != end && *p == '+')
        ++p; // from_chars knows only the minus
    const char *first = p != end && *p == '-' ? p + 1 : p;
    if (first == end || !(isDigit(*first) || *first == '.')) // keeps "inf" and "nan" away
        return nullptr;
    const auto [behind, error] = std::from_chars(p, end, value);
    if (error == std::errc::result_out_of_range)
        why = "is too large or too small for a number";
    return error == std::errc() ? behind : nullptr;
}

bool complainAbout(const char *axis, const char *why, std::string &message)
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

char *putNumber(char *at, double value, int decimals)
{
    char *end = std::to_chars(at, at + longestNumber, value, std::chars_format::fixed, decimals).ptr;
    const std::string_view digits(at, static_cast<std::size_t>(end - at));
    if (digits.front() != '-' || digits.find_first_not_of("-0.") != std::string_view::npos)
        return end;
    return std::char_traits<char>::move(at, at + 1, digits.size() - 1) + digits.size() - 1;
}

} // namespace

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isSeparator(char c) { return isBlank(c) || c == ',' || c == ';'; }

bool XyReader::read(std::string_view line, QPointF &point, Columns &columns, std::string &why) const
{
    const char *const end = line.data() + line.size();
    const char *reason = nullptr;
    const char *const xEnd = parseNumber(skipBlanks(line.data(), end), end, point.rx(), reason);
    if (!xEnd)
        return complainAbout("x", reason, why);
    const char *const yBegin = skipSeparator(xEnd, end);
    if (yBegin == end)
        return complainAbout("y", "is missing", why);
    if (yBegin == xEnd)
        return complainAbout("x", "is no number", why);
    const char *const yEnd = parseNumber(yBegin, end, point.ry(), reason);
    if (!yEnd)
        return complainAbout("y", reason, why);
    if (yEnd != end && !isSeparator(*yEnd))
        return complainAbout("y", "is no number", why);
    columns.separator = {xEnd, static_cast<std::size_t>(yBegin - xEnd)};
    columns.rest = {yEnd, static_cast<std::size_t>(end - yEnd)};
    return true;
}

bool XyWriter::write(const QPointF &point, const Columns &columns, Output &out, std::string &) const
{
    // Somebody's padding may be long; room is reserved for what a number needs.
    const std::string_view separator = columns.separator.size() > longestNumber ? " " : columns.separator;
    char *at = out.reserve(3 * longestNumber);
    at = putNumber(at, point.x(), m_decimals);
    std::char_traits<char>::copy(at, separator.data(), separator.size());
    at = putNumber(at + separator.size(), point.y(), m_decimals);
    out.advance(at);
    out.write(columns.rest);
    return true;
}

bool readNumber(std::string_view text, double &value)
{
    const char *reason = nullptr;
    const char *const end = text.data() + text.size();
    return parseNumber(text.data(), end, value, reason) == end && !text.empty();
}

QString numberText(double value, int decimals)
{
    std::array<char, longestNumber> text;
    const char *const end = putNumber(text.data(), value, decimals);
    return QString::fromLatin1(text.data(), static_cast<int>(end - text.data()));
}
