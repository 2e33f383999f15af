#include "SampleGrid_p.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace nivora::cs {

using namespace geonet;

namespace {

/// Parallels of the grid over the earth. Some planes run to infinity towards a pole, so that a large
/// rectangle ends a hair before it.
std::vector<double> gridLatitudes()
{
    std::vector<double> latitudes;
    for (const double nearPole : {90.0, 89.99999, 89.999, 89.9, 89.0}) {
        latitudes.push_back(-nearPole);
        latitudes.push_back(nearPole);
    }
    constexpr int rows = static_cast<int>(2.0 * quarterTurn / gridStep);
    for (int row = 1; row < rows; ++row)
        latitudes.push_back(row * gridStep - quarterTurn);
    std::sort(latitudes.begin(), latitudes.end());
    return latitudes;
}

/// The points of a grid over the whole earth that lie in the rectangle.
SampleGrid earthGrid(const Area &area)
{
    static const std::vector<double> latitudes = gridLatitudes();
    constexpr int columns = static_cast<int>(fullTurn / gridStep) + 1; // the 180th meridian from both sides
    SampleGrid net(columns, static_cast<int>(latitudes.size()));
    net.fill([&area](int i, int j, Sample &sample) {
        sample.lonLat = QPointF(-halfTurn + gridStep * i, latitudes[static_cast<std::size_t>(j)]);
        return area.imageInside(sample.lonLat, sample.planar);
    });
    return net;
}

/// The part of the rectangle that is worth a mesh: around what the grid over the earth found, where the
/// rectangle is far larger.
QRectF worthwhile(const Area &area, const SampleGrid &grid)
{
    double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;
    int count = 0;
    grid.visit([&](const Sample &sample, int, int) {
        minX = std::min(minX, sample.planar.x());
        maxX = std::max(maxX, sample.planar.x());
        minY = std::min(minY, sample.planar.y());
        maxY = std::max(maxY, sample.planar.y());
        ++count;
    });
    constexpr int enough = 100; // fewer say little about the extent
    if (count < enough || !(maxX > minX && maxY > minY))
        return area.rect();
    const double marginX = 0.1 * (maxX - minX);
    const double marginY = 0.1 * (maxY - minY);
    return QRectF(QPointF(minX - marginX, minY - marginY), QPointF(maxX + marginX, maxY + marginY))
        .intersected(area.rect());
}

SampleGrid planarMesh(const Area &area, const QRectF &part, const QSizeF &cell)
{
    SampleGrid net(intervals + 1, intervals + 1);
    net.fill([&](int i, int j, Sample &sample) {
        sample.planar = QPointF(i == intervals ? part.right() : part.left() + cell.width() * i,
                                j == intervals ? part.bottom() : part.top() + cell.height() * j);
        return area.place(sample.planar, cell, sample.lonLat);
    });
    return net;
}

/// What is to be as large as possible: a latitude, or a longitude seen from the middle of the gap that no
/// point was found in.
class Objective
{
public:
    enum Direction { North, South, East, West };

    Objective(Direction direction, double middleOfGap)
        : m_direction(direction)
        , m_middle(middleOfGap)
    {}

    double operator()(const QPointF &p) const
    {
        switch (m_direction) {
        case North:
            return p.y();
        case South:
            return -p.y();
        case East:
            return isPole(p) ? -HUGE_VAL : fromMiddle(p.x());
        case West:
            break;
        }
        return isPole(p) ? -HUGE_VAL : fullTurn - fromMiddle(p.x());
    }

private:
    double fromMiddle(double longitude) const
    {
        const double way = std::fmod(longitude - m_middle, fullTurn);
        return way < 0.0 ? way + fullTurn : way;
    }

