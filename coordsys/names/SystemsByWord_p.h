#pragma once

// The index of systems inverted: the systems of each word.

#include <cstddef>
#include <vector>

namespace nivora::cs {

class SystemIndex;
class WordLikeness;

class SystemsByWord
{
public:
    /// Some 10 ms, and 2 MB for all of PROJ's systems.
    explicit SystemsByWord(const SystemIndex &index);

    /// What a word of a query is worth in each system, by the field that has the likest word.
    std::vector<float> worth(const WordLikeness &likeness) const;

private:
    enum Field : int { Name, OtherName, Group, Fields };
    struct Place
    {
        int system;
        Field field;
    };
    void add(const std::vector<int> &words, std::size_t system, Field field);

    const SystemIndex &m_index;
    std::vector<std::vector<Place>> m_places; ///< of each word
};

} // namespace nivora::cs
