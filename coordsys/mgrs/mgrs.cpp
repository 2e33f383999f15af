#include "mgrs.h"

#include "arithmetic/grids_p.h"
#include "arithmetic/reference_p.h"

#include <algorithm>
#include <cstring>
#include <string_view>

// How points on an edge stay where they are.
//
// A cell is [corner, corner + size) in both coordinates. A corner that was converted to latitude and
// longitude and back is off by up to 15 nanometres (rounding of angles near 2 pi and of northings near 10^7
// m, once or twice each) and could be cut down into the cell before. So METRE_TOLERANCE is added before
// digits are cut, once and for every precision alike. The same holds for zones and bands, whose edges are
// whole degrees: checkPoint() restores whole degrees first. Its tolerance is the wider one on the ground, so
// a point just west of the meridian 3 degrees (500000 m in zone 31) or just south of the equator stays on its
// side in both tests. Two different points further apart than a fifth of a micrometre are never confused.

namespace mgrs {
namespace {

constexpr double METRE_TOLERANCE = 5e-8;

/// Inner margin of cells and areas where a point inside is looked for: ten times the tolerance.
constexpr double INSET_M = 5e-7;
constexpr double INSET_RAD = INSET_M / 6.4e6;

constexpr int SQUARE_M = 100000;
constexpr double SQUARE_D = SQUARE_M;

/// I and O are left out everywhere, they look like digits.
constexpr std::string_view letters = "ABCDEFGHJKLMNPQRSTUVWXYZ";

// ---- The lettering of UTM --------------------------------------------------------------------------------

constexpr int FIRST_BAND = 2; // C
constexpr int LAST_BAND = 21; // X, twelve degrees high
constexpr int BAND_V = 19;
constexpr double BAND_HEIGHT_DEG = 8.0;
constexpr int COLUMNS = 8; // eastings 100 to 900 km
constexpr int ROWS = 20;   // A to V, over and over: 2000 km
constexpr double ROWS_M = ROWS * SQUARE_D;

int bandOf(double latDeg)
{
    const int band = FIRST_BAND + static_cast<int>(std::floor((latDeg - UTM_SOUTH_DEG) / BAND_HEIGHT_DEG));
    return std::min(band, LAST_BAND);
}

/// Columns begin anew every third zone; rows begin five letters later in even zones.
int firstColumn(int zone) { return (zone - 1) % 3 * COLUMNS; }
int firstRow(int zone) { return zone % 2 == 0 ? 5 : 0; }

/// The zone within one band. Angles are radians, longitudes count from the central meridian.
struct Area
{
    double west = 0.0;
    double east = 0.0;
    double south = 0.0;
    double north = 0.0;

    bool exists() const { return west < east; }
    bool contains(const Geodetic &p) const
    {
        return p.lonRad >= west && p.lonRad <= east && p.latRad >= south && p.latRad <= north;
    }
};

/// standardZone() turned round. It does not exist for zones 32, 34 and 36 in band X.
Area areaOf(int zone, int band)
{
    const double meridian = centralMeridianDeg(zone);
    double west = meridian - 3.0;
    double east = meridian + 3.0;
    if (band == BAND_V && zone == 31)
        east = 3.0;
    if (band == BAND_V && zone == 32)
        west = 3.0;
    if (band == LAST_BAND && zone >= 31 && zone <= 37) {
        constexpr double edges[] = {0.0, 9.0, 9.0, 21.0, 21.0, 33.0, 33.0, 42.0};
        west = edges[zone - 31];
        east = edges[zone - 30];
    }
    const double south = UTM_SOUTH_DEG + BAND_HEIGHT_DEG * (band - FIRST_BAND);
    const double north = band == LAST_BAND ? UTM_NORTH_DEG : south + BAND_HEIGHT_DEG;
    return {toRadians(west - meridian), toRadians(east - meridian) - INSET_RAD, toRadians(south),
            toRadians(north) - INSET_RAD};
}

// ---- The lettering of UPS --------------------------------------------------------------------------------

/// Columns left of the pole end, those right of it begin at its easting. Rows begin at firstM.
struct PolarGrid
{
    bool north;
    char west;
    char east;
    std::string_view westColumns;
    std::string_view eastColumns;
    int rows;
    int firstM;
};
constexpr PolarGrid polarGrids[] = {
    {false, 'A', 'B', "JKLPQRSTUXYZ", "ABCFGHJKLPQR", 24, 800000},
    {true, 'Y', 'Z', "RSTUXYZ", "ABCFGHJ", 14, 1300000},
};

// ---- Cells -----------------------------------------------------------------------------------------------

/// South-west corner and size of a cell in the plane of its grid.
struct Cell
{
    Plane corner;
    double size = 0.0;