    Direction m_direction;
    double m_middle;
};

/// Steps to eight neighbours, and to eight more between their directions.
constexpr double compass[][2] = {
    {1, 0},  {-1, 0},  {0, 1},   {0, -1},   {1, 1},  {1, -1},  {-1, 1},  {-1, -1},
    {1, .5}, {1, -.5}, {-1, .5}, {-1, -.5}, {.5, 1}, {.5, -1}, {-.5, 1}, {-.5, -1},
};

/// The best neighbour at a distance of \p step cells; false when none is better than \p sample, which is
/// replaced otherwise.
bool improved(const Area &area, const QSizeF &cell, double step, const Objective &objective, Sample &sample)
{
    Sample best = sample;
    for (const auto &way : compass) {
        Sample next;
        next.planar = area.clamped(sample.planar +
                                   QPointF(way[0] * step * cell.width(), way[1] * step * cell.height()));
        if (next.planar != sample.planar && area.place(next.planar, cell, next.lonLat) &&
            objective(next.lonLat) > objective(best.lonLat))
            best = next;
    }
    std::swap(sample, best);
    return sample.planar != best.planar;
}

/// Steps from a place to the extreme near it, with longer steps while they lead on. What it passes is added.
Sample climbed(const Area &area, const QSizeF &cell, const Objective &objective, Sample sample,
               ExtentBuilder &found)
{
    constexpr int mostSteps = 60;
    const double least = std::ldexp(1.0, -refinements);
    double step = 0.5;
    for (int i = 0; i < mostSteps && step >= least; ++i) {
        const QPointF before = sample.lonLat;
        const bool better = improved(area, cell, step, objective, sample);
        step *= better ? 1.5 : 0.35;
        found.join(before, sample.lonLat);
    }
    found.add(sample.lonLat);
    return sample;
}

/// Goes on from there over the earth itself: at the rim of what a plane shows, where inverses end.
void addBeyond(const Area &area, const Objective &objective, QPointF place, ExtentBuilder &found)
{
    constexpr int mostSteps = 60;
    double step = 0.5 * gridStep;
    for (int i = 0; i < mostSteps && step >= angleTolerance; ++i) {
        QPointF best = place;
        for (const auto &way : compass) {
            const QPointF next(place.x() + way[0] * step,
                               std::clamp(place.y() + way[1] * step, -quarterTurn, quarterTurn));
            QPointF image;
            if (objective(next) > objective(best) && area.imageInside(next, image))
                best = next;
        }
        step *= best != place ? 1.5 : 0.35;
        found.join(place, best);
        place = best;
    }
    found.add(place);
}

/// The best places of the mesh: of its inside and of each side.
std::vector<Sample> startsFor(const SampleGrid &mesh, const Objective &objective)
{
    std::array<const Sample *, 5> best{};
    const auto offer = [&](std::size_t place, const Sample &sample) {
        if (!best[place] || objective(sample.lonLat) > objective(best[place]->lonLat))
            best[place] = &sample;
    };
    mesh.visit([&](const Sample &sample, int column, int row) {
        if (column != 0)
            offer(column < 0 ? 0 : 1, sample);
        if (row != 0)
            offer(row < 0 ? 2 : 3, sample);
        if (column == 0 && row == 0)
            offer(4, sample);
    });
    std::vector<Sample> starts;
    for (const Sample *sample : best)
        if (sample)
            starts.push_back(*sample);
    return starts;
}

/// Adds the extremes that lie between the points found.
void addExtremes(const Area &area, const QSizeF &cell, const SampleGrid &mesh, ExtentBuilder &found)
{
    double middle = halfTurn;
    if (!found.arcs.empty()) {
        const Arc arc = enclosing(found.arcs);
        middle = (arc.to + arc.from + fullTurn) / 2;
    }
    for (const auto direction : {Objective::North, Objective::South, Objective::East, Objective::West}) {
        const Objective objective(direction, middle);
        std::optional<QPointF> best;
        for (const Sample &start : startsFor(mesh, objective)) {
            const Sample top = climbed(area, cell, objective, start, found);
            if (!best || objective(top.lonLat) > objective(*best))
                best = top.lonLat;
        }
        if (best)
            addBeyond(area, objective, *best, found);
    }
}

/// Cells of the earth that may reach into the rectangle beyond what is found already, split again and again:
/// planes that show places twice, or are torn, hide these from the inverse.
class EarthSearch
{
public:
    EarthSearch(const Area &area, ExtentBuilder &found)
        : m_area(area)
        , m_found(found)
    {}

