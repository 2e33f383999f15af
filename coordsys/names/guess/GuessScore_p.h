#pragma once

// What speaks for a system besides that its area holds the data.

#include "GuessGroups_p.h"
#include "PlaceNames_p.h"
#include "SearchLexicon_p.h"

#include <map>
#include <optional>

namespace nivora::cs {

/// Metres from an area, which may be a point, to a place; 0 inside.
double metresFrom(const QRectF &area, const QPointF &place);

/// Scores are natural logarithms of how likely a system is.
class GuessScore
{
public:
    GuessScore(const SystemIndex &index, const SearchLexicon &lexicon, const std::optional<NamedPlace> &place)
        : m_index(index)
        , m_lexicon(lexicon)
        , m_place(place)
    {}

    /// Before it is known where the data lie: the system's standing, how small its area is, the reading.
    double beforehand(const IndexedSystem &system, const GuessReading &reading) const;
    /// For where they lie: what is in force there, towns, the place asked for, the share inside the area.
    double there(const GuessCandidate &candidate);
    /// For the datum: those of today are the likelier ones.
    static double ofDatum(const Ground &ground);
    /// Whether the area of a system is near enough to the place asked for.
    bool isNear(const IndexedSystem &system) const;

private:
    double inForce(int system, int country);
    const std::map<int, double> &force(int country);

    const SystemIndex &m_index;
    const SearchLexicon &m_lexicon;
    double atPlace(const GuessCandidate &candidate, int country) const;

    std::optional<NamedPlace> m_place;               ///< where the data are said to lie
    std::map<int, std::map<int, double>> m_force;    ///< by country, by system
    std::map<int, std::map<int, double>> m_families; ///< by country, by family
};

} // namespace nivora::cs