    double inner() const { return size - INSET_M; }
    bool contains(const Plane &p) const
    {
        return p.x >= corner.x && p.x <= corner.x + inner() && p.y >= corner.y && p.y <= corner.y + inner();
    }
    Plane nearest(const Plane &p) const
    {
        return {std::clamp(p.x, corner.x, corner.x + inner()), std::clamp(p.y, corner.y, corner.y + inner())};
    }
};

Cell squareAround(const Cell &cell)
{
    const auto down = [](double value) { return std::floor(value / SQUARE_D) * SQUARE_D; };
    return {{down(cell.corner.x), down(cell.corner.y)}, SQUARE_D};
}

// ---- Points of UTM cells that the zone or the band cuts
// -----------------------------------------------------

/// Looks for the point of a cell inside an area that is nearest to the cell's south-west corner. What is left
/// of a cell has its corners where an edge of the cell meets one of the area, or where a corner of one lies
/// inside the other; all of these are tried. Only cells on an edge come here.
class NearestCorner
{
public:
    NearestCorner(const Ellipsoid &ellipsoid, const Cell &cell, const Area &area)
        : m_ellipsoid(ellipsoid)
        , m_cell(cell)
        , m_area(area)
    {}

    bool find(Geodetic &out)
    {
        const double w = m_cell.corner.x;
        const double s = m_cell.corner.y;
        const double e = w + m_cell.inner();
        const double n = s + m_cell.inner();
        const Plane corners[] = {{w, s}, {e, s}, {e, n}, {w, n}};
        for (int i = 0; i < 4; ++i) {
            tryPlane(corners[i]);
            tryEdge(corners[i], corners[(i + 1) % 4]);
        }
        for (const double lon : {m_area.west, m_area.east})
            for (const double lat : {m_area.south, m_area.north})
                tryAreaCorner({lat, lon});
        if (m_found)
            out = m_best;
        return m_found;
    }

private:
    bool geodetic(const Plane &p, Geodetic &out) const { return geodeticFromUtm(m_ellipsoid, p, out); }

    void offer(const Plane &p, const Geodetic &at)
    {
        const double distance = std::hypot(p.x - m_cell.corner.x, p.y - m_cell.corner.y);
        if (m_found && distance >= m_distance)
            return;
        m_found = true;
        m_distance = distance;
        m_best = at;
    }

    void tryPlane(const Plane &p)
    {
        Geodetic at;
        if (geodetic(p, at) && m_area.contains(at))
            offer(p, at);
    }

    void tryAreaCorner(const Geodetic &at)
    {
        Plane p;
        if (utmFromGeodetic(m_ellipsoid, at.latRad, at.lonRad, p) && m_cell.contains(p))
            offer(p, at);
    }

    void tryEdge(const Plane &from, const Plane &to)
    {
        tryCrossing(from, to, &Geodetic::lonRad, m_area.west);
        tryCrossing(from, to, &Geodetic::lonRad, m_area.east);
        tryCrossing(from, to, &Geodetic::latRad, m_area.south);
        tryCrossing(from, to, &Geodetic::latRad, m_area.north);
    }

    /// Latitude and longitude are monotonic along the edge of a cell, for the central meridian is always an
    /// edge: the limit is met once or not at all. Regula falsi with the Illinois rule; edges are nearly
    /// straight, so it ends after a few steps.
    void tryCrossing(const Plane &from, const Plane &to, double Geodetic::*coordinate, double limit)
    {
        constexpr int maxSteps = 40;
        constexpr double enough = 2e-16; // radians, a nanometre
        Geodetic at;
        double low = 0.0;
        double high = 1.0;
        if (!geodetic(from, at))
            return;
        double atLow = at.*coordinate - limit;
        if (!geodetic(to, at))
            return;
        double atHigh = at.*coordinate - limit;
        if ((atLow > 0.0) == (atHigh > 0.0))
            return;
        Plane p;
        int lastSide = 0;
        for (int step = 0; step < maxSteps; ++step) {
            const double t = (low * atHigh - high * atLow) / (atHigh - atLow);
            p = {from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)};
            if (!geodetic(p, at))
                return;
            const double value = at.*coordinate - limit;
            if (std::fabs(value) <= enough)
                break;
            const int side = (value > 0.0) == (atHigh > 0.0) ? 1 : -1;
            if (side > 0) {
                high = t;
                atHigh = value;
                atLow *= lastSide == side ? 0.5 : 1.0;
            } else {
                low = t;
                atLow = value;
                atHigh *= lastSide == side ? 0.5 : 1.0;
            }
            lastSide = side;
        }
        at.*coordinate = limit;
        if (m_area.contains(at))
            offer(p, at);
    }

