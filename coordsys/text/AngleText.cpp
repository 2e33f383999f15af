#include <coordsys/AngleText.h>

#include <coordsys/NumberText.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace nivora::cs {
namespace {

enum Part { Degrees, Minutes, Seconds, PartCount };

struct Mark
{
    std::string_view text;
    Part part;
};
// The first hit wins: two primes are a double prime. All but the ASCII ones are UTF-8.
constexpr Mark marks[] = {
    {"\"", Seconds},
    {"''", Seconds},
    {"\xE2\x80\xB3", Seconds},             // double prime
    {"\xE2\x80\x9D", Seconds},             // right double quotation mark
    {"\xE2\x80\x9C", Seconds},             // left double quotation mark
    {"\xE2\x80\x9F", Seconds},             // reversed one
    {"\xCB\xAE", Seconds},                 // modifier double apostrophe
    {"\xCB\xBA", Seconds},                 // modifier double prime
    {"\xE2\x80\xB2\xE2\x80\xB2", Seconds}, // two primes
    {"\xE2\x80\x99\xE2\x80\x99", Seconds}, // two apostrophes
    {"'", Minutes},
    {"`", Minutes},
    {"\xE2\x80\xB2", Minutes}, // prime
    {"\xE2\x80\x99", Minutes}, // right single quotation mark
    {"\xE2\x80\x98", Minutes}, // left single quotation mark
    {"\xE2\x80\x9B", Minutes}, // reversed one
    {"\xC2\xB4", Minutes},     // acute accent
    {"\xCA\xB9", Minutes},     // modifier prime
    {"\xCA\xBC", Minutes},     // modifier apostrophe
    {"\xC2\xB0", Degrees},     // degree sign
    {"\xC2\xBA", Degrees},     // ordinal indicator
    {"\xCB\x9A", Degrees},     // ring above
    {"\xE2\x88\x98", Degrees}, // ring operator
    {"d", Degrees},
    {"D", Degrees},
};

struct Hemisphere
{
    std::string_view text;
    Axis axis;
    bool negative;
};
// The first hit wins: longer ones before those they begin with, abbreviations before letters.
constexpr Hemisphere hemispheres[] = {
    {"с.ш.", Axis::Latitude, false},   {"ю.ш.", Axis::Latitude, true},   {"в.д.", Axis::Longitude, false},
    {"з.д.", Axis::Longitude, true},   {"с. ш.", Axis::Latitude, false}, {"ю. ш.", Axis::Latitude, true},
    {"в. д.", Axis::Longitude, false}, {"з. д.", Axis::Longitude, true}, {"С.Ш.", Axis::Latitude, false},
    {"Ю.Ш.", Axis::Latitude, true},    {"В.Д.", Axis::Longitude, false}, {"З.Д.", Axis::Longitude, true},
    {"с.ш", Axis::Latitude, false},    {"ю.ш", Axis::Latitude, true},    {"в.д", Axis::Longitude, false},
    {"з.д", Axis::Longitude, true},    {"сш", Axis::Latitude, false},    {"юш", Axis::Latitude, true},
    {"вд", Axis::Longitude, false},    {"зд", Axis::Longitude, true},    {"СШ", Axis::Latitude, false},
    {"ЮШ", Axis::Latitude, true},      {"ВД", Axis::Longitude, false},   {"ЗД", Axis::Longitude, true},
    {"N", Axis::Latitude, false},      {"S", Axis::Latitude, true},      {"E", Axis::Longitude, false},
    {"W", Axis::Longitude, true},      {"n", Axis::Latitude, false},     {"s", Axis::Latitude, true},
    {"e", Axis::Longitude, false},     {"w", Axis::Longitude, true},     {"С", Axis::Latitude, false},
    {"Ю", Axis::Latitude, true},       {"В", Axis::Longitude, false},    {"З", Axis::Longitude, true},
    {"с", Axis::Latitude, false},      {"ю", Axis::Latitude, true},      {"в", Axis::Longitude, false},
    {"з", Axis::Longitude, true},      {"O", Axis::Longitude, true},     {"Ö", Axis::Longitude, false},
    {"ö", Axis::Longitude, false}, // French ouest, German östlich
};

constexpr std::string_view minusSign = "\xE2\x88\x92"; // U+2212

bool startsWith(const char *p, const char *end, std::string_view text)
{
    return std::string_view(p, static_cast<std::size_t>(end - p)).substr(0, text.size()) == text;
}

template <typename Row, std::size_t Size>
const Row *rowAt(const Row (&rows)[Size], const char *p, const char *end)
{
    const Row *const row = std::find_if(std::begin(rows), std::end(rows),
                                        [&](const Row &r) { return startsWith(p, end, r.text); });
    return row == std::end(rows) ? nullptr : row;
}

bool isLetterByte(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}

/// A letter of a hemisphere, not the beginning of a word.
const Hemisphere *hemisphereAt(const char *p, const char *end)
{
    const Hemisphere *const found = rowAt(hemispheres, p, end);
    if (!found)
        return nullptr;
    const char *const behind = p + found->text.size();
    return behind == end || !isLetterByte(*behind) ? found : nullptr;
}

/// What was written, part by part.
struct Written
{
    bool negative = false;
    bool hasSign = false;
    const Hemisphere *hemisphere = nullptr;
    bool hemisphereBehind = false; ///< right behind the last number
    std::array<double, PartCount> parts{};
    std::array<bool, PartCount> whole{};
    std::array<bool, PartCount> longer{}; ///< than two digits before the decimals
    int count = 0;
    std::ptrdiff_t digits = 0; ///< of the first part, before the decimals
};

/// Degrees, minutes and seconds without anything between, as aviation and navigation write them with a
/// letter: 554521.5N, 5545.358N, 0373702E.
void splitDigits(Written &written)
{
    if (written.count != 1 || !written.hemisphere)
        return;
    constexpr int ofMinutes = 2;
    constexpr int ofSeconds = 4;
    const std::ptrdiff_t behindDegrees =
        written.digits - (written.hemisphere->axis == Axis::Latitude ? 2 : 3); // 55N, 037E
    if (behindDegrees != ofMinutes && behindDegrees != ofSeconds)
        return;
    const double last = written.parts[Degrees];
    const auto take = [&written](Part part, double value, double unit) {
        written.parts[part] = std::floor(value / unit);
        return value - written.parts[part] * unit;
    };
    written.count = behindDegrees == ofMinutes ? 2 : 3;
    written.parts[Seconds] = 0.0;
    if (written.count == 2)
        written.parts[Minutes] = take(Degrees, last, 100.0);
    else
        written.parts[Seconds] = take(Minutes, take(Degrees, last, 10000.0), 100.0);
    const bool isWhole = written.whole[Degrees];
    written.whole = {true, written.count == 3 || isWhole, isWhole};
    written.longer = {};
}

bool refuse(const char *&why, const char *reason)
{
    why = reason;
    return false;
}

bool valueOf(const Written &written, Angle &angle, const char *&why)
{
    if (written.hasSign && written.hemisphere)
        return refuse(why, QT_TRANSLATE_NOOP("CoordSysTexts", "есть и знак, и полушарие"));
    for (int i = 0; i + 1 < written.count; ++i)
        if (!written.whole[static_cast<std::size_t>(i)])
            return refuse(why, QT_TRANSLATE_NOOP("CoordSysTexts", "дробная часть стоит не в последней доле"));
    if (!(written.parts[Minutes] < 60.0) || written.longer[Minutes]) // "1 000" groups thousands
        return refuse(why, QT_TRANSLATE_NOOP("CoordSysTexts", "минуты вне допустимых пределов"));
    if (!(written.parts[Seconds] <= 60.0) || written.longer[Seconds])
        return refuse(why, QT_TRANSLATE_NOOP("CoordSysTexts", "секунды вне допустимых пределов"));
    const double magnitude =
        written.count == 1
            ? written.parts[Degrees]
            : (written.parts[Degrees] * 3600.0 + written.parts[Minutes] * 60.0 + written.parts[Seconds]) /
                  3600.0;
    angle.axis = written.hemisphere ? written.hemisphere->axis : Axis::Unknown;
    if (magnitude > (angle.axis == Axis::Latitude ? 90.0 : 360.0))
        return refuse(why, QT_TRANSLATE_NOOP("CoordSysTexts", "градусы вне допустимых пределов"));
    const bool negative = written.negative || (written.hemisphere && written.hemisphere->negative);
    angle.degrees = negative ? -magnitude : magnitude;
    return true;
}

/// Behind the decimals whose mark stands at \p p; \p p when it is none.
const char *skipDecimals(const char *p, const char *end, DecimalCommas commas)
{
    if (p == end || (*p != '.' && *p != ','))
        return p;
    const char *const behind = std::find_if_not(p + 1, end, isDigit);
    if (*p == '.')
        return behind;
    const bool marked = behind != end && rowAt(marks, behind, end);
    const bool lettered = commas == DecimalCommas::BeforeLetters && hemisphereAt(behind, end);
    return behind != p + 1 && (marked || lettered) ? behind : p;
}

/// A number without sign and exponent, a part of \p written.
const char *parsePart(const char *p, const char *end, DecimalCommas commas, int part, Written &written)
{
    const auto at = static_cast<std::size_t>(part);
    if (p == end || !(isDigit(*p) || *p == '.'))
        return nullptr;
    const char *const wholeEnd = std::find_if_not(p, end, isDigit);
    const char *const behind = skipDecimals(wholeEnd, end, commas);
    written.whole[at] = behind == wholeEnd;
    written.longer[at] = wholeEnd - p > 2;
    if (part == Degrees)
        written.digits = wholeEnd - p;
    std::string text(p, behind);
    std::replace(text.begin(), text.end(), ',', '.');
    return readNumber(text, written.parts[at]) ? behind : nullptr;
}

/// Reads the parts of an angle one behind the other.
class AngleParser
{
public:
    AngleParser(const char *p, const char *end, DecimalCommas commas, bool blanksSeparate)
        : m_p(p)
        , m_end(end)
        , m_commas(commas)
        , m_blanksSeparate(blanksSeparate)
    {}

