#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/LinearUnit.h>
#include <coordsys/ProjEngine.h>
#include <platform/Utils.h>

#include <QList>
#include <QRectF>
#include <QStringList>
#include <QTransform>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>

namespace nivora::cs {

class CoordSystemPrivate;
class ProjectionParamsManager;

/// A coordinate system: a GDAL spatial reference, a PROJ object, the text it was made from, and what is known
/// of it (description, EPSG code, bounds, affine transformation, unit). Made by CoordSysFactory and shared
/// through CoordSystemPtr; neither copyable nor movable, clone() copies.
///
/// It converts between its own plane and longitude/latitude **on its own datum**; for a datum shift use
/// CoordTransform. x is longitude or easting, y latitude or northing; angles are degrees, whatever unit the
/// definition counts in. The plane of a system with an affine transformation is the affine image of the
/// projection's plane.
///
/// A geographic system has two sets of coordinates, which are easily taken for each other:
/// - forward() gives and inverse() takes **metres**, degrees times DEGREES_TO_METERS, so that distances in
/// this
///   plane are metric;
/// - bounds, unit(), the affine transformation of CoordTransform, and what CoordTransform takes and gives are
///   **degrees**.
///
/// A system works without the factory that made it and may outlive it, and every static object. What asks
/// a catalogue (unit, bounds, isEqual, crop flag, exports that name a unit or a datum) asks that factory, and
/// when it is gone the installed default; without either it throws std::logic_error "Не проинициализированы
/// КС". Threads: const calls
/// may run together, setters are for the thread that makes the object.
class NIVORA_CS_EXPORT CoordSystem : public CoordSystemTypes
{
public:
    CoordSystem();
    ~CoordSystem();
    CoordSystem(const CoordSystem &) = delete;
    CoordSystem &operator=(const CoordSystem &) = delete;

    /// An independent copy. The affine transformation, its unit and a code set by setEpsg() are not carried
    /// over: set them again where needed. Bounds are explicit in the copy when they are here. Throws
    /// std::logic_error "Не могу задать пустые границы" when no bounds are known.
    CoordSystemPtr clone() const;

    /// \name Another system, like this one but for what is given
    /// Everything else is kept, bounds, name, code and affine transformation too. This one stays as it is.
    /// Thread-safe.
    /// @{
    /// Under another name.
    CoordSystemPtr withDescription(const QString &description) const;
    /// With explicit bounds in its own unit. Throws std::logic_error "Не могу задать пустые границы" unless
    /// width and height are positive.
    CoordSystemPtr withBounds(const QRectF &rect) const;
    /// With an affine transformation in the place of any that there is, and its unit; without a valid one:
    /// degree for a geographic system, else the system's own as far as it can be named. Explicit bounds stay.
    /// Throws std::invalid_argument "Вырожденное аффинное преобразование" (isSingularAffine).
    CoordSystemPtr withAffine(const QTransform &transform, const LinearUnit &unit = LinearUnit()) const;
    /// The system that the affine transformation moves.
    CoordSystemPtr withoutAffine() const;
    /// @}

    /// \name Handles, borrowed; null on a fresh object
    /// Hand them to PROJ and GDAL only under globalProj4Mutex(), and call no method of a coordinate system
    /// while holding it: methods take the object's lock first and the mutex second, and the other order
    /// deadlocks.
    /// @{
    void *OGRSpatialReference() const;
    PJ *PJ_Proj4() const;
    /// The system without datum shift: the object that forward() and inverse() use. It may take degrees,
    /// grads or radians on its geographic side.
    PJ *PJ_Proj4_Internal() const;
    /// A copy of the spatial reference with a life of its own.
    std::shared_ptr<void> copyOgrSpatialReference() const;
    /// @}

    /// \name What is known
    /// @{
    /// The name for people: the one that was set, else that of the catalogue, of the code, or of the text.
    /// May search the database for the code on first call, as epsg().
    QString description() const;
    /// The notation and the text that it was made from.
    SourceData sourceParameters() const;
    /// The notation alone.
    SourceType sourceType() const;
    /// What the CoordSys text that the system was made from leaves open and the library took on: sentences in
    /// the language of the installed translation, "Единица не указана: приняты метры.". Empty for other
    /// systems.
    QStringList assumptions() const;
    /// Borrowed, until it is set anew; null when there is none.
    const QTransform *affineTransform() const;
    /// The affine transformation's unit, else the unit as far as it has been found (code -1 when not yet).
    LinearUnit affineUnit() const;
    /// Longitude and latitude, not planar.
    bool isLatLong() const;
    /// A plan without a place on the earth.
    bool isNonEarth() const;
    /// MapInfo's "no particular datum" ("MIF 0").
    bool isSpecialDatum() const;
    /// Coordinates of this system must be cropped before they are drawn. Found on first call, then kept.
    bool needCropCoords() const;

