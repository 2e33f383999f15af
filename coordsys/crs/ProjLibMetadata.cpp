#include <coordsys/ProjLibMetadata.h>

#include "CodeAcceptance_p.h"
#include "CoordSysTexts_p.h"
#include "CrsParts_p.h"
#include "EngineGate_p.h"
#include "ProjLists_p.h"
#include <coordsys/ProjEngine.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>

namespace nivora::cs {

const QString ProjLibMetadata::EPSG = QStringLiteral("EPSG");

namespace {

using nivora::concurrent::ProgressHandler;

/// PROJ's own measure of how well a candidate fits text that is not a CRS by itself.
constexpr int sureEnough = 70;

QString objectName(int code, const QString &auth)
{
    return QStringLiteral("%1:%2").arg(auth, QString::number(code));
}

PjHandle create(const QString &text)
{
    return ownPj(proj_create(globalProjContext(), text.toUtf8().constData()));
}

/// PROJ takes "EPSG:102100" for ESRI's number.
bool isOf(const QString &auth, const PJ *pj)
{
    const QString owner = QString::fromUtf8(proj_get_id_auth_name(pj, 0));
    return owner.compare(auth, Qt::CaseInsensitive) == 0;
}

/// The object for a code; \p question is the message of the exception when there is none. Needs the PROJ
/// lock.
PjHandle createKnown(int code, const QString &auth, const QString &question)
{
    PjHandle pj = create(objectName(code, auth));
    if (!pj || !isOf(auth, pj.get()))
        throw ProjException(question, Error::Code::UnknownCode);
    return pj;
}

/// The first candidate with a code that the system may have, in PROJ's order (best first). Needs the PROJ
/// lock.
int firstCode(const ProgressHandler &progress, PJ *pj, int leastConfidence)
{
    const CodeAcceptance wanted(wkt2Of(globalProjContext(), pj));
    if (!wanted.isSearchable())
        return CoordSystemTypes::EPSG_UNDEFINDED;
    const IdentifiedCrs found = identifyCrs(globalProjContext(), pj, "EPSG");
    for (int i = 0; i < found.count(); ++i) {
        if (progress.isCanceled())
            break;
        if (found.confidences.get()[i] < leastConfidence)
            continue;
        const PjHandle candidate = ownPj(proj_list_get(globalProjContext(), found.list.get(), i));
        const auto code = candidate ? codeOf(candidate.get(), QLatin1String("EPSG")) : std::nullopt;
        if (code && wanted.takes(*code, false))
            return *code;
    }
    return CoordSystemTypes::EPSG_UNDEFINDED;
}

bool kindOf(PJ_TYPE type, ProjLibMetadata::Kind &kind)
{
    switch (type) {
    case PJ_TYPE_GEOGRAPHIC_CRS:
    case PJ_TYPE_GEOGRAPHIC_2D_CRS:
    case PJ_TYPE_GEOGRAPHIC_3D_CRS:
        kind = ProjLibMetadata::Kind::Geographic;
        return true;
    case PJ_TYPE_PROJECTED_CRS:
        kind = ProjLibMetadata::Kind::Projected;
        return true;
    default:
        return false;
    }
}

QRectF rectOf(double west, double south, double east, double north)
{
    return {west, south, east - west, north - south};
}

} // namespace

QString ProjLibMetadata::nameCrs(int code, const QString &auth) const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle pj =
        createKnown(code, auth, CoordSysTexts::tr("Запрос имени для %1=%2").arg(auth, QString::number(code)));
    return QString::fromUtf8(proj_get_name(pj.get()));
}

QString ProjLibMetadata::projStringForCrs(int code, const QString &auth) const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle pj = createKnown(
        code, auth, CoordSysTexts::tr("Запрос proj строки для %1=%2").arg(auth, QString::number(code)));
    QString text = QString::fromUtf8(proj_as_proj_string(globalProjContext(), pj.get(), PJ_PROJ_5, nullptr));
    if (proj_get_type(pj.get()) == PJ_TYPE_PROJECTED_CRS)
        text.remove(QStringLiteral("+type=crs"));
    return text;
}