    const char *parse(Angle &angle, const char *&why)
    {
        why = noNumber;
        takeHemisphere(skipBlanks(m_p, m_end));
        takeSign();
        if (!takeParts())
            return nullptr;
        if (!m_written.hemisphere)
            takeHemisphere(skipBlanks(m_p, m_end));
        if (m_dashes && !m_written.hemisphere) // two numbers, or a difference
            return nullptr;
        splitDigits(m_written);
        return valueOf(m_written, angle, why) ? m_p : nullptr;
    }

private:
    void takeHemisphere(const char *at)
    {
        m_written.hemisphere = hemisphereAt(at, m_end);
        if (m_written.hemisphere)
            m_p = at + m_written.hemisphere->text.size();
    }

    void takeSign()
    {
        m_p = skipBlanks(m_p, m_end);
        const bool unicode = startsWith(m_p, m_end, minusSign);
        m_written.negative = unicode || (m_p != m_end && *m_p == '-');
        m_written.hasSign = m_written.negative || (m_p != m_end && *m_p == '+');
        if (m_written.hasSign)
            m_p += unicode ? minusSign.size() : 1;
    }

    bool takeParts()
    {
        for (int next = Degrees; next < PartCount;) {
            const char *const behind = parsePart(m_p, m_end, m_commas, next, m_written);
            if (!behind)
                return next > Degrees && isFinished(); // 12d blank or 12: and nothing
            m_p = behind;
            m_written.count = ++next;
            if (!takeMark(static_cast<Part>(next - 1)))
                return m_right;
        }
        return m_right;
    }

