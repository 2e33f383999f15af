#include "GroupedPair.h"

#include "LineColumns.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

/// Behind the number of a column, grouped or not, null when there is none.
const char *parseColumn(const char *p, const char *end, bool blanks, double &value, bool &grouped)
{
    if (const char *const behind = parseGroupedNumber(p, end, blanks, value)) {
        grouped = true;
        return behind;
    }
    const char *why = nullptr;
    return parseCommaNumber(p, end, value, why);
}

bool hasFirmSeparator(const char *begin, const char *end)
{
    return view(begin, end).find_first_of(";\t") != std::string_view::npos;
}

/// Two numbers with a separator between them, one of them grouped at least.
GroupedPair parsePair(const char *p, const char *end, bool blanks)
{
    GroupedPair pair;
    bool grouped = false;
    pair.xEnd = parseColumn(p, end, blanks, pair.point.rx(), grouped);
    if (!pair.xEnd || pair.xEnd == end || !isSeparator(*pair.xEnd))
        return {};
    pair.yBegin = std::find_if_not(pair.xEnd, end, isSeparator);
    pair.yEnd = parseColumn(pair.yBegin, end, blanks, pair.point.ry(), grouped);
    if (!grouped || !pair.yEnd || !endsColumn(pair.yEnd, end))
        return {};
    const char *const next = std::find_if_not(pair.yEnd, end, isSeparator);
    const bool isFirm =
        hasFirmSeparator(pair.xEnd, pair.yBegin) && (next == end || hasFirmSeparator(pair.yEnd, next));
    const bool hasComma = view(pair.xEnd, pair.yBegin).find(',') != std::string_view::npos;
    pair.groups = isFirm || !blanks ? Groups::Apart : hasComma ? Groups::Doubtful : Groups::None;
    return pair;
}

/// The columns of a line that blanks alone separate, up to one that is no plain number.
std::vector<std::string_view> plainColumns(const char *p, const char *end)
{
    std::vector<std::string_view> columns;
    while (p != end) {
        const char *const behind = std::find_if(p, end, isSeparator);
        double value = 0.0;
        if (!readNumber(view(p, behind), value))
            break;
        columns.push_back(view(p, behind));
        p = skipBlanks(behind, end);
    }
    return columns;
}

bool isGroup(std::string_view text)
{
    return text.size() == 3 && std::all_of(text.begin(), text.end(), isDigit);
}

bool isFront(std::string_view text)
{
    return !text.empty() && text.size() < 3 && std::all_of(text.begin(), text.end(), isDigit);
}

/// "7 411 000 6 182 000": as many whole numbers of up to three digits are no coordinates and columns behind
/// them. Nobody writes "012" for a coordinate either.
bool blanksMayGroup(const char *p, const char *end)
{
    constexpr std::size_t fewest = 5;
    const std::vector<std::string_view> columns = plainColumns(p, end);
    if (columns.size() < 2 || !(isFront(columns[0]) || isGroup(columns[0])) || !isGroup(columns[1]))
        return false;
    if (columns[1].front() == '0')
        return true;
    std::size_t fronts = isFront(columns[0]) ? 1 : 0;
    std::size_t count = 2;
    for (; count < columns.size(); ++count) {
        const std::string_view whole = columns[count].substr(0, columns[count].find('.'));
        const bool startsNumber = isFront(whole) && count + 1 < columns.size();
        if (!isGroup(whole) && !startsNumber)
            break;
        fronts += startsNumber ? 1 : 0;
    }
    return count >= fewest && fronts > 0 && fronts <= 2;
}

} // namespace

GroupedPair readGroupedPair(const char *p, const char *end)
{
    for (const bool blanks : {false, true}) {
        const GroupedPair pair = parsePair(p, end, blanks);
        if (pair.groups != Groups::None)
            return pair;
    }
    GroupedPair none;
    none.groups = blanksMayGroup(p, end) ? Groups::Doubtful : Groups::None;
    return none;
}

bool mayBeAngleParts(const char *p, const char *end)
{
    constexpr std::size_t parts = 6;
    constexpr double base = 60.0;
    const std::vector<std::string_view> columns = plainColumns(p, end);
    if (columns.size() != parts)
        return false;
    for (std::size_t i = 0; i < parts; ++i) {
        double value = 0.0;
        const bool isWhole = columns[i].find('.') == std::string_view::npos;
        const bool isDegrees = i % 3 == 0;
        if (!readNumber(columns[i], value) || (i % 3 != 2 && !isWhole) ||
            (!isDegrees && !(value >= 0.0 && value < base)))
            return false;
    }
    return true;
}
