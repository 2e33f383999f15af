#pragma once

// Owning handles for what GDAL returns, and GDAL's messages caught per call. GDAL's own headers stay here.

#include <platform/system/ReleasedBy.h>

#include <QByteArray>
#include <QString>

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_vsi.h>
#include <ogr_srs_api.h>

#include <memory>

namespace nivora::cs {

/// Text that GDAL allocated.
using CplText = std::unique_ptr<char, ReleasedBy<VSIFree>>;
/// Candidates that OSRFindMatches returned.
using SrsArray = std::unique_ptr<OGRSpatialReferenceH, ReleasedBy<OSRFreeSRSArray>>;

/// A spatial reference with several owners; the deleter is OSRDestroySpatialReference.
std::shared_ptr<void> ownSrs(OGRSpatialReferenceH srs);
/// An empty spatial reference whose axes are x = longitude or easting first, whatever its authority says.
std::shared_ptr<void> newSrs();

/// Keeps GDAL's messages of this thread out of stderr and in the log (trace level) for the life of the
/// object, and clears GDAL's last error at its start. At its end the error that GDAL had before is the last
/// one again (class, number and message), as if nothing had been called. Host's own handlers stay as they
/// are. Scopes nest. Not for sharing.
class CplErrorScope
{
public:
    CplErrorScope();
    ~CplErrorScope();
    CplErrorScope(const CplErrorScope &) = delete;
    CplErrorScope &operator=(const CplErrorScope &) = delete;

    /// GDAL's last message of this thread.
    QString message() const;

private:
    CPLErr m_outerClass;
    CPLErrorNum m_outerNumber;
    QByteArray m_outerMessage;
};

/// The PROJ text of a spatial reference; empty when GDAL cannot give one. Takes the PROJ lock.
QString osrToProj4(void *srs);
/// WKT 2 of 2019; empty when GDAL cannot give it. Not for a handle that others use.
QString osrToWkt2(void *srs);
/// A spatial reference read from a text; null when GDAL refuses it.
std::shared_ptr<void> srsFromWkt(const QString &wkt);
std::shared_ptr<void> srsFromProj(const QString &proj);

} // namespace nivora::cs