    bool isFinished() const { return !m_colons; }

    /// Goes to where the next part would begin. False when none can follow.
    bool takeMark(Part part)
    {
        if (m_p != m_end && *m_p == ':' && part != Seconds) {
            m_colons = true;
            ++m_p;
            return true;
        }
        if (m_end - m_p > 1 && *m_p == '-' && isDigit(m_p[1]) && part != Seconds) {
            m_dashes = true;
            ++m_p;
            return true;
        }
        if (const Mark *const mark = rowAt(marks, m_p, m_end)) {
            m_right = mark->part == part;
            m_p += mark->text.size();
            return m_right && part != Seconds && nextPartFollows();
        }
        return m_blanksSeparate && m_p != m_end && isBlank(*m_p) && nextPartFollows();
    }

    /// Skips blanks before a further part. With marks, a number behind blanks is one only when its own mark
    /// follows: it may be the next column.
    bool nextPartFollows()
    {
        const char *const next = skipBlanks(m_p, m_end);
        if (next == m_end || !isDigit(*next))
            return false;
        if (next != m_p && !m_blanksSeparate && !isMarkedPart(next))
            return false;
        m_p = next;
        return true;
    }

    bool isMarkedPart(const char *p) const
    {
        Written unused;
        const char *const behind = parsePart(p, m_end, m_commas, Degrees, unused);
        if (!behind)
            return false;
        const Mark *const mark = rowAt(marks, behind, m_end);
        return mark && mark->part != Degrees;
    }

