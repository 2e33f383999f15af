#pragma once

// What speaks for a system besides that its area holds the data.

#include "GuessGroups_p.h"
#include "PlaceNames_p.h"
#include "SearchLexicon_p.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

namespace nivora::cs {

/// Metres from an area, which may be a point, to a place; 0 inside.
double metresFrom(const QRectF &area, const QPointF &place);

/// Scores are natural logarithms of how likely a system is.
class GuessScore
{
public:
    GuessScore(const SystemIndex &index, const SearchLexicon &lexicon, const PlaneTable &table,
               const std::optional<NamedPlace> &place)
        : m_index(index)
        , m_lexicon(lexicon)
        , m_table(table)
        , m_place(place)
    {}

    /// Before it is known where the data lie: the system's standing, how small its area is, the reading.
    double beforehand(const IndexedSystem &system, const GuessReading &reading) const;
    /// For where they lie: what is in force there, towns, the place asked for, the share inside the area.
    double there(const GuessCandidate &candidate);
    /// For the datum: those of today are the likelier ones.
    static double ofDatum(const Ground &ground);
    /// Data so far outside of an area may yet be in its system, when they are near the place asked for.
    static constexpr double nearAreaM = 40e3;
    /// Whether the area of a system is near enough to the place asked for.
    bool isNear(const IndexedSystem &system) const;

private:
    /// What is in force in a country, and how much that is worth.
    struct Force
    {
        std::map<int, double> systems;
        std::map<std::pair<int, int>, double> families; ///< zones of a family on a base
        std::set<int> bases;
    };

    const Force &force(int country);
    double inForce(const PlaneOfSystem &system, int country);
    double atPlace(const GuessCandidate &candidate, int country) const;
    double inArea(const GuessCandidate &candidate) const;

    const SystemIndex &m_index;
    const SearchLexicon &m_lexicon;
    const PlaneTable &m_table;
    std::optional<NamedPlace> m_place; ///< where the data are said to lie
    std::map<int, Force> m_force;      ///< by country
};

} // namespace nivora::cs
