#include <coordsys/SystemIdentity_p.h>

#include <coordsys/CrsComparison_p.h>
#include <coordsys/LeanStep_p.h>
#include <coordsys/OsrHandle_p.h>

#include <proj_experimental.h>

#include <QMutexLocker>

#include <array>

namespace nivora::cs {
namespace {

/// A code that the text states stays readable when PROJ finds the text different from the database: whether
/// it stands is for ownCode() to say.
PjHandle readWkt(const QByteArray &text)
{
    const char *const options[] = {"STRICT=NO", "UNSET_IDENTIFIERS_IF_INCOMPATIBLE_DEF=NO", nullptr};
    return ownPj(proj_create_from_wkt(globalProjContext(), text.constData(), options, nullptr, nullptr));
}

PjHandle readCrs(const QString &definition)
{
    const QByteArray text = definition.toUtf8();
    const bool isWkt =
        proj_context_guess_wkt_dialect(globalProjContext(), text.constData()) != PJ_GUESSED_NOT_WKT;
    PjHandle crs = isWkt ? readWkt(text) : ownPj(proj_create(globalProjContext(), text.constData()));
    return crs && proj_is_crs(crs.get()) ? std::move(crs) : nullptr;
}

/// The horizontal part states the code where the whole does not.
int statedCode(const PJ *root, const PJ *part)
{
    const PjHandle plain = unbound(globalProjContext(), part);
    for (const QLatin1String authority : {QLatin1String("EPSG"), QLatin1String("ESRI")})
        for (const PJ *candidate : std::array<const PJ *, 2>{root, plain.get()})
            if (const auto code = codeOf(candidate, authority))
                return *code;
    return CoordSystemTypes::EPSG_UNDEFINDED;
}

QString givenName(const PJ *root)
{
    const PjHandle plain = unbound(globalProjContext(), root);
    const QString name = QString::fromUtf8(proj_get_name(plain.get())).trimmed();
    const bool open = name.compare(QLatin1String("unknown"), Qt::CaseInsensitive) == 0 ||
                      name.compare(QLatin1String("unnamed"), Qt::CaseInsensitive) == 0;
    return open ? QString() : name;
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

SystemIdentityPtr SystemIdentity::from(const QString &definition)
{
    const QMutexLocker lock(globalProj4Mutex());
    PjHandle root = readCrs(definition);
    return root ? SystemIdentityPtr(new SystemIdentity(definition, std::move(root))) : nullptr;
}

SystemIdentityPtr SystemIdentity::ofCode(int epsg)
{
    const QMutexLocker lock(globalProj4Mutex());
    PjHandle root = registeredCrs(epsg);
    const QString definition = QStringLiteral("EPSG:%1").arg(epsg);
    return root ? SystemIdentityPtr(new SystemIdentity(definition, std::move(root))) : nullptr;
}

SystemIdentityPtr SystemIdentity::of(const CoordSystemTypes::SourceData &source, void *srs)
{
    switch (source.type) {
    case CoordSystemTypes::Epsg:
        return ofCode(source.string.toInt());
    case CoordSystemTypes::Wkt:
        return from(source.string);
    case CoordSystemTypes::Proj4:
        return from(fixedProjString(source.string.trimmed(), true) + QStringLiteral(" +type=crs"));
    default: {
        const QMutexLocker lock(globalProj4Mutex());
        return from(osrToWkt2(srs));
    }
    }
}

SystemIdentity::SystemIdentity(const QString &definition, PjHandle root)
    : m_definition(definition)
    , m_name(givenName(root.get()))
    , m_kind(kindOf(globalProjContext(), root.get()))
{
    if (!hasPlane())
        return;
    const PJ *whole = root.get();
    m_flattened = hasVerticalPart(globalProjContext(), whole);
    m_crs = m_flattened ? horizontalPart(globalProjContext(), whole) : std::move(root);
    m_statedCode = statedCode(whole, m_crs.get());
    if (m_flattened)
        m_definition = wkt2Of(globalProjContext(), m_crs.get());
    if (statesGeocentricCode(m_crs.get()))
        m_kind = CrsKind::Other;
}

int SystemIdentity::ownCode() const
{
    if (m_statedCode <= 0)
        return CoordSystemTypes::EPSG_UNDEFINDED;
    const QMutexLocker lock(globalProj4Mutex());
    if (!m_isOwnCode) {
        const SystemIdentityPtr registered = ofCode(m_statedCode);
        m_isOwnCode = registered && registered->hasPlane() &&
                      isRegisteredSystem(globalProjContext(), m_crs.get(), registered->crs());
    }
    return *m_isOwnCode ? m_statedCode : CoordSystemTypes::EPSG_UNDEFINDED;
}

SystemIdentityPtr SystemIdentity::withoutForeignCode() const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle plain = m_crs ? unbound(globalProjContext(), m_crs.get()) : nullptr;
    const auto stated = plain ? codeOf(plain.get(), QLatin1String("EPSG")) : std::nullopt;
    if (!stated || ownCode() == *stated || !registeredCrs(*stated))
        return nullptr;
    const PjHandle bare = withoutCode(globalProjContext(), m_crs.get());
    return bare ? from(wkt2Of(globalProjContext(), bare.get())) : nullptr;
}

int SystemIdentity::partCode() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return codeOf(m_crs.get(), QLatin1String("EPSG")).value_or(CoordSystemTypes::EPSG_UNDEFINDED);
}

bool SystemIdentity::runsEastAndNorth() const
{
    const QMutexLocker lock(globalProj4Mutex());
    QStringList directions = axisDirections(globalProjContext(), m_crs.get());
    directions.sort();
    return directions == QStringList{QStringLiteral("east"), QStringLiteral("north")};
}

QString SystemIdentity::wkt() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return wkt2Of(globalProjContext(), m_crs.get());
}

