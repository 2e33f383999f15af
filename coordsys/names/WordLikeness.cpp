#include "WordLikeness_p.h"

#include "SearchLexicon_p.h"
#include "SearchWords_p.h"

#include <algorithm>
#include <bitset>
#include <cstdint>

namespace nivora::cs {
namespace {

bool isNumeral(const std::string &word) { return word.find_first_not_of("0123456789") == std::string::npos; }

/// The bytes of a word, as bits.
std::uint64_t bytesOf(const std::string &word)
{
    std::uint64_t bits = 0;
    for (const char c : word)
        bits |= std::uint64_t{1} << (static_cast<unsigned char>(c) & 63U);
    return bits;
}

/// False where it takes more than two slips, at a thousandth of the cost of finding how many.
bool mayBeSlip(const std::string &typed, const std::string &known)
{
    constexpr std::size_t bytes = 4; // of two letters
    const std::size_t longer = std::max(typed.size(), known.size());
    return longer - std::min(typed.size(), known.size()) <= bytes &&
           std::bitset<64>(bytesOf(typed) ^ bytesOf(known)).count() <= 2 * bytes;
}

} // namespace

bool isSlip(const std::string &typed, const std::string &known)
{
    constexpr int longWord = 8;
    constexpr int leastLetters = 4;
    if (!mayBeSlip(typed, known))
        return false;
    const QString a = QString::fromStdString(typed);
    const QString b = QString::fromStdString(known);
    const auto least = std::min(a.size(), b.size());
    return least >= leastLetters && editDistance(a, b, 2) <= (least >= longWord ? 2 : 1);
}

WordLikeness::WordLikeness(const std::string &word, const std::vector<std::string> &words)
    : m_likeness(words.size(), Likeness::None)
    , m_cover(words.size(), 1.0F)
{
    compare(word, words);
    if (!m_isKnown && !isNumeral(word))
        compare(russianStem(word), words);
    if (!m_isKnown && !isNumeral(word))
        forgive(word, words);
}

float WordLikeness::value(std::size_t word, const FieldWeights &weights) const
{
    switch (m_likeness[word]) {
    case Likeness::Whole:
        return weights.whole * m_cover[word];
    case Likeness::Beginning:
        return weights.beginning * m_cover[word];
    case Likeness::Inside:
        return weights.inside;
    case Likeness::None:
        break;
    }
    return 0.0F;
}

void WordLikeness::compare(const std::string &word, const std::vector<std::string> &words)
{
    constexpr std::size_t leastInside = 4; // bytes
    const bool isPart = !isNumeral(word) && word.size() > 1;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string &known = words[i];
        if (known.size() < word.size())
            continue;
        if (known == word) {
            note(i, Likeness::Whole, 1.0F);
            m_isWhole = true;
        } else if (isPart && known.compare(0, word.size(), word) == 0)
            note(i, Likeness::Beginning,
                 0.75F + 0.25F * static_cast<float>(word.size()) / static_cast<float>(known.size()));
        else if (isPart && word.size() >= leastInside && known.find(word) != std::string::npos)
            note(i, Likeness::Inside, 1.0F);
    }
}

void WordLikeness::forgive(const std::string &word, const std::vector<std::string> &words)
{
    constexpr float slipped = 0.8F;
    for (std::size_t i = 0; i < words.size(); ++i)
        if (nivora::cs::isSlip(word, words[i])) {
            note(i, Likeness::Whole, slipped);
            m_isSlip = true;
        }
}

void WordLikeness::note(std::size_t word, Likeness likeness, float cover)
{
    m_likeness[word] = likeness;
    m_cover[word] = cover;
    m_isKnown = true;
}

} // namespace nivora::cs
