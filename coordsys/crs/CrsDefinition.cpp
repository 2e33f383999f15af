#include "CrsDefinition_p.h"

#include "AreaOfUse_p.h"
#include "CrsComparison_p.h"
#include "DerivedPlane_p.h"
#include "FusedUnits_p.h"
#include "OsrHandle_p.h"
#include "ProjText_p.h"

#include <proj_experimental.h>

#include <QMutexLocker>

#include <array>

namespace nivora::cs {
namespace {

/// A code that the text states stays readable when PROJ finds the text different from the database: whether
/// it stands is for verifiedCode() to say.
PjHandle readWkt(const QByteArray &text)
{
    const char *const options[] = {"STRICT=NO", "UNSET_IDENTIFIERS_IF_INCOMPATIBLE_DEF=NO", nullptr};
    return ownPj(proj_create_from_wkt(globalProjContext(), text.constData(), options, nullptr, nullptr));
}

/// PROJ's guess takes longer than reading where the first letter tells.
PJ_GUESSED_WKT_DIALECT dialectOf(const QByteArray &text)
{
    const bool isOther = text.startsWith('{') || text.startsWith('+');
    return isOther ? PJ_GUESSED_NOT_WKT
                   : proj_context_guess_wkt_dialect(globalProjContext(), text.constData());
}

PjHandle readCrs(const QByteArray &text, PJ_GUESSED_WKT_DIALECT dialect)
{
    PjHandle crs = dialect != PJ_GUESSED_NOT_WKT ? readWkt(text)
                                                 : ownPj(proj_create(globalProjContext(), text.constData()));
    return crs && proj_is_crs(crs.get()) ? std::move(crs) : nullptr;
}

/// The horizontal part states the code where the whole does not.
int declaredCode(const PJ *root, const PJ *part)
{
    const PjHandle plain = sourceOfBoundCrs(globalProjContext(), part);
    for (const QLatin1String authority : {QLatin1String("EPSG"), QLatin1String("ESRI")})
        for (const PJ *candidate : std::array<const PJ *, 2>{root, plain.get()})
            if (const auto code = codeOf(candidate, authority))
                return *code;
    return CoordSystemTypes::EPSG_UNDEFINDED;
}

QString givenName(const PJ *root)
{
    const PjHandle plain = sourceOfBoundCrs(globalProjContext(), root);
    const QString name = QString::fromUtf8(proj_get_name(plain.get())).trimmed();
    static const QStringList open = {QStringLiteral("unknown"), QStringLiteral("unnamed"),
                                     QStringLiteral("Nonearth")}; // GDAL's word for any plan
    return open.contains(name, Qt::CaseInsensitive) ? QString() : name;
}

PjHandle registeredCrs(int code)
{
    return ownPj(proj_create_from_database(globalProjContext(), "EPSG", QByteArray::number(code).constData(),
                                           PJ_CATEGORY_CRS, false, nullptr));
}

/// PROJ 9.1 takes the database's system of a geographic one's code for geographic unseen, and crashes in the
/// search of a shift when a text gives it the code of a geocentric one. Such a text contradicts itself: its
/// code counts.
bool statesGeocentricCode(const PJ *crs)
{
    const PjHandle geographic = crs ? baseOf(globalProjContext(), crs) : nullptr;
    const auto code = geographic ? codeOf(geographic.get(), QLatin1String("EPSG")) : std::nullopt;
    if (!code)
        return false;
    const PjHandle registered = registeredCrs(*code);
    return registered && proj_get_type(registered.get()) == PJ_TYPE_GEOCENTRIC_CRS;
}

/// PROJ looks a system without a code up by its name (3 ms) before it makes an operation; the name says
/// nothing of the way between a system and its own base.
PjHandle withoutName(PjHandle crs)
{
    if (!crs || proj_get_id_code(crs.get(), 0))
        return crs;
    PjHandle nameless = ownPj(proj_alter_name(globalProjContext(), crs.get(), "unknown"));
    return nameless ? std::move(nameless) : std::move(crs);
}

} // namespace

CrsDefinitionPtr CrsDefinition::from(const QString &definition)
{
    const QMutexLocker lock(globalProj4Mutex());
    const QByteArray text = definition.toUtf8();
    const PJ_GUESSED_WKT_DIALECT dialect = dialectOf(text);
    const Origin origin = dialect == PJ_GUESSED_WKT1_ESRI ? Origin::EsriText : Origin::Text;
    PjHandle root = readCrs(text, dialect);
    return root ? CrsDefinitionPtr(new CrsDefinition(definition, std::move(root), origin)) : nullptr;
}

CrsDefinitionPtr CrsDefinition::ofCode(int epsg)
{
    const QMutexLocker lock(globalProj4Mutex());
    PjHandle root = registeredCrs(epsg);
    if (!root)
        return nullptr;
    const auto made = std::shared_ptr<CrsDefinition>(
        new CrsDefinition(QStringLiteral("EPSG:%1").arg(epsg), std::move(root), Origin::Database));
    if (made->isHorizontal() && !made->isDemotedTo2D())
        made->m_verifiedCode = epsg;
    return made;
}

CrsDefinitionPtr CrsDefinition::of(const CoordSystemTypes::SourceData &source, void *srs)
{
    switch (source.type) {
    case CoordSystemTypes::Epsg:
        return ofCode(source.string.toInt());
    case CoordSystemTypes::Wkt:
        return from(source.string);
    case CoordSystemTypes::Proj4:
        return from(fixedProjString(withoutTitle(source.string).trimmed(), true) +
                    QStringLiteral(" +type=crs"));
    default: {
        const QMutexLocker lock(globalProj4Mutex());
        return from(osrToWkt2(srs));
    }
    }
}

CrsDefinition::CrsDefinition(const QString &definition, PjHandle root, Origin origin)
    : m_definition(definition)
    , m_name(givenName(root.get()))
    , m_kind(kindOf(globalProjContext(), root.get()))
{
    if (!isHorizontal())
        return;
    const PJ *whole = root.get();
    m_flattened = hasVerticalPart(globalProjContext(), whole);
    m_crs = m_flattened ? horizontalPart(globalProjContext(), whole) : std::move(root);
    m_declaredCode = declaredCode(whole, m_crs.get());
    const PJ *asRead = m_crs.get();
    m_crs = longitudeFirst(globalProjContext(), std::move(m_crs));
    const bool isAsRead = !m_flattened && m_crs.get() == asRead;
    if (!isAsRead)
        m_definition = wkt2Of(globalProjContext(), m_crs.get());
    m_isBareEsri = isAsRead && origin == Origin::EsriText && !proj_get_id_code(m_crs.get(), 0);
    if (origin != Origin::Database && statesGeocentricCode(m_crs.get()))
        m_kind = CrsKind::Other;
    splitAffine();
}

/// PROJ computes one of the two methods and, in some units, neither: base and affine transformation are ours.
void CrsDefinition::splitAffine()
{
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle plain = m_crs ? sourceOfBoundCrs(context, m_crs.get()) : nullptr;
    std::optional<DerivedPlane> derived = plain ? derivedPlaneOf(context, plain.get()) : std::nullopt;
    if (!derived)
        return;
    m_affine = derived->affine;
    m_affineUnitM = derived->metresPerUnit;
    m_stored = QString::fromUtf8(
        proj_as_projjson(context, m_crs.get(), nullptr)); // WKT 2 leaves the base's unit out
    const bool isBound = proj_get_type(m_crs.get()) == PJ_TYPE_BOUND_CRS;
    m_crs = isBound ? reboundTo(context, m_crs.get(), derived->base.get()) : std::move(derived->base);
    m_definition = wkt2Of(context, m_crs.get());
    m_kind = kindOf(context, m_crs.get());
    m_declaredCode = declaredCode(m_crs.get(), m_crs.get());
}

bool CrsDefinition::isPlanetocentric() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return m_crs && hasPlanetocentricBase(globalProjContext(), m_crs.get());
}

