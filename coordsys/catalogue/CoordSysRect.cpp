#include <coordsys/CoordSysRect.h>

#include "BoundsFile_p.h"
#include "CatalogueRevision_p.h"
#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "InputFile_p.h"
#include "ProjectionTable_p.h"
#include "SpatialReferenceText_p.h"
#include "SystemFacts_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SpatialReferenceText.h>
#include <platform/Logger.h>

#include <QFile>
#include <QReadLocker>
#include <QWriteLocker>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

/// Fast and unproved: a text with a record of the tables' has their bounds.
QString plainText(const CoordSystem &cs)
{
    if (cs.sourceType() == CoordSystem::Prj)
        return cs.prjStr();
    const QuietExportScope quiet;
    return prjFromSpatialReference(cs.OGRSpatialReference());
}

/// Bounds by projection number: in degrees, to be projected, or in the plane already.
struct Rule
{
    QRectF rect;
    bool planar;
};

QRectF squareAround(double x, double y, double halfSide)
{
    return {x - halfSide, y - halfSide, 2.0 * halfSide, 2.0 * halfSide};
}

double metresPerUnit(int unit)
{
    const MIUnitConvParam *found =
        activeCatalogues()->projectionParamsManager()->unitByID(unit, std::nothrow);
    return found ? found->conversion() : 1.0;
}

Rule ruleFor(const TABProjInfo_t &info)
{
    const double *p = info.adProjParams;
    const Projection *const row = projectionByNumber(info.nProjId);
    switch (row ? row->bounds : DefaultBounds::Earth) {
    case DefaultBounds::Plan:
        return {DefaultRectNonEarth, true};
    case DefaultBounds::Degrees:
        return {DefaultRectLatLonMapinfo, true};
    case DefaultBounds::EarthWithoutPole:
        return {{-360.0, -85.0, 720.0, 170.0}, false};
    case DefaultBounds::Band:
        return {{p[0] - 60.0, -90.0, 120.0, 180.0}, false};
    case DefaultBounds::EarthOfMercator:
        return {{-360.0, -85.05112878, 720.0, 170.10225756}, false};
    case DefaultBounds::Square:
        return {squareAround(p[row->indexOf('e')], p[row->indexOf('n')], 1e8 * metresPerUnit(info.nUnitsId)),
                true};
    case DefaultBounds::Earth:
        break;
    }
    return {{-360.0, -90.0, 720.0, 180.0}, false};
}