    /// EPSG code, or EPSG_UNDEFINDED. A system made from an EPSG code answers with that code, one made from
    /// WKT with the code that the text states when the database's system of that code is this one, one of a
    /// catalogue with its entry's code unless the database's system of it has another plane. Else a search
    /// (up to 0.2 s) on first call, then kept, a failure too unless it was cancelled or no catalogue was
    /// there to ask; it gives no code to a system that merely resembles a registered one. A system with an
    /// affine transformation has none (see baseCode()), but by its source or by a catalogue's entry with this
    /// very transformation. Throws std::logic_error on a fresh object.
    int epsg(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress) const;
    int epsg() const;
    /// The code of the system that the affine transformation moves; EPSG_UNDEFINDED without a transformation.
    /// Found as epsg() is.
    int baseCode(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress) const;
    int baseCode() const;
    /// The code of the search alone, whatever setEpsg() or the source say; equal systems have the same.
    int matchedEpsg(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress) const;
    int matchedEpsg() const;

    /// The unit of bounds and of CoordTransform's coordinates, found on first call: degree for a geographic
    /// system (whose forward() gives metres all the same) and for one around another pole.
    /// Throws std::logic_error "Не могу определить единицы измерения …" when no catalogue unit fits.
    LinearUnit unit(const ProjectionParamsManager &manager) const;
    LinearUnit unit() const;

    /// Metres (semi-axes); throw std::logic_error without a spatial reference.
    double getSemiMajor() const;
    double getSemiMinor() const;
    double getInvFlattening() const;
    /// dx, dy, dz (metres), rx, ry, rz (arc-seconds), scale (ppm) in the position-vector sign of TOWGS84.
    /// Throws std::logic_error when the system has none.
    QList<double> getTOWGS84Params() const;
    /// Degrees, 0 when the projection has no such parameter.
    double longitudeOfCenter() const;
    /// @}

    /// \name Bounds, in the system's own unit: degrees for a geographic system, not the metres of forward()
    /// @{
    bool isRectSet() const;
    /// The explicit bounds, else the computed ones.
    QRectF rectNumericCoordSys() const;
    /// The computed bounds, whatever was set: for a projected system that no catalogue has bounds for the
    /// area of use of its code, which may be searched.
    QRectF rectInternal() const;
    /// The explicit bounds, else the computed ones without the area of use: no database is searched, and the
    /// answer does not depend on whether one was. Empty when there is no catalogue to ask; never throws.
    QRectF rectWithoutSearch() const;
    /// @}

    /// \name Exports
    /// @{
    /// WKT 1; empty on failure (logged). A system with an EPSG code is written as the database names it, code
    /// included, with a shift to WGS 84 that its own text states; reading that back gives the same code (of
    /// a compound or three-dimensional system that of its horizontal part). May search for the code, as
    /// epsg(). An affine transformation has no place in WKT 1: of a system that has one this is the system
    /// that it moves, without its code.
    QString exportToWkt() const;
    /// exportToWkt(), but a non-earth plan is written as an equidistant cylinder on the sphere.
    QString exportToWkt2() const;
    /// PROJ text. Throws std::logic_error when neither PROJ nor GDAL can give one.
    QString projStr() const;
    /// CoordSys string with the affine clause and the explicit bounds that the object holds now, in this
    /// order; clauses of the source text that say something else are replaced. A singular transformation is
    /// written too, though no creator takes it. A system of another notation is written as prjTextOf() tells:
    /// by the catalogue's record of its code, else from its definition, and what the text makes is compared
    /// with the system. Throws ExportToPrjException when the notation has no form for it.
    QString prjStr() const;
    /// "prj:", "proj4:", "EPSG:" or "WKT:" and the text; CoordSysFactory::createFromTaggedString reads it. A
    /// system with an affine transformation is tagged "prj:"; when it has no CoordSys string that is logged
    /// as an error and the tag is written without the transformation. Explicit bounds are part of the tag
    /// "prj:" and of no other. Throws like projStr(); for a plan like unit().
    QString taggedString() const;
    /// @}

