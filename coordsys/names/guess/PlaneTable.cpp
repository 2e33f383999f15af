#include "PlaneTable_p.h"

#include "CrsParts_p.h"
#include "GuessGround_p.h"
#include "ProjPoint_p.h"
#include <coordsys/CoordSystemTypes.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>

namespace nivora::cs {
namespace {

// A line is a plane's PROJ text, or a tab and a system in the plane above: code, base, the rest of
// PlaneOfSystem. A system without a plane that could be computed has its code alone.
enum Column { Nothing, Code, Base, Meridian, Unit, West, South, East, North, Columns };

constexpr double zoneFalseEasting = 500000.0;
constexpr double million = 1e6;

double valueOf(const QByteArray &pipeline, const char *term)
{
    const int at = pipeline.indexOf(term);
    if (at < 0)
        return 0.0;
    const int begin = at + static_cast<int>(qstrlen(term));
    return pipeline.mid(begin, pipeline.indexOf(' ', begin) - begin).toDouble();
}

void addZone(double number, Plane &plane)
{
    if (number >= 1.0 && std::fabs(number - std::round(number)) < 1e-9)
        plane.zones.push_back(static_cast<int>(std::round(number)));
}

/// What the numbers of zones before eastings can be told by.
void addZones(Plane &plane)
{
    if (plane.pipeline.contains("+proj=utm")) {
        addZone(valueOf(plane.pipeline, "+zone="), plane);
        return;
    }
    if (!plane.pipeline.contains("+proj=tmerc"))
        return;
    const double easting = valueOf(plane.pipeline, "+x_0=");
    const double meridian = valueOf(plane.pipeline, "+lon_0=");
    const double zone = (easting - zoneFalseEasting) / million;
    if (zone >= 1.0 && zone == std::floor(zone))
        plane.falseZone = static_cast<int>(zone);
    if (easting != zoneFalseEasting)
        return;
    const double eastward = meridian < 0.0 ? meridian + 360.0 : meridian;
    addZone((eastward + 3.0) / 6.0, plane); // Gauss-Kruger, six degrees
    addZone(eastward / 3.0, plane);         // three degrees
}

/// Nine by nine places of an area in a plane.
QRectF boxInPlane(PJ *step, const QRectF &area, double meridianDeg)
{
    constexpr int intervals = 8;
    double west = std::numeric_limits<double>::infinity();
    double south = west;
    double east = -west;
    double north = -west;
    for (int i = 0; i <= intervals; ++i)
        for (int j = 0; j <= intervals; ++j) {
            const double lon =
                std::remainder(area.left() + area.width() * i / intervals - meridianDeg, 360.0);
            const double lat = area.top() + area.height() * j / intervals;
            const PJ_COORD at = proj_trans(step, PJ_FWD, projPoint(lon, lat));
            if (!std::isfinite(at.xy.x) || !std::isfinite(at.xy.y))
                continue;
            west = std::min(west, at.xy.x);
            east = std::max(east, at.xy.x);
            south = std::min(south, at.xy.y);
            north = std::max(north, at.xy.y);
        }
    return west <= east ? QRectF(west, south, east - west, north - south) : QRectF();
}

QByteArray codeOf(const PJ *crs)
{
    const char *authority = proj_get_id_auth_name(crs, 0);
    const char *code = proj_get_id_code(crs, 0);
    return authority && code ? QByteArray(authority) + ':' + code : QByteArray();
}

SearchedPj fromDatabase(PJ_CONTEXT *context, const QString &code)
{
    const QByteArray authority = code.section(QLatin1Char(':'), 0, 0).toUtf8();
    const QByteArray number = code.section(QLatin1Char(':'), 1).toUtf8();
    return SearchedPj(proj_create_from_database(context, authority.constData(), number.constData(),
                                                PJ_CATEGORY_CRS, 0, nullptr));
}

struct Computed
{
    QByteArray pipeline;
    QList<QByteArray> cells;
};

QByteArray text(double value) { return QByteArray::number(value, 'g', 10); }

/// A row of a projected system; the code alone where it cannot be made.
Computed computed(PJ_CONTEXT *context, const IndexedSystem &system)
{
    Computed row{{}, {QByteArray(), system.hit.code.toUtf8()}};
    const SearchedPj crs = fromDatabase(context, system.hit.code);
    const SearchedPj base(crs ? proj_crs_get_geodetic_crs(context, crs.get()) : nullptr);
    const SearchedPj step(
        base ? proj_create_crs_to_crs_from_pj(context, base.get(), crs.get(), nullptr, nullptr) : nullptr);
    const SearchedPj plain(step ? proj_normalize_for_visualization(context, step.get()) : nullptr);
    const char *pipeline = plain ? proj_as_proj_string(context, plain.get(), PJ_PROJ_5, nullptr) : nullptr;
    // Degrees, whatever the base counts in.
    const QByteArray degrees = QByteArray(pipeline).replace("+xy_in=grad", "+xy_in=deg");
    const SearchedPj tried(pipeline ? proj_create(context, degrees.constData()) : nullptr);
    const double meridian = tried ? meridianDeg(context, base.get()) : 0.0;
    const QRectF box = tried ? boxInPlane(tried.get(), system.extent, meridian) : QRectF();
    if (box.isNull())
        return row;
    row.pipeline = degrees;
    const double unit = axisFactor(context, crs.get());
    row.cells << codeOf(base.get()) << text(meridian) << text(unit) << text(box.left()) << text(box.top())
              << text(box.right()) << text(box.bottom());
    return row;
}

/// A row of longitude and latitude, where they do not count from Greenwich; none for others.
std::optional<Computed> foreignMeridian(PJ_CONTEXT *context, const IndexedSystem &system)
{
    const SearchedPj crs = fromDatabase(context, system.hit.code);
    const double meridian = crs ? meridianDeg(context, crs.get()) : 0.0;
    if (meridian == 0.0)
        return std::nullopt;
    const QByteArray code = system.hit.code.toUtf8();
    const QRectF box = system.extent.translated(-meridian, 0.0);
    return Computed{{},
                    {QByteArray(), code, code, text(meridian), text(0.0), text(box.left()), text(box.top()),
                     text(box.right()), text(box.bottom())}};
}

bool isOfEarth(const IndexedSystem &system)
{
    return !system.hit.code.isEmpty() && !system.extent.isNull() &&
           !system.hit.code.startsWith(QLatin1String("IAU"));
}

} // namespace

PlaneTable::PlaneTable(const QFileInfo &file, const SystemIndex &index)
{
    planeOf({});
    std::vector<bool> known(index.systems().size(), false);
    read(file, index, known);
    const SearchContext context;
    for (std::size_t i = 0; i < index.systems().size(); ++i) {
        const IndexedSystem &system = index.systems()[i];
        const bool isEarth = !system.hit.code.startsWith(QLatin1String("IAU"));
        if (known[i] || system.extent.isNull() || !isEarth ||
            index.withCode(system.hit.code) != static_cast<int>(i))
            continue;
        if (system.isGeographic) {
            m_systems.push_back(
                {static_cast<int>(i), 0, baseOf(system.hit.code.toUtf8()), system.extent, 0.0, 0.0});
        } else if (const Computed row = computed(context.get(), system); row.cells.size() == Columns) {
            addRow(row.cells, planeOf(row.pipeline), static_cast<int>(i));
        }
    }
}

void PlaneTable::read(const QFileInfo &info, const SystemIndex &index, std::vector<bool> &known)
{
    QFile file(info.absoluteFilePath());
    if (!file.open(QIODevice::ReadOnly))
        return;
    int plane = 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith('+'))
            plane = planeOf(line);
        if (!line.startsWith('\t'))
            continue;
        const QList<QByteArray> cells = line.split('\t');
        const int system = index.withCode(QString::fromUtf8(cells.at(Code)));
        if (system < 0)
            continue;
        known[static_cast<std::size_t>(system)] = true;
        if (cells.size() == Columns)
            addRow(cells, plane, system);
    }
}

