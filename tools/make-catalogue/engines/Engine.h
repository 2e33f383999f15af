#pragma once

#include <QPointF>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace catalogue {

using Points = std::vector<QPointF>;

/// A spatial reference of GDAL's with x = longitude or easting first, whatever its authority says.
class Srs
{
public:
    /// From CoordSys text as GDAL's MapInfo driver reads it; none when it refuses the text.
    static std::optional<Srs> fromCoordSys(const QString &text);
    /// From an EPSG code; none when GDAL cannot import it.
    static std::optional<Srs> fromEpsg(int code);
    /// Shares a handle that is not null.
    static Srs fromHandle(std::shared_ptr<void> handle);

    bool isGeographic() const;
    bool isLocal() const;
    double semiMajor() const;
    double semiMinor() const;
    /// Degrees east of Greenwich.
    double primeMeridian() const;
    /// DATUM, SPHEROID, ... of the WKT form; empty when there is none.
    QString attribute(const char *name) const;
    /// The seven figures of TOWGS84, zeros when there are none: metres, arc-seconds, ppm.
    std::vector<double> toWgs84() const;
    /// The text that the MapInfo driver writes, empty when it refuses.
    QString toCoordSys() const;

    /// Positions in the plane of points in degrees on the system's own geographic base (own prime meridian).
    /// A point that cannot be projected is infinite.
    Points plane(const Points &degrees) const;

private:
    explicit Srs(std::shared_ptr<void> handle);
    static Srs fresh();
    std::shared_ptr<void> m_handle;
};

/// Sets the driver to give known datums their shifts, and silences GDAL and PROJ for the life of the process.
void prepareEngines();

} // namespace catalogue