    const char *m_p;
    const char *m_end;
    DecimalCommas m_commas;
    bool m_blanksSeparate;
    bool m_colons = false;
    bool m_dashes = false;
    bool m_right = true; ///< every mark so far is the one of its part
    Written m_written;
};

const char *columnEnd(const char *p, const char *end) { return std::find_if(p, end, isSeparator); }

/// Behind the separator between two columns, null when it is not one.
const char *nextColumn(const char *p, const char *end)
{
    const char *next = skipBlanks(p, end);
    if (next != end && isSeparator(*next))
        next = skipBlanks(next + 1, end);
    return next == p || next == end ? nullptr : next;
}

const Hemisphere *loneHemisphere(const char *p, const char *end)
{
    const Hemisphere *const found = hemisphereAt(p, end);
    return found && p + found->text.size() == columnEnd(p, end) ? found : nullptr;
}

/// A number at the beginning of a column. Its comma is a decimal mark when a blank, a semicolon or the line
/// ends the column, unless a comma separates it from the column before.
const char *parseNumberColumn(const char *p, const char *end, bool commaBefore, DecimalCommas commas,
                              int part, Written &written)
{
    const auto at = static_cast<std::size_t>(part);
    const char *const behind =
        parsePart(p, end, commaBefore ? DecimalCommas::BeforeMarks : commas, part, written);
    const char *reason = nullptr;
    double decimal = 0.0;
    const char *const decimalsEnd = behind ? parseCommaNumber(p, end, decimal, reason) : nullptr;
    const bool isEnded = decimalsEnd && (decimalsEnd == end || isBlank(*decimalsEnd) || *decimalsEnd == ';');
    if (commaBefore || !isEnded || decimalsEnd <= behind)
        return behind;
    written.parts[at] = decimal;
    written.whole[at] = false;
    return decimalsEnd;
}

/// The numbers of an angle in columns; the last one may have the letter behind it. \p p is where the
/// separator before the first one, at \p numbers, begins.
const char *takeNumberColumns(const char *p, const char *numbers, const char *end, int most,
                              DecimalCommas commas, Written &written)
{
    const char *behind = nullptr;
    for (const char *next = numbers; next && written.count < most && !written.hemisphereBehind;) {
        const bool commaBefore = std::find(behind ? behind : p, next, ',') != next;
        const char *numberEnd = parseNumberColumn(next, end, commaBefore, commas, written.count, written);
        if (!numberEnd)
            break;
        const Hemisphere *const letter = written.hemisphere ? nullptr : loneHemisphere(numberEnd, end);
        if (letter) {
            written.hemisphere = letter;
            written.hemisphereBehind = true;
            numberEnd += letter->text.size();
        } else if (numberEnd != columnEnd(numberEnd, end)) {
            break;
        }
        ++written.count;
        behind = numberEnd;
        next = nextColumn(numberEnd, end);
    }
    return behind;
}

/// The letter before an angle's numbers, and where these begin; null when there is none.
const char *takeLetterBefore(const char *p, const char *end, Written &written)
{
    const Hemisphere *const letter = hemisphereAt(p, end);
    if (!letter)
        return nullptr;
    const char *const behind = p + letter->text.size();
    const char *const numbers = behind != end && isDigit(*behind) ? behind : nextColumn(behind, end);
    if (numbers)
        written.hemisphere = letter;
    return numbers;
}

} // namespace

