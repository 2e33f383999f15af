#include <coordsys/CoordSysRect.h>

#include "CatalogueRevision_p.h"
#include "CatalogueSource_p.h"
#include "InputFile_p.h"
#include "ProjectionTable_p.h"
#include "SpatialReferenceText_p.h"
#include "SystemFacts_p.h"
#include "TextRefs_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SpatialReferenceText.h>
#include <platform/Logger.h>

#include <QFile>
#include <QObject>
#include <QReadLocker>
#include <QRegularExpression>
#include <QWriteLocker>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <cmath>

namespace nivora::cs {
namespace {

enum Figure {
    Prj,
    El,
    U,
    Pp0,
    Datum = Pp0 + 6,
    Sx,
    Sy,
    Sz,
    Dp0,
    Xmin = Dp0 + 5,
    Ymin,
    Xmax,
    Ymax,
    FigureCount
};
constexpr const char *figureNames[FigureCount] = {"prj", "el",    "u",    "pp0",  "pp1",  "pp2", "pp3", "pp4",
                                                  "pp5", "datum", "sx",   "sy",   "sz",   "dp0", "dp1", "dp2",
                                                  "dp3", "dp4",   "xmin", "ymin", "xmax", "ymax"};

using Figures = std::array<TextRef, FigureCount>;

/// A name's place in the table, FigureCount when it has none. \p next is where attributes in the table's
/// order stand.
std::size_t placeOf(const TextRef &name, std::size_t next)
{
    for (std::size_t tried = 0; tried < FigureCount; ++tried)
        if (name == QLatin1String(figureNames[(next + tried) % FigureCount]))
            return (next + tried) % FigureCount;
    return FigureCount;
}

Figures figuresIn(const QXmlStreamAttributes &attributes)
{
    Figures figures;
    std::size_t next = 0;
    for (const QXmlStreamAttribute &attribute : attributes) {
        const std::size_t place = placeOf(attribute.qualifiedName(), next);
        if (place == FigureCount)
            continue;
        figures[place] = attribute.value();
        next = place + 1;
    }
    return figures;
}

TABProjInfo_t entryFrom(const Figures &figures)
{
    const auto number = [](const TextRef &text) { return text.toDouble(); };
    const auto rule = [](const TextRef &text) { return getattrib(text.toString()); };
    TABProjInfo_t info;
    info.nProjId = static_cast<std::uint8_t>(figures[Prj].toInt());
    info.nEllipsoidId = static_cast<std::uint8_t>(rule(figures[El])); // -1 becomes 255: not set
    info.nUnitsId = static_cast<std::uint8_t>(rule(figures[U]));
    std::transform(&figures[Pp0], &figures[Pp0] + 6, std::begin(info.adProjParams), number);
    info.nDatumId = static_cast<std::int16_t>(rule(figures[Datum]));
    info.dDatumShiftX = number(figures[Sx]);
    info.dDatumShiftY = number(figures[Sy]);
    info.dDatumShiftZ = number(figures[Sz]);
    std::transform(&figures[Dp0], &figures[Dp0] + 5, std::begin(info.adDatumParams), number);
    info.dXMin = number(figures[Xmin]);
    info.dYMin = number(figures[Ymin]);
    info.dXMax = number(figures[Xmax]);
    info.dYMax = number(figures[Ymax]);
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

/// The shipped form of the file, read at a fifth of an XML reader's cost: an ASCII declaration, a root, and
/// rows of
///   <cs prj="10" el="-1" … ymax="15000000"/>
/// Whatever else stands there is left to the reader.
class PlainRows
{
public:
    explicit PlainRows(const QString &text)
        : m_text(text)
    {}

    bool read(std::vector<TABProjInfo_t> &entries)
    {
        static const QRegularExpression head(
            QStringLiteral("\\A<\\?xml version=\"1\\.0\" encoding=\"UTF-8\"\\?>\\s*"
                           "<bounds(?: gdal=\"[\\w.]*\")?(?: epsg=\"[\\w.]*\")?>"));
        const QRegularExpressionMatch start = head.match(m_text);
        if (!start.hasMatch())
            return false;
        m_at = start.capturedEnd();
        while (skipBlanks() && take("<cs")) {
            Figures figures;
            if (!readAttributes(figures))
                return false;
            entries.push_back(entryFrom(figures));
        }
        return take("</bounds>") && (skipBlanks(), m_at == m_text.size()) &&
               std::all_of(entries.begin(), entries.end(),
                           [](const TABProjInfo_t &entry) { return isFinite(entry); });
    }

private:
    bool skipBlanks()
    {
        while (m_at < m_text.size() &&
               (m_text.at(m_at) == QLatin1Char(' ') || m_text.at(m_at) == QLatin1Char('\n') ||
                m_text.at(m_at) == QLatin1Char('\r')))
            ++m_at;
        return true;
    }

    bool take(const char *word)
    {
        const QLatin1String expected(word);
        if (midRef(m_text, m_at, expected.size()) != expected)
            return false;
        m_at += expected.size();
        return true;
    }

    /// Up to and with the "/>". False for anything but known names, once each.
    bool readAttributes(Figures &figures)
    {
        std::size_t next = 0;
        while (take(" ")) {
            const int equals = m_text.indexOf(QLatin1Char('='), m_at);
            const int end = m_text.indexOf(QLatin1Char('"'), equals + 2);
            const std::size_t place = placeOf(midRef(m_text, m_at, equals - m_at), next);
            if (equals < 0 || end < 0 || place == FigureCount || !figures[place].isNull() ||
                m_text.at(equals + 1) != QLatin1Char('"'))
                return false;
            figures[place] = midRef(m_text, equals + 2, end - equals - 2);
            if (!std::all_of(figures[place].begin(), figures[place].end(), isFigureLetter))
                return false;
            m_at = end + 1;
            next = place + 1;
        }
        return take("/>");
    }

    static bool isFigureLetter(QChar c)
    {
        return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.') ||
               c == QLatin1Char('-') || c == QLatin1Char('+') || c == QLatin1Char('e') ||
               c == QLatin1Char('x');
    }

    const QString &m_text;
    int m_at = 0;
};

/// The children of the root that are named "cs"; deeper elements are not entries.
bool readEntries(QXmlStreamReader &xml, std::vector<TABProjInfo_t> &entries)
{
    if (!readRoot(xml))
        return false;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("cs")) {
            const TABProjInfo_t entry = entryFrom(figuresIn(xml.attributes()));
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

int getattrib(const QString &text) { return text == QLatin1String("0x00") ? 0 : -1; }

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
        LOG_ERROR(QObject::tr("Не могу открыть файл %1").arg(file.fileName()));
        return false;
    }
    LOG_INFO(QObject::tr("Ограничения для КС: %1").arg(file.fileName()));
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
    QXmlStreamReader xml(m_unread);
    if (!PlainRows(QString::fromLatin1(m_unread)).read(m_entries))
        m_entries.clear();
    if (m_entries.empty() && !readEntries(xml, m_entries)) {
        LOG_ERROR(QStringLiteral("%1:%2: %3")
                      .arg(m_fileName, QString::number(xml.lineNumber()), xml.errorString()));
        m_entries.clear();
    }
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
        LOG_ERROR(QObject::tr("Строка с координатной системой пустая"));
        return {};
    }
    QRectF known;
    if (d->catalogued(MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj), known))
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
