#include <support/Support.h>

#include <coordsys/CoordTransform.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <optional>

using namespace nivora::cs;

namespace {

CoordSystemPtr made(const char *prj)
{
    return support::shippedFactory()->createWithoutDescription(QString::fromUtf8(prj));
}
const char *const lonLat = "Earth Projection 1, 104";

/// Bounding rectangle of the images of side x side points laid over a rectangle, edges included.
std::optional<QRectF> sampled(const CoordTransform &t, const QRectF &in, int side, bool forward)
{
    QVector<QPointF> points;
    points.reserve(side * side);
    for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; ++j)
            points << QPointF(in.x() + in.width() * i / (side - 1), in.y() + in.height() * j / (side - 1));
    if (!(forward ? t.forward(points, points) : t.inverse(points, points)))
        return {};
    const auto [left, right] = std::minmax_element(
        points.cbegin(), points.cend(), [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    const auto [top, bottom] = std::minmax_element(
        points.cbegin(), points.cend(), [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); });
    return QRectF(QPointF(left->x(), top->y()), QPointF(right->x(), bottom->y()));
}

/// The largest distance of two rectangles' edges as a part of the second one's size.
double difference(const QRectF &a, const QRectF &b)
{
    return std::max({std::fabs(a.left() - b.left()) / b.width(), std::fabs(a.right() - b.right()) / b.width(),
                     std::fabs(a.top() - b.top()) / b.height(),
                     std::fabs(a.bottom() - b.bottom()) / b.height()});
}

QRectF middleHalf(const QRectF &r)
{
    return r.adjusted(r.width() / 4, r.height() / 4, -r.width() / 4, -r.height() / 4);
}

} // namespace

