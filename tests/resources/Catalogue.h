#pragma once

#include <support/SampleStep.h>

#include <coordsys/CoordSystemParams.h>

#include <proj.h>

#include <QPointF>
#include <QStringList>
#include <QVector>

#include <memory>
#include <vector>

/// What the proofs of the shipped catalogue share.
namespace catalogue {

struct Item
{
    nivora::cs::CoordSystemParams entry;
    int category = 0;
    int index = 0;
};

/// The entries in file order, every \p step-th.
std::vector<Item> items(int step = 1);
using support::sampleStep;

/// Rows of a _data() function that divide such a proof, so that no row of the whole one takes long.
void addParts();
/// The entries of the current row.
std::vector<Item> itemsOfPart();

/// The first lines of a list of faults, empty when there are none.
QString summary(const QStringList &faults);

using Pj = std::unique_ptr<PJ, PJ *(*)(PJ *)>;

/// An object of a registry.
Pj registered(const QByteArray &code, PJ_CATEGORY category = PJ_CATEGORY_CRS,
              const QByteArray &authority = "EPSG");

/// The ellipsoid and meridian of a PROJ system.
struct Figure
{
    explicit Figure(const PJ *crs);

    double semiMajor = 0.0, semiMinor = 0.0; ///< metres
    double primeMeridian = 0.0;              ///< degrees
};

/// PROJ's own system of a code. On the default context: for one thread.
struct Definition
{
    explicit Definition(int epsg)
        : Definition("EPSG", QByteArray::number(epsg))
    {}
    Definition(const QByteArray &authority, const QByteArray &code);
    /// Nine points of the area of use (degrees from Greenwich), the edges left out: there a square over a
    /// country may leave the projection.
    QVector<QPointF> grid() const;
    QPointF centre() const { return grid().at(4); }
    /// \p lonLat from Greenwich; the plane in metres. Infinite where the projection has no value.
    QPointF plane(const QPointF &lonLat) const;
    /// \p lonLat from Greenwich as the geographic base has it: its meridian, its unit, longitude first.
    PJ_COORD onBase(const QPointF &lonLat) const;
    bool isProjected() const { return proj_get_type(crs.get()) == PJ_TYPE_PROJECTED_CRS; }

    Pj crs;
    Pj base; ///< geographic, two dimensions
    Pj toPlane;
    Figure figure;
    double degreesPerUnit = 1.0;
    double metresPerUnit = 1.0;
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
};

} // namespace catalogue