const char *parseAngle(const char *p, const char *end, DecimalCommas commas, Angle &angle, const char *&why)
{
    return AngleParser(p, end, commas, false).parse(angle, why);
}

bool readAngle(std::string_view text, Angle &angle, const char *&why)
{
    const char *const end = text.data() + text.size();
    const char *const behind =
        AngleParser(text.data(), end, DecimalCommas::BeforeLetters, true).parse(angle, why);
    if (!behind)
        return false;
    return skipBlanks(behind, end) == end || refuse(why, noNumber);
}

AngleColumns parseAngleColumns(const char *p, const char *end, int most, DecimalCommas commas, Angle &angle)
{
    AngleColumns result;
    Written written;
    const char *numbers = takeLetterBefore(p, end, written);
    result.letterFirst = numbers != nullptr;
    numbers = result.letterFirst ? numbers : p;
    const char *behind = takeNumberColumns(p, numbers, end, most, commas, written);
    if (!behind)
        return result;
    if (!written.hemisphere) {
        const char *const letter = nextColumn(behind, end);
        written.hemisphere = letter ? loneHemisphere(letter, end) : nullptr;
        if (!written.hemisphere)
            return result;
        behind = columnEnd(letter, end);
    }
    result.behind = behind;
    result.count = written.count;
    splitDigits(written);
    result.valid = valueOf(written, angle, result.why);
    return result;
}

bool isHemisphere(const char *p, const char *end) { return hemisphereAt(p, end) != nullptr; }

bool hasHemisphereColumn(const char *p, const char *end)
{
    while (p != end) {
        p = std::find_if_not(p, end, isSeparator);
        const char *const letter = std::find_if_not(p, end, [](char c) { return isDigit(c) || c == '.'; });
        if (letter != end && loneHemisphere(letter, end))
            return true;
        p = columnEnd(p, end);
    }
    return false;
}

char *putAngle(char *at, double degrees, bool latitude, int decimals, Letters letters)
{
    constexpr double mostDegrees = 360000.0; // the digits of 1e-9" fit into 64 bits up to here
    if (!(std::fabs(degrees) <= mostDegrees))
        return putNumber(at, degrees, mostDecimals);
    std::uint64_t scale = 1;
    for (int i = 0; i < decimals; ++i)
        scale *= 10;
    // In units of the last decimal, so that rounding carries into minutes and degrees by itself.
    const auto units = static_cast<std::uint64_t>(std::llround(static_cast<long double>(std::fabs(degrees)) *
                                                               3600.0L * static_cast<long double>(scale)));
    const std::uint64_t seconds = units / scale;
    const auto two = [](char *to, std::uint64_t number) {
        *to++ = static_cast<char>('0' + number / 10);
        *to++ = static_cast<char>('0' + number % 10);
        return to;
    };
    const auto text = [](char *to, std::string_view what) { return to + what.copy(to, what.size()); };
    at = text(std::to_chars(at, at + longestAngle, seconds / 3600).ptr, "\xC2\xB0");
    at = text(two(at, seconds / 60 % 60), "'");
    at = two(at, seconds % 60);
    if (decimals > 0) {
        *at++ = '.';
        std::uint64_t rest = units % scale;
        for (int i = decimals; i-- > 0; rest /= 10)
            at[i] = static_cast<char>('0' + rest % 10);
        at += decimals;
    }
    constexpr std::string_view names[2][2][2] = {{{"E", "W"}, {"N", "S"}}, {{"В", "З"}, {"С", "Ю"}}};
    return text(text(at, "\""), names[letters == Letters::Cyrillic][latitude][degrees < 0.0 && units != 0]);
}

} // namespace nivora::cs