QString CrsDefinition::stored() const
{
    if (m_affine)
        return m_stored;
    if (m_kind != CrsKind::Projected || !isPlanetocentric())
        return wkt();
    const QMutexLocker lock(globalProj4Mutex());
    return QString::fromUtf8(proj_as_projjson(globalProjContext(), m_crs.get(), nullptr));
}

bool CrsDefinition::isSystemOf(int epsg) const
{
    const QMutexLocker lock(globalProj4Mutex());
    const CrsDefinitionPtr registered = epsg > 0 && m_crs ? ofCode(epsg) : nullptr;
    return registered && registered->isHorizontal() &&
           isRegisteredSystem(globalProjContext(), m_crs.get(), registered->crs());
}

int CrsDefinition::verifiedCode() const
{
    const QMutexLocker lock(globalProj4Mutex());
    if (!m_verifiedCode) {
        const int part = horizontalCode();
        m_verifiedCode = isSystemOf(m_declaredCode) ? m_declaredCode
                         : part != m_declaredCode && isSystemOf(part)
                             ? part
                             : int(CoordSystemTypes::EPSG_UNDEFINDED);
    }
    return *m_verifiedCode;
}

CrsDefinitionPtr CrsDefinition::withoutForeignCode() const
{
    const QMutexLocker lock(globalProj4Mutex());
    const int stated = horizontalCode();
    if (stated <= 0 || verifiedCode() > 0 || !registeredCrs(stated))
        return nullptr;
    const PjHandle bare = withoutCode(globalProjContext(), m_crs.get());
    const QString wkt2 = bare ? wkt2Of(globalProjContext(), bare.get()) : QString();
    PjHandle root = bare ? readWkt(wkt2.toUtf8()) : nullptr;
    if (!root)
        return nullptr;
    const std::shared_ptr<CrsDefinition> result(new CrsDefinition(wkt2, std::move(root), Origin::Text));
    result->m_flattened = m_flattened;
    return result;
}

