#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "OsrHandle_p.h"
#include "ProjText_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/PrjText.h>
#include <coordsys/SpatialReferenceText.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>
#include <QReadLocker>
#include <QRegularExpression>
#include <QWriteLocker>

#include <algorithm>

namespace nivora::cs {

using nivora::utils::toString;

namespace {

bool holdsAffine(const TABProjInfo_t &record, const QTransform *affine, const LinearUnit &unit)
{
    if (!affine || !record.nAffineFlag)
        return !affine && !record.nAffineFlag;
    const double held[] = {affine->m11(), affine->m21(), affine->dx(),
                           affine->m12(), affine->m22(), affine->dy()};
    return std::equal(std::begin(held), std::end(held), std::begin(record.dAffineParams)) &&
           (!unit || unit.unitCode() == record.nAffineUnits);
}

/// Compared as they are written: a rectangle keeps its width, not its far corner.
bool holdsBounds(const TABProjInfo_t &record, const QRectF &rect)
{
    const bool isSet = rect.width() > 0.0 && rect.height() > 0.0;
    if (!isSet || !record.nBoundsFlag)
        return !isSet && !record.nBoundsFlag;
    return boundConditionAsString(MapHeaderCoordsysConverter::boundForTabProj(record)) ==
           boundConditionAsString(rect);
}

QString withoutClauses(TABProjInfo_t record)
{
    record.nAffineFlag = 0;
    record.nBoundsFlag = 0;
    return MapHeaderCoordsysConverter().tabProjInfoToString(record);
}

/// " Affine Units "m", A, B, C, D, E, F", with the leading blank.
QString affineClause(const QTransform &t, const QString &unit)
{
    return QStringLiteral(" Affine Units \"%1\", %2, %3, %4, %5, %6, %7")
        .arg(unit.isEmpty() ? QStringLiteral("m") : unit, toString(t.m11()), toString(t.m21()),
             toString(t.dx()), toString(t.m12()), toString(t.m22()), toString(t.dy()));
}

/// WKT 1; the reason when GDAL cannot write it.
QString wkt1Of(void *srs, QString &reason)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope errors;
    char *raw = nullptr;
    const OGRErr code = srs ? OSRExportToWkt(srs, &raw) : OGRERR_FAILURE;
    const CplText text(raw);
    reason = errors.message();
    return code == OGRERR_NONE ? QString::fromUtf8(text.get()) : QString();
}

QString withoutRootCode(QString wkt1)
{
    // …,AUTHORITY["EPSG","32636"]] at the end of the text
    static const QRegularExpression code(QStringLiteral(",AUTHORITY\\[\"[^\"]*\",\"[^\"]*\"\\]\\]\\s*$"));
    return wkt1.replace(code, QStringLiteral("]"));
}

/// A shift that says more than the datum's own name: WGS 84 with zeros does not.
bool statesShift(const QList<double> &shift, void *srs)
{
    const bool isZero = std::all_of(shift.begin(), shift.end(), [](double figure) { return figure == 0.0; });
    const QString datum = QString::fromUtf8(OSRGetAttrValue(srs, "DATUM", 0));
    return !shift.isEmpty() && !(isZero && datum == QLatin1String("WGS_1984"));
}

/// The database's system of a code with the shift that a text gave it. Not by GDAL's import, which puts
/// another system in the place of a deprecated one.
std::shared_ptr<void> registeredSrs(const CrsDefinition &registered, const QList<double> &shift)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    std::shared_ptr<void> srs = srsFromWkt(registered.wkt());
    if (srs && statesShift(shift, srs.get()))
        OSRSetTOWGS84(srs.get(), shift[0], shift[1], shift[2], shift[3], shift[4], shift[5], shift[6]);
    return srs;
}

} // namespace

/// The database's system of this one's code, or of the one that an affine transformation moves; null without
/// a code, or where the code's plane is another.
CrsDefinitionPtr CoordSystemPrivate::registeredIdentity() const
{
    const AskedCatalogues asked(m_catalogues);
    const bool hasCode = hasSrs() && !isNonEarth();
    const int code = hasCode ? (isMoved() ? q->baseCode() : q->epsg()) : int(EPSG_UNDEFINDED);
    CrsDefinitionPtr registered = code > 0 ? CrsDefinition::ofCode(code) : nullptr;
    const bool same = registered && registered->isHorizontal() && isPlaneOf(code, *registered);
    return same ? registered : nullptr;
}

/// Whose facts the system is known by: the database's, else its own.
CrsDefinitionPtr CoordSystemPrivate::namedIdentity() const
{
    const CrsDefinitionPtr registered = registeredIdentity();
    return registered ? registered : identity();
}

