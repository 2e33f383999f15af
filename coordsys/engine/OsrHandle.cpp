#include "OsrHandle_p.h"

#include "ProjEngine_p.h"
#include <coordsys/ProjEngine.h>
#include <platform/Logger.h>

#include <gdal_version.h>

#include <QMutexLocker>

// The driver's choices that are mended here were read off 3.6; headers may be older than the package says.
static_assert(GDAL_VERSION_NUM >= GDAL_COMPUTE_VERSION(3, 6, 0), "GDAL before 3.6 is not supported");

namespace nivora::cs {
namespace {

void CPL_STDCALL logFromCpl(CPLErr, CPLErrorNum number, const char *message)
{
    LOG_TRACE(QStringLiteral("GDAL %1: %2").arg(QString::number(number), QString::fromUtf8(message)));
}

} // namespace

std::shared_ptr<void> ownSrs(OGRSpatialReferenceH srs)
{
    const auto destroy = [](void *owned) {
        if (!isKeptAtProcessEnd(owned))
            OSRDestroySpatialReference(owned);
    };
    return srs ? std::shared_ptr<void>(srs, destroy) : nullptr;
}

std::shared_ptr<void> newSrs()
{
    std::shared_ptr<void> srs = ownSrs(OSRNewSpatialReference(nullptr));
    OSRSetAxisMappingStrategy(srs.get(), OAMS_TRADITIONAL_GIS_ORDER);
    return srs;
}

CplErrorScope::CplErrorScope()
    : m_outerClass(CPLGetLastErrorType())
    , m_outerNumber(CPLGetLastErrorNo())
    , m_outerMessage(CPLGetLastErrorMsg())
{
    CPLPushErrorHandler(logFromCpl);
    CPLErrorReset();
}

CplErrorScope::~CplErrorScope()
{
    CPLPopErrorHandler();
    CPLErrorSetState(m_outerClass, m_outerNumber, m_outerMessage.constData());
}

QString CplErrorScope::message() const { return QString::fromUtf8(CPLGetLastErrorMsg()); }

QString osrToProj4(void *srs)
{
    if (!srs)
        return {};
    const QMutexLocker lock(globalProj4Mutex());
    char *raw = nullptr;
    const OGRErr code = OSRExportToProj4(srs, &raw);
    const CplText text(raw);
    return code == OGRERR_NONE ? QString::fromUtf8(text.get()) : QString();
}

QString osrToWkt2(void *srs)
{
    const char *const options[] = {"FORMAT=WKT2_2019", nullptr};
    char *raw = nullptr;
    const OGRErr code = srs ? OSRExportToWktEx(srs, &raw, options) : OGRERR_FAILURE;
    const CplText text(raw);
    return code == OGRERR_NONE ? QString::fromUtf8(text.get()) : QString();
}

std::shared_ptr<void> srsFromWkt(const QString &wkt)
{
    std::shared_ptr<void> srs = newSrs();
    QByteArray utf8 = wkt.toUtf8();
    char *rest = utf8.data();
    return OSRImportFromWkt(srs.get(), &rest) == OGRERR_NONE ? srs : nullptr;
}

std::shared_ptr<void> srsFromProj(const QString &proj)
{
    std::shared_ptr<void> srs = newSrs();
    return OSRImportFromProj4(srs.get(), proj.toUtf8().constData()) == OGRERR_NONE ? srs : nullptr;
}

} // namespace nivora::cs
