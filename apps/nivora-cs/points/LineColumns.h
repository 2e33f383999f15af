#pragma once

#include "PeopleText.h"

#include <string_view>

// Columns of a line that separators stand between.

inline std::string_view view(const char *begin, const char *end)
{
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// Behind one separator: blanks with at most one comma or semicolon among them.
inline const char *skipSeparator(const char *p, const char *end)
{
    p = skipBlanks(p, end);
    if (p != end && isSeparator(*p))
        p = skipBlanks(p + 1, end);
    return p;
}

inline bool endsColumn(const char *p, const char *end) { return p == end || isSeparator(*p); }