int CrsDefinition::horizontalCode() const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle plain = m_crs ? sourceOfBoundCrs(globalProjContext(), m_crs.get()) : nullptr;
    const auto code = plain ? codeOf(plain.get(), QLatin1String("EPSG")) : std::nullopt;
    return code.value_or(CoordSystemTypes::EPSG_UNDEFINDED);
}

bool CrsDefinition::hasOwnShift() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return m_crs && proj_get_type(m_crs.get()) == PJ_TYPE_BOUND_CRS;
}

bool CrsDefinition::namesDatum() const
{
    const QMutexLocker lock(globalProj4Mutex());
    if (!m_namesDatum)
        m_namesDatum = m_crs && m_kind != CrsKind::Local && hasNamedDatum(globalProjContext(), mapOriented());
    return *m_namesDatum;
}

const PJ *CrsDefinition::mapOriented() const
{
    const QMutexLocker lock(globalProj4Mutex());
    if (!m_mapOriented && m_crs)
        m_mapOriented = nivora::cs::mapOriented(globalProjContext(), m_crs.get());
    return m_mapOriented.get();
}

bool CrsDefinition::hasEastNorthAxes() const
{
    const QMutexLocker lock(globalProj4Mutex());
    QStringList directions = axisDirections(globalProjContext(), m_crs.get());
    directions.sort();
    return directions == QStringList{QStringLiteral("east"), QStringLiteral("north")};
}

QString CrsDefinition::wkt() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return wkt2Of(globalProjContext(), m_crs.get());
}

QString CrsDefinition::projText() const
{
    const QMutexLocker lock(globalProj4Mutex());
    QString text =
        QString::fromUtf8(proj_as_proj_string(globalProjContext(), m_crs.get(), PJ_PROJ_5, nullptr));
    return m_kind == CrsKind::Projected ? text.remove(QStringLiteral("+type=crs")) : text;
}

bool CrsDefinition::isHorizontalPartOf(const CrsDefinition &other) const
{
    const QMutexLocker lock(globalProj4Mutex());
    return m_crs && other.m_crs && isSamePlane(globalProjContext(), m_crs.get(), other.m_crs.get());
}

std::shared_ptr<const ProjOperation> CrsDefinition::plane() const
{
    if (m_kind != CrsKind::Projected && m_kind != CrsKind::RotatedGeographic)
        return nullptr;
    const QMutexLocker lock(globalProj4Mutex());
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle target = withoutName(sourceOfBoundCrs(context, m_crs.get()));
    const PjHandle base = withoutName(longitudeFirst(context, baseOf(context, m_crs.get())));
    PjHandle pj =
        base ? ownPj(proj_create_crs_to_crs_from_pj(context, base.get(), target.get(), nullptr, nullptr))
             : nullptr;
    if (!pj)
        return nullptr;
    if (PJ *normalized = proj_normalize_for_visualization(context, pj.get()))
        pj = ownPj(normalized);
    ProjOperation step(std::move(pj));
    CoordinateUnits lonLat = endOf(base.get());
    lonLat.meridianDeg = meridianDeg(context, base.get());
    step.setEnds(lonLat, endOf(target.get()));
    return std::make_shared<const ProjOperation>(withFusedUnits(step));
}

bool CrsDefinition::converts(const ProjOperation &step) const
{
    const QMutexLocker lock(globalProj4Mutex());
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
    proj_get_area_of_use(globalProjContext(), m_crs.get(), &west, &south, &east, &north, nullptr);
    QPointF place(0.5 * (west + (east < west ? east + 360.0 : east)), 0.5 * (south + north));
    return transformPoints(step, PJ_FWD, &place, 1);
}

double CrsDefinition::semiMinorM() const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle ellipsoid = ownPj(proj_get_ellipsoid(globalProjContext(), m_crs.get()));
    double minorM = 0.0;
    if (ellipsoid)
        proj_ellipsoid_get_parameters(globalProjContext(), ellipsoid.get(), nullptr, &minorM, nullptr,
                                      nullptr);
    return minorM;
}

std::optional<QRectF> CrsDefinition::areaOfUse() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return cs::areaOfUse(globalProjContext(), m_crs.get());
}

PjHandle CrsDefinition::copyOfCrs(PJ_CONTEXT *context) const
{
    const QMutexLocker lock(globalProj4Mutex());
    return ownPj(proj_clone(context ? context : globalProjContext(), m_crs.get()));
}

} // namespace nivora::cs