void PlaneTable::addRow(const QList<QByteArray> &cells, int plane, int system)
{
    const QPointF low(cells.at(West).toDouble(), cells.at(South).toDouble());
    const QPointF high(cells.at(East).toDouble(), cells.at(North).toDouble());
    m_systems.push_back({system, plane, baseOf(cells.at(Base)), QRectF(low, high), cells.at(Unit).toDouble(),
                         cells.at(Meridian).toDouble()});
}

void PlaneTable::add(int system, const LocatedSystem &located, const std::function<CoordSystemPtr()> &object)
{
    Plane plane;
    plane.object = object;
    m_systems.push_back({system, static_cast<int>(m_planes.size()), baseOf("EPSG:4326"), located.box,
                         located.metresPerUnit, 0.0});
    m_planes.push_back(std::move(plane));
}

int PlaneTable::planeOf(const QByteArray &pipeline)
{
    const auto known = m_planeNumbers.constFind(pipeline);
    if (known != m_planeNumbers.constEnd())
        return *known;
    Plane plane;
    plane.pipeline = pipeline;
    addZones(plane);
    m_planes.push_back(std::move(plane));
    m_planeNumbers.insert(pipeline, static_cast<int>(m_planes.size()) - 1);
    return static_cast<int>(m_planes.size()) - 1;
}

int PlaneTable::baseOf(const QByteArray &code)
{
    const auto known = m_baseNumbers.constFind(code);
    if (known != m_baseNumbers.constEnd())
        return *known;
    m_bases.push_back(code);
    m_baseNumbers.insert(code, static_cast<int>(m_bases.size()) - 1);
    return static_cast<int>(m_bases.size()) - 1;
}

bool PlaneTable::write(QIODevice &file, const SystemIndex &index)
{
    std::map<QByteArray, QByteArray> rows; // by plane
    const SearchContext context;
    for (const IndexedSystem &system : index.systems()) {
        if (!isOfEarth(system))
            continue;
        const std::optional<Computed> row =
            system.isGeographic ? foreignMeridian(context.get(), system) : computed(context.get(), system);
        if (row)
            rows[row->pipeline] += row->cells.join('\t') + '\n';
    }
    QByteArray all =
        "# Planes of projected systems, and under each: code, base, meridian, unit in metres, and the\n"
        "# area of use in the plane. Made from PROJ's database by tools/make-system-planes.\n";
    for (const auto &[plane, systems] : rows)
        all += plane.isEmpty() ? systems : plane + '\n' + systems;
    return file.write(all) == all.size();
}

} // namespace nivora::cs
