#include "SystemsByWord_p.h"

#include "SystemIndex_p.h"
#include "WordLikeness_p.h"

#include <algorithm>

namespace nivora::cs {
namespace {

constexpr FieldWeights inArea = {2.0F, 1.6F, 0.0F};

} // namespace

SystemsByWord::SystemsByWord(const SystemIndex &index)
    : m_index(index)
    , m_places(index.words().size())
{
    for (std::size_t i = 0; i < index.systems().size(); ++i) {
        const IndexedSystem &system = index.systems()[i];
        add(system.name, i, Name);
        for (const std::vector<int> &other : system.others)
            add(other, i, OtherName);
        add(system.group, i, Group);
    }
}

void SystemsByWord::add(const std::vector<int> &words, std::size_t system, Field field)
{
    for (const int word : words)
        m_places[static_cast<std::size_t>(word)].push_back({static_cast<int>(system), field});
}

std::vector<float> SystemsByWord::worth(const WordLikeness &likeness) const
{
    constexpr FieldWeights weights[Fields] = {{3.0F, 2.3F, 1.4F}, {2.7F, 2.1F, 1.2F}, {1.3F, 1.1F, 0.0F}};
    std::vector<float> values(m_index.systems().size(), 0.0F);
    for (std::size_t word = 0; word < m_places.size(); ++word) {
        if (!likeness.isLike(word))
            continue;
        for (const Place &place : m_places[word]) {
            float &value = values[static_cast<std::size_t>(place.system)];
            value = std::max(value, likeness.value(word, weights[place.field]));
        }
    }
    std::vector<float> areas;
    areas.reserve(m_index.areaWords().size());
    for (const std::vector<int> &area : m_index.areaWords())
        areas.push_back(likeness.value(area, inArea));
    for (std::size_t i = 0; i < values.size(); ++i)
        if (const int area = m_index.systems()[i].area; area >= 0)
            values[i] = std::max(values[i], areas[static_cast<std::size_t>(area)]);
    return values;
}

} // namespace nivora::cs