QString ProjLibMetadata::wktStringForCrs(int code, const QString &auth) const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle pj = createKnown(code, auth,
                                    CoordSysTexts::tr("Запрос %0 строки для %1=%2")
                                        .arg(QStringLiteral("wkt"), auth, QString::number(code)));
    return QString::fromUtf8(proj_as_wkt(globalProjContext(), pj.get(), PJ_WKT2_2015_SIMPLIFIED, nullptr));
}

QRectF ProjLibMetadata::rectWgs84ForCrs(int code, const QString &auth) const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle pj = createKnown(code, auth,
                                    CoordSysTexts::tr("Запрос ограничивающего прямоугольника для %1=%2")
                                        .arg(auth, QString::number(code)));
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
    if (!proj_get_area_of_use(globalProjContext(), pj.get(), &west, &south, &east, &north, nullptr))
        return {};
    return rectOf(west, south, east, north);
}

int ProjLibMetadata::epsgForProjString(const std::shared_ptr<ProgressHandler> &progress,
                                       const QString &projString) const
{
    static const ProgressHandler neverCancelled;
    const ProgressHandler &handler = progress ? *progress : neverCancelled;
    const QMutexLocker lock(globalProj4Mutex());
    if (handler.isCanceled())
        return CoordSystemTypes::EPSG_UNDEFINDED;
    const PjHandle pj = create(projString);
    if (!pj)
        throw ProjException(CoordSysTexts::tr("Ошибка при инициализации проекции %1").arg(projString));
    if (proj_is_crs(pj.get()))
        return firstCode(handler, pj.get(), 0);

    const PjHandle crs = create(projString + QStringLiteral(" +type=crs"));
    // The candidates of a bound CRS carry no code, and looking for them costs up to 0.4 s.
    if (!crs || !proj_is_crs(crs.get()) || proj_get_type(crs.get()) == PJ_TYPE_BOUND_CRS)
        return CoordSystemTypes::EPSG_UNDEFINDED;
    return firstCode(handler, crs.get(), sureEnough);
}

int ProjLibMetadata::epsgForProjString(const QString &projString) const
{
    static const auto neverCancelled = std::make_shared<ProgressHandler>();
    return epsgForProjString(neverCancelled, projString);
}

QStringList ProjLibMetadata::authNames() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return textsOf(PjStringList(proj_get_authorities_from_database(globalProjContext())));
}

ProjLibMetadata::ProjectionCatalog ProjLibMetadata::listProjections(const QString &auth) const
{
    const PJ_TYPE types[] = {PJ_TYPE_GEOGRAPHIC_CRS, PJ_TYPE_PROJECTED_CRS};
    const std::unique_ptr<PROJ_CRS_LIST_PARAMETERS, ReleasedBy<proj_get_crs_list_parameters_destroy>> params(
        proj_get_crs_list_parameters_create());
    params->types = types;
    params->typesCount = std::size(types);

    const QMutexLocker lock(globalProj4Mutex());
    ProjectionCatalog catalog;
    int taken = 0;
    const auto take = [&](const PROJ_CRS_INFO &record) {
        ProjectionInfo info;
        if (!kindOf(record.type, info.kind)) {
            LOG_DEBUG(CoordSysTexts::tr("Неподдерживаемый тип %1").arg(static_cast<int>(record.type)));
            return;
        }
        info.id =
            QStringLiteral("%1:%2").arg(QString::fromUtf8(record.auth_name), QString::fromUtf8(record.code));
        info.name = QString::fromUtf8(record.name);
        if (record.bbox_valid)
            info.rect = rectOf(record.west_lon_degree, record.south_lat_degree, record.east_lon_degree,
                               record.north_lat_degree);
        catalog[QString::fromUtf8(record.area_name)] << info;
        ++taken;
    };
    forEachSystem(globalProjContext(), auth.toLocal8Bit().constData(), params.get(), take);
    LOG_DEBUG(CoordSysTexts::tr("Категорий=%1, Всего проекций=%2")
                  .arg(QString::number(catalog.size()), QString::number(taken)));
    return catalog;
}

} // namespace nivora::cs
