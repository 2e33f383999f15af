#include <coordsys/CoordSystem.h>

#include "CatalogueToken_p.h"
#include "CodedError_p.h"
#include "CrsDefinition_p.h"
#include "OsrHandle_p.h"
#include "ProjOperation_p.h"
#include <coordsys/CatalogueSource.h>
#include <coordsys/DefaultRects.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>
#include <QObject>
#include <QReadLocker>
#include <QRegularExpression>
#include <QWriteLocker>

#include <algorithm>
#include <cmath>
#include <limits>

namespace nivora::cs {
namespace {

bool hasExtent(const QRectF &r) { return r.width() > 0.0 && r.height() > 0.0; } // NaN has none

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
    : m_catalogues(tokenOfScope())
    , m_computedRect(nullptr)
    , m_needCrop(nullptr)
{
    forgetBounds();
    noteChange();
}

CoordSystem::~CoordSystem()
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

PJ *CoordSystem::PJ_Proj4() const { return pj(); }

PJ *CoordSystem::PJ_Proj4_Internal() const { return plane() ? plane()->pj.get() : nullptr; }

// Setters

void CoordSystem::setDescription(const QString &description)
{
    const QWriteLocker lock(&m_lock);
    m_description = description;
    m_isNameless = false;
}

void CoordSystem::setEpsg(int epsg)
{
    m_epsg = epsg;
    m_isEpsgCatalogued = false;
    m_isEpsgOfMoved = false;
    m_isEntry = false;
    noteChange();
}

void CoordSystem::setCataloguedEpsg(int epsg)
{
    setEpsg(epsg);
    m_isEpsgCatalogued = true;
    m_isEpsgOfMoved = m_affine != nullptr;
}

void CoordSystem::setEntryEpsg(int epsg)
{
    setCataloguedEpsg(epsg);
    m_isEntry = true;
}

void CoordSystem::setSourceParameters(const SourceData &source)
{
    m_source = source;
    m_record.reset();
    noteChange();
    m_isLatLong = NotAsked;
    m_isNonEarth = NotAsked;
    forgetIdentity();
}

void CoordSystem::setOGRSpatialReference(std::shared_ptr<void> srs)
{
    ensureMade();
    {
        const QWriteLocker lock(&m_lock);
        m_srs.swap(srs);
        m_isSrsShared = false;
        m_given = nullptr;
        m_givenSrs.reset();
    }
    noteChange();
    forgetDerived();
    forgetIdentity();
}

void CoordSystem::forgetDerived()
{
    m_isLatLong = NotAsked;
    m_isNonEarth = NotAsked;
    m_matchedEpsg = NotAsked;
}

void CoordSystem::forgetIdentity()
{
    m_statedEpsg = NotAsked;
    m_searchedEpsg = NotAsked;
    setIdentity(nullptr);
    const QWriteLocker lock(&m_lock);
    m_hasIdentity = false;
    m_codedFor = 0;
}

void CoordSystem::setIdentity(IdentityPtr identity) const
{
    const QWriteLocker lock(&m_lock);
    m_identity.swap(identity); // the old one takes the PROJ lock as it goes, after this one
    m_hasIdentity = true;
}

void CoordSystem::setProj4(PjHandle pj)
{
    const AskedCatalogues asked(m_catalogues);
    // Only a plan names its unit in its PROJ text, and only it needs the catalogue, which is asked unlocked.
    const bool plan = m_source.type == Prj && isNonEarth();
    const auto manager = plan ? activeCatalogues()->projectionParamsManager() : nullptr;

    ensureMade();
    noteChange();
    const QWriteLocker lock(&m_lock);
    m_pj = std::move(pj);
    m_plane = nullptr;
    m_searchedEpsg = NotAsked;
    m_isLatLong = NotAsked;
    m_matchedEpsg = NotAsked;
    if (!m_pj)
        return;
    const QString text =
        projText([&] { return manager ? detectUnitLocked(*manager, nullptr) : LinearUnit(); });
    bool shifted = false;
    const QString unshifted = withoutDatumShift(text, shifted);
    std::shared_ptr<PJ> converting = m_pj;
    if (shifted)
        converting = proj4FromString(unshifted);
    m_plane = std::make_shared<const ProjOperation>(std::move(converting));
}

void CoordSystem::setRectCoordSystem(const QRectF &rect)
{
    if (!hasExtent(rect))
        throwCoded<std::logic_error>(Error::Code::InvalidArgument,
                                     QObject::tr("Не могу задать пустые границы"));
    m_rect = rect;
    noteChange();
}

void CoordSystem::setAffineTransform(std::unique_ptr<QTransform> transform)
{
    m_affine = std::move(transform);
    m_isEpsgOfMoved = false; // a catalogue's code was that of another plane
    m_isEntry = false;
    noteChange();
    forgetBounds();
}

void CoordSystem::setAffineTransform(std::unique_ptr<QTransform> transform, const LinearUnit &unit)
{
    setAffineTransform(std::move(transform));
    m_affineUnit = unit;
}

void CoordSystem::setProjectionDefaultBounds(const QRectF &rect)
{
    m_projectionBounds = rect;
    noteChange();
    forgetBounds();
}

void CoordSystem::setPlane(std::shared_ptr<const ProjOperation> plane)
{
    ensureMade();
    m_plane = std::move(plane);
    noteChange();
}

/// What has been found in the plane that was.
void CoordSystem::forgetBounds()
{
    const QWriteLocker lock(&m_lock);
    m_computedRect = LazyRect([this] { return computeRect(); });
    m_rectWithoutSearch.reset();
    m_needCrop = LazyFlag([this] { return computeNeedCrop(); });
}

// Queries

LinearUnit CoordSystem::affineUnit() const
{
    if (m_affineUnit)
        return m_affineUnit;
    const QReadLocker lock(&m_lock);
    return m_detectedUnit;
}

bool CoordSystem::isNonEarth() const
{
    const int known = m_isNonEarth.load(std::memory_order_acquire);
    if (known != NotAsked)
        return known != 0;
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

bool CoordSystem::isLatLong() const
{
    const int known = m_isLatLong.load(std::memory_order_acquire);
    if (known != NotAsked)
        return known != 0;
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
bool CoordSystem::isRotated() const
{
    void *const reference = srs();
    if (!reference)
        return false;
    const QMutexLocker lock(globalProj4Mutex());
    return OSRIsDerivedGeographic(reference) != 0;
}

QString CoordSystem::datumName() const
{
    void *const reference = srs();
    if (!reference)
        return {};
    const QMutexLocker lock(globalProj4Mutex());
    return QString::fromUtf8(OSRGetAttrValue(reference, "DATUM", 0));
}

bool CoordSystem::isSpecialDatum() const
{
    return datumName().compare(QLatin1String("MIF 0"), Qt::CaseInsensitive) == 0;
}

bool CoordSystem::computeNeedCrop() const
{
    const AskedCatalogues asked(m_catalogues);
    const QVector<CoordSystemPtr> systems = activeCatalogues()->systemsToCrop();
    return std::any_of(systems.begin(), systems.end(),
                       [this](const CoordSystemPtr &cs) { return isEqual(cs, false); });
}

bool CoordSystem::needCropCoords() const
{
    {
        const QReadLocker lock(&m_lock);
        if (m_needCrop.hasValue())
            return m_needCrop.valueRef();
    }
    const bool answer = computeNeedCrop(); // leaves the class: never under the lock
    const QWriteLocker lock(&m_lock);
    if (!m_needCrop.hasValue())
        m_needCrop.setValue(answer);
    return m_needCrop.valueRef();
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
        throw std::logic_error(QObject::tr("Не могу получить параметр").toStdString());
    return value;
}

double CoordSystem::getSemiMajor() const { return getParamOSR(OSRGetSemiMajor, srs()); }

double CoordSystem::getSemiMinor() const { return getParamOSR(OSRGetSemiMinor, srs()); }

double CoordSystem::getInvFlattening() const { return getParamOSR(OSRGetInvFlattening, srs()); }

bool CoordSystem::hasShift() const
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
    if (void *const reference = srs()) {
        const QMutexLocker lock(globalProj4Mutex());
        const CplErrorScope quiet;
        code = OSRGetTOWGS84(reference, values, 7);
    }
    if (code != OGRERR_NONE)
        throw std::logic_error(QObject::tr("Не могу получить параметры").toStdString());
    return QList<double>(std::begin(values), std::end(values));
}

double CoordSystem::longitudeOfCenter() const
{
    void *const reference = srs();
    if (!reference)
        return 0.0;
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    return OSRGetProjParm(reference, "longitude_of_center", 0.0, nullptr);
}

// Bounds

bool CoordSystem::isRectSet() const { return hasExtent(m_rect); }

QRectF CoordSystem::rectNumericCoordSys() const { return isRectSet() ? m_rect : rectInternal(); }

QRectF CoordSystem::rectInternal() const
{
    {
        const QReadLocker lock(&m_lock);
        if (m_computedRect.hasValue())
            return m_computedRect.valueRef();
    }
    const QRectF rect = computeRect(); // leaves the class: never under the lock
    const QWriteLocker lock(&m_lock);
    if (!m_computedRect.hasValue())
        m_computedRect.setValue(rect);
    return m_computedRect.valueRef();
}

QRectF CoordSystem::computeRect() const
{
    if (hasExtent(m_projectionBounds))
        return m_projectionBounds;
    const AskedCatalogues asked(m_catalogues);
    return withAffine(activeCatalogues()->boundsOf(const_cast<CoordSystem *>(this)));
}

QRectF CoordSystem::withAffine(const QRectF &rect) const
{
    return m_affine && hasExtent(rect) ? m_affine->mapRect(rect) : rect;
}

QRectF CoordSystem::rectWithoutSearch() const { return isRectSet() ? m_rect : rectWithoutArea(); }

/// Whatever was set, and whatever code the system has: equal systems have equal ones.
QRectF CoordSystem::rectWithoutArea() const
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
    const QRectF rect = withAffine(catalogues->boundsWithoutSearch(const_cast<CoordSystem *>(this)));
    const QWriteLocker lock(&m_lock);
    m_rectWithoutSearch = rect;
    return rect;
}

bool CoordSystem::sameRect(const CoordSystem &other) const
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
