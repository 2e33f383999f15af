#pragma once

#include "Catalogue.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/TABProjInfo.h>

#include <QByteArray>

#include <array>
#include <limits>
#include <map>
#include <string>

namespace catalogue {

/// A published transformation to WGS 84 that needs no grid file.
struct Operation
{
    bool holds(const QPointF &lonLat) const;
    QPointF wgs84(const PJ_COORD &onBase) const;

    Pj pj{nullptr, proj_destroy};
    double accuracy = 0.0; ///< metres
    double west = -180.0, south = -90.0, east = 180.0, north = 90.0;
};

/// TOWGS84: shift in metres, position-vector rotations in arc-seconds, scale in ppm.
using Seven = std::array<double, 7>;
Seven figuresOf(const nivora::cs::TABProjInfo_t &info);

/// All that PROJ's database knows to lead to WGS 84, by geographic base.
class Published
{
public:
    Published();
    const std::vector<Operation> &of(PJ *base);
    /// True when the same figures are published from the same datum, to WGS 84 or to a frame that is taken
    /// for it (ETRS89, say). PROJ does not chain those when a poorer way leads to WGS 84 itself.
    bool hasFigures(PJ *base, const Seven &seven);

private:
    using Context = std::unique_ptr<PJ_OPERATION_FACTORY_CONTEXT, void (*)(PJ_OPERATION_FACTORY_CONTEXT *)>;
    using List = std::unique_ptr<PJ_OBJ_LIST, void (*)(PJ_OBJ_LIST *)>;

    List operationsFrom(PJ *crs) const;
    std::vector<Operation> withoutGrids(PJ *base) const;
    bool isTakenForWgs84(PJ *crs) const;
    void listTransformations();

    Pj m_wgs84;
    Context m_context;
    std::map<std::string, std::vector<Operation>> m_operations; ///< by code of the base
    std::multimap<QByteArray, Seven> m_transformations;         ///< by datum of the source
};

/// How far a system's way to WGS 84 is from published ones over the area of a code, metres.
struct Distances
{
    double nearest = std::numeric_limits<double>::infinity(); ///< worst of three places, to the nearest one
    double best = std::numeric_limits<double>::infinity(); ///< at the centre, to the most accurate of those
                                                           ///< that cover most of the area
};
Distances distances(const nivora::cs::CoordSystemPtr &cs, const Definition &definition,
                    const std::vector<Operation> &operations);

} // namespace catalogue