    /// \name Equality
    /// @{
    /// The same system: PROJ object, unit, computed bounds without the area of use (unless ignored), affine
    /// transformation, MapInfo's datum. Where both name a datum (by code, WKT or PROJ's "+datum"; a
    /// catalogue's entry by its code), PROJ must find them equivalent too, but for the order of axes: one
    /// PROJ text is often that of several datums. CoordSys text names none. Symmetric, but not transitive: a
    /// text without a datum may equal two systems that differ. A CoordSys source that cannot be read equals
    /// nothing but itself.
    bool isEqual(const CoordSystem &other, bool ignoreRect) const;
    /// False for null.
    bool isEqual(const CoordSystemPtr &other, bool ignoreRect) const;
    static bool testEqual(const CoordSystemPtr &a, const CoordSystemPtr &b, bool ignoreRect);
    /// @}

    /// \name Conversions: forward from longitude/latitude to the plane, inverse back
    /// Longitude and latitude are degrees from Greenwich on the system's own datum, the plane is in the
    /// system's unit, in metres for a geographic system. Coordinates never throw. False for what is not
    /// finite, with a singular affine transformation (isSingularAffine), and outside the projection's domain;
    /// a point written only on success, a rectangle also when it came out empty.
    /// @{
    bool forward(const QPointF &lonLat, QPointF &out) const;
    bool inverse(const QPointF &planar, QPointF &out) const;
    /// Bounding rectangle of the corners and edge midpoints; false when it has no extent.
    bool forward(const QRectF &lonLat, QRectF &out) const;
    bool inverse(const QRectF &planar, QRectF &out) const;
    /// One engine call for the whole list; false, nothing written, when any point fails.
    bool forward(const QVector<QPointF> &lonLat, QVector<QPointF> &out) const;
    bool inverse(const QVector<QPointF> &planar, QVector<QPointF> &out) const;
    /// forward() and inverse() by names that say which way, as a value: none when they are false. The plane
    /// is that of forward(): **metres** for a geographic system, where CoordTransform has degrees.
    std::optional<QPointF> toPlane(const QPointF &lonLat) const;
    std::optional<QRectF> toPlane(const QRectF &lonLat) const;
    std::optional<QVector<QPointF>> toPlane(const QVector<QPointF> &lonLat) const;
    std::optional<QPointF> toGeographic(const QPointF &planar) const;
    std::optional<QRectF> toGeographic(const QRectF &planar) const;
    std::optional<QVector<QPointF>> toGeographic(const QVector<QPointF> &planar) const;
    /// Straight distance of two points in the system's unit: of a plane in that unit; for a geographic
    /// system, whose points are degrees here, in metres of forward()'s plane (no great circle). Not finite
    /// for points that are not.
    double cartesianDistance(const QPointF &a, const QPointF &b) const;
    /// Great-circle distance in metres, on the sphere of EARTH_SPHERE_RADIUS (haversine formula), of two
    /// points of the plane, for a geographic system of two points in degrees. 0 and *ok false when a point
    /// cannot be converted; \p ok may be null.
    double sphericalDistance(const QPointF &a, const QPointF &b, bool *ok) const;
    /// @}

    /// \name Setters, for the thread that makes the object
    /// @{
    void setDescription(const QString &description);
    /// The answer of epsg(), except for a system made from an EPSG code; with an affine transformation that
    /// of baseCode(). Not checked, but exports name the system by it only when its plane is this one's.
    void setEpsg(int epsg);
    /// What the system is known by, and what transformations are made from. Unit and computed bounds that
    /// were asked before stay as they are, also when reference or object are set: set all three first.
    void setSourceParameters(const SourceData &source);
    void setOGRSpatialReference(std::shared_ptr<void> srs);
    /// Also makes the object without datum shift that forward() and inverse() use. Throws ProjException when
    /// that fails.
    void setProj4(PjHandle pj);
    /// Throws std::logic_error "Не могу задать пустые границы" unless width and height are positive.
    void setRectCoordSystem(const QRectF &rect);
    /// Null takes it away. Any is taken, a singular one too (isSingularAffine): conversions fail then. Bounds
    /// that were computed before are computed anew; explicit ones stay as they are.
    void setAffineTransform(std::unique_ptr<QTransform> transform);
    void setAffineTransform(std::unique_ptr<QTransform> transform, const LinearUnit &unit);
    /// @}

private:
    friend class CoordSystemPrivate;
    const std::unique_ptr<CoordSystemPrivate> d;
};

/// True when the '+' separated parts of two PROJ texts are a permutation of each other, blanks included.
NIVORA_CS_EXPORT bool compareprojStr(const QString &a, const QString &b);

/// One figure of a spatial reference through one of GDAL's accessors.
/// Throws std::logic_error "Не могу получить параметр" on an error code.
NIVORA_CS_EXPORT double getParamOSR(const std::function<double(void *, int *)> &f, void *srs);

} // namespace nivora::cs
