#include <support/Support.h>

#include <coordsys/CoordTransform.h>

#include <cmath>

using namespace nivora::cs;

namespace {

/// Every point of a dense grid over the rectangle that lies on the earth, as PROJ sees it one by one.
QVector<QPointF> sampled(const CoordTransform &transform, const QRectF &rect)
{
    constexpr int count = 400;
    QVector<QPointF> points;
    for (int i = 0; i <= count; ++i) {
        for (int j = 0; j <= count; ++j) {
            const QPointF planar(rect.x() + rect.width() * i / count, rect.y() + rect.height() * j / count);
            QPointF lonLat;
            if (transform.forward(planar, lonLat))
                points << lonLat;
        }
    }
    // And every half degree of the earth whose image lies in it: what no inverse tells of.
    for (int i = -360; i <= 360; ++i) {
        for (int j = -179; j <= 179; ++j) {
            QPointF planar;
            if (transform.inverse(QPointF(i / 2.0, j / 2.0), planar) && rect.contains(planar))
                points << QPointF(i / 2.0, j / 2.0);
        }
    }
    return points;
}

QString marksOf(const GeographicBounds &bounds)
{
    const std::pair<bool, const char *> marks[] = {{bounds.crossesAntimeridian(), "180 "},
                                                   {bounds.isAllAround(), "around "},
                                                   {bounds.hasNorthPole, "N "},
                                                   {bounds.hasSouthPole, "S "}};
    QString text;
    for (const auto &[isSet, mark] : marks)
        text += isSet ? QString::fromLatin1(mark) : QString();
    return text.trimmed();
}

} // namespace

