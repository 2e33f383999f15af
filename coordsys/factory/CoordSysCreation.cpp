#include "CoordSysFactory_p.h"

#include "CatalogueName_p.h"
#include "CodedError_p.h"
#include "CoordSysReader_p.h"
#include "CoordSystemCache_p.h"
#include "CoordSystem_p.h"
#include "DriverText_p.h"
#include "EngineGate_p.h"
#include "LazyParts_p.h"
#include "OsrHandle_p.h"
#include "ProjText_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SpatialReferenceText.h>
#include <platform/Logger.h>

#include <QMutexLocker>
#include <QObject>
#include <QRegularExpression>

#include <cmath>
#include <memory>

namespace nivora::cs {
namespace {

/// MapInfo's number for the datum of web Mercator.
constexpr int webMercatorDatum = 157;

[[noreturn]] void throwEmpty()
{
    throwCoded<std::invalid_argument>(Error::Code::EmptyText, QObject::tr("Строка КС пустая"));
}

[[noreturn]] void throwInvalid(const QString &text)
{
    throwCoded<std::runtime_error>(Error::Code::NotUnderstood,
                                   QObject::tr("Неверная строка КС\n%1").arg(text));
}

/// PROJ text of web Mercator as GDAL writes it, a Mercator on a sphere with grid tricks, turned into PROJ's
/// own spherical Mercator on WGS 84; terms that PROJ does not take there are dropped.
QString webMercatorText(const QString &proj)
{
    static const QRegularExpression radius(QStringLiteral("\\+(?<d_id>[Rab])=6378137"));   // "+a=6378137"
    static const QRegularExpression projection(QStringLiteral("\\+proj=(?<prj_id>\\w+)")); // "+proj=merc"
    static const QRegularExpression term(
        QStringLiteral("\\+(\\w+)=(\\S+)|\\+(\\w+)")); // "+lon_0=0", "+no_defs"
    static const QStringList kept = {
        QStringLiteral("proj"),  QStringLiteral("datum"),    QStringLiteral("ellps"),
        QStringLiteral("lon_0"), QStringLiteral("x_0"),      QStringLiteral("y_0"),
        QStringLiteral("units"), QStringLiteral("to_meter"), QStringLiteral("no_defs")};
    QString text = proj;
    QString letters;
    for (auto i = radius.globalMatch(proj); i.hasNext();)
        letters += i.next().captured(QStringLiteral("d_id"));
    const QString datum = QStringLiteral("+datum=WGS84");
    if (letters.contains(QLatin1Char('R')))
        text.replace(QStringLiteral("+R=6378137"), datum);
    if (letters.contains(QLatin1Char('a')) && letters.contains(QLatin1Char('b'))) {
        text.replace(QStringLiteral("+a=6378137"), datum);
        text.remove(QStringLiteral("+b=6378137"));
    }
    if (projection.match(text).captured(QStringLiteral("prj_id")) == QLatin1String("merc"))
        text.replace(QStringLiteral("+proj=merc"), QStringLiteral("+proj=webmerc"));

    QString result;
    for (auto i = term.globalMatch(text); i.hasNext();) {
        const QRegularExpressionMatch match = i.next();
        const bool bare = !match.captured(3).isEmpty();
        const QString key = bare ? match.captured(3) : match.captured(1);
        const bool isMetre = key == QLatin1String("units") && match.captured(2) == QLatin1String("m");
        if (!kept.contains(key) || isMetre)
            continue;
        result +=
            bare ? QStringLiteral(" +%1").arg(key) : QStringLiteral(" +%1=%2").arg(key, match.captured(2));
    }
    return result.trimmed();
}

/// The spatial reference of a map-header record. Throws std::runtime_error when the driver refuses it.
std::shared_ptr<void> importRecord(const TABProjInfo_t &record)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope errors;
    std::shared_ptr<void> srs = newSrs();
    if (!importFromMapinfo(srs.get(), mitabCoordSys(record)))
        throwCoded<std::runtime_error>(Error::Code::Engine, errors.message());
    return srs;
}

/// PROJ makes objects of steps and shifts too, which are no systems.
bool isStep(const QString &text)
{
    static const QRegularExpression step(QStringLiteral( // "+proj=helmert"
        "\\+proj=(affine|axisswap|defmodel|deformation|geoc|geogoffset|gridshift|helmert|hgridshift|horner|"
        "molobadekas|molodensky|noop|pop|push|set|tinshift|topocentric|unitconvert|vertoffset|vgridshift|"
        "xyzgridshift)(?=\\s|$)"));
    return !text.contains(QLatin1String("+proj=pipeline")) && step.match(text).hasMatch();
}

/// Of texts that may be another thing than a system of x and y; "+type=crsword" makes an operation. Others
/// are not asked: the answer costs a good part of the creation.
void refuseUnlessPlanar(const QString &text)
{
    static const QRegularExpression suspect(
        QStringLiteral("\\+(init|type)=|\\+proj=(geocent|cart|pipeline)(?=\\s|$)"));
    if (!suspect.match(text).hasMatch())
        return;
    const CrsDefinitionPtr identity = CrsDefinition::of({CoordSystem::Proj4, text}, nullptr);
    if (!identity)
        throwInvalid(text);
    if (!identity->isHorizontal())
        throwWithoutPlane(text);
}

/// Throws std::runtime_error when GDAL refuses the text, or x and y alone are no coordinates of it.
std::shared_ptr<void> importProj(const QString &text)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope errors;
    std::shared_ptr<void> srs = isStep(text) ? nullptr : srsFromProj(text);
    if (!srs)
        throwInvalid(text);
    refuseUnlessPlanar(text);
    return srs;
}

