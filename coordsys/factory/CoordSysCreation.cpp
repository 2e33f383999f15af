#include "CoordSysFactory_p.h"

#include "CatalogueName_p.h"
#include "CodedError_p.h"
#include "CoordSysReader_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystemCache_p.h"
#include "CoordSystem_p.h"
#include "DriverText_p.h"
#include "EngineGate_p.h"
#include "OsrHandle_p.h"
#include "ProjText_p.h"
#include "ProjectionTable_p.h"
#include "WebMercatorText_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Logger.h>

#include <QMutexLocker>
#include <QRegularExpression>

#include <memory>

namespace nivora::cs {
namespace {

/// MapInfo's number for the datum of web Mercator.
constexpr int webMercatorDatum = 157;

[[noreturn]] void throwEmpty()
{
    throwCoded<std::invalid_argument>(Error::Code::EmptyText, CoordSysTexts::tr("Строка КС пустая"));
}

[[noreturn]] void throwInvalid(const QString &text)
{
    throwCoded<std::runtime_error>(Error::Code::NotUnderstood,
                                   CoordSysTexts::tr("Неверная строка КС\n%1").arg(text));
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

/// A text is taken for a system anyway; with this term PROJ makes two objects more of it. Steps of a pipeline
/// keep theirs.
QString withoutCrsTerm(const QString &proj)
{
    static const QRegularExpression term(QStringLiteral("\\s\\+type=crs(?=\\s|$)"));
    return proj.contains(QLatin1String("+proj=pipeline")) ? proj : QString(proj).remove(term);
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
        throwCoded<std::logic_error>(Error::Code::NotUnderstood, CoordSysTexts::tr("Неверный формат строки"));
    LOG_DEBUG(QStringLiteral("CoordSysFactory.createFromProj=%1").arg(proj));

    auto cs = std::make_shared<CoordSystem>();
    const QString text = withoutCrsTerm(systemTerms(proj));
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
                                          CoordSysTexts::tr("Вырожденное аффинное преобразование"));
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
