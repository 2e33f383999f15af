#include "TransformMesh_p.h"

#include "CoordSysTexts_p.h"
#include "ProjPoint_p.h"
#include <coordsys/CoordSystem.h>
#include <platform/Logger.h>
#include <platform/Utils.h>

#include <proj.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <vector>

namespace nivora::cs {
namespace {

using nivora::utils::fuzzyEq;
using nivora::utils::toString;

constexpr double noExtent = 1e-12;
constexpr double mostPoints = 1 << 26; // 2 GiB of coordinates
/// Latitude up to which a geographic rectangle is meshed on its own; the poles themselves have no longitude.
constexpr double nearlyPole = 89.99;

std::unique_ptr<PJ_COORD[]> zeroedPoints(double count)
{
    if (!(count <= mostPoints))
        throw std::bad_array_new_length();
    const auto size = static_cast<std::size_t>(count);
    auto points = std::make_unique<PJ_COORD[]>(size);
    std::fill_n(points.get(), size, projPoint(0.0, 0.0));
    return points;
}

/// Bounding box of what could be transformed; x and y are judged separately.
struct Extent
{
    double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;

    void add(const PJ_COORD &c)
    {
        if (std::isfinite(c.xy.x)) {
            minX = std::min(minX, c.xy.x);
            maxX = std::max(maxX, c.xy.x);
        }
        if (std::isfinite(c.xy.y)) {
            minY = std::min(minY, c.xy.y);
            maxY = std::max(maxY, c.xy.y);
        }
    }
    bool isKnown() const
    {
        return std::isfinite(minX) && std::isfinite(maxX) && std::isfinite(minY) && std::isfinite(maxY);
    }
};

/// PROJ's error state as it was before the mesh: points that fail are expected and must not leave a trace.
class ErrnoKeeper
{
public:
    explicit ErrnoKeeper(PJ *pj)
        : m_pj(pj)
        , m_saved(proj_errno_reset(pj))
    {}
    ~ErrnoKeeper() { proj_errno_restore(m_pj, m_saved); }
    ErrnoKeeper(const ErrnoKeeper &) = delete;
    ErrnoKeeper &operator=(const ErrnoKeeper &) = delete;

private:
    PJ *m_pj;
    int m_saved;
};

void transformAll(const Mesh &mesh, PJ_COORD *points, int count)
{
    const QMutexLocker lock(globalProj4Mutex());
    const ErrnoKeeper keeper(mesh.queue.first.pj.get());
    convertSpan(mesh.queue, mesh.direction, spanOf(points, static_cast<std::size_t>(count)), mesh.time);
}

/// Of a rectangle without width, or without height.
std::unique_ptr<PJ_COORD[]> linePoints(const QRectF &rect, int intervals, int &count)
{
    const bool column = std::fabs(rect.width()) <= noExtent;
    auto line = zeroedPoints(intervals + 1.0);
    for (int i = 0; i <= intervals; ++i)
        line[static_cast<std::size_t>(i)] =
            column ? projPoint(rect.x(), rect.y() + i * rect.height() / intervals)
                   : projPoint(rect.x() + i * rect.width() / intervals, rect.y());
    count = intervals + 1;
    return line;
}

/// Where the bounds of a system cross a rectangle.
struct ExtraLines
{
    QList<double> x;
    QList<double> y;
};

ExtraLines linesWithin(const QRectF &rect, const QRectF &csRect)
{
    if (!(csRect.width() > 0.0 && csRect.height() > 0.0))
        return {};
    return {extraPoints(rect.left(), rect.right(), csRect.left(), csRect.right()),
            extraPointsY(rect, csRect.top(), csRect.bottom())};
}

/// Intervals along the height.
double fittingRows(const QRectF &rect, int intervals)
{
    const double fitting = std::floor(rect.height() / (rect.width() / intervals));
    return fitting >= 1.0 ? fitting : 2.0;
}

/// Column by column; the points of the extra columns lie among those of the first.
std::unique_ptr<PJ_COORD[]> gridPoints(const QRectF &rect, const ExtraLines &extra, int intervals, int &count)
{
    const double stepX = rect.width() / intervals;
    const double wantedRows = fittingRows(rect, intervals);
    // In doubles: a narrow strip asks for more rows than an int holds.
    auto points = zeroedPoints((wantedRows + 1.0 + extra.y.size()) * (intervals + 1.0 + extra.x.size()));
    const double stepY = rect.height() / wantedRows;
    const int rows = static_cast<int>(std::lround(rect.height() / stepY));

    PJ_COORD *next = points.get();
    for (int i = 0; i <= intervals; ++i) {
        const double x = rect.x() + i * stepX;
        for (int j = 0; j <= rows; ++j) {
            const double y = rect.y() + j * stepY;
            *next++ = projPoint(x, y);
            if (i == 0)
                for (const double extraX : extra.x)
                    *next++ = projPoint(extraX, y);
        }
        for (const double extraY : extra.y)
            *next++ = projPoint(x, extraY);
    }
    count = (rows + 1 + extra.y.size()) * (intervals + 1 + extra.x.size());
    return points;
}

} // namespace

QList<double> extraPoints(double a, double b, double c, double d)
{
    QList<double> inside;
    for (const double bound : {d, c})
        if (a < bound && bound < b)
            inside << bound;
    return inside;
}

QList<double> extraPointsY(const QRectF &rect, double c, double d)
{
    return extraPoints(rect.top(), rect.bottom(), c, d);
}

std::unique_ptr<PJ_COORD[]> fillPointsMesh(int addPoints, int &count, const QRectF &rect,
                                           const QRectF &csRect)
{
    const int intervals = std::max(addPoints, 1);
    if (!(rect.width() > 0.0 && rect.height() > 0.0)) {
        auto single = zeroedPoints(1);
        single[0] = projPoint(rect.x(), rect.y());
        count = 1;
        return single;
    }
    if (std::fabs(rect.width()) <= noExtent || std::fabs(rect.height()) <= noExtent)
        return linePoints(rect, intervals, count);
    return gridPoints(rect, linesWithin(rect, csRect), intervals, count);
}

namespace {

/// The rows of a mesh that runs over the cut of the target's map: neighbours lie on its two sides there, and
/// what is between them belongs to the bounds.
class CutRows
{
public:
    CutRows(const Mesh &mesh, const QRectF &rect, const ExtraLines &extra)
        : m_mesh(mesh)
        , m_rect(rect)
        , m_rows(static_cast<int>(fittingRows(rect, mesh.intervals)))
        , m_extraX(extra.x.size())
        , m_extraY(extra.y.size())
    {}