bool isFinite(const QPointF &p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

/// The smallest rectangle around the points added.
struct Box
{
    double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;

    void add(const QPointF &p)
    {
        minX = std::min(minX, p.x());
        maxX = std::max(maxX, p.x());
        minY = std::min(minY, p.y());
        maxY = std::max(maxY, p.y());
    }
    /// False, \p out untouched, when it has no extent or a side beyond a double.
    bool rect(QRectF &out) const
    {
        const QRectF found(minX, minY, maxX - minX, maxY - minY);
        if (!(std::isfinite(found.width()) && std::isfinite(found.height()) && maxX > minX && maxY > minY))
            return false;
        out = found;
        return true;
    }
};

/// Longitude/latitude into the plane of a system, its affine transformation left out: the system maps the
/// bounds that it is given by that itself, whatever they were made from.
class Plane
{
public:
    explicit Plane(const CoordSystem &cs)
        : m_cs(cs)
    {
        if (hasAffine(&cs))
            m_inverse = cs.affineTransform()->inverted(&m_usable);
    }

    bool forward(const QPointF &lonLat, QPointF &out) const
    {
        QPointF point;
        if (!m_usable || !m_cs.forward(lonLat, point))
            return false;
        point = m_inverse.map(point);
        if (!isFinite(point))
            return false;
        out = point;
        return true;
    }

    /// Corners and edge midpoints, as the system itself projects a rectangle.
    bool forward(const QRectF &lonLat, QRectF &out) const
    {
        Box box;
        for (int k = 0; k < 9; ++k) {
            QPointF point;
            if (k == 4) // the centre
                continue;
            const int column = k % 3;
            const int row = k / 3;
            if (!forward(lonLat.topLeft() + QPointF(lonLat.width() / 2 * column, lonLat.height() / 2 * row),
                         point))
                return false;
            box.add(point);
        }
        return box.rect(out);
    }

private:
    const CoordSystem &m_cs;
    QTransform m_inverse;
    bool m_usable = true;
};

/// A world projection folds or breaks at the edges of the rule's rectangle. Then its bounds are those of what
/// a 10 x 10 degree grid around the central meridian gives, points beyond 1e8 metres left out.
bool boundsOfGrid(const Plane &plane, const Rule &rule, double meridian, QRectF &out)
{
    constexpr int columns = 37;
    constexpr int rows = 19;
    constexpr double nearlyHalfTurn = 179.999; // at 180 the ends of a parallel change places
    constexpr double nearlyPole = 89.999;
    constexpr double farAway = 1e8;
    const double south = std::max(rule.rect.top(), -nearlyPole);
    const double north = std::min(rule.rect.bottom(), nearlyPole);
    Box box;
    for (int k = 0; k < columns * rows; ++k) {
        const int column = k / rows;
        const int row = k % rows;
        const QPointF lonLat(meridian - nearlyHalfTurn + 2.0 * nearlyHalfTurn * column / (columns - 1),
                             south + (north - south) * row / (rows - 1));
        QPointF p;
        if (plane.forward(lonLat, p) && std::fabs(p.x()) <= farAway && std::fabs(p.y()) <= farAway)
            box.add(p);
    }
    return box.rect(out);
}

/// The rule's rectangle in the plane; false when the projection cannot say.
bool projectedRule(const Plane &plane, const Rule &rule, double meridian, QRectF &out)
{
    return !rule.planar && (plane.forward(rule.rect, out) || boundsOfGrid(plane, rule, meridian, out));
}

/// Area of use of the system's code, in the system's plane. A code that was only set and is that of another
/// plane does not count.
bool boundsOfAreaOfUse(const CoordSystem &cs, QRectF &out)
{
    const CrsDefinitionPtr registered = SystemFacts::registered(cs);
    const std::optional<QRectF> area = registered ? registered->areaOfUse() : std::nullopt;
    return area && Plane(cs).forward(*area, out);
}

} // namespace

/// What a CoordSysRect consists of.
class CoordSysRectPrivate
{
public:
    using AreaOfUse = std::function<bool(const CoordSystem &cs, QRectF &out)>;

    QRectF rectBy(CoordSystem *cs, const AreaOfUse &areaOfUse) const;
    bool catalogued(const TABProjInfo_t &info, QRectF &out) const;
    void readFile() const;

    mutable QReadWriteLock m_lock;                ///< guards the following
    mutable std::vector<TABProjInfo_t> m_entries; ///< file order
    mutable QByteArray m_unread;                  ///< the file, until bounds are first looked up
    QString m_fileName;
    mutable std::atomic<bool> m_isRead{true};
};

CoordSysRect::CoordSysRect()
    : d(std::make_unique<CoordSysRectPrivate>())
{}

CoordSysRect::~CoordSysRect() = default;

bool CoordSysRect::initFromXML() { return initFromXML(activeCatalogues()->resourceDir()); }

bool CoordSysRect::initFromXML(const QDir &dir)
{
    if (!openXML(dir))
        return false;
    d->readFile();
    return true;
}

bool CoordSysRect::openXML(const QDir &dir)
{
    clear();
    QFile file(dir.filePath(QStringLiteral("cs_mbr.xml")));
    if (!openInput(file).isEmpty()) {
        LOG_ERROR(CoordSysTexts::tr("Не могу открыть файл %1").arg(file.fileName()));
        return false;
    }
    LOG_INFO(CoordSysTexts::tr("Ограничения для КС: %1").arg(file.fileName()));
    const QWriteLocker lock(&d->m_lock);
    d->m_unread = file.readAll();
    d->m_fileName = file.fileName();
    d->m_isRead = false;
    ++catalogueRevision();
    return true;
}

