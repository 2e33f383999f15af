#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/DefaultRects.h>
#include <coordsys/TABProjInfo.h>

#include <QDir>
#include <QString>

#include <memory>

namespace nivora::cs {

class CoordSysRectPrivate;

/// Bounds of coordinate systems in their own units: from "cs_mbr.xml" for known systems, else by a rule per
/// projection. The bounds are those of the plane without the system's affine transformation, which the caller
/// applies (CoordSystem::rectNumericCoordSys does). Thread-safe.
class NIVORA_CS_EXPORT CoordSysRect
{
public:
    /// No entries.
    CoordSysRect();
    ~CoordSysRect();
    CoordSysRect(const CoordSysRect &) = delete;
    CoordSysRect &operator=(const CoordSysRect &) = delete;

    /// Replaces the contents by those of "cs_mbr.xml" in \p dir. False when the file cannot be opened
    /// (logged). A file that is not well-formed gives no entries (logged).
    bool initFromXML(const QDir &dir);
    /// The same, but the file is only opened and kept; it is taken apart when bounds are first looked up.
    bool openXML(const QDir &dir);
    /// initFromXML() with the directory of the active factory.
    bool initFromXML();
    /// Forgets all entries.
    void clear();

    /// Bounds of the system that a CoordSys string describes; \p cs, which may be null, projects the rules
    /// that are given in degrees. Empty text is logged and gives an empty rectangle; malformed text throws as
    /// MapHeaderCoordsysConverter::prjStrToTABProjInfo does.
    QRectF rect(const QString &prj, CoordSystem *cs) const;
    /// Bounds of a system: catalogue, then the rule, for projected systems with a known EPSG code the area of
    /// use. Failures are logged and give an empty rectangle; never throws.
    QRectF rect(CoordSystem *cs) const;
    QRectF rect(const CoordSystemPtr &cs) const;
    /// The same without the area of use: the PROJ database is never searched, and the answer does not depend
    /// on whether it was searched before.
    QRectF rectWithoutSearch(CoordSystem *cs) const;

    /// The rule per projection alone.
    static QRectF rectMifalAlgorithm(const QString &prj, CoordSystem *cs);
    /// Whether the bounds are those that every geographic system gets.
    static bool isDefaultRectLatLong(const QRectF &rect) { return nivora::cs::isDefaultRectLatLong(rect); }
    /// Whether the bounds are those that every plan gets.
    static bool isDefaultRectNonEarth(const QRectF &rect) { return nivora::cs::isDefaultRectNonEarth(rect); }

private:
    const std::unique_ptr<CoordSysRectPrivate> d;
};

/// A number of "cs_mbr.xml" as its readers take it: 0 for exactly "0x00", else -1. Only "0x00" names a value.
NIVORA_CS_EXPORT int getattrib(const QString &text);

} // namespace nivora::cs
