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

/// A word that is looked for, in one or several spellings. A number is found as a whole word only, a single
/// letter at the beginning of a word.
struct SearchWord
{
    std::vector<std::string> forms;
    bool isNumber = false;
    bool isAtBeginning = false;

    explicit SearchWord(const std::string &word);
    void addForm(const std::string &form);

    bool isIn(const std::string &text) const;
    /// At the beginning of a word of \p text.
    bool begins(const std::string &text) const;
    bool is(const std::string &word) const;

private:
    std::vector<std::string> m_beginnings; ///< of the forms, with the blanks that make them so
};
using SearchWords = std::vector<SearchWord>;

/// The Roman numeral of a number below 40, as a search key ("ix"); empty for others.
std::string romanNumeral(const std::string &number);

SearchWords searchWords(const std::vector<std::string> &words);

/// True when one slip of the hand lies between two words: a letter missing, added, replaced or swapped with
/// its neighbour. Words of fewer than four letters have no slips: "utm" is no "atm".
bool isOneEditAway(const QString &word, const QString &other);

} // namespace nivora::cs
