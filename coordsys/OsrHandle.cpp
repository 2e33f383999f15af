#include <coordsys/OsrHandle_p.h>

#include <coordsys/ProjEngine.h>
#include <platform/Logger.h>

#include <QMutexLocker>

namespace nivora::cs {
namespace {

void CPL_STDCALL logFromCpl(CPLErr, CPLErrorNum number, const char *message)
{
    LOG_TRACE(QStringLiteral("GDAL %1: %2").arg(QString::number(number), QString::fromUtf8(message)));
}

} // namespace

std::shared_ptr<void> ownSrs(OGRSpatialReferenceH srs)
{
    return srs ? std::shared_ptr<void>(srs, OSRDestroySpatialReference) : nullptr;
}

std::shared_ptr<void> newSrs()
{
    std::shared_ptr<void> srs = ownSrs(OSRNewSpatialReference(nullptr));
    OSRSetAxisMappingStrategy(srs.get(), OAMS_TRADITIONAL_GIS_ORDER);
    return srs;
}

CplErrorScope::CplErrorScope()
{
    CPLPushErrorHandler(logFromCpl);
    CPLErrorReset();
}

CplErrorScope::~CplErrorScope() { CPLPopErrorHandler(); }

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

} // namespace nivora::cs