    const Ellipsoid &m_ellipsoid;
    const Cell m_cell;
    const Area m_area;
    Geodetic m_best;
    double m_distance = 0.0;
    bool m_found = false;
};

/// How far the grid of a zone is used beyond its meridians (DMA TM 8358.2).
Area withOverlap(const Ellipsoid &ellipsoid, Area area)
{
    constexpr double overlapM = 40000.0;
    const double lat = std::max(std::fabs(area.south), std::fabs(area.north));
    const double overlap = overlapM / (ellipsoid.semiMajor * std::cos(lat));
    area.west -= overlap;
    area.east += overlap;
    return area;
}

// ---- Writing ---------------------------------------------------------------------------------------------

char *writeDigits(char *to, int value, int count)
{
    for (int i = count; i-- > 0; value /= 10)
        to[i] = static_cast<char>('0' + value % 10);
    return to + count;
}

/// Metres within the square, cut to the precision.
void writeCell(char *to, int eastM, int northM, int precision)
{
    const int step = powersOfTen[MAX_PRECISION - precision];
    to = writeDigits(to, eastM / step, precision);
    to = writeDigits(to, northM / step, precision);
    *to = '\0';
}

/// Whole metres. The callers' ranges are checked on the double, so that the conversion is defined.
int wholeMetres(double metres) { return static_cast<int>(std::floor(metres + METRE_TOLERANCE)); }
bool isWithin(double metres, double first, double end)
{
    return metres + METRE_TOLERANCE >= first && metres + METRE_TOLERANCE < end;
}

int writeUtm(const Ellipsoid &ellipsoid, const CheckedPoint &point, int precision, char *buffer)
{
    constexpr double poleM = 10000000.0;
    constexpr int equatorSquares = 100; // a multiple of ROWS: keeps rows positive south of the equator
    const int zone = standardZone(point.latDeg, point.lonDeg);
    Plane utm;
    if (!utmFromGeodetic(ellipsoid, point.at.latRad, point.at.lonRad - toRadians(centralMeridianDeg(zone)),
                         utm))
        return EastingError;
    const int error = (isWithin(utm.x, SQUARE_D, (COLUMNS + 1) * SQUARE_D) ? 0 : EastingError) |
                      (isWithin(utm.y, -poleM, poleM) ? 0 : NorthingError);
    if (error != 0)
        return error;

    const int east = wholeMetres(utm.x);
    const int north = wholeMetres(utm.y) + equatorSquares * SQUARE_M;
    const auto letter = [](int index) { return letters[static_cast<std::size_t>(index)]; };
    char *to = writeDigits(buffer, zone, 2);
    *to++ = letter(bandOf(point.latDeg));
    *to++ = letter(firstColumn(zone) + east / SQUARE_M - 1);
    *to++ = letter((firstRow(zone) + north / SQUARE_M) % ROWS);
    writeCell(to, east % SQUARE_M, north % SQUARE_M, precision);
    return 0;
}

int writeUps(const Ellipsoid &ellipsoid, const CheckedPoint &point, int precision, char *buffer)
{
    const PolarGrid &grid = polarGrids[point.latDeg > 0.0];
    const Plane ups = upsFromGeodetic(ellipsoid, point.at, grid.north);
    const double first = UPS_FALSE_ORIGIN - SQUARE_D * static_cast<double>(grid.westColumns.size());
    const double end = UPS_FALSE_ORIGIN + SQUARE_D * static_cast<double>(grid.eastColumns.size());
    const int error = (isWithin(ups.x, first, end) ? 0 : EastingError) |
                      (isWithin(ups.y, grid.firstM, grid.firstM + grid.rows * SQUARE_D) ? 0 : NorthingError);
    if (error != 0)
        return error;

    const int east = wholeMetres(ups.x);
    const int north = wholeMetres(ups.y);
    const int column = (east - static_cast<int>(first)) / SQUARE_M;
    const int fromPole = column - static_cast<int>(grid.westColumns.size());
    char *to = buffer;
    *to++ = fromPole < 0 ? grid.west : grid.east;
    *to++ = fromPole < 0 ? grid.westColumns[static_cast<std::size_t>(column)]
                         : grid.eastColumns[static_cast<std::size_t>(fromPole)];
    *to++ = letters[static_cast<std::size_t>((north - grid.firstM) / SQUARE_M)];
    writeCell(to, east % SQUARE_M, north % SQUARE_M, precision);
    return 0;
}

// ---- Reading ---------------------------------------------------------------------------------------------

int indexOf(std::string_view where, char letter)
{
    const std::size_t index = where.find(letter);
    return index == std::string_view::npos ? -1 : static_cast<int>(index);
}

bool locateUtm(const Ellipsoid &ellipsoid, const Reference &reference, Geodetic &out)
{
    const int band = indexOf(letters, reference.band);
    const int column = indexOf(letters, reference.column) - firstColumn(reference.zone);
    const int row = indexOf(letters, reference.row);
    if (band < FIRST_BAND || band > LAST_BAND || column < 0 || column >= COLUMNS || row < 0 || row >= ROWS)
        return false;
    const Area area = areaOf(reference.zone, band);
    if (!area.exists())
        return false;

    // Rows repeat every 2000 km and a band with its squares is 1500 km high at most, so only the repetition
    // nearest to its middle can touch it. A middle on the sphere is good enough to tell which that is.
    const double middle = UTM_SCALE * ellipsoid.rectifyingRadius * (area.south + area.north) / 2.0;
    const double rowM = (row - firstRow(reference.zone)) * SQUARE_D;
    const double squareM = rowM + ROWS_M * std::nearbyint((middle - rowM - SQUARE_D / 2.0) / ROWS_M);
    const Cell cell{{(column + 1) * SQUARE_D + reference.eastM, squareM + reference.northM},
                    static_cast<double>(reference.size)};

    Geodetic at;
    if (!geodeticFromUtm(ellipsoid, cell.corner, at))
        return false;
    if (!area.contains(at)) {
        Geodetic inside;
        if (NearestCorner(ellipsoid, cell, area).find(inside))
            at = inside;
        else if (!NearestCorner(ellipsoid, squareAround(cell), withOverlap(ellipsoid, area)).find(inside))
            return false;
    }
    out = {at.latRad, std::remainder(at.lonRad + toRadians(centralMeridianDeg(reference.zone)), 2.0 * PI)};
    return true;
}

bool locateUps(const Ellipsoid &ellipsoid, const Reference &reference, Geodetic &out)
{
    for (const PolarGrid &grid : polarGrids) {
        const bool west = reference.band == grid.west;
        if (!west && reference.band != grid.east)
            continue;
        const int column = indexOf(west ? grid.westColumns : grid.eastColumns, reference.column);
        const int row = indexOf(letters.substr(0, static_cast<std::size_t>(grid.rows)), reference.row);
        if (column < 0 || row < 0)
            return false;
        const double firstM =
            UPS_FALSE_ORIGIN - (west ? SQUARE_D * static_cast<double>(grid.westColumns.size()) : 0.0);
        const Cell cell{
            {firstM + column * SQUARE_D + reference.eastM, grid.firstM + row * SQUARE_D + reference.northM},
            static_cast<double>(reference.size)};

        const Plane pole{UPS_FALSE_ORIGIN, UPS_FALSE_ORIGIN};
        const auto distance = [&](const Plane &p) { return std::hypot(p.x - pole.x, p.y - pole.y); };
        const double edgeDeg = grid.north ? UTM_NORTH_DEG : -UTM_SOUTH_DEG;
        const double edge = upsRadius(ellipsoid, edgeDeg) - INSET_M;
        Plane at = cell.corner;
        if (distance(at) > edge) {
            const Plane inside = cell.nearest(pole);
            if (distance(inside) <= edge)
                at = inside;
            else if (distance(squareAround(cell).nearest(pole)) >
                     upsRadius(ellipsoid, edgeDeg - POLAR_OVERLAP_DEG))
                return false;
        }
        out = geodeticFromUps(ellipsoid, at, grid.north);
        return true;
    }
    return false;
}

} // namespace

int Convert_Geodetic_To_MGRS(double latitude, double longitude, int precision, char *buffer)
{
    const CheckedPoint point = checkPoint(latitude, longitude);
    int error = point.error;
    if (precision < 0 || precision > MAX_PRECISION)
        error |= PrecisionError;
    if (error != 0)
        return error;
    const bool utm = point.latDeg >= UTM_SOUTH_DEG && point.latDeg < UTM_NORTH_DEG;
    return (utm ? writeUtm : writeUps)(currentEllipsoid(), point, precision, buffer);
}

int Convert_MGRS_To_Geodetic(const char *reference, double *latitude, double *longitude)
{
    Reference parts;
    if (!reference || !readReference(reference, parts))
        return StringError;
    Geodetic at;
    if (!(parts.zone > 0 ? locateUtm : locateUps)(currentEllipsoid(), parts, at))
        return StringError;
    *latitude = at.latRad;
    *longitude = at.lonRad;
    return 0;
}

} // namespace mgrs
