#include "SearchWords_p.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace nivora::cs {

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

std::string romanNumeral(const std::string &number)
{
    static const char *const ones[] = {"", "i", "ii", "iii", "iv", "v", "vi", "vii", "viii", "ix"};
    const int value = number.size() <= 2 ? std::stoi(number) : 0;
    return value < 40 ? std::string(static_cast<std::size_t>(value / 10), 'x') + ones[value % 10]
                      : std::string();
}

int editDistance(const QString &a, const QString &b, int limit)
{
    if (std::abs(a.size() - b.size()) > limit)
        return limit + 1;
    const auto width = static_cast<std::size_t>(b.size()) + 1;
    std::vector<int> beforeLast(width), last(width), row(width);
    std::iota(last.begin(), last.end(), 0);
    for (int i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const auto at = static_cast<std::size_t>(j);
            const int change = a[i - 1] == b[j - 1] ? 0 : 1;
            row[at] = std::min({last[at] + 1, row[at - 1] + 1, last[at - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[at] = std::min(row[at], beforeLast[at - 2] + 1);
        }
        if (*std::min_element(row.begin(), row.end()) > limit)
            return limit + 1;
        beforeLast.swap(last);
        last.swap(row);
    }
    return last.back();
}

} // namespace nivora::cs