/// What the system is written from: with the names and codes of the database and the shift of the definition.
CrsDefinitionPtr CoordSystemPrivate::writableIdentity() const
{
    const bool namesItself = m_source.type == Epsg || m_source.type == Wkt;
    if (namesItself)
        return identity();
    const QString shifted = hasShift() ? registeredWkt() : QString();
    const CrsDefinitionPtr written = shifted.isEmpty() ? nullptr : CrsDefinition::from(shifted);
    return written ? written : namedIdentity();
}

/// The system as the database names it, code included; empty as registeredIdentity() is null.
QString CoordSystemPrivate::registeredWkt() const
{
    const CrsDefinitionPtr registered = registeredIdentity();
    if (!registered)
        return {};
    QString reason;
    const QList<double> shift = m_source.type != Epsg && hasShift() ? q->getTOWGS84Params() : QList<double>();
    return wkt1Of(registeredSrs(*registered, shift).get(), reason);
}

/// The source's code is the system; one that was set or found may be that of a system with another plane.
bool CoordSystemPrivate::isPlaneOf(int code, const CrsDefinition &registered) const
{
    if (m_source.type == Epsg || statedEpsg() == code)
        return true;
    if (m_epsg == code)
        return codedIdentity() != nullptr;
    const CrsDefinitionPtr mine = identity();
    return mine && mine->isHorizontalPartOf(registered);
}

QString CoordSystem::exportToWkt() const
{
    const QString registered = d->registeredWkt();
    if (!registered.isEmpty())
        return d->isMoved() ? withoutRootCode(registered) : registered;
    const CrsDefinitionPtr known = d->m_source.type == Wkt ? d->identity() : nullptr;
    if (known && known->isPlanetocentric())
        return known->wkt(); // WKT 1 would be read as a system of other latitudes
    QString reason;
    const QString whole = wkt1Of(d->srs(), reason);
    const QString text = d->isMoved() ? withoutRootCode(whole) : whole;
    if (text.isEmpty())
        LOG_ERROR(CoordSysTexts::tr("Ошибка экспорта координатной системы в формат %0. %1")
                      .arg(QStringLiteral("WKT"), reason));
    return text;
}

QString CoordSystem::exportToWkt2() const
{
    // LOCAL_CS["Nonearth",UNIT["Meter",1]]: from the first "UNIT[" to the last digit before a bracket
    static const QRegularExpression unitClause(QStringLiteral("(UNIT\\[.+\\d\\])"),
                                               QRegularExpression::CaseInsensitiveOption);
    const QString sphere = QStringLiteral("PROJCS[\"World_Equidistant_Cylindrical\",\n"
                                          "GEOGCS[\"Sphere\",\n"
                                          "DATUM[\"Sphere\",\n"
                                          "SPHEROID[\"Sphere\",6370997,0]],\n"
                                          "UNIT[\"Degree\",0.017453292519943295]],\n"
                                          "PROJECTION[\"Equirectangular\"],\n"
                                          "%1]");
    const QString wkt = exportToWkt();
    if (!d->isNonEarth() || wkt.isEmpty())
        return wkt;
    if (d->m_source.type == Proj4 && !wkt.startsWith(QLatin1String("LOCAL_CS"))) {
        // The text of a plan given as a PROJ string also holds the degree of its sphere.
        QString name;
        const double factor = d->osrLinearUnits(&name);
        return sphere.arg(QStringLiteral("UNIT[\"%1\",%2]").arg(name, toString(factor)));
    }
    const QRegularExpressionMatch match = unitClause.match(wkt);
    return match.hasMatch() ? sphere.arg(match.captured(1)) : wkt;
}

QString CoordSystem::projStr() const
{
    const AskedCatalogues asked(d->m_catalogues);
    return d->projText([this] { return unit(); });
}

QString CoordSystemPrivate::projText(const std::function<LinearUnit()> &unitOf) const
{
    if (m_source.type == Proj4)
        return systemTerms(m_source.string);
    if (m_source.type == Prj && isNonEarth())
        return projNonEarthString(static_cast<LinearUnit::MIUnitCode>(unitOf().unitCode()));

    QString text;
    QString reason;
    const PJ *const main = pj();
    {
        const QMutexLocker lock(globalProj4Mutex());
        const CplErrorScope errors;
        if (main)
            text = QString::fromUtf8(proj_as_proj_string(globalProjContext(), main, PJ_PROJ_4, nullptr));
        if (text.isEmpty())
            text = osrToProj4(srs());
        reason = errors.message();
    }
    if (text.isEmpty())
        throw std::logic_error(CoordSysTexts::tr("Ошибка экспорта КС в формат proj\n%1\n%2")
                                   .arg(m_source.string, reason)
                                   .toStdString());
    return text;
}

/// Of a CoordSys source, as it was read when the system was made; null for other sources, and for a text that
/// a host has set and that cannot be read.
std::shared_ptr<const TABProjInfo_t> CoordSystemPrivate::record() const
{
    if (m_source.type != Prj || m_record)
        return m_source.type == Prj ? m_record : nullptr;
    try {
        return std::make_shared<const TABProjInfo_t>(
            MapHeaderCoordsysConverter().prjStrToTABProjInfo(m_source.string));
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return nullptr;
    }
}

