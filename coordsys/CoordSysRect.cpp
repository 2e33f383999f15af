#include <coordsys/CoordSysRect.h>

#include <coordsys/CatalogueChanges_p.h>
#include <coordsys/CatalogueSource.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/InputFile_p.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Logger.h>

#include <QFile>
#include <QObject>
#include <QReadLocker>
#include <QWriteLocker>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

TABProjInfo_t entryFrom(const QXmlStreamAttributes &attributes)
{
    const auto text = [&attributes](const char *name) {
        return attributes.value(QLatin1String(name)).toString();
    };
    const auto number = [&text](const char *name) { return text(name).toDouble(); };
    TABProjInfo_t info;
    info.nProjId = static_cast<std::uint8_t>(text("prj").toInt());
    info.nEllipsoidId = static_cast<std::uint8_t>(getattrib(text("el"))); // -1 becomes 255: not set
    info.nUnitsId = static_cast<std::uint8_t>(getattrib(text("u")));
    constexpr const char *params[] = {"pp0", "pp1", "pp2", "pp3", "pp4", "pp5"};
    std::transform(std::begin(params), std::end(params), std::begin(info.adProjParams), number);
    info.nDatumId = static_cast<std::int16_t>(getattrib(text("datum")));
    info.dDatumShiftX = number("sx");
    info.dDatumShiftY = number("sy");
    info.dDatumShiftZ = number("sz");
    constexpr const char *datumParams[] = {"dp0", "dp1", "dp2", "dp3", "dp4"};
    std::transform(std::begin(datumParams), std::end(datumParams), std::begin(info.adDatumParams), number);
    info.dXMin = number("xmin");
    info.dYMin = number("ymin");
    info.dXMax = number("xmax");
    info.dYMax = number("ymax");
    return info;
}

/// "nan" and "inf" are numbers to the text conversion.
bool isFinite(const TABProjInfo_t &info)
{
    const auto finite = [](double value) { return std::isfinite(value); };
    return std::all_of(std::begin(info.adProjParams), std::end(info.adProjParams), finite) &&
           std::all_of(std::begin(info.adDatumParams), std::end(info.adDatumParams), finite) &&
           finite(info.dDatumShiftX) && finite(info.dDatumShiftY) && finite(info.dDatumShiftZ) &&
           std::isfinite(info.dXMax - info.dXMin) && std::isfinite(info.dYMax - info.dYMin);
}

