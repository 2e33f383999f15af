#include "LineCommas.h"

#include "LineColumns.h"

#include <algorithm>

namespace {

/// Behind a whole number, null when there is none.
const char *skipWhole(const char *p, const char *end)
{
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    const char *const behind = std::find_if_not(p, end, isDigit);
    return behind == p ? nullptr : behind;
}

/// Behind "1,5" or "1,5N": digits on both sides of a bare comma. Null when there is none.
const char *skipCommaNumber(const char *p, const char *end)
{
    const char *const comma = skipWhole(p, end);
    if (!comma || comma == end || *comma != ',')
        return nullptr;
    const char *const behind = std::find_if_not(comma + 1, end, isDigit);
    return behind != comma + 1 && (endsColumn(behind, end) || isHemisphere(behind, end)) ? behind : nullptr;
}

/// A number such as "1,234,567.8", whose commas may group thousands.
struct GroupedNumber
{
    const char *behind = nullptr; ///< null: it is none
    bool single = false;          ///< a comma and nothing else: they may be decimals, too
};

GroupedNumber groupedNumber(const char *p, const char *end)
{
    const char *behind = skipWhole(p, end);
    int commas = 0;
    if (!behind || std::count_if(p, behind, isDigit) > 3)
        return {};
    for (; behind != end && *behind == ','; ++commas) {
        const char *const next = std::find_if_not(behind + 1, end, isDigit);
        if (next - behind != 4)
            return {};
        behind = next;
    }
    const bool hasPoint = behind != end && *behind == '.';
    if (hasPoint)
        behind = std::find_if_not(behind + 1, end, isDigit);
    if (commas == 0 || !endsColumn(behind, end))
        return {};
    return {behind, commas == 1 && !hasPoint};
}

/// Whether two numbers, with something else than a comma between them, have commas that group thousands.
/// Degrees are never that many.
bool commasMayGroup(const char *p, const char *end, bool degrees)
{
    const GroupedNumber first = groupedNumber(p, end);
    if (!first.behind)
        return false;
    const char *const next = skipSeparator(first.behind, end);
    const GroupedNumber second = groupedNumber(next, end);
    const bool commaBetween = view(first.behind, next).find(',') != std::string_view::npos;
    return second.behind && !commaBetween && !(degrees && first.single && second.single);
}

bool beginsWithNumber(const char *p, const char *end)
{
    double number = 0.0;
    const char *why = nullptr;
    const char *const behind = p == end ? nullptr : parseNumber(p, end, number, why);
    return behind && (endsColumn(behind, end) || isHemisphere(behind, end));
}

/// The first column has no comma; the second may.
Commas commasOfSecond(const char *p, const char *end)
{
    const char *const whole = skipWhole(p, end);
    const char *const next = whole ? skipSeparator(whole, end) : nullptr;
    const bool otherSeparator = next && view(whole, next).find(',') == std::string_view::npos;
    return otherSeparator && next != whole && skipCommaNumber(next, end) ? Commas::Doubtful
                                                                         : Commas::Separate;
}

} // namespace

Commas commasOf(const char *p, const char *end, bool degrees)
{
    if (commasMayGroup(p, end, degrees))
        return Commas::Grouping;
    const char *const behind = skipCommaNumber(p, end);
    if (!behind)
        return commasOfSecond(p, end);
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