    /// \p images are those of gridPoints().
    void find(const PJ_COORD *images, const Extent &extent);
    /// Adds the images of the points next to the cut.
    void addTo(Extent &extent);

private:
    struct Pair
    {
        PJ_COORD a, b;           ///< in the source
        PJ_COORD imageA, imageB; ///< on either side
    };
    int placeOf(int column, int row) const;
    void halve();

    const Mesh &m_mesh;
    QRectF m_rect;
    int m_rows;
    int m_extraX;
    int m_extraY;
    std::vector<Pair> m_pairs;
};

int CutRows::placeOf(int column, int row) const
{
    if (column == 0)
        return row * (1 + m_extraX);
    const int first = (m_rows + 1) * (1 + m_extraX) + m_extraY;
    return first + (column - 1) * (m_rows + 1 + m_extraY) + row;
}

void CutRows::find(const PJ_COORD *images, const Extent &extent)
{
    constexpr std::size_t mostPairs = 32; // the widest rows: the others lie between
    constexpr double jump = 0.5;          // of the map's width
    const double stepX = m_rect.width() / m_mesh.intervals;
    for (int row = 0; row <= m_rows; ++row)
        for (int i = 0; i < m_mesh.intervals; ++i) {
            const PJ_COORD &a = images[placeOf(i, row)];
            const PJ_COORD &b = images[placeOf(i + 1, row)];
            const double y = m_rect.y() + row * m_rect.height() / m_rows;
            if (std::fabs(b.xy.x - a.xy.x) > jump * (extent.maxX - extent.minX))
                m_pairs.push_back(
                    {projPoint(m_rect.x() + i * stepX, y), projPoint(m_rect.x() + (i + 1) * stepX, y), a, b});
        }
    const auto isWider = [](const Pair &one, const Pair &other) {
        return std::fabs(one.imageB.xy.x - one.imageA.xy.x) >
               std::fabs(other.imageB.xy.x - other.imageA.xy.x);
    };
    std::sort(m_pairs.begin(), m_pairs.end(), isWider);
    m_pairs.resize(std::min(m_pairs.size(), mostPairs), Pair{});
}

/// Leaves of each pair the half that the cut is in.
void CutRows::halve()
{
    std::vector<PJ_COORD> middles;
    for (const Pair &pair : m_pairs)
        middles.push_back(projPoint((pair.a.xy.x + pair.b.xy.x) / 2.0, pair.a.xy.y));
    std::vector<PJ_COORD> images = middles;
    transformAll(m_mesh, images.data(), static_cast<int>(images.size()));
    for (std::size_t i = 0; i < m_pairs.size(); ++i) {
        Pair &pair = m_pairs[i];
        const double x = images[i].xy.x;
        const bool isOnSideOfA = std::fabs(x - pair.imageA.xy.x) < std::fabs(x - pair.imageB.xy.x);
        if (!std::isfinite(x))
            continue;
        (isOnSideOfA ? pair.a : pair.b) = middles[i];
        (isOnSideOfA ? pair.imageA : pair.imageB) = images[i];
    }
}

void CutRows::addTo(Extent &extent)
{
    constexpr int halvings = 40; // a millionth of a millimetre of a mesh's step
    for (int i = 0; i < halvings && !m_pairs.empty(); ++i)
        halve();
    for (const Pair &pair : m_pairs) {
        extent.add(pair.imageA);
        extent.add(pair.imageB);
    }
}

} // namespace

bool meshBounds(const Mesh &mesh, QVector<QPointF> &corners)
{
    const QRectF rect = coordsArrayToRect({corners[0].x(), corners[1].x(), corners[2].x(), corners[3].x()},
                                          {corners[0].y(), corners[1].y(), corners[2].y(), corners[3].y()});
    if (rect.width() == 0.0 && rect.height() == 0.0)
        return false; // an affine transformation left nothing of it
    QRectF bounds = mesh.source.rectWithoutSearch();
    if (mesh.source.isLatLong()) {
        bounds.setTop(-nearlyPole);
        bounds.setBottom(nearlyPole);
    }
    int count = 0;
    const std::unique_ptr<PJ_COORD[]> points = fillPointsMesh(mesh.intervals, count, rect, bounds);
    transformAll(mesh, points.get(), count);

    Extent extent;
    std::for_each(points.get(), points.get() + count, [&extent](const PJ_COORD &c) { extent.add(c); });
    if (mesh.source.isLatLong() && rect.width() > noExtent && rect.height() > noExtent && extent.isKnown()) {
        CutRows cut(mesh, rect, linesWithin(rect, bounds));
        cut.find(points.get(), extent);
        cut.addTo(extent);
    }
    if (!extent.isKnown()) {
        logTransformError(CoordSysTexts::tr("Ошибка преобразования. Возможно, выходит за пределы КС."));
        return false;
    }
    corners = {{extent.minX, extent.minY},
               {extent.maxX, extent.minY},
               {extent.maxX, extent.maxY},
               {extent.minX, extent.maxY}};
    LOG_TRACE(
        CoordSysTexts::tr("Результирующий прямоугольник: (%1 %2) (%3 %4)")
            .arg(toString(extent.minX), toString(extent.minY), toString(extent.maxX), toString(extent.maxY)));
    return !fuzzyEq(extent.minX, extent.maxX, 1e12) && !fuzzyEq(extent.minY, extent.maxY, 1e12);
}

} // namespace nivora::cs
