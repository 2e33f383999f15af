#pragma once

#include "GeographicBounds_p.h"

#include <QSizeF>
#include <QtNumeric>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

/// The nets of places that geographic bounds are found with.
namespace nivora::cs::geonet {

inline constexpr double fullTurn = 360.0;
inline constexpr double halfTurn = 180.0;
inline constexpr double quarterTurn = 90.0;
inline constexpr double angleTolerance = 1e-7; // degrees, a centimetre on the ground
/// Degrees of latitude, a metre: nearer to a pole the engine's noise turns longitudes.
inline constexpr double poleTolerance = 1e-5;

inline constexpr int intervals = 48;           // of the mesh, each way
inline constexpr double gridStep = 3.0;        // degrees, of the grid over the earth
inline constexpr double edgeTolerance = 4e-16; // of the coordinates: the last digit of a double
inline constexpr double returnTolerance =
    0.05;                              // of a cell of the mesh; what comes back at all comes back far better
inline constexpr int refinements = 11; // halvings of a cell: a smooth extreme is then 1e-7 of its bend away

/// The shortest way from one longitude to another, -180 to 180.
inline double turn(double from, double to) { return std::remainder(to - from, fullTurn); }
inline double normalized(double longitude) { return std::remainder(longitude, fullTurn); }

inline bool isOnEarth(const QPointF &p)
{
    return std::isfinite(p.x()) && std::fabs(p.y()) <= quarterTurn + angleTolerance;
}
inline bool isPole(const QPointF &p) { return std::fabs(p.y()) > quarterTurn - poleTolerance; }

/// A run of longitudes, from <= to, not confined to -180 to 180.
struct Arc
{
    double from;
    double to;
};

/// What has been found: runs of longitudes, and latitudes.
struct ExtentBuilder
{
    std::vector<Arc> arcs;
    double south = HUGE_VAL;
    double north = -HUGE_VAL;

    void add(const QPointF &p)
    {
        south = std::min(south, p.y());
        north = std::max(north, p.y());
        if (!isPole(p))
            arcs.push_back({p.x(), p.x()});
    }
    /// The longitudes between two neighbours, the short way round.
    void join(const QPointF &a, const QPointF &b)
    {
        if (isPole(a) || isPole(b))
            return;
        const double way = turn(a.x(), b.x());
        arcs.push_back({a.x() + std::min(way, 0.0), a.x() + std::max(way, 0.0)});
    }
    bool isEmpty() const { return south > north; }
};

/// The shortest run of longitudes that holds all arcs: the complement of the widest gap between them.
inline Arc enclosing(std::vector<Arc> arcs)
{
    for (Arc &arc : arcs) {
        const double shift = normalized(arc.from) - arc.from;
        arc = {arc.from + shift, arc.to + shift};
    }
    std::sort(arcs.begin(), arcs.end(), [](const Arc &a, const Arc &b) { return a.from < b.from; });
    double reached = arcs.front().to;
    for (const Arc &arc : arcs) // those that run on beyond 180 begin the list again
        reached = std::max(reached, arc.to);
    double widest = arcs.front().from + fullTurn - reached;
    Arc best{arcs.front().from, reached};
    const double wrapped = reached - fullTurn;
    reached = std::max(arcs.front().to, wrapped);
    for (std::size_t k = 1; k < arcs.size(); ++k) {
        if (arcs[k].from - reached > widest) {
            widest = arcs[k].from - reached;
            best = {arcs[k].from, reached + fullTurn}; // on over the end of the list to its beginning
        }
        reached = std::max(reached, arcs[k].to);
    }
    return best;
}

/// The rectangle in its plane, with the tests for points of it.
class Area
{
public:
    explicit Area(const PlanarArea &area)
        : m_area(area)
        , m_rect(area.rect)
        , m_slackX(edgeTolerance * std::max(std::fabs(area.rect.left()), std::fabs(area.rect.right())))
        , m_slackY(edgeTolerance * std::max(std::fabs(area.rect.top()), std::fabs(area.rect.bottom())))
    {
        if (area.period > 0.0 && m_rect.width() > area.period) {
            m_rect.setLeft(-area.period / 2);
            m_rect.setWidth(area.period);
        }
    }

    const QRectF &rect() const { return m_rect; }

    /// The image of a place, NaN when it has none; true when it lies in the rectangle.
    bool imageInside(const QPointF &lonLat, QPointF &out) const
    {
        QPointF p(qQNaN(), qQNaN());
        out = p;
        if (!m_area.toPlane(lonLat, p))
            return false;
        if (m_area.period > 0.0)
            p.rx() -= m_area.period * std::floor((p.x() - m_rect.left() + m_slackX) / m_area.period);
        out = p;
        return holds(p);
    }