QString CoordSystemPrivate::barePrj() const
{
    return m_source.type == Prj ? m_source.string : prjFromSpatialReference(srs());
}

/// The affine clause names its unit.
void CoordSystemPrivate::nameAffineUnit() const
{
    if (!m_affine || !affineUnitName().isEmpty())
        return;
    try {
        q->unit();
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
    }
}

/// By the source or, unproved, by GDAL: for plans, and to name a system.
QString CoordSystemPrivate::sourcePrj() const { return withClauses(barePrj(), m_affine.get()); }

QString CoordSystem::prjStr() const
{
    d->nameAffineUnit();
    const PrjText text = prjTextOf(*this);
    if (text.isRefused())
        throw ExportToPrjException(text.reason());
    return text.text;
}

QString CoordSystemPrivate::affineUnitName() const
{
    if (!m_affineUnit.name().isEmpty())
        return m_affineUnit.name();
    const QReadLocker lock(&m_lock);
    return m_detectedUnit.name();
}

QString CoordSystemPrivate::withClauses(const QString &prj, const QTransform *affine) const
{
    // Clauses of the text stay as they are written only when they are the object's, all of them.
    const PrjClauses written =
        m_record ? PrjClauses{m_record->nAffineFlag, m_record->nBoundsFlag} : hasAffineOrBoundsInString(prj);
    const auto record = written.affine || written.bounds ? this->record() : nullptr;
    const bool beforeBounds = written.bounds && !written.affine && affine;
    const bool kept =
        !record || (!beforeBounds && (!written.affine || holdsAffine(*record, affine, m_affineUnit)) &&
                    (!written.bounds || holdsBounds(*record, m_rect)));
    QString text = kept ? prj : withoutClauses(*record);
    if (affine && !(kept && written.affine))
        text += affineClause(*affine, affineUnitName());
    if (q->isRectSet() && !(kept && written.bounds))
        text += boundConditionAsString(m_rect);
    return text;
}

QString CoordSystemPrivate::taggedStringImpl() const
{
    const auto sourceOr = [this](auto &&exported) {
        return m_source.string.isEmpty() ? exported() : m_source.string;
    };
    switch (m_source.type) {
    case Prj:
        return QStringLiteral("prj:") + sourceOr([this] { return q->prjStr(); });
    case Proj4:
        return QStringLiteral("proj4:") + sourceOr([this] { return q->projStr(); });
    case Epsg:
        return QStringLiteral("EPSG:") + sourceOr([this] {
                   const int set = m_epsg; // epsg() would read the empty source text as the code 0
                   return QString::number(
                       set != EPSG_UNDEFINDED
                           ? set
                           : searchedEpsg(std::make_shared<nivora::concurrent::ProgressHandler>()));
               });
    case Wkt:
        return QStringLiteral("WKT:") + sourceOr([this] { return q->exportToWkt(); });
    case Unknown:
    case Oracle:
        break;
    }
    return QStringLiteral("proj4:") + q->projStr();
}

/// Only a CoordSys string carries affine transformation and bounds: those that the object holds now, whatever
/// its source says.
QString CoordSystemPrivate::taggedWithClauses() const
{
    if (!m_affine && m_source.type != Prj)
        return taggedStringImpl();
    try {
        return QStringLiteral("prj:") + q->prjStr();
    } catch (const std::exception &e) {
        LOG_ERROR(
            CoordSysTexts::tr("Аффинное преобразование не записано: %1").arg(QString::fromUtf8(e.what())));
    }
    return taggedStringImpl();
}

/// A plan may count in a unit that no CoordSys string can name.
bool CoordSystemPrivate::hasNumberedUnit() const
{
    const auto manager = activeCatalogues()->projectionParamsManager();
    ensureMade();
    const QWriteLocker lock(&m_lock);
    return bool(detectUnitLocked(*manager, nullptr));
}

QString CoordSystem::taggedString() const
{
    const AskedCatalogues asked(d->m_catalogues);
    if (!d->isNonEarth())
        return d->taggedWithClauses();
    if (!d->hasNumberedUnit())
        return d->taggedWithClauses();
    const CoordSystemPtr plan = activeCatalogues()->createNonEarth(unit().unitCode(), rectNumericCoordSys());
    if (d->m_affine)
        plan->setAffineTransform(std::make_unique<QTransform>(*d->m_affine), affineUnit());
    return privateOf(*plan).taggedWithClauses();
}

bool compareprojStr(const QString &a, const QString &b)
{
    const QStringList parts = a.split(QLatin1Char('+'), nivora::utils::skipEmptyParts);
    const QStringList others = b.split(QLatin1Char('+'), nivora::utils::skipEmptyParts);
    return parts.size() == others.size() && std::is_permutation(parts.begin(), parts.end(), others.begin());
}

} // namespace nivora::cs