    void run(const SampleGrid &grid)
    {
        std::vector<Cell> cells;
        updateHull();
        grid.visitCells([&](const Cell &cell) { keepIfPromising(cells, cell); });
        exploreHoles(grid, cells);
        constexpr int deepest = 12;
        for (int depth = 0; depth < deepest && !cells.empty(); ++depth) {
            std::vector<Cell> parts;
            for (const Cell &cell : cells) {
                if (--m_budget < 0)
                    return;
                const double limit = 0.8 * extent(cell);
                for (const Cell &part : partsOf(cell, 2))
                    if (extent(part) < limit || touches(part))
                        parts.push_back(part); // where images do not shrink with the cells, they are noise
            }
            updateHull();
            cells.clear();
            for (const Cell &cell : parts)
                keepIfPromising(cells, cell);
        }
    }

private:
    using Cell = std::array<Sample, 4>;

    void updateHull()
    {
        if (!m_found.arcs.empty()) {
            m_hull = enclosing(m_found.arcs);
            m_found.arcs.assign(1, m_hull);
        }
    }

    bool isWithinHull(const Cell &cell) const
    {
        if (m_found.arcs.empty() || cell[0].lonLat.y() < m_found.south || cell[3].lonLat.y() > m_found.north)
            return false;
        const double fromWest = std::fmod(cell[0].lonLat.x() - m_hull.from + 2 * fullTurn, fullTurn);
        return fromWest + cell[3].lonLat.x() - cell[0].lonLat.x() <= m_hull.to - m_hull.from;
    }

    /// Small regions without images hide places with strange ones, such as those 90 degrees from the meridian
    /// of a transverse Mercator; half an earth without images (seen from space) does not.
    void exploreHoles(const SampleGrid &grid, std::vector<Cell> &cells)
    {
        std::vector<Cell> holes;
        grid.visitCells([&holes](const Cell &cell) {
            if (!std::all_of(cell.begin(), cell.end(),
                             [](const Sample &corner) { return std::isfinite(corner.planar.x()); }))
                holes.push_back(cell);
        });
        constexpr std::size_t most = 200;
        if (holes.size() > most)
            return;
        for (const Cell &hole : holes)
            for (const Cell &part : partsOf(hole, 6))
                if (touches(part))
                    cells.push_back(part);
    }

    static QRectF imageOf(const Cell &cell)
    {
        double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;
        for (const Sample &corner : cell) {
            minX = std::fmin(minX, corner.planar.x()); // passes over NaN
            maxX = std::fmax(maxX, corner.planar.x());
            minY = std::fmin(minY, corner.planar.y());
            maxY = std::fmax(maxY, corner.planar.y());
        }
        return QRectF(minX, minY, maxX - minX, maxY - minY); // without any image: of negative width
    }
    static double extent(const Cell &cell)
    {
        const QRectF image = imageOf(cell);
        return std::max(image.width(), image.height());
    }

    /// True when a corner lies in the rectangle.
    bool touches(const Cell &cell) const
    {
        return std::any_of(cell.begin(), cell.end(),
                           [this](const Sample &corner) { return m_area.holds(corner.planar); });
    }

    /// The images of a cell's corners say roughly where it lies; it bends by less than its size.
    void keepIfPromising(std::vector<Cell> &cells, const Cell &cell) const
    {
        const QRectF image = imageOf(cell);
        if (!(image.width() >= 0.0))
            return;
        const double marginX = 0.5 * image.width();
        const double marginY = 0.5 * image.height();
        const QRectF &r = m_area.rect();
        const bool apart = image.left() - marginX > r.right() || image.right() + marginX < r.left() ||
                           image.top() - marginY > r.bottom() || image.bottom() + marginY < r.top();
        if (!apart && !isWithinHull(cell))
            cells.push_back(cell);
    }

    /// What lies in the rectangle of the corners of the parts is added.
    std::vector<Cell> partsOf(const Cell &cell, int perSide)
    {
        SampleGrid net(perSide + 1, perSide + 1);
        const QPointF from = cell[0].lonLat;
        const QPointF size = cell[3].lonLat - from;
        net.fill([&](int i, int j, Sample &sample) {
            sample.lonLat = from + QPointF(size.x() * i / perSide, size.y() * j / perSide);
            return m_area.imageInside(sample.lonLat, sample.planar);
        });
        net.addTo(m_found);
        std::vector<Cell> parts;
        net.visitCells([&parts](const Cell &part) { parts.push_back(part); });
        return parts;
    }