class TestGeographicBounds : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(m_factory = support::shippedFactory()); }

    void bounds_data()
    {
        const support::Columns<QString, QRectF, QString> row;
        // clang-format off
        const double world = 20037508.342789244; // half the equator of WGS 84 in metres
        row("Moscow: nothing special", "EPSG:32637", {400000, 6100000, 100000, 100000}, "");
        row("Fiji: map grid on both sides of 180", "EPSG:3460", {1800000, 3700000, 700000, 600000}, "180");
        row("Chukotka: UTM zone 60 reaches over 180", "EPSG:32660", {400000, 7200000, 400000, 700000}, "180");
        row("Fiji in the last UTM zone, this side of 180", "EPSG:32760", {400000, 7900000, 200000, 200000}, "");
        row("north pole inside", "EPSG:3576", {-2e6, -2e6, 4e6, 4e6}, "around N");
        row("north pole near a corner", "EPSG:32661", {1990000, 1990000, 500000, 500000}, "around N");
        row("south pole inside", "EPSG:3031", {-2e6, -2e6, 4e6, 4e6}, "around S");
        row("beside the north pole", "EPSG:3576", {-3e5, 5e5, 6e5, 5e5}, "");
        row("the world in Mercator has no poles", "EPSG:3857", {-world, -world, 2 * world, 2 * world}, "around");
        row("the world in an equidistant cylinder has both", "proj4:+proj=eqc +datum=WGS84", {-world, -world / 2, 2 * world, world}, "around N S");
        row("a pole in the corner leaves a quarter", "EPSG:3576", {0, 0, 2e6, 2e6}, "N");
        row("far larger than the world", "EPSG:32637", {-1e9, -1e9, 2e9, 2e9}, "around N S");
        row("beyond the edge of the disk", "EPSG:3408", {8e6, -3e6, 9e6, 5e6}, "S");
        row("conic across 180", "proj4:+proj=aea +lat_1=50 +lat_2=70 +lon_0=170 +datum=WGS84", {-1e6, 5e6, 4e6, 2e6}, "180");
        row("half a world of another meridian", "proj4:+proj=robin +lon_0=150 +datum=WGS84", {0, -5e6, 3e7, 6e6}, "180");
        row("longitude beyond 180 on another datum", "prj:Earth Projection 1, 1001", {170, -20, 20, 10}, "180");
        row("longitude beyond 180 runs on", "prj:Earth Projection 1, 104", {170, -20, 20, 10}, "180");
        // clang-format on
    }
    void bounds()
    {
        const auto [system, planar, marks] = support::row<QString, QRectF, QString>();
        const CoordTransform transform(m_factory->createFromTaggedString(system),
                                       m_factory->latLongWgs84CoordSystem());
        GeographicBounds found;
        QVERIFY(transform.geographicBounds(planar, found));
        QCOMPARE(marksOf(found), marks);

        // Nothing of the rectangle lies outside, but for the bulge of an edge between two points of the mesh:
        // a ten-thousandth of the extent.
        const double slack = 1e-4 * std::max(found.width(), found.north - found.south);
        double reached = 0.0;
        const QVector<QPointF> points = sampled(transform, planar);
        QVERIFY(points.size() > 10000);
        for (const QPointF &p : points) {
            const bool atPole =
                std::fabs(p.y()) > 90.0 - 1e-5; // a metre: its longitude is the engine's noise
            const bool inside = found.isAllAround() || atPole ||
                                found.contains(p.x(), (found.south + found.north) / 2) ||
                                std::fabs(std::remainder(p.x() - found.west, 360.0)) <= slack ||
                                std::fabs(std::remainder(p.x() - found.east, 360.0)) <= slack;
            QVERIFY2(inside && p.y() >= found.south - slack && p.y() <= found.north + slack,
                     qPrintable("%1 %2"_s.arg(p.x()).arg(p.y())));
            if (atPole)
                continue;
            const double fromWest = std::remainder(p.x() - found.west, 360.0);
            reached = std::max(reached, fromWest < -slack ? fromWest + 360.0 : fromWest);
        }
        // And no more than that: the samples reach from the western edge to the eastern one.
        if (!found.isAllAround())
            QVERIFY2(std::fabs(reached - found.width()) <= 0.01 * found.width(),
                     qPrintable(QString::number(reached)));
    }

    /// A rectangle finer than the engine's inverses still has its place: to a centimetre.
    void aDecimetre()
    {
        for (const char *system : {"EPSG:3575", "EPSG:3576", "EPSG:32637", "EPSG:3035",
                                   R"(prj:Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0)"}) {
            const CoordTransform transform(m_factory->createFromTaggedString(QLatin1String(system)),
                                           m_factory->latLongWgs84CoordSystem());
            QPointF corner, middle;
            QVERIFY(transform.inverse(QPointF(38.5, 62.5), corner));
            const QRectF rect(corner, QSizeF(0.1, 0.1));
            GeographicBounds found;
            QVERIFY2(transform.geographicBounds(rect, found), system);
            QVERIFY(transform.forward(rect.center(), middle));
            QVERIFY2(found.contains(middle.x(), middle.y()) && found.width() < 1e-5, system);
        }
    }

    void twoRectanglesAcross180()
    {
        GeographicBounds fiji;
        std::tie(fiji.west, fiji.south, fiji.east, fiji.north) = std::make_tuple(176.0, -20.0, -178.0, -15.0);
        QCOMPARE(fiji.rects(), (QVector<QRectF>{QRectF(176, -20, 4, 5), QRectF(-180, -20, 2, 5)}));
        QVERIFY(fiji.contains(180.0, -17.0) && fiji.contains(-180.0, -17.0) && fiji.contains(538.0, -17.0));
        QVERIFY(!fiji.contains(0.0, -17.0) && !fiji.contains(177.0, -21.0) && !fiji.contains(qQNaN(), -17.0));
    }

    void failuresLeaveTheResultAlone()
    {
        const CoordTransform utm(m_factory->createFromEpsg(32637), m_factory->latLongWgs84CoordSystem());
        GeographicBounds untouched;
        untouched.west = 1.0;
        QVERIFY(!utm.geographicBounds(QRectF(0, 0, 0, 10), untouched));
        QVERIFY(!utm.geographicBounds(QRectF(qQNaN(), 0, 10, 10), untouched));
        QVERIFY(!utm.geographicBounds(QRectF(1e12, 1e12, 10, 10), untouched));
        QCOMPARE(untouched.west, 1.0);
        const CoordTransform planar(m_factory->createFromEpsg(32637), m_factory->createFromEpsg(32638));
        VERIFY_THROWS(std::logic_error, planar.geographicBounds(QRectF(0, 0, 1, 1), untouched),
                      "Ни одна из КС не является географической");
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

NIVORA_TEST(TestGeographicBounds)
#include "tst_geographicbounds.moc"