void CoordSysRect::clear()
{
    const QWriteLocker lock(&d->m_lock);
    d->m_entries.clear();
    d->m_unread.clear();
    d->m_isRead = true;
    ++catalogueRevision();
}

/// Taking the file apart costs a quarter of a start-up, and most of what is started asks for no bounds.
void CoordSysRectPrivate::readFile() const
{
    const QWriteLocker lock(&m_lock);
    if (m_isRead)
        return;
    m_entries = boundsIn(m_unread, m_fileName);
    LOG_INFO(QStringLiteral("CS MBRs loaded from cs_mbr.xml=%1").arg(m_entries.size()));
    m_unread.clear();
    m_isRead = true;
}

bool CoordSysRectPrivate::catalogued(const TABProjInfo_t &info, QRectF &out) const
{
    if (!m_isRead)
        readFile();
    const QReadLocker lock(&m_lock);
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), [&info](const TABProjInfo_t &e) {
        return MapHeaderCoordsysConverter::compareTabProjInfo(e, info, false, false);
    });
    if (entry == m_entries.end())
        return false;
    out = MapHeaderCoordsysConverter::boundForTabProj(*entry);
    return true;
}

QRectF CoordSysRect::rect(const QString &prj, CoordSystem *cs) const
{
    if (prj.isEmpty()) {
        LOG_ERROR(CoordSysTexts::tr("Строка с координатной системой пустая"));
        return {};
    }
    QRectF known;
    if (d->catalogued(MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj), known))
        return known;
    LOG_DEBUG(CoordSysTexts::tr("Не могу рассчитать ограничивающий прямоугольник для КС (%1)").arg(prj));
    return rectMifalAlgorithm(prj, cs);
}

QRectF CoordSysRect::rectMifalAlgorithm(const QString &prj, CoordSystem *cs)
{
    const Rule rule = ruleFor(MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj));
    QRectF projected;
    return !rule.planar && cs && Plane(*cs).forward(rule.rect, projected) ? projected : rule.rect;
}

QRectF CoordSysRect::rect(const CoordSystemPtr &cs) const { return rect(cs.get()); }

QRectF CoordSysRect::rect(CoordSystem *cs) const { return d->rectBy(cs, &boundsOfAreaOfUse); }

QRectF CoordSysRect::rectWithoutSearch(CoordSystem *cs) const
{
    return d->rectBy(cs, [](const CoordSystem &, QRectF &) { return false; });
}

QRectF CoordSysRectPrivate::rectBy(CoordSystem *cs, const AreaOfUse &areaOfUse) const
{
    if (!cs)
        return {};
    try {
        const QString prj = plainText(*cs);
        const TABProjInfo_t info = MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj);
        QRectF result;
        if (catalogued(info, result))
            return result;
        LOG_DEBUG(CoordSysTexts::tr("Не могу рассчитать ограничивающий прямоугольник для КС (%1)").arg(prj));
        const Rule rule = ruleFor(info);
        if (cs->isNonEarth())
            return DefaultRectNonEarth; // a plan given as PROJ text is exported as a cylinder
        if (cs->isLatLong())
            return rule.rect; // independent of any EPSG code, so that equal systems have equal bounds
        const bool known =
            areaOfUse(*cs, result) || projectedRule(Plane(*cs), rule, info.adProjParams[0], result);
        return known ? result : rule.rect;
    } catch (const std::exception &e) {
        LOG_ERROR(QStringLiteral("%1 : %2").arg(cs->description(), QString::fromUtf8(e.what())));
        return {};
    }
}

} // namespace nivora::cs