    const Area &m_area;
    ExtentBuilder &m_found;
    Arc m_hull{0.0, 0.0};
    int m_budget = 1000; ///< cells to split
};

/// How a pole lies in the rectangle.
struct Pole
{
    bool touched = false;
    bool surrounded = false; ///< a point, not a line, and not on the edge: all meridians meet inside
};

Pole poleIn(const Area &area, double latitude)
{
    const QRectF &r = area.rect();
    const double slack = 1e-6 * std::max(r.width(), r.height());
    Pole pole;
    QPointF first;
    double spread = 0.0;
    int count = 0;
    constexpr int step = 5;
    for (int longitude = -180; longitude < 180; longitude += step) {
        QPointF planar;
        if (!area.imageInside(QPointF(longitude, latitude), planar))
            continue;
        if (count++ == 0)
            first = planar;
        spread = std::max({spread, std::fabs(planar.x() - first.x()), std::fabs(planar.y() - first.y())});
    }
    pole.touched = count > 0;
    const double toEdge =
        std::min({first.x() - r.left(), r.right() - first.x(), first.y() - r.top(), r.bottom() - first.y()});
    pole.surrounded = count == 360 / step && spread <= slack &&
                      toEdge > returnTolerance * 1e-6 * std::min(r.width(), r.height());
    return pole;
}

/// An edge on the 180th meridian itself belongs to the side that the area lies on.
double edge(double longitude, double side)
{
    const double x = normalized(longitude);
    return halfTurn - std::fabs(x) <= angleTolerance ? side : x;
}

void setLongitudes(GeographicBounds &bounds, const std::vector<Arc> &arcs, bool allAround)
{
    const Arc arc = allAround || arcs.empty() ? Arc{-halfTurn, halfTurn} : enclosing(arcs);
    const bool around = arc.to - arc.from >= fullTurn - angleTolerance;
    bounds.west = around ? -halfTurn : edge(arc.from, -halfTurn);
    bounds.east = around ? halfTurn : edge(arc.to, halfTurn);
}

} // namespace

QVector<QRectF> GeographicBounds::rects() const
{
    const double height = north - south;
    if (!crossesAntimeridian())
        return {QRectF(west, south, east - west, height)};
    return {QRectF(west, south, halfTurn - west, height), QRectF(-halfTurn, south, east + halfTurn, height)};
}

bool GeographicBounds::contains(double longitude, double latitude) const
{
    const double x = normalized(longitude);
    if (!(latitude >= south && latitude <= north) || !std::isfinite(x))
        return false;
    if (isAllAround() || std::fabs(latitude) == quarterTurn) // all meridians meet at a pole
        return true;
    return crossesAntimeridian() ? x >= west || x <= east
                                 : (x >= west && x <= east) || (x == -halfTurn && east == halfTurn);
}

bool geographicBoundsOf(const PlanarArea &planar, GeographicBounds &out)
{
    const Area area(planar);
    const SampleGrid grid = earthGrid(area);
    const QRectF part = worthwhile(area, grid);
    const QSizeF cell = part.size() / intervals;
    const SampleGrid mesh = planarMesh(area, part, cell);
    ExtentBuilder found;
    grid.addTo(found);
    mesh.addTo(found);
    const Pole northPole = poleIn(area, quarterTurn);
    const Pole southPole = poleIn(area, -quarterTurn);
    addExtremes(area, cell, mesh, found);
    EarthSearch(area, found).run(grid);
    if (found.isEmpty() && !northPole.touched && !southPole.touched)
        return false;

    GeographicBounds bounds;
    bounds.hasNorthPole = northPole.touched || found.north > quarterTurn - angleTolerance;
    bounds.hasSouthPole = southPole.touched || found.south < angleTolerance - quarterTurn;
    bounds.north = bounds.hasNorthPole ? quarterTurn : found.north;
    bounds.south = bounds.hasSouthPole ? -quarterTurn : found.south;
    setLongitudes(bounds, found.arcs, northPole.surrounded || southPole.surrounded);
    out = bounds;
    return true;
}

} // namespace nivora::cs
