#include "SearchWords_p.h"

#include <QStringList>

#include <algorithm>
#include <cstring>

namespace nivora::cs {
namespace {

constexpr int shortestWithSlip = 4;

/// How many letters two words have in common from their beginnings.
int commonBeginning(const QString &a, const QString &b)
{
    const int most = std::min(a.size(), b.size());
    return static_cast<int>(std::mismatch(a.begin(), a.begin() + most, b.begin()).first - a.begin());
}

/// One letter stands within nearly every name.
bool isLetter(const std::string &word) { return QString::fromStdString(word).size() == 1; }

/// By the part's last byte: every second byte of Cyrillic text is the same, and words begin with it.
bool holds(const std::string &text, const std::string &part)
{
    if (part.empty() || text.size() < part.size())
        return part.empty();
    const std::size_t before = part.size() - 1;
    const char *const end = text.data() + text.size();
    const auto next = [&](const char *from) {
        return static_cast<const char *>(
            std::memchr(from, part.back(), static_cast<std::size_t>(end - from)));
    };
    for (const char *at = next(text.data() + before); at; at = next(at + 1))
        if (std::memcmp(at - before, part.data(), before) == 0)
            return true;
    return false;
}

bool holdsAny(const std::string &text, const std::vector<std::string> &parts)
{
    return std::any_of(parts.begin(), parts.end(),
                       [&text](const std::string &part) { return holds(text, part); });
}

} // namespace

std::string searchKey(const QString &text)
{
    QString plain;
    const QString parts = text.normalized(QString::NormalizationForm_KD);
    plain.reserve(parts.size() + 2);
    plain += QLatin1Char(' ');
    QChar last = QLatin1Char(' ');
    for (const QChar c : parts) {
        if (c.isMark())
            continue;
        if ((last.isLetter() && c.isDigit()) || (last.isDigit() && c.isLetter()))
            plain += QLatin1Char(' ');
        plain += c.isLetterOrNumber() ? c : QLatin1Char(' ');
        last = c;
    }
    const QString words = plain.simplified().toCaseFolded().replace(QChar(0xDF), QLatin1String("ss"));
    return (QLatin1Char(' ') + words + QLatin1Char(' ')).toStdString();
}

std::vector<std::string> wordsOf(const QString &text)
{
    std::vector<std::string> words;
    const QStringList parts =
        QString::fromStdString(searchKey(text)).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &part : parts)
        words.push_back(part.toStdString());
    return words;
}

SearchWord::SearchWord(const std::string &word)
    : isNumber(std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; }))
    , isAtBeginning(isNumber || isLetter(word))
{
    addForm(word);
}

void SearchWord::addForm(const std::string &form)
{
    forms.push_back(form);
    m_beginnings.push_back(isNumber ? ' ' + form + ' ' : ' ' + form);
}

bool SearchWord::isIn(const std::string &text) const
{
    return isAtBeginning ? begins(text) : holdsAny(text, forms);
}

bool SearchWord::begins(const std::string &text) const { return holdsAny(text, m_beginnings); }

bool SearchWord::is(const std::string &word) const
{
    return std::find(forms.begin(), forms.end(), word) != forms.end();
}

std::string romanNumeral(const std::string &number)
{
    static const char *const ones[] = {"", "i", "ii", "iii", "iv", "v", "vi", "vii", "viii", "ix"};
    const int value = number.size() <= 2 ? std::stoi(number) : 0;
    return value < 40 ? std::string(static_cast<std::size_t>(value / 10), 'x') + ones[value % 10]
                      : std::string();
}

SearchWords searchWords(const std::vector<std::string> &words)
{
    return SearchWords(words.begin(), words.end());
}

bool isOneEditAway(const QString &word, const QString &other)
{
    const int difference = word.size() - other.size();
    if (std::min(word.size(), other.size()) < shortestWithSlip || std::abs(difference) > 1)
        return false;
    const int same = commonBeginning(word, other);
    if (difference != 0) // the rest behind the letter that one of them has more
        return word.mid(same + (difference > 0)) == other.mid(same + (difference < 0));
    const bool swapped = word.size() > same + 1 && word.at(same) == other.at(same + 1) &&
                         word.at(same + 1) == other.at(same) && word.mid(same + 2) == other.mid(same + 2);
    return swapped || word.mid(same + 1) == other.mid(same + 1);
}

} // namespace nivora::cs