    /// NaN is nowhere.
    bool holds(const QPointF &p) const
    {
        return p.x() >= m_rect.left() - m_slackX && p.x() <= m_rect.right() + m_slackX &&
               p.y() >= m_rect.top() - m_slackY && p.y() <= m_rect.bottom() + m_slackY;
    }

    /// The place of a planar point; false unless its image is that point, within a part of \p cell or, where
    /// cells are finer than the engine's inverses, a millimetre on the ground.
    bool place(const QPointF &planar, const QSizeF &cell, QPointF &lonLat) const
    {
        QPointF found;
        QPointF back;
        if (!m_area.toLonLat(planar, found) || !isOnEarth(found) || !m_area.toPlane(found, back))
            return false;
        QPointF off = back - planar;
        if (m_area.period > 0.0)
            off.setX(std::remainder(off.x(), m_area.period));
        const bool inCell = std::fabs(off.x()) <= returnTolerance * cell.width() &&
                            std::fabs(off.y()) <= returnTolerance * cell.height();
        if (!inCell && !(lengthOf(off) <= millimetreAt(found, back)))
            return false;
        lonLat = found;
        return true;
    }

    QPointF clamped(const QPointF &p) const
    {
        return {std::clamp(p.x(), m_rect.left(), m_rect.right()),
                std::clamp(p.y(), m_rect.top(), m_rect.bottom())};
    }

private:
    static double lengthOf(const QPointF &p) { return std::hypot(p.x(), p.y()); }

    /// A millimetre on the ground in the plane's unit, at a place and its image; NaN when it cannot be told.
    double millimetreAt(const QPointF &lonLat, const QPointF &planar) const
    {
        constexpr double millimetre = 1e-8; // degrees of latitude
        constexpr double step = 1e-5;       // a metre, which the engine's noise does not blur
        QPointF aside(qQNaN(), qQNaN());
        m_area.toPlane(QPointF(lonLat.x(), lonLat.y() - std::copysign(step, lonLat.y())), aside);
        return lengthOf(aside - planar) * (millimetre / step);
    }

    const PlanarArea &m_area;
    QRectF m_rect;
    double m_slackX;
    double m_slackY;
};

/// A place and its image.
struct Sample
{
    QPointF planar;
    QPointF lonLat;
};

/// A net of places, those that do not lie in the rectangle left out; neighbours are joined.
class SampleGrid
{
public:
    SampleGrid(int columns, int rows)
        : m_columns(columns)
        , m_rows(rows)
        , m_spots(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows))
        , m_valid(m_spots.size(), false)
    {}

    template <typename Locate> void fill(Locate &&locate)
    {
        for (int j = 0; j < m_rows; ++j)
            for (int i = 0; i < m_columns; ++i)
                m_valid[index(i, j)] = locate(i, j, m_spots[index(i, j)]);
    }

    void addTo(ExtentBuilder &found) const
    {
        for (int j = 0; j < m_rows; ++j)
            for (int i = 0; i < m_columns; ++i)
                if (m_valid[index(i, j)])
                    addWithNeighbours(found, i, j);
    }

    /// Calls with the four corners of every cell, in the order (0, 0), (1, 0), (0, 1), (1, 1).
    template <typename Visit> void visitCells(Visit &&call) const
    {
        for (int j = 0; j + 1 < m_rows; ++j)
            for (int i = 0; i + 1 < m_columns; ++i)
                call(std::array<Sample, 4>{m_spots[index(i, j)], m_spots[index(i + 1, j)],
                                           m_spots[index(i, j + 1)], m_spots[index(i + 1, j + 1)]});
    }

    /// Calls with every spot and whether it lies on the rim of the net: column, row (-1, 0 or 1 each).
    template <typename Visit> void visit(Visit &&call) const
    {
        for (int j = 0; j < m_rows; ++j)
            for (int i = 0; i < m_columns; ++i)
                if (m_valid[index(i, j)])
                    call(m_spots[index(i, j)], rim(i, m_columns), rim(j, m_rows));
    }

private:
    static int rim(int i, int count) { return i == 0 ? -1 : i == count - 1 ? 1 : 0; }

    std::size_t index(int i, int j) const
    {
        return static_cast<std::size_t>(j) * static_cast<std::size_t>(m_columns) +
               static_cast<std::size_t>(i);
    }

    void addWithNeighbours(ExtentBuilder &found, int i, int j) const
    {
        const QPointF &here = m_spots[index(i, j)].lonLat;
        found.add(here);
        if (i + 1 < m_columns && m_valid[index(i + 1, j)])
            found.join(here, m_spots[index(i + 1, j)].lonLat);
        if (j + 1 < m_rows && m_valid[index(i, j + 1)])
            found.join(here, m_spots[index(i, j + 1)].lonLat);
    }

    int m_columns;
    int m_rows;
    std::vector<Sample> m_spots;
    std::vector<bool> m_valid;
};

} // namespace nivora::cs::geonet
