#pragma once

#include <coordsys/CoordSystemParams.h>

#include <QList>

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace nivora::cs {

class CoordSystem;

/// What the parameters of a catalogue entry, or the PROJ text of a system, tell before anything is built. A
/// fact that is not known rules nothing out.
struct SystemFacts
{
    std::optional<int> unitCode;
    std::optional<double> semiMajorM;
    std::optional<double> centralMeridian; ///< degrees
    std::optional<std::pair<double, double>> falseOriginM;
    std::optional<std::array<double, 3>> shiftM; ///< explicit shift to WGS 84
    int datum = 0;                               ///< MapInfo's number, compared when both are positive

    /// False only when two systems with these facts cannot be equal.
    bool mayEqual(const SystemFacts &other) const;
};

/// Narrows a search by equality to the entries that can still be equal, in file order. Entries with the same
/// parameters make equal systems, so only the first of them is kept. Immutable once made; needs the active
/// catalogue when it is made.
class MapinfoIndex
{
public:
    using Position = std::pair<int, int>;
    struct Row
    {
        SystemFacts facts;
        Position position;
    };

    explicit MapinfoIndex(const QList<CoordSystemParamsList> &categories);
    const std::vector<Row> &rows() const { return m_rows; }

private:
    std::vector<Row> m_rows;
};

/// The facts of a system; nothing when it has no PROJ object, since every entry has one.
std::optional<SystemFacts> factsOf(const CoordSystem &cs);

} // namespace nivora::cs
