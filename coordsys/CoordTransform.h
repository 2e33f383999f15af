#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/GeographicBounds.h>
#include <coordsys/GridOffer.h>
#include <coordsys/OperationChoice.h>
#include <coordsys/TransformOperation.h>

#include <QPointF>
#include <QRectF>
#include <QVector>

#include <memory>
#include <optional>

namespace nivora::cs {

/// Converts points, lists and rectangles from one coordinate system into another and back, datum shift and
/// both systems' affine transformations included. Coordinates are x = longitude or easting first. Those of
/// a geographic system are degrees, whatever unit its definition counts in (and not the metres of
/// CoordSystem::forward()), from its own prime meridian. Equal systems (CoordSystem::isEqual() with
/// bounds) copy; two that were made from different EPSG codes are never taken for equal, nor are two that
/// name datums which the engine finds different. What is not finite fails. Points carry no time: between
/// moving frames that is what cs2cs does without an epoch. The engine's objects come from a process-wide
/// cache of the last thousand, by the definitions of the two systems; a copy shares them, and one that is
/// made stays as it is when a system is changed. Threads: thread-safe, construction included.
class NIVORA_CS_EXPORT CoordTransform
{
public:
    /// Intervals along a rectangle's width that suit forwardMesh() and inverseMesh().
    static constexpr int DefaultAddPointsMesh = 100;

    /// Throws std::invalid_argument "cs_from" or "cs_to" for null, std::logic_error "Не могу создать объект
    /// трансформации. …" when PROJ knows no way.
    CoordTransform(const CoordSystemPtr &from, const CoordSystemPtr &to);
    /// The same with an epoch. Throws std::invalid_argument also for one that is no finite number.
    CoordTransform(const CoordSystemPtr &from, const CoordSystemPtr &to, std::optional<double> epoch);
    /// By what is chosen, both ways, instead of what PROJ would choose by place. Throws std::logic_error also
    /// when nothing of the pair fits the choice, with the reason: an operation that joins other systems, a
    /// missing grid, what the pair has instead. Some 10 ms each time: chosen operations are not kept.
    CoordTransform(const CoordSystemPtr &from, const CoordSystemPtr &to, const OperationChoice &choice,
                   std::optional<double> epoch = std::nullopt);
    /// A copy shares the engine's objects and has the epoch and the choice too.
    CoordTransform(const CoordTransform &other);
    /// Likewise.
    CoordTransform &operator=(const CoordTransform &other);
    virtual ~CoordTransform();

    /// True when the two systems are equal, so that nothing is transformed.
    bool isEqualsCS() const;
    /// The system that forward() reads.
    CoordSystemPtr sourceCoordSystem() const;
    /// The system that forward() writes.
    CoordSystemPtr destinationCoordSystem() const;

    /// When the coordinates were measured, in decimal years (2024.5), for all that is transformed; none
    /// unless set. Only operations between frames that move against each other look at it: without an epoch
    /// they take their own reference epoch, as PROJ does. Start-up only: not while other threads transform.
    /// Throws std::invalid_argument for one that is no finite number.
    void setEpoch(std::optional<double> epoch);
    /// The epoch, none when there is none.
    std::optional<double> epoch() const;

    /// The operations that work here for the pair as it stands, in PROJ's order and by the criterion that
    /// the transformation is made with: those whose grids are missing are none of them. At each place PROJ
    /// takes the most accurate of those whose area holds the place. Ways through WGS 84 (between a plan and
    /// the earth) have the operations of both steps. A choice does not change the list. Empty for equal
    /// systems. Some 10 ms, in a context of its own. Throws std::logic_error when PROJ knows no way.
    /// Thread-safe.
    QVector<TransformOperation> operations() const;
    /// The operation that PROJ used for a point of the source when it was transformed just now; of a way
    /// through WGS 84 both as one. None for equal systems and when the point fails. Thread-safe.
    std::optional<TransformOperation> operationAt(const QPointF &point) const;
    /// Files that are missing here and what a position would be worth with them. As operations().
    QVector<GridOffer> gridOffers() const;

    /// What was chosen in place of PROJ's own choice by place.
    OperationChoice operationChoice() const;

    /// \name Transformations. They never throw for coordinates: false when a point fails.
    /// @{
    /// \p out is written only on success.
    bool forward(const QPointF &in, QPointF &out) const;
    bool inverse(const QPointF &in, QPointF &out) const;
    /// One engine call for the whole list; one bad point fails it. \p in and \p out may be the same object.
    /// On failure \p out holds the points without the source's affine transformation.
    bool forward(const QVector<QPointF> &in, QVector<QPointF> &out) const;
    bool inverse(const QVector<QPointF> &in, QVector<QPointF> &out) const;
    /// Bounding rectangle of the four corners' images. False also when it has no extent (then written).
    /// Edges that bulge need the mesh.
    bool forward(const QRectF &in, QRectF &out) const;
    bool inverse(const QRectF &in, QRectF &out) const;
    /// Bounding rectangle of the images of a mesh of points with \p addPoints intervals along the width;
    /// points that fail are left out. False when nothing could be transformed or the result has no extent.
    /// Throws std::bad_array_new_length for more than 2^26 points.
    bool forwardMesh(const QRectF &in, QRectF &out, int addPoints) const;
    bool inverseMesh(const QRectF &in, QRectF &out, int addPoints) const;
    /// The same as values: none where those are false. The plane of a geographic system is **degrees** here,
    /// not the metres of CoordSystem::toPlane().
    std::optional<QPointF> forward(const QPointF &in) const;
    std::optional<QVector<QPointF>> forward(const QVector<QPointF> &in) const;
    std::optional<QRectF> forward(const QRectF &in) const;
    /// Back, as values.
    std::optional<QPointF> inverse(const QPointF &in) const;
    std::optional<QVector<QPointF>> inverse(const QVector<QPointF> &in) const;
    std::optional<QRectF> inverse(const QRectF &in) const;
    /// The longitudes and latitudes that a planar rectangle covers, on the datum of the geographic system of
    /// the pair: it runs on across the 180th meridian and says which poles are inside, where inverseMesh()
    /// gives a rectangle around the whole earth. \p planar is in the plane of the other system (of the source
    /// when both are geographic). Every place whose image lies in
    /// the rectangle is inside (within 1e-4 of the extent; planes that show places twice or break into noise
    /// far from home within half a degree); longitudes nearer than a metre to a pole do not count. Some 10
    /// ms. False, \p out untouched, when the rectangle has no extent or nothing of it lies on the earth.
    /// Throws std::logic_error when neither system is geographic.
    bool geographicBounds(const QRectF &planar, GeographicBounds &out) const;
    /// @}

    /// Throws std::runtime_error "Ошибка преобразования координат", for callers that want an exception.
    [[noreturn]] static void throwTransformFailed();

private:
    friend class TransformAccess;
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

/// The corners (x, y), (x + w, y), (x + w, y + h), (x, y + h).
NIVORA_CS_EXPORT QVector<QPointF> rectToVector(const QRectF &rect);

} // namespace nivora::cs