/// The children of the root that are named "cs"; deeper elements are not entries.
bool readEntries(QXmlStreamReader &xml, std::vector<TABProjInfo_t> &entries)
{
    if (!xml.readNextStartElement())
        return false;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("cs")) {
            const TABProjInfo_t entry = entryFrom(xml.attributes());
            if (isFinite(entry))
                entries.push_back(entry);
            else
                LOG_ERROR(QStringLiteral("cs_mbr.xml:%1: not a finite number").arg(xml.lineNumber()));
        }
        xml.skipCurrentElement();
    }
    while (!xml.atEnd())
        xml.readNext(); // what stands behind the root must be well-formed too
    return !xml.hasError();
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
    switch (info.nProjId) {
    case 0:
        return {DefaultRectNonEarth, true};
    case 1:
        return {DefaultRectLatLonMapinfo, true};
    case 3:
    case 19:
        return {{-360.0, -85.0, 720.0, 170.0}, false};
    case 8:
    case 21:
    case 22:
    case 23:
    case 24:
    case 34:
        return {{p[0] - 60.0, -90.0, 120.0, 180.0}, false};
    case 10:
    case 26:
        return {{-360.0, -85.05112878, 720.0, 170.10225756}, false};
    case 20:
    case 31:
        return {squareAround(p[3], p[4], 1e8 * metresPerUnit(info.nUnitsId)), true};
    case 25:
        return {squareAround(p[2], p[3], 1e8 * metresPerUnit(info.nUnitsId)), true};
    default:
        return {{-360.0, -90.0, 720.0, 180.0}, false};
    }
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
            if (!forward(lonLat.topLeft() +
                             QPointF(lonLat.width() / 2 * (k % 3), lonLat.height() / 2 * (k / 3)),
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
        const QPointF lonLat(meridian - nearlyHalfTurn + 2.0 * nearlyHalfTurn * (k / rows) / (columns - 1),
                             south + (north - south) * (k % rows) / (rows - 1));
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

/// Area of use of the code that the system's definition matches, in the system's plane.
bool boundsOfAreaOfUse(const CoordSystem &cs, QRectF &out)
{
    const int code = cs.matchedEpsg();
    if (code == CoordSystem::EPSG_UNDEFINDED)
        return false;
    QRectF area = ProjLibMetadata().rectWgs84ForCrs(code, ProjLibMetadata::EPSG);
    if (area.width() < 0.0)
        area.setWidth(area.width() + 360.0); // across the 180th meridian
    return Plane(cs).forward(area, out);
}

} // namespace

int getattrib(const QString &text) { return text == QLatin1String("0x00") ? 0 : -1; }

bool CoordSysRect::initFromXML() { return initFromXML(activeCatalogues()->resourceDir()); }

bool CoordSysRect::initFromXML(const QDir &dir)
{
    clear();
    QFile file(dir.filePath(QStringLiteral("cs_mbr.xml")));
    if (!openInput(file).isEmpty()) {
        LOG_ERROR(QObject::tr("Не могу открыть файл %1").arg(file.fileName()));
        return false;
    }
    LOG_INFO(QObject::tr("Ограничения для КС: %1").arg(file.fileName()));
    QXmlStreamReader xml(&file);
    std::vector<TABProjInfo_t> entries;
    if (!readEntries(xml, entries)) {
        LOG_ERROR(QStringLiteral("%1:%2: %3")
                      .arg(file.fileName(), QString::number(xml.lineNumber()), xml.errorString()));
        entries.clear();
    }
    LOG_INFO(QStringLiteral("CS MBRs loaded from cs_mbr.xml=%1").arg(entries.size()));
    const QWriteLocker lock(&m_lock);
    m_entries = std::move(entries);
    ++catalogueChanges();
    return true;
}

void CoordSysRect::clear()
{
    const QWriteLocker lock(&m_lock);
    m_entries.clear();
    ++catalogueChanges();
}

bool CoordSysRect::catalogued(const TABProjInfo_t &info, QRectF &out) const
{
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
        LOG_ERROR(QObject::tr("Строка с координатной системой пустая"));
        return {};
    }
    QRectF known;
    if (catalogued(MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj), known))
        return known;
    LOG_DEBUG(QObject::tr("Не могу рассчитать ограничивающий прямоугольник для КС (%1)").arg(prj));
    return rectMifalAlgorithm(prj, cs);
}

QRectF CoordSysRect::rectMifalAlgorithm(const QString &prj, CoordSystem *cs)
{
    const Rule rule = ruleFor(MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj));
    QRectF projected;
    return !rule.planar && cs && Plane(*cs).forward(rule.rect, projected) ? projected : rule.rect;
}

QRectF CoordSysRect::rect(const CoordSystemPtr &cs) const { return rect(cs.get()); }

QRectF CoordSysRect::rect(CoordSystem *cs) const { return rectBy(cs, &boundsOfAreaOfUse); }

QRectF CoordSysRect::rectWithoutSearch(CoordSystem *cs) const
{
    return rectBy(cs, [](const CoordSystem &, QRectF &) { return false; });
}

QRectF CoordSysRect::rectBy(CoordSystem *cs, const AreaOfUse &areaOfUse) const
{
    if (!cs)
        return {};
    try {
        const QString prj = cs->prjStr();
        const TABProjInfo_t info = MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj);
        QRectF result;
        if (catalogued(info, result))
            return result;
        LOG_DEBUG(QObject::tr("Не могу рассчитать ограничивающий прямоугольник для КС (%1)").arg(prj));
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
