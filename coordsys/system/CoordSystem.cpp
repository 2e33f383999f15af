#include <coordsys/CoordSystem.h>

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "OsrHandle_p.h"
#include "ProjOperation_p.h"
#include <coordsys/DefaultRects.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>
#include <QReadLocker>
#include <QRegularExpression>
#include <QWriteLocker>

#include <algorithm>

namespace nivora::cs {
namespace {

bool hasExtent(const QRectF &r) { return r.width() > 0.0 && r.height() > 0.0; } // NaN has none

/// What is computed once and kept under the lock. \p compute leaves the class: it runs without the lock, and
/// of two threads that are at it the first one's answer stays.
template <typename T, typename Compute>
T keptAnswer(QReadWriteLock &lock, std::optional<T> &kept, Compute &&compute)
{
    {
        const QReadLocker reading(&lock);
        if (kept)
            return *kept;
    }
    const T answer = compute();
    const QWriteLocker writing(&lock);
    if (!kept)
        kept = answer;
    return *kept;
}

/// PROJ's named datums and their ellipsoids. WGS84 and NAD83 are left out: they carry no shift.
struct NamedDatum
{
    const char *datum;
    const char *ellipsoid;
};
constexpr NamedDatum namedDatums[] = {
    {"GGRS87", "GRS80"},         {"NAD27", "clrk66"},   {"potsdam", "bessel"}, {"carthage", "clrk80ign"},
    {"hermannskogel", "bessel"}, {"ire65", "mod_airy"}, {"nzgd49", "intl"},    {"OSGB36", "airy"},
};

/// "+datum=potsdam", the name captured. Compiled once: it costs as much as the PROJ object of the text.
const QRegularExpression &namedDatumTerm()
{
    static const QRegularExpression term = [] {
        QStringList names;
        for (const NamedDatum &row : namedDatums)
            names << QLatin1String(row.datum);
        return QRegularExpression(QStringLiteral("\\+datum=(%1)(?=\\s|$)").arg(names.join(QLatin1Char('|'))));
    }();
    return term;
}

/// PROJ text without any datum shift: terms that shift are removed, a named datum leaves its ellipsoid.
QString withoutDatumShift(const QString &proj, bool &changed)
{
    QString text = removeHelmertFromProjString(proj, changed);
    for (auto found = namedDatumTerm().match(text); found.hasMatch(); found = namedDatumTerm().match(text)) {
        const QString datum = found.captured(1);
        const auto row = std::find_if(std::begin(namedDatums), std::end(namedDatums),
                                      [&](const auto &r) { return datum == QLatin1String(r.datum); });
        text.replace(found.capturedStart(), found.capturedLength(),
                     QStringLiteral("+ellps=") + QLatin1String(row->ellipsoid));
        changed = true;
    }
    return text;
}

} // namespace

CoordSystem::CoordSystem()
    : d(std::make_unique<CoordSystemPrivate>(*this))
{}

CoordSystem::~CoordSystem() = default;

CoordSystemPrivate::CoordSystemPrivate(CoordSystem &system)
    : q(&system)
    , m_catalogues(tokenOfScope())
{
    noteChange();
}

CoordSystemPrivate::~CoordSystemPrivate()
{
    const QMutexLocker lock(globalProj4Mutex()); // the handles' deleters work on the shared context
    m_identity.reset();
    m_coded.reset();
    m_lazy.reset();
    m_plane.reset();
    m_pj.reset();
    m_givenSrs.reset();
    m_srs.reset();
}

PJ *CoordSystem::PJ_Proj4() const { return d->pj(); }

PJ *CoordSystem::PJ_Proj4_Internal() const { return d->plane() ? d->plane()->pj.get() : nullptr; }

// Setters

void CoordSystem::setDescription(const QString &description)
{
    const QWriteLocker lock(&d->m_lock);
    d->m_description = description;
    d->m_isNameless = false;
}

void CoordSystem::setEpsg(int epsg)
{
    d->m_epsg = epsg;
    d->m_isEpsgCatalogued = false;
    d->m_isEpsgOfMoved = false;
    d->m_isEntry = false;
    d->noteChange();
}

void CoordSystemPrivate::setCataloguedEpsg(int epsg)
{
    q->setEpsg(epsg);
    m_isEpsgCatalogued = true;
    m_isEpsgOfMoved = m_affine != nullptr;
}

void CoordSystemPrivate::setEntryEpsg(int epsg)
{
    setCataloguedEpsg(epsg);
    m_isEntry = true;
}

void CoordSystem::setSourceParameters(const SourceData &source)
{
    d->m_source = source;
    d->m_record.reset();
    d->noteChange();
    d->m_isLatLong = CoordSystemPrivate::NotAsked;
    d->m_isNonEarth = CoordSystemPrivate::NotAsked;
    d->forgetIdentity();
}

void CoordSystem::setOGRSpatialReference(std::shared_ptr<void> srs)
{
    d->ensureMade();
    {
        const QWriteLocker lock(&d->m_lock);
        d->m_srs.swap(srs);
        d->m_isSrsShared = false;
        d->m_given = nullptr;
        d->m_givenSrs.reset();
    }
    d->noteChange();
    d->forgetDerived();
    d->forgetIdentity();
}

void CoordSystemPrivate::forgetDerived()
{
    m_isLatLong = NotAsked;
    m_isNonEarth = NotAsked;
    m_matchedEpsg = NotAsked;
}

void CoordSystemPrivate::forgetIdentity()
{
    m_statedEpsg = NotAsked;
    m_searchedEpsg = NotAsked;
    setIdentity(nullptr);
    const QWriteLocker lock(&m_lock);
    m_hasIdentity = false;
    m_codedFor = 0;
}

void CoordSystemPrivate::setIdentity(CrsDefinitionPtr identity) const
{
    const QWriteLocker lock(&m_lock);
    m_identity.swap(identity); // the old one takes the PROJ lock as it goes, after this one
    m_hasIdentity = true;
}

void CoordSystem::setProj4(PjHandle pj)
{
    const AskedCatalogues asked(d->m_catalogues);
    // Only a plan names its unit in its PROJ text, and only it needs the catalogue, which is asked unlocked.
    const bool plan = d->m_source.type == Prj && d->isNonEarth();
    const auto manager = plan ? activeCatalogues()->projectionParamsManager() : nullptr;

    d->ensureMade();
    d->noteChange();
    const QWriteLocker lock(&d->m_lock);
    d->m_pj = std::move(pj);
    d->m_plane = nullptr;
    d->m_searchedEpsg = CoordSystemPrivate::NotAsked;
    d->m_isLatLong = CoordSystemPrivate::NotAsked;
    d->m_matchedEpsg = CoordSystemPrivate::NotAsked;
    if (!d->m_pj)
        return;
    const QString text =
        d->projText([&] { return manager ? d->detectUnitLocked(*manager, nullptr) : LinearUnit(); });
    bool shifted = false;
    const QString unshifted = withoutDatumShift(text, shifted);
    std::shared_ptr<PJ> converting = d->m_pj;
    if (shifted)
        converting = proj4FromString(unshifted);
    d->m_plane = std::make_shared<const ProjOperation>(std::move(converting));
}

void CoordSystem::setRectCoordSystem(const QRectF &rect)
{
    if (!hasExtent(rect))
        throwCoded<std::logic_error>(Error::Code::InvalidArgument,
                                     CoordSysTexts::tr("Не могу задать пустые границы"));
    d->m_rect = rect;
    d->noteChange();
}

void CoordSystem::setAffineTransform(std::unique_ptr<QTransform> transform)
{
    d->m_affine = std::move(transform);
    d->m_isEpsgOfMoved = false; // a catalogue's code was that of another plane
    d->m_isEntry = false;
    d->noteChange();
    d->forgetBounds();
}

void CoordSystem::setAffineTransform(std::unique_ptr<QTransform> transform, const LinearUnit &unit)
{
    setAffineTransform(std::move(transform));
    d->m_affineUnit = unit;
}

void CoordSystemPrivate::setProjectionDefaultBounds(const QRectF &rect)
{
    m_projectionBounds = rect;
    noteChange();
    forgetBounds();
}

void CoordSystemPrivate::setPlane(std::shared_ptr<const ProjOperation> plane)
{
    ensureMade();
    m_plane = std::move(plane);
    noteChange();
}

/// What has been found in the plane that was.
void CoordSystemPrivate::forgetBounds()
{
    const QWriteLocker lock(&m_lock);
    m_computedRect.reset();
    m_rectWithoutSearch.reset();
    m_needCrop.reset();
}

// Queries

CoordSystem::SourceData CoordSystem::sourceParameters() const { return d->m_source; }

CoordSystem::SourceType CoordSystem::sourceType() const { return d->m_source.type; }

QStringList CoordSystem::assumptions() const { return d->m_assumptions; }

const QTransform *CoordSystem::affineTransform() const { return d->m_affine.get(); }

LinearUnit CoordSystem::affineUnit() const
{
    if (d->m_affineUnit)
        return d->m_affineUnit;
    const QReadLocker lock(&d->m_lock);
    return d->m_detectedUnit;
}

bool CoordSystem::isNonEarth() const { return d->isNonEarth(); }

bool CoordSystemPrivate::askNonEarth() const
{
    bool answer =
        m_source.type == Proj4 && m_source.string.contains(QLatin1String("+proj=eqc")) &&
        m_source.string.contains(QStringLiteral("+R=") + nivora::utils::toString(EARTH_SPHERE_RADIUS));
    void *const reference = srs();
    if (!answer && reference) {
        const QMutexLocker lock(globalProj4Mutex());
        answer = OSRIsLocal(reference) != 0;
    }
    if (reference)
        m_isNonEarth.store(answer, std::memory_order_release);
    return answer;
}

bool CoordSystem::isLatLong() const { return d->isLatLong(); }

bool CoordSystemPrivate::askLatLong() const
{
    // "longlat" and its three other names; an object of several steps has no name, and its text tells
    static const QRegularExpression geographic(QStringLiteral("latlon|lonlat|longlat"));
    PJ *const main = isNonEarth() ? nullptr : pj();
    if (!main)
        return false;
    bool answer = false;
    {
        const QMutexLocker lock(globalProj4Mutex());
        const char *id = proj_pj_info(main).id;
        if (!id && proj_is_crs(main)) {
            answer = kindOf(globalProjContext(), main) == CrsKind::Geographic;
        } else {
            const QString text = id ? QString::fromUtf8(id) : projText([] { return LinearUnit(); });
            answer = geographic.match(text).hasMatch();
        }
    }
    m_isLatLong.store(answer, std::memory_order_release);
    return answer;
}

/// Longitude and latitude around another pole: a plane of degrees.
bool CoordSystemPrivate::isRotated() const
{
    void *const reference = srs();
    if (!reference)
        return false;
    const QMutexLocker lock(globalProj4Mutex());
    return OSRIsDerivedGeographic(reference) != 0;
}

QString CoordSystemPrivate::datumName() const
{
    void *const reference = srs();
    if (!reference)
        return {};
    const QMutexLocker lock(globalProj4Mutex());
    return QString::fromUtf8(OSRGetAttrValue(reference, "DATUM", 0));
}

bool CoordSystem::isSpecialDatum() const
{
    return d->datumName().compare(QLatin1String("MIF 0"), Qt::CaseInsensitive) == 0;
}

bool CoordSystemPrivate::computeNeedCrop() const
{
    const AskedCatalogues asked(m_catalogues);
    const QVector<CoordSystemPtr> systems = activeCatalogues()->systemsToCrop();
    return std::any_of(systems.begin(), systems.end(),
                       [this](const CoordSystemPtr &cs) { return q->isEqual(cs, false); });
}

bool CoordSystem::needCropCoords() const
{
    return keptAnswer(d->m_lock, d->m_needCrop, [this] { return d->computeNeedCrop(); });
}

double getParamOSR(const std::function<double(void *, int *)> &f, void *srs)
{
    int error = OGRERR_FAILURE;
    double value = 0.0;
    if (srs) {
        const QMutexLocker lock(globalProj4Mutex());
        const CplErrorScope quiet; // a plan has no ellipsoid, and GDAL says so on stderr
        error = OGRERR_NONE;
        value = f(srs, &error);
    }
    if (error != OGRERR_NONE)
        throw std::logic_error(CoordSysTexts::tr("Не могу получить параметр").toStdString());
    return value;
}

double CoordSystem::getSemiMajor() const { return getParamOSR(OSRGetSemiMajor, d->srs()); }

double CoordSystem::getSemiMinor() const { return getParamOSR(OSRGetSemiMinor, d->srs()); }

double CoordSystem::getInvFlattening() const { return getParamOSR(OSRGetInvFlattening, d->srs()); }

bool CoordSystemPrivate::hasShift() const
{
    double values[7] = {};
    void *const reference = srs();
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    return reference && OSRGetTOWGS84(reference, values, 7) == OGRERR_NONE;
}

QList<double> CoordSystem::getTOWGS84Params() const
{
    double values[7] = {};
    OGRErr code = OGRERR_FAILURE;
    if (void *const reference = d->srs()) {
        const QMutexLocker lock(globalProj4Mutex());
        const CplErrorScope quiet;
        code = OSRGetTOWGS84(reference, values, 7);
    }
    if (code != OGRERR_NONE)
        throw std::logic_error(CoordSysTexts::tr("Не могу получить параметры").toStdString());
    return QList<double>(std::begin(values), std::end(values));
}

double CoordSystem::longitudeOfCenter() const
{
    void *const reference = d->srs();
    if (!reference)
        return 0.0;
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    return OSRGetProjParm(reference, "longitude_of_center", 0.0, nullptr);
}

// Bounds

bool CoordSystem::isRectSet() const { return hasExtent(d->m_rect); }

QRectF CoordSystem::rectNumericCoordSys() const { return isRectSet() ? d->m_rect : rectInternal(); }

QRectF CoordSystem::rectInternal() const
{
    return keptAnswer(d->m_lock, d->m_computedRect, [this] { return d->computeRect(); });
}

QRectF CoordSystemPrivate::computeRect() const
{
    if (hasExtent(m_projectionBounds))
        return m_projectionBounds;
    const AskedCatalogues asked(m_catalogues);
    return moved(activeCatalogues()->boundsOf(q));
}

QRectF CoordSystemPrivate::moved(const QRectF &rect) const
{
    return m_affine && hasExtent(rect) ? m_affine->mapRect(rect) : rect;
}

QRectF CoordSystem::rectWithoutSearch() const { return isRectSet() ? d->m_rect : d->rectWithoutArea(); }

/// Whatever was set, and whatever code the system has: equal systems have equal ones.
QRectF CoordSystemPrivate::rectWithoutArea() const
{
    if (hasExtent(m_projectionBounds))
        return m_projectionBounds;
    {
        const QReadLocker lock(&m_lock);
        if (m_rectWithoutSearch)
            return *m_rectWithoutSearch;
    }
    const AskedCatalogues asked(m_catalogues);
    const auto catalogues = activeCatalogues(std::nothrow);
    if (!catalogues)
        return {}; // not remembered: a factory may be installed later
    const QRectF rect = moved(catalogues->boundsWithoutSearch(q));
    const QWriteLocker lock(&m_lock);
    m_rectWithoutSearch = rect;
    return rect;
}

bool CoordSystemPrivate::sameRect(const CoordSystemPrivate &other) const
{
    const QRectF a = rectWithoutArea();
    const QRectF b = other.rectWithoutArea();
    if (hasExtent(a) != hasExtent(b))
        return false;
    if (!hasExtent(a))
        return true;
    const bool same = qFuzzyCompare(a.x(), b.x()) && qFuzzyCompare(a.y(), b.y()) &&
                      qFuzzyCompare(a.width(), b.width()) && qFuzzyCompare(a.height(), b.height());
    return same || (isLatLong() && isDefaultRectLatLong(a) && isDefaultRectLatLong(b));
}

} // namespace nivora::cs
