#include <coordsys/NumberText.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>

namespace nivora::cs {
namespace {

__extension__ using Wide = unsigned __int128;

constexpr int mantissaBits = 52;
constexpr std::uint64_t hiddenBit = std::uint64_t{1} << mantissaBits;

constexpr std::uint64_t powerOfTen(int exponent) { return exponent == 0 ? 1 : 10 * powerOfTen(exponent - 1); }
constexpr std::uint64_t powers[mostDecimals + 1] = {
    powerOfTen(0),  powerOfTen(1),  powerOfTen(2),  powerOfTen(3), powerOfTen(4),  powerOfTen(5),
    powerOfTen(6),  powerOfTen(7),  powerOfTen(8),  powerOfTen(9), powerOfTen(10), powerOfTen(11),
    powerOfTen(12), powerOfTen(13), powerOfTen(14), powerOfTen(15)};

constexpr char digitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

/// \p count digits of \p number, zeros in front.
char *putDigits(char *at, std::uint64_t number, int count)
{
    int i = count;
    for (; i > 1; number /= 100)
        std::memcpy(at + (i -= 2), digitPairs + 2 * (number % 100), 2);
    if (i == 1)
        *at = static_cast<char>('0' + number % 10);
    return at + count;
}

/// A number cut at the point; the decimals as a whole number.
struct Decimals
{
    std::uint64_t whole;
    std::uint64_t fraction;
};

/// The value to so many decimals, rounded half to even from the exact binary value. False when it is out of
/// the range that 128 bits work out.
bool roundTo(double magnitude, int decimals, Decimals &result)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &magnitude, sizeof bits);
    const int shift = 1075 - static_cast<int>(bits >> mantissaBits); // magnitude = mantissa / 2^shift
    if (shift < 1 || shift > 63)
        return false;
    const std::uint64_t mantissa = (bits & (hiddenBit - 1)) | hiddenBit;
    const std::uint64_t mask = (std::uint64_t{1} << shift) - 1;
    const Wide product = Wide{mantissa & mask} * powers[decimals];
    const std::uint64_t rest = static_cast<std::uint64_t>(product) & mask;
    const std::uint64_t half = std::uint64_t{1} << (shift - 1);
    result.whole = mantissa >> shift;
    result.fraction = static_cast<std::uint64_t>(product >> shift);
    const std::uint64_t last = decimals == 0 ? result.whole : result.fraction;
    if (rest > half || (rest == half && (last & 1) != 0))
        ++result.fraction;
    if (result.fraction == powers[decimals]) {
        ++result.whole;
        result.fraction = 0;
    }
    return true;
}

char *putAnyNumber(char *at, double value, int decimals)
{
    char *end = std::to_chars(at, at + longestNumber, value, std::chars_format::fixed, decimals).ptr;
    const std::string_view digits(at, static_cast<std::size_t>(end - at));
    if (digits.front() != '-' || digits.find_first_not_of("-0.") != std::string_view::npos)
        return end;
    return std::char_traits<char>::move(at, at + 1, digits.size() - 1) + digits.size() - 1;
}

/// What sets thousands apart. The byte A0 is the no-break space of a file in one of the older encodings.
constexpr std::string_view groupMarks[] = {
    " ", "'", "\xC2\xA0", "\xE2\x80\xAF", "\xE2\x80\x89", "\xE2\x80\x99", "\xA0"};

std::string_view groupMarkAt(const char *p, const char *end, bool blanks)
{
    const std::string_view text(p, static_cast<std::size_t>(end - p));
    for (const std::string_view mark : groupMarks)
        if (text.substr(0, mark.size()) == mark && (blanks || mark != " "))
            return mark;
    return {};
}

/// Behind a mark and three digits, null for anything else.
const char *skipGroup(const char *p, const char *end, std::string_view mark)
{
    constexpr std::size_t digits = 3;
    const std::string_view text(p, static_cast<std::size_t>(end - p));
    if (mark.empty() || text.substr(0, mark.size()) != mark)
        return nullptr;
    const char *const first = p + mark.size();
    const char *const behind = std::find_if_not(first, end, isDigit);
    return static_cast<std::size_t>(behind - first) == digits ? behind : nullptr;
}

} // namespace

const char *parseNumber(const char *p, const char *end, double &value, const char *&why)
{
    why = noNumber;
    if (p != end && *p == '+' && (p + 1 == end || p[1] == '-'))
        return nullptr;
    if (p != end && *p == '+')
        ++p; // from_chars knows only the minus
    const char *const first = p != end && *p == '-' ? p + 1 : p;
    if (first == end || !(isDigit(*first) || *first == '.')) // keeps "inf" and "nan" away
        return nullptr;
    const auto [behind, error] = std::from_chars(p, end, value);
    if (error == std::errc::result_out_of_range)
        why = QT_TRANSLATE_NOOP("CoordSysTexts", "число слишком велико или слишком мало");
    return error == std::errc() ? behind : nullptr;
}

const char *parseCommaNumber(const char *p, const char *end, double &value, const char *&why)
{
    const char *const comma =
        std::find_if_not(p, end, [](char c) { return isDigit(c) || c == '-' || c == '+'; });
    if (comma == end || *comma != ',' || comma + 1 == end || !isDigit(comma[1]) || comma == p)
        return parseNumber(p, end, value, why);
    const char *const decimalsEnd = std::find_if_not(comma + 1, end, isDigit);
    std::string text(p, decimalsEnd);
    text[static_cast<std::size_t>(comma - p)] = '.';
    const char *const textEnd = text.data() + text.size();
    const char *const behind = parseNumber(text.data(), textEnd, value, why);
    return behind == textEnd ? decimalsEnd : nullptr;
}

const char *parseGroupedNumber(const char *p, const char *end, bool blanks, double &value)
{
    constexpr std::ptrdiff_t mostInFront = 3;
    const char *const first = p != end && (*p == '-' || *p == '+') ? p + 1 : p;
    const char *behind = std::find_if_not(first, end, isDigit);
    const std::string_view mark = groupMarkAt(behind, end, blanks);
    if (behind == first || behind - first > mostInFront || !skipGroup(behind, end, mark))
        return nullptr;
    std::string plain(*p == '+' ? first : p, behind);
    while (const char *const next = skipGroup(behind, end, mark)) {
        plain.append(behind + mark.size(), next);
        behind = next;
    }
    if (behind != end && (*behind == '.' || *behind == ',') && behind + 1 != end && isDigit(behind[1])) {
        const char *const decimalsEnd = std::find_if_not(behind + 1, end, isDigit);
        plain.append(1, '.').append(behind + 1, decimalsEnd);
        behind = decimalsEnd;
    }
    return readNumber(plain, value) ? behind : nullptr;
}

char *putNumber(char *at, double value, int decimals)
{
    const bool negative = value < 0.0;
    Decimals rounded{};
    if (!roundTo(negative ? -value : value, decimals, rounded))
        return putAnyNumber(at, value, decimals);
    if (negative && (rounded.whole | rounded.fraction) != 0)
        *at++ = '-';
    at = std::to_chars(at, at + longestNumber, rounded.whole).ptr;
    if (decimals == 0)
        return at;
    *at++ = '.';
    return putDigits(at, rounded.fraction, decimals);
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

} // namespace nivora::cs
