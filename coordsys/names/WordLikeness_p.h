#pragma once

// A word of a query against all words of the index.

#include <algorithm>
#include <string>
#include <vector>

namespace nivora::cs {

/// What a word is worth in a field: as a whole word, at the beginning of one, within one.
struct FieldWeights
{
    float whole;
    float beginning;
    float inside;
};
class WordLikeness
{
public:
    WordLikeness(const std::string &word, const std::vector<std::string> &words);

    /// Whether some word is like it at all.
    bool isKnown() const { return m_isKnown; }
    /// Whether it is one of the words as it stands.
    bool isWhole() const { return m_isWhole; }
    /// Whether it is near some only by a slip of the hand.
    bool isSlip() const { return m_isSlip; }
    /// Whether the word of this number is.
    bool isLike(std::size_t word) const { return m_likeness[word] != Likeness::None; }
    /// Of a word that is.
    float value(std::size_t word, const FieldWeights &weights) const;
    /// Of the field's word that is likest; 0 when none is.
    float value(const std::vector<int> &field, const FieldWeights &weights) const
    {
        float best = 0.0F;
        for (const int word : field) // most are unlike
            if (const auto at = static_cast<std::size_t>(word); isLike(at))
                best = std::max(best, value(at, weights));
        return best;
    }

private:
    enum class Likeness : unsigned char { None, Whole, Beginning, Inside };

    void compare(const std::string &word, const std::vector<std::string> &words);
    void forgive(const std::string &word, const std::vector<std::string> &words);
    void note(std::size_t word, Likeness likeness, float cover);

    std::vector<Likeness> m_likeness;
    std::vector<float> m_cover;
    bool m_isKnown = false;
    bool m_isWhole = false;
    bool m_isSlip = false;
};

/// One slip of the hand, two in a long word.
bool isSlip(const std::string &typed, const std::string &known);

} // namespace nivora::cs