std::shared_ptr<void> importWkt(const QString &wkt)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope errors;
    std::shared_ptr<void> srs = srsFromWkt(wkt);
    if (!srs)
        throwCoded<std::runtime_error>(
            Error::Code::NotUnderstood,
            QObject::tr("Ошибка импорта из строки WKT:\n%1\n(%2)").arg(wkt, errors.message()));
    return srs;
}

double linearUnitsOf(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return OSRGetLinearUnits(srs, nullptr);
}

/// The catalogue's unit of a length; null when it has none.
const MIUnitConvParam *unitOfLength(const ProjectionParamsManager &manager, double metres)
{
    for (const auto &unit : manager.linearUnits())
        if (unit->id != LinearUnit::Degree && std::fabs(unit->conversion() - metres) <= 1e-9 * metres)
            return unit.get();
    return nullptr;
}

void setAffine(CoordSystem &cs, const QTransform &t, const MIUnitConvParam *unit)
{
    setAffineParamsArray(cs, unit, {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy()});
}

/// A text whose grid is not there makes no operation, but a system that can be described; its own plane needs
/// no grid.
PjHandle mainObjectOf(const QString &text)
{
    try {
        return proj4FromString(text);
    } catch (const ProjException &) {
        const QMutexLocker lock(globalProj4Mutex());
        const QByteArray described = (text + QStringLiteral(" +type=crs")).toUtf8();
        PjHandle crs = text.contains(QLatin1String("+nadgrids="))
                           ? ownPj(proj_create(globalProjContext(), described.constData()))
                           : nullptr;
        if (!crs || !proj_is_crs(crs.get()))
            throw;
        return crs;
    }
}

/// The database vouches for a code's system; others are tried.
bool isComputed(const CrsDefinition &identity)
{
    const QString proj = identity.projText();
    try {
        return !proj.isEmpty() && (identity.verifiedCode() > 0 || proj4FromString(proj));
    } catch (const ProjException &) {
        return false;
    }
}

bool isLocal(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return OSRIsLocal(srs) != 0;
}

