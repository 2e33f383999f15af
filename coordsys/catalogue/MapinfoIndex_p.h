#pragma once

#include <coordsys/CoordSystemParams.h>
#include <coordsys/CoordSystemTypes.h>

#include <QHash>
#include <QList>
#include <QMutex>

#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace nivora::cs {

class CoordSystem;
class ProjectionParamsManager;
struct TABProjInfo_t;

/// What the parameters of a catalogue entry, or the PROJ text of a system, tell before anything is built. A
/// fact that is not known rules nothing out. Facts of an entry are only those that reach the engine from its
/// text: the figures that a host's catalogue has for numbered datums and units do not.
struct CrsFingerprint
{
    std::optional<int> unitCode;
    std::optional<double> semiMajorM;
    std::optional<bool> isOblique; ///< an oblique Mercator or Krovak, which name their plane otherwise
    std::optional<double> centralMeridian; ///< degrees
    std::optional<std::pair<double, double>> falseOriginM;
    std::optional<std::array<double, 3>> shiftM; ///< explicit shift to WGS 84
    int datum = 0;                               ///< MapInfo's number, compared when both are positive
    int ellipsoid = 0;                           ///< MapInfo's number, of an entry with a datum of its own

    /// False only when two systems with these facts cannot be equal.
    bool mayEqual(const CrsFingerprint &other) const;
};

/// Narrows a search by equality to the entries that can still be equal, in file order. Of entries with the
/// same parameters and the same code only the first is kept; with another code they may be on another datum.
/// Thread-safe; needs the active catalogue.
class MapinfoIndex
{
public:
    using Position = std::pair<int, int>;
    struct Row
    {
        CrsFingerprint facts;
        Position position;
    };

    explicit MapinfoIndex(const QList<CoordSystemParamsList> &categories);
    const std::vector<Row> &rows() const { return m_rows; }
    /// False only when a system with these facts cannot be equal to the row's. Asks the engine for the
    /// figures of the row's datum, once each.
    bool mayEqual(const CrsFingerprint &facts, const Row &row) const;
    /// CoordSystem::record(), which is the library's own.
    static std::shared_ptr<const TABProjInfo_t> recordOf(const CoordSystem &cs);

private:
    struct DatumFigures
    {
        std::optional<double> semiMajorM;
        std::optional<std::array<double, 3>> shiftM;
    };
    static DatumFigures figuresOf(const CrsFingerprint &facts);

    std::vector<Row> m_rows;
    mutable QMutex m_lock;                                      ///< guards m_figures
    mutable QHash<std::pair<int, int>, DatumFigures> m_figures; ///< by datum and ellipsoid
};

/// The facts of a system; nothing when it equals no entry: without a PROJ object, with one or a text that the
/// engine makes of no entry, or with a source text that does not parse.
std::optional<CrsFingerprint> factsOf(const CoordSystem &cs);

/// What a text tells of the system that will be made from it; nothing is known of notations other than
/// CoordSys and PROJ text, and of what does not parse.
CrsFingerprint factsOf(const CoordSystemTypes::SourceData &source, const ProjectionParamsManager &manager);

} // namespace nivora::cs
