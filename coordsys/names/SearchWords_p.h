#pragma once

#include <QString>

#include <string>
#include <vector>

namespace nivora::cs {

// How texts are compared by a search.

/// Letters and digits as they are compared: accents dropped, case folded, everything else a blank, and a
/// blank between letter and digit. UTF-8, with a blank before each word and behind the last, so that " wo"
/// finds the beginning of a word and " 37 " a whole one.
std::string searchKey(const QString &text);

std::vector<std::string> wordsOf(const QString &text);

/// The Roman numeral of a number below 40, as a search key ("ix"); empty for others.
std::string romanNumeral(const std::string &number);

/// Letters to change, add, drop or swap with the next between two words; more than \p limit when there are
/// more.
int editDistance(const QString &a, const QString &b, int limit);

} // namespace nivora::cs
