#include "SearchSpelling_p.h"

#include "SearchLexicon_p.h"
#include "SystemIndex_p.h"
#include "WordLikeness_p.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace nivora::cs {
namespace {

constexpr int leastLetters = 4; ///< of a word that may be corrected; shorter ones are near too many

QString latinOf(const QString &cyrillic)
{
    // Letters of search keys: "й" and "ё" have lost their marks.
    static const std::pair<char16_t, const char *> letters[] = {
        {u'а', "a"},  {u'б', "b"},  {u'в', "v"},  {u'г', "g"},  {u'ґ', "g"},  {u'д', "d"},    {u'е', "e"},
        {u'є', "ye"}, {u'ж', "zh"}, {u'з', "z"},  {u'и', "i"},  {u'і', "i"},  {u'к', "k"},    {u'қ', "q"},
        {u'л', "l"},  {u'м', "m"},  {u'н', "n"},  {u'ң', "n"},  {u'о', "o"},  {u'ө', "o"},    {u'п', "p"},
        {u'р', "r"},  {u'с', "s"},  {u'т', "t"},  {u'у', "u"},  {u'ү', "u"},  {u'ұ', "u"},    {u'ф', "f"},
        {u'х', "h"},  {u'һ', "h"},  {u'ц', "ts"}, {u'ч', "ch"}, {u'ш', "sh"}, {u'щ', "shch"}, {u'ъ', ""},
        {u'ы', "y"},  {u'ь', ""},   {u'э', "e"},  {u'ә', "a"},  {u'ю', "yu"}, {u'я', "ya"},   {u'ғ', "g"}};
    QString latin;
    for (const QChar c : cyrillic) {
        const auto row = std::find_if(std::begin(letters), std::end(letters),
                                      [c](const auto &letter) { return QChar(letter.first) == c; });
        latin += row == std::end(letters) ? QString(c) : QString::fromLatin1(row->second);
    }
    return latin;
}

/// Vowels with marks, as a keyboard without them writes them in German.
QString withoutMarks(QString word)
{
    for (const auto &[two, one] : {std::pair{"ae", 'a'}, {"oe", 'o'}, {"ue", 'u'}})
        word.replace(QLatin1String(two), QLatin1String(&one, 1));
    return word;
}

class Spelling
{
public:
    Spelling(const SearchLexicon &lexicon, const SystemIndex &index)
        : m_lexicon(lexicon)
        , m_index(index)
    {}

    std::vector<std::string> meantBy(const std::string &word) const
    {
        const QString text = QString::fromStdString(word);
        const bool isName = std::all_of(text.begin(), text.end(), [](QChar c) { return c.isLetter(); });
        if (!isName || text.size() < leastLetters || isKnown(text))
            return {word};
        const QString spellings[] = {withoutMarks(text), latinOf(text)};
        for (const QString &spelling : spellings)
            if (spelling != text && isKnown(spelling))
                return {spelling.toStdString()};
        const WordLikeness ofSystems(word, m_index.words());
        if (ofSystems.isKnown() && !ofSystems.isSlip())
            return {word};
        const std::string slipped = m_lexicon.wordSlippedTo(word);
        if (ofSystems.isKnown()) // what both have, the place's meaning goes before
            return {m_index.numberOf(slipped) >= 0 ? slipped : word};
        if (std::vector<std::string> parts = twoWords(text); !parts.empty())
            return parts;
        for (const std::string &place : {m_lexicon.wordBegunBy(word), slipped})
            if (!place.empty())
                return {place};
        for (const QString &spelling : spellings)
            if (spelling != text)
                if (const std::string near = nearest(spelling.toStdString()); !near.empty())
                    return {near};
        return {word};
    }

private:
    bool isKnown(const QString &word) const
    {
        const std::string key = word.toStdString();
        return m_index.numberOf(key) >= 0 || m_lexicon.hasWord(key);
    }

    std::string nearest(const std::string &spelling) const
    {
        const std::string place = m_lexicon.wordSlippedTo(spelling);
        return place.empty() && WordLikeness(spelling, m_index.words()).isKnown() ? spelling : place;
    }

    std::vector<std::string> twoWords(const QString &text) const
    {
        for (int first = leastLetters; first <= text.size() - leastLetters; ++first)
            if (isKnown(text.left(first)) && isKnown(text.mid(first)))
                return {text.left(first).toStdString(), text.mid(first).toStdString()};
        return {};
    }

    const SearchLexicon &m_lexicon;
    const SystemIndex &m_index;
};

} // namespace

std::vector<std::string> meantBy(const std::string &word, const SearchLexicon &lexicon,
                                 const SystemIndex &index)
{
    return Spelling(lexicon, index).meantBy(word);
}

} // namespace nivora::cs