/// GDAL's PROJ text; empty when it has none.
QString exportedProj(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    const QString proj = osrToProj4(srs);
    const bool webMercator = proj.contains(QLatin1String("+proj=merc ")) &&
                             proj.contains(QLatin1String("+nadgrids=@null")) &&
                             OSRGetLinearUnits(srs, nullptr) == 1.0;
    return webMercator ? webMercatorText(proj) : proj;
}

/// Throws std::runtime_error where the driver reads a projection it does not know as plain
/// longitude/latitude.
PjHandle projObjectFor(const CoordSystem &cs, const TABProjInfo_t &record)
{
    const QMutexLocker lock(globalProj4Mutex());
    const QString text = cs.projStr();
    if (record.nProjId > LongitudeLatitude && text.startsWith(QLatin1String("+proj=longlat")))
        throwInvalid(cs.sourceParameters().string);
    if (record.nDatumId == webMercatorDatum) {
        try {
            return proj4FromString(webMercatorText(text));
        } catch (const ProjException &e) {
            // longitude/latitude on this datum loses its ellipsoid in the rewriting
            LOG_DEBUG(QString::fromUtf8(e.what()));
        }
    }
    return proj4FromString(text);
}

} // namespace

CoordSystemPtr CoordSysFactoryPrivate::createFromProj(const QString &proj) const
{
    const SourceScope scope(*this);
    return m_made->system(CoordSystemCache::By::Proj, proj, [&] {
        const CoordSystemPtr cs = unnamedFromProj(proj);
        // Compared without its source, as it stands here, whatever becomes of the system given out.
        const auto lookUp = [catalogue = m_mapinfo, asked = CoordSystemPtr(privateOf(*cs).duplicate())] {
            return catalogue->getHumanReadableTextWithEpsg(*asked, true).first;
        };
        cs->setSourceParameters({CoordSystem::Proj4, proj});
        privateOf(*cs).setNameless(std::make_shared<const CatalogueName>(lookUp));
        return cs;
    });
}

/// PROJ's operation and PROJ's system of one text disagree in a few: around another pole the operation gives
/// radians, Miller's and van der Grinten's maps are drawn on the authalic sphere by the system alone, and
/// only the system's axes are turned as maps have them. Transformations use the system, so forward() and
/// inverse() do.
void CoordSysFactoryPrivate::useCrsProjection(CoordSystem &cs, const QString &proj)
{
    static const QRegularExpression odd(QStringLiteral("\\+proj=(mill|vandg|ob_tran)(?=\\s|$)|\\+axis="));
    const QRegularExpressionMatch match = odd.match(proj);
    const QString projection = match.captured(1);
    if (!match.hasMatch() || (projection == QLatin1String("ob_tran") && !privateOf(cs).isRotated()))
        return;
    const CrsDefinitionPtr identity = CrsDefinition::of({CoordSystem::Proj4, proj}, nullptr);
    const std::shared_ptr<const ProjOperation> plane = identity ? identity->plane() : nullptr;
    if (plane)
        privateOf(cs).setPlane(plane);
}