QString SystemIdentity::projText() const
{
    const QMutexLocker lock(globalProj4Mutex());
    QString text =
        QString::fromUtf8(proj_as_proj_string(globalProjContext(), m_crs.get(), PJ_PROJ_5, nullptr));
    return m_kind == CrsKind::Projected ? text.remove(QStringLiteral("+type=crs")) : text;
}

bool SystemIdentity::hasPlaneOf(const SystemIdentity &other) const
{
    const QMutexLocker lock(globalProj4Mutex());
    return m_crs && other.m_crs && isSamePlane(globalProjContext(), m_crs.get(), other.m_crs.get());
}

std::shared_ptr<const EngineStep> SystemIdentity::plane() const
{
    if (m_kind != CrsKind::Projected && m_kind != CrsKind::RotatedGeographic)
        return nullptr;
    const QMutexLocker lock(globalProj4Mutex());
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle target = withoutName(unbound(context, m_crs.get()));
    const PjHandle base = withoutName(baseOf(context, m_crs.get()));
    PjHandle pj =
        base ? ownPj(proj_create_crs_to_crs_from_pj(context, base.get(), target.get(), nullptr, nullptr))
             : nullptr;
    if (!pj)
        return nullptr;
    if (PJ *normalized = proj_normalize_for_visualization(context, pj.get()))
        pj = ownPj(normalized);
    EngineStep step(std::move(pj));
    EngineEnd lonLat = endOf(base.get());
    lonLat.meridianDeg = meridianDeg(context, base.get());
    step.setEnds(lonLat, endOf(target.get()));
    return std::make_shared<const EngineStep>(withoutDegreeSteps(step));
}

bool SystemIdentity::converts(const EngineStep &step) const
{
    const QMutexLocker lock(globalProj4Mutex());
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
    proj_get_area_of_use(globalProjContext(), m_crs.get(), &west, &south, &east, &north, nullptr);
    QPointF place(0.5 * (west + (east < west ? east + 360.0 : east)), 0.5 * (south + north));
    return transformPoints(step, PJ_FWD, &place, 1);
}

double SystemIdentity::semiMinorM() const
{
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle ellipsoid = ownPj(proj_get_ellipsoid(globalProjContext(), m_crs.get()));
    double minorM = 0.0;
    if (ellipsoid)
        proj_ellipsoid_get_parameters(globalProjContext(), ellipsoid.get(), nullptr, &minorM, nullptr,
                                      nullptr);
    return minorM;
}

PjHandle SystemIdentity::copyOfCrs() const
{
    const QMutexLocker lock(globalProj4Mutex());
    return ownPj(proj_clone(globalProjContext(), m_crs.get()));
}

} // namespace nivora::cs
