#pragma once

#include <coordsys/coordsys_export.h>

#include <QObject>
#include <QString>

#include <string_view>

// Numbers as people and files write them, and as they are written for both. No locale matters. Texts are
// bytes, [p, end) or a view of them. Reasons are texts of the context "CoordSysTexts". All functions are
// thread-safe and throw nothing.
namespace nivora::cs {

/// Most decimals that are written.
constexpr int mostDecimals = 15;

/// Bytes that the longest number needs: the largest double has 309 digits before the point.
constexpr std::size_t longestNumber = 309 + 2 + mostDecimals;

/// Of ASCII.
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
/// Blanks and tabs.
inline bool isBlank(char c) { return c == ' ' || c == '\t'; }
/// Blanks, tabs and, between columns, commas and semicolons.
inline bool isSeparator(char c) { return isBlank(c) || c == ',' || c == ';'; }
/// The first place from \p p on that is no blank, \p end when there is none.
inline const char *skipBlanks(const char *p, const char *end)
{
    while (p != end && isBlank(*p))
        ++p;
    return p;
}

/// The reason where there is no number at all.
constexpr const char *noNumber = QT_TRANSLATE_NOOP("CoordSysTexts", "не является числом");

/// Behind the decimal number at \p p, null when there is none; then \p why tells the reason. "nan", "inf" and
/// numbers that no double holds are none.
NIVORA_CS_EXPORT const char *parseNumber(const char *p, const char *end, double &value, const char *&why);

/// As parseNumber(), with a comma before the decimals.
NIVORA_CS_EXPORT const char *parseCommaNumber(const char *p, const char *end, double &value,
                                              const char *&why);

/// Behind a number whose thousands are set apart, as "7 411 000,25" or "7'411'000.5": one to three digits,
/// groups of three behind the same mark, decimals behind a point or a comma. Marks are no-break and thin
/// spaces, apostrophes and, with \p blanks, the blank. Null, \p value untouched, when there is no such
/// number.
NIVORA_CS_EXPORT const char *parseGroupedNumber(const char *p, const char *end, bool blanks, double &value);

/// Behind the number, written with a fixed count of decimals, never "-0.0". longestNumber bytes are needed.
NIVORA_CS_EXPORT char *putNumber(char *at, double value, int decimals);

/// A number that takes up the whole text. False for anything else.
NIVORA_CS_EXPORT bool readNumber(std::string_view text, double &value);

/// A number with a fixed count of decimals, never "-0.0".
NIVORA_CS_EXPORT QString numberText(double value, int decimals);

} // namespace nivora::cs