/// A system without name, code and source.
CoordSystemPtr CoordSysFactoryPrivate::unnamedFromProj(const QString &proj)
{
    if (proj.isEmpty())
        throwEmpty();
    static const QRegularExpression start(QStringLiteral("^\\s*\\+proj=")); // "+proj=longlat …"
    if (!start.match(proj).hasMatch())
        throwCoded<std::logic_error>(Error::Code::NotUnderstood, QObject::tr("Неверный формат строки"));
    LOG_DEBUG(QStringLiteral("CoordSysFactory.createFromProj=%1").arg(proj));

    auto cs = std::make_shared<CoordSystem>();
    const QString text = systemTerms(proj);
    const std::shared_ptr<void> srs = importProj(text);
    cs->setOGRSpatialReference(srs);
    cs->setProj4(mainObjectOf(text));
    useCrsProjection(*cs, text);
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::createWithoutDescription(const QString &prj) const
{
    const SourceScope scope(*this);
    return unnamedFromPrj(prj);
}

/// A system without name and code.
CoordSystemPtr CoordSysFactoryPrivate::unnamedFromPrj(const QString &prj) const
{
    if (prj.isEmpty())
        throwEmpty();
    const CoordSysReading read = understoodRecord(CoordSysText(prj), *m_params);
    const QString text = MapHeaderCoordsysConverter().tabProjInfoToString(read.record);
    const CoordSystemPtr cs = m_made->system(CoordSystemCache::By::Record, text,
                                             [&] { return unnamedFromRecord(read.record, text); });
    privateOf(*cs).m_assumptions = read.assumptions; // of this text: others have the same record
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::unnamedFromRecord(const TABProjInfo_t &record,
                                                         const QString &text) const
{
    auto cs = std::make_shared<CoordSystem>();
    cs->setSourceParameters({CoordSystem::Prj, text});
    CoordSystemPrivate &own = privateOf(*cs);
    own.m_record = std::make_shared<const TABProjInfo_t>(record);
    cs->setOGRSpatialReference(importRecord(record));
    own.m_isNonEarth = record.nProjId == NonEarthPlan; // asking GDAL costs a copy where there is a shift
    cs->setProj4(cs->isNonEarth() ? proj4FromString(cs->projStr()) : projObjectFor(*cs, record));
    useCrsProjection(*cs, cs->projStr());
    if (record.nAffineFlag) {
        const double *p = record.dAffineParams; // A to F; the matrix is given by columns
        setAffineParamsArray(*cs, m_params->unitByID(record.nAffineUnits),
                             {p[0], p[3], p[1], p[4], p[2], p[5]});
    }
    if (record.nBoundsFlag) {
        const QRectF bounds = MapHeaderCoordsysConverter::boundForTabProj(record);
        cs->setRectCoordSystem(bounds);
        own.setProjectionDefaultBounds(bounds);
    }
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::createFromPrj(const QString &prj) const
{
    const SourceScope scope(*this);
    LOG_DEBUG(QStringLiteral("CoordSysFactory.createFromPrj = %1").arg(prj));
    const CoordSystemPtr cs =
        m_made->system(CoordSystemCache::By::Prj, prj, [&] { return cataloguedFromPrj(prj); });
    if (cs->description().isEmpty())
        cs->setDescription(userDescription(*cs)); // asked each time: the user may name it meanwhile
    if (cs->description().isEmpty())
        cs->setDescription(cs->prjStr());
    return cs;
}

/// Name and code are the catalogue's, else empty.
CoordSystemPtr CoordSysFactoryPrivate::cataloguedFromPrj(const QString &prj) const
{
    CoordSystemPtr cs = unnamedFromPrj(prj);
    LOG_DEBUG(QStringLiteral("CoordSysFactory.createFromPrj(fixed) = %1").arg(cs->prjStr()));
    const auto named = m_mapinfo->getHumanReadableTextWithEpsg(*cs);
    if (!named.first.isEmpty()) {
        cs->setDescription(named.first);
        if (named.second != CoordSystem::EPSG_UNDEFINDED)
            privateOf(*cs).setCataloguedEpsg(named.second);
    }
    return cs;
}

/// Longitude/latitude that PROJ writes no text for.
CoordSystemPtr CoordSysFactoryPrivate::fromPlanetocentric(const CrsDefinition &identity)
{
    auto cs = std::make_shared<CoordSystem>();
    cs->setOGRSpatialReference(importWkt(identity.wkt()));
    cs->setProj4(proj4FromString(QStringLiteral("+proj=longlat +geoc +a=%1 +b=%2 +no_defs")
                                     .arg(cs->getSemiMajor(), 0, 'g', 17)
                                     .arg(identity.semiMinorM(), 0, 'g', 17)));
    return cs;
}

/// A system that has no PROJ text. Throws std::runtime_error when PROJ cannot compute in it.
CoordSystemPtr CoordSysFactoryPrivate::fromIdentity(const CrsDefinitionPtr &identity)
{
    if (identity && identity->kind() == CrsKind::Geographic)
        return fromPlanetocentric(*identity);
    const std::shared_ptr<const ProjOperation> plane = identity ? identity->plane() : nullptr;
    if (!plane || !identity->converts(*plane))
        throwCoded<std::runtime_error>(Error::Code::Engine, QObject::tr("Ошибка экспорта КС в формат proj"));
    auto cs = std::make_shared<CoordSystem>();
    cs->setOGRSpatialReference(importWkt(identity->wkt()));
    privateOf(*cs).m_pj = identity->copyOfCrs();
    privateOf(*cs).setPlane(plane);
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::createFromWkt(const QString &wkt) const
{
    const SourceScope scope(*this);
    return m_made->system(CoordSystemCache::By::Wkt, wkt, [&] { return namedFromWkt(wkt); });
}

/// By its definition alone, see definedByCode(). Null for all that is more than a plane of PROJ's, and for
/// what PROJ cannot compute: the engines are asked at once then, and say why.
CoordSystemPtr CoordSysFactoryPrivate::definedByWkt(const QString &wkt, const CrsDefinitionPtr &identity)
{
    const bool isPlain =
        (identity->kind() == CrsKind::Projected || identity->kind() == CrsKind::Geographic) &&
        !identity->isDemotedTo2D() && !identity->affine() && !identity->hasOwnShift();
    if (!isPlain || identity->withoutForeignCode() || !isComputed(*identity))
        return nullptr;
    auto cs = std::make_shared<CoordSystem>();
    CoordSystemPrivate &own = privateOf(*cs);
    own.makeLater(std::make_shared<const LazyParts>([wkt, identity] {
        const bool isJson = wkt.startsWith(QLatin1Char('{')); // what WKT has no words for
        const CoordSystemPtr made = unnamedFromWkt(importWkt(isJson ? identity->wkt() : wkt), identity);
        const CoordSystemPrivate &parts = privateOf(*made);
        return LazyParts::Parts{parts.m_srs, parts.m_pj, parts.m_plane};
    }));
    cs->setSourceParameters({CoordSystem::Wkt, wkt});
    own.setIdentity(identity);
    own.setNameless();
    own.m_isNonEarth = false;
    own.m_isLatLong = identity->kind() == CrsKind::Geographic;
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::namedFromWkt(const QString &wkt) const
{
    if (wkt.isEmpty())
        throwCoded<std::runtime_error>(Error::Code::EmptyText, QObject::tr("Строка КС пустая"));
    LOG_DEBUG(QStringLiteral("CoordSysFactory.createFromWkt=%1").arg(wkt));

    CrsDefinitionPtr identity = CrsDefinition::from(wkt);
    if (const CoordSystemPtr defined = identity ? definedByWkt(wkt, identity) : nullptr)
        return defined;
    const bool isJson = wkt.startsWith(QLatin1Char('{')); // what WKT has no words for
    std::shared_ptr<void> srs = importWkt(isJson && identity ? identity->wkt() : wkt);
    if (!identity)
        identity = CrsDefinition::of({CoordSystem::Unknown, QString()}, srs.get());
    if (identity && !identity->isHorizontal())
        throwWithoutPlane(wkt);
    const CrsDefinitionPtr bare = identity ? identity->withoutForeignCode() : nullptr;
    if (bare)
        identity = bare;
    if (bare || (identity && (identity->isDemotedTo2D() || identity->affine())))
        srs = importWkt(identity->wkt());
    const CoordSystemPtr cs = isLocal(srs.get()) ? planFromWkt(srs) : unnamedFromWkt(srs, identity);
    cs->setSourceParameters({CoordSystem::Wkt, wkt});
    privateOf(*cs).setIdentity(identity);
    if (identity && identity->affine())
        setAffine(*cs, *identity->affine(), unitOfLength(*m_params, identity->affineUnitM()));
    const bool isMoved = identity && identity->affine() && !identity->name().isEmpty();
    const int code = isMoved ? int(CoordSystem::EPSG_UNDEFINDED) : privateOf(*cs).statedEpsg();
    const bool isNamedPlan = identity && identity->kind() == CrsKind::Local && !identity->name().isEmpty();
    if (code != CoordSystem::EPSG_UNDEFINDED)
        cs->setDescription(nameOfCode(code));
    else if (isMoved || isNamedPlan)
        cs->setDescription(identity->name());
    else if (cs->description().isEmpty())
        privateOf(*cs).setNameless();
    return cs;
}

/// The unit is that of the reference, which the catalogue may lack; its name is the reference's.
CoordSystemPtr CoordSysFactoryPrivate::planFromWkt(const std::shared_ptr<void> &srs) const
{
    const double factor = linearUnitsOf(srs.get());
    const MIUnitConvParam *unit = unitOfLength(*m_params, factor);
    CoordSystemPtr cs;
    if (unit) {
        cs = createFromPrj(QStringLiteral("NonEarth Units \"%1\"").arg(unit->name()));
    } else {
        cs = std::make_shared<CoordSystem>();
        cs->setProj4(proj4FromString(QStringLiteral("+proj=eqc +R=%1 +to_meter=%2 +no_defs")
                                         .arg(CoordSystem::EARTH_SPHERE_RADIUS, 0, 'f', 0)
                                         .arg(factor, 0, 'g', 17)));
    }
    cs->setOGRSpatialReference(srs);
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::unnamedFromWkt(const std::shared_ptr<void> &srs,
                                                      const CrsDefinitionPtr &identity)
{
    const QString proj = exportedProj(srs.get());
    if (proj.isEmpty() && identity)
        return fromIdentity(identity);
    auto cs = std::make_shared<CoordSystem>();
    cs->setOGRSpatialReference(srs);
    cs->setProj4(proj4FromExport(proj));
    const std::shared_ptr<const ProjOperation> plane = identity ? identity->plane() : nullptr;
    if (plane)
        privateOf(*cs).setPlane(plane);
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::createFromTaggedString(const QString &text) const
{
    const SourceScope scope(*this);
    const auto begins = [&text](QLatin1String tag) { return text.startsWith(tag, Qt::CaseInsensitive); };
    const QString body = text.section(QLatin1Char(':'), 1);
    if (begins(QLatin1String("proj:")) || begins(QLatin1String("proj4:")))
        return createFromProj(body);
    if (begins(QLatin1String("wkt:")))
        return createFromWkt(body);
    if (begins(QLatin1String("epsg:")))
        return createFromEpsg(body.toInt());
    return createFromPrj(begins(QLatin1String("prj:")) ? body : text);
}

void CoordSysFactory::setAffineParams(CoordSystem &cs, const QStringList &params)
{
    const auto manager = activeCatalogues()->projectionParamsManager();
    const auto number = [&params](int i) { return params.value(i).toDouble(); };
    // A to F as text; the matrix is given by columns
    setAffineParamsArray(cs, manager->unitByName(params.value(0), std::nothrow),
                         {number(1), number(4), number(2), number(5), number(3), number(6)});
}

void setAffineParamsArray(CoordSystem &cs, const MIUnitConvParam *unit, const std::array<double, 6> &params)
{
    auto transform =
        std::make_unique<QTransform>(params[0], params[1], params[2], params[3], params[4], params[5]);
    if (isSingularAffine(*transform))
        throwCoded<std::invalid_argument>(Error::Code::InvalidArgument,
                                          QObject::tr("Вырожденное аффинное преобразование"));
    LinearUnit named = unit ? LinearUnit(*unit) : LinearUnit();
    if (!unit) {
        try {
            named = cs.unit(); // degree for a geographic system
        } catch (const std::exception &e) {
            LOG_DEBUG(QString::fromUtf8(e.what()));
        }
    }
    cs.setAffineTransform(std::move(transform), named); // an earlier unit does not belong to it
}

} // namespace nivora::cs