class TestMesh : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    // Each way in which edges bulge and corners are not the extremes. No row is a registered system: the area
    // of use would cross the rectangle and bring in zero points (see below).
    void againstSampling_data()
    {
        const support::Columns<QString, QRectF> row;
        const QRectF middle(10, -20, 50, 65); // over the equator, where the cylinders and ovals are widest
        row.named("Earth Projection 2, 104, \"m\", 0, 30", middle);
        row.named("Earth Projection 3, 104, \"m\", 10, 45, 40, 50, 0, 0", {-5, 35, 40, 25});
        row.named("Earth Projection 4, 104, \"m\", 0, 90, 90", {-60, 50, 130, 30});
        row.named("Earth Projection 5, 104, \"m\", 0, -90, 90", {-60, -80, 130, 30});
        row.named("Earth Projection 7, 104, \"m\", 115, 4, 53.31582, 0.99984, 0, 0", {108, -3, 14, 10});
        row.named("Earth Projection 8, 1001, \"survey ft\", 39, 0, 1, 7500000, 0", {32, 50, 12, 30});
        row.named("Earth Projection 16, 104, \"m\", 0", middle);
        row.named("Earth Projection 18, 31, \"m\", 173, -41, 2510000, 6023150", {166, -47, 12, 12});
        row.named("Earth Projection 20, 104, \"m\", 0, 90, 0.994, 2000000, 2000000", {-60, 50, 130, 30});
        row.named("Earth Projection 27, 104, \"m\", -50, -30, 0, 0", {-80, -30, 50, 60});
        row.named("Earth Projection 28, 104, \"m\", 20, 10, 90", {-20, -30, 60, 70});
        row.named("Earth Projection 31, 109, \"m\", 5.4, 52.2, 0.9999, 155000, 463000", {0, 48, 14, 9});
    }

    // An extreme of a smooth edge between two of 100 intervals is missed by 1e-4 of the edge's bulge; 1e-3
    // leaves room for a tight bend and none for a lost row, a lost half or corners alone.
    void againstSampling()
    {
        const auto [prj, degrees] = support::row<QString, QRectF>();
        const CoordTransform t(made(lonLat), made(prj.toUtf8()));
        const int mesh = CoordTransform::DefaultAddPointsMesh;
        QRectF planar;
        QVERIFY(t.forwardMesh(degrees, planar, mesh));
        auto expected = sampled(t, degrees, 1000, true);
        QVERIFY(expected);
        VERIFY_NEAR(difference(planar, *expected), 0.0, 1e-3);

        const QRectF part = middleHalf(*expected);
        QRectF back;
        QVERIFY(t.inverseMesh(part, back, mesh));
        expected = sampled(t, part, 1000, false);
        QVERIFY(expected);
        VERIFY_NEAR(difference(back, *expected), 0.0, 1e-3);
    }

    void poleAndDateLine_data()
    {
        const support::Columns<double, QRectF> row;
        row("north pole off the mesh", 90.0, QRectF(-1234567, -2345678, 4000000, 5000000));
        row("south pole off the mesh", -90.0, QRectF(-3234567, -1345678, 5000000, 4000000));
        row("pole on the mesh", 90.0, QRectF(-2000000, -2000000, 4000000, 4000000));
    }
    void poleAndDateLine()
    {
        const auto [pole, planar] = support::row<double, QRectF>();
        const QByteArray prj =
            "Earth Projection 20, 104, \"m\", 0, " + QByteArray::number(pole) + ", 0.994, 0, 0";
        const CoordTransform t(made(prj), made(lonLat));
        QRectF out;
        QVERIFY(t.forwardMesh(planar, out, 100));
        const double step =
            planar.width() / 100; // metres; the nearest point is at most 0.71 of it from the pole
        const double reached = pole > 0 ? out.bottom() : -out.top();
        QVERIFY2(reached <= 90.0 && 90.0 - reached < step / 1.1e5,
                 qPrintable(QString::number(reached, 'f', 6)));
        // The column next to the date line is at most a step off it, at the far edge a small angle.
        const double angle = CoordSystem::RADIANS_TO_DEGREES * std::atan2(step, planar.height() / 4);
        QVERIFY(180.0 - out.right() < angle && out.left() + 180.0 < angle);
        QVERIFY(out.left() > -180.0 - 1e-9 && out.right() < 180.0 + 1e-9);
    }

    // Where both of the source's bounds cross the rectangle, the crossings of the added lines stay at (0, 0)
    // and take part in the bounds. Callers know this; the rest of the result must be exact.
    void zeroPoints()
    {
        const CoordTransform t(
            made("Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0 Bounds (400000, 6000000) "
                 "(600000, 6200000)"),
            made(lonLat));
        const QRectF around(350000, 5900000, 300000, 400000);
        QPointF ghost;
        QVERIFY(t.forward(QPointF(0, 0), ghost));
        const auto expected = sampled(t, around, 500, true);
        QVERIFY(expected);
        QRectF out;
        QVERIFY(t.forwardMesh(around, out, 100));
        VERIFY_NEAR(out.topLeft(), ghost, 1e-9); // (34.5 E, 0 N): far outside the rectangle
        VERIFY_NEAR(out.bottomRight(), expected->bottomRight(), 1e-4);
        // One axis alone makes none.
        const QRectF column(450000, 5900000, 100000, 400000);
        QVERIFY(t.forwardMesh(column, out, 100));
        QVERIFY(out.top() > 53.0);
    }

    void boundsAddLines()
    {
        // Cylindrical equal-area: the widest northing is at the pole. A geographic source is never meshed
        // there, but gets lines at -89.99 and 89.99; a coarse mesh without them would end at 50 degrees.
        const CoordTransform t(made(lonLat), made("Earth Projection 2, 104, \"m\", 0, 0"));
        QRectF out;
        QVERIFY(t.forwardMesh(QRectF(0, -150, 100, 300), out, 1));
        QPointF corner;
        QVERIFY(t.forward(QPointF(100, 89.99), corner));
        VERIFY_NEAR(out.bottomRight(), corner, 1e-3);
        VERIFY_NEAR(out.topLeft(), QPointF(0, -corner.y()), 1e-3);
    }

    // The answer is the same before and after the database was searched, and with bounds that nobody knows.
    void needsNoSearchAndNoFactory()
    {
        const auto transform = [] { // two registered systems, whose areas of use would add lines
            return CoordTransform(
                support::shippedFactory()->createFromProj("+proj=utm +zone=37 +datum=WGS84 +units=m"_s),
                made(lonLat));
        };
        const QRectF planar(-2e6, 1e6, 5e6, 6e6);
        const CoordTransform searched = transform();
        searched.sourceCoordSystem()->rectInternal();
        QRectF first;
        QRectF second;
        QVERIFY(transform().forwardMesh(planar, first, 10) && searched.forwardMesh(planar, second, 10));
        QCOMPARE(first, second);

        const CoordTransform orphan = transform();
        const support::DefaultFactoryKeeper keeper;
        CoordSysFactory::setDefaultCoordSysFactory(nullptr);
        QVERIFY(orphan.forwardMesh(planar, second, 10));
        VERIFY_NEAR(first, second, 1e-9);
    }

    void thinRectangle()
    {
        // Flatter than a step: three rows, so the equator, where a sinusoidal parallel is longest, is on the
        // mesh.
        const CoordTransform t(made(lonLat), made("Earth Projection 16, 104, \"m\", 0"));
        QRectF out;
        QVERIFY(t.forwardMesh(QRectF(0, -0.1, 100, 0.2), out, 100));
        VERIFY_NEAR(out.right(), 11131949.0793, 1e-3); // 6378137 m * 100 degrees; 17 m less on the edges
    }

    void partlyOutside()
    {
        // The far hemisphere has no orthographic image; the near one ends at the radius.
        const CoordTransform t(made(lonLat), support::shippedFactory()->createFromProj(
                                                 "+proj=ortho +R=6378137 +lat_0=0 +lon_0=0 +units=m"_s));
        QRectF out;
        QVERIFY(!t.forward(QRectF(-180, -80, 360, 160), out));
        QVERIFY(t.forwardMesh(QRectF(-180, -80, 360, 160), out, 360));
        QVERIFY(std::fabs(out.right() - 6378137.0) < 6378.0 && std::fabs(out.left() + 6378137.0) < 6378.0);
        QVERIFY(!t.forwardMesh(QRectF(120, -10, 50, 20), out, 10));
        QVERIFY(!t.inverseMesh(QRectF(1e7, 1e7, 10, 10), out, 10));
    }

    // The map of the whole earth is as wide wherever it is cut.
    void cutAnywhere()
    {
        const auto world = [](int meridian, int intervals) {
            const QString text = "+proj=eqearth +lon_0=%1 +datum=WGS84"_s;
            QRectF out;
            return CoordTransform(made(lonLat), support::shippedFactory()->createFromProj(text.arg(meridian)))
                           .forwardMesh(QRectF(-180, -90, 360, 180), out, intervals)
                       ? out
                       : QRectF();
        };
        for (int meridian = -180; meridian <= 180; meridian += 35)
            for (const int intervals : {16, 100}) {
                VERIFY_NEAR(world(meridian, intervals).topLeft(), world(0, intervals).topLeft(), 1e-2);
                VERIFY_NEAR(world(meridian, intervals).bottomRight(), world(0, intervals).bottomRight(),
                            1e-2);
            }
    }

    void limits()
    {
        const CoordTransform t(made("Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0"), made(lonLat));
        const QRectF square(450000, 6000000, 100000, 100000);
        QRectF out;
        QVERIFY(t.forwardMesh(square, out, 1)); // the corners alone
        for (int addPoints : {0, -5, std::numeric_limits<int>::min()}) {
            QRectF same;
            QVERIFY(t.forwardMesh(square, same, addPoints));
            QCOMPARE(same, out);
        }
        const double inf = std::numeric_limits<double>::infinity();
        const auto refused = [&](const QRectF &rect, int addPoints) {
            QVERIFY_EXCEPTION_THROWN(t.forwardMesh(rect, out, addPoints), std::bad_array_new_length);
        };
        refused(QRectF(500000, 0, 1, 1e5), 100);    // 1e9 points
        refused(QRectF(0, 0, 1e-11, 1e6), 1);       // more rows than any integer holds
        refused(QRectF(500000, 0, 1e5, 1e5), 8192); // 8193² > 2^26
        refused(square, std::numeric_limits<int>::max());
        for (const QRectF &rect :
             {QRectF(), QRectF(0, 0, -1, 1), QRectF(0, 0, 1, 0), QRectF(0, 0, qQNaN(), 1),
              QRectF(0, 0, 1, qQNaN()), QRectF(0, 0, inf, inf)}) {
            out = QRectF(1, 2, 3, 4);
            QVERIFY(!t.forwardMesh(rect, out, 10));
        }
    }
};

NIVORA_TEST(TestMesh)
#include "tst_mesh.moc"
