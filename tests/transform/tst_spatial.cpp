#include <support/Support.h>

#include <coordsys/GridFolders.h>
#include <coordsys/SpatialTransform.h>

#include <QtMath>

using namespace nivora::cs;

/// Heights and epochs.
class TestSpatial : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void systems_data()
    {
        const support::Columns<QString, int, QString, QString> row;
        row.named("4326", int(SpatialSystem::Height::None), "", "");
        row.named("EPSG:4979", int(SpatialSystem::Height::Ellipsoidal), "", "metre");
        row.named("EPSG:4978", int(SpatialSystem::Height::Geocentric), "", "metre");
        row.named("EPSG:25832+7837", int(SpatialSystem::Height::Own), "DHHN2016 height", "metre");
        row.named("25832+7837", int(SpatialSystem::Height::Own), "DHHN2016 height", "metre");
        row.named("EPSG:6360+5703", -1, "", "");
        row.named("EPSG:2263+6360", int(SpatialSystem::Height::Own), "NAVD88 height (ftUS)",
                  "US survey foot");
        row.named("EPSG:5773", -1, "", "");
        row.named("nonsense", -1, "", "");
    }

    void systems()
    {
        const auto [text, height, vertical, unit] = support::row<QString, int, QString, QString>();
        if (height < 0) {
            VERIFY_THROWS(std::logic_error, SpatialSystem(text), "Не удалось прочитать КС: "_s + text);
            return;
        }
        const SpatialSystem system(text);
        QCOMPARE(int(system.height()), height);
        QCOMPARE(system.verticalName(), vertical);
        QCOMPARE(system.verticalUnit(), unit);
        QCOMPARE(system.horizontalWkt().isEmpty(), system.height() == SpatialSystem::Height::Geocentric);
    }

    // As cs2cs has them (its EGM96 file comes with PROJ's data).
    void points_data()
    {
        const support::Columns<QString, QString, QPointF, double, QPointF, double> row;
        row("geoid", "4979", "EPSG:4326+5773", {10, 50}, 100, {10, 50}, 51.9706);
        row("geocentric", "4326", "EPSG:4978", {10, 50}, 100, {4045519.707563, 713334.275431}, 4862865.6422);
        row("two levels", "EPSG:25832+7837", "EPSG:25832+5783", {10, 50}, 100, {10, 50}, 100.0052);
        row("heights pass", "4326", "EPSG:32632", {9, 0}, 7, {500000, 0}, 7);
        row("heights of one end pass", "EPSG:9518", "4326", {9, 1}, 7, {9, 1}, 7);
    }

    void points()
    {
        const auto [from, to, place, height, image, imageHeight] =
            support::row<QString, QString, QPointF, double, QPointF, double>();
        const SpatialTransform transform{SpatialSystem(from), SpatialSystem(to)};
        QVERIFY(transform.missingHeights().isEmpty());
        SpatialPoint point{place.x(), place.y(), height, {}};
        QVERIFY(transform.forward(point));
        VERIFY_NEAR(QPointF(point.x, point.y), image, 1e-6);
        VERIFY_NEAR(point.z, imageHeight, 1e-4);
        QVERIFY(transform.inverse(point));
        VERIFY_NEAR(QPointF(point.x, point.y), place, 1e-6);
        VERIFY_NEAR(point.z, height, 1e-4);
    }

    // The same point by what is chosen, and what has no heights.
    void choice_data()
    {
        const support::Columns<QString, QString, QString, QString> row; // from, to, operation; an error or ""
        row("by name", "EPSG:4326+5773", "4979", "WGS 84 to EGM96 height (1)", "");
        row("by code", "EPSG:4284", "EPSG:4978", "EPSG:5044", "");
        row("of another pair", "EPSG:4326+5773", "4979", "EPSG:1311",
            "Нет операции, которая подходит выбору");
        row("without ends", "EPSG:4326+5773", "4979", "+proj=noop",
            "Текст PROJ ничего не говорит о системах высот");
    }
    void choice()
    {
        const auto [from, to, operation, error] = support::row<QString, QString, QString, QString>();
        const SpatialSystem source(from);
        const SpatialSystem target(to);
        const OperationChoice choice = OperationChoice().withOperation(operation);
        if (!error.isEmpty()) {
            VERIFY_THROWS_LIKE(std::logic_error, SpatialTransform(source, target, choice), error);
            return;
        }
        SpatialPoint chosen{37, 55, 100, {}};
        SpatialPoint usual = chosen;
        OperationTally tally;
        QVERIFY(SpatialTransform(source, target, choice)
                    .forward(&chosen.x, &chosen.y, &chosen.z, nullptr, 1, &tally)
                    .empty());
        QVERIFY(SpatialTransform(source, target).forward(usual));
        QCOMPARE(tally.uses().size(), 1);
        QVERIFY(std::hypot(chosen.x - usual.x, chosen.y - usual.y, chosen.z - usual.z) < 20.0 &&
                chosen.z != 100.0);
    }

    // Guidance Note 7-2 of EPSG, 2.2.1 and 2.4.3: a place of the North Sea, and two ways of turning WGS 72.
    // Its figures have two decimals, those of angles three of a second.
    void published_data()
    {
        const support::Columns<QString, QString, QString, QVector<double>, QVector<double>, double> row;
        const double north = 53 + 48 / 60.0, east = 2 + 7 / 60.0, asec = 1 / 3600.0;
        const QVector<double> sea{east + 46.38 * asec, north + 33.82 * asec, 73.0};
        const QVector<double> xyz{3771793.968, 140253.342, 5124304.349};
        const QVector<double> wgs72{3657660.66, 255768.55, 5201382.11};
        const QVector<double> wgs84{3657660.78, 255778.43, 5201387.75};
        row("geocentric", "4979", "4978", "", sea, xyz, 1e-3);
        row("geocentric, back", "4978", "4979", "", xyz, sea, 1e-3);
        row("translations", "4978", "+proj=longlat +ellps=intl +towgs84=-84.87,-96.49,-116.95", "", xyz,
            {east + 51.477 * asec, north + 36.565 * asec, 28.02}, 0.02);
        row("position vector", "4984", "4978", "EPSG:1238", wgs72, wgs84, 0.01);
    }
    void published()
    {
        const auto [from, to, operation, place, image, off] =
            support::row<QString, QString, QString, QVector<double>, QVector<double>, double>();
        const SpatialTransform transform{SpatialSystem(from), SpatialSystem(to),
                                         OperationChoice().withOperation(operation)};
        SpatialPoint point{place[0], place[1], place[2], {}};
        QVERIFY(transform.forward(point));
        const double perDegree = transform.destination().isGeographic() ? 111000.0 : 1.0;
        VERIFY_NEAR(QPointF(point.x, point.y) * perDegree, QPointF(image[0], image[1]) * perDegree, off);
        VERIFY_NEAR(point.z, image[2], off);
    }

    // X = (N + h) cos B cos L and so on, over the whole earth, and back.
    void geocentricEverywhere()
    {
        const SpatialTransform transform{SpatialSystem("4979"_s), SpatialSystem("4978"_s)};
        constexpr double a = 6378137.0, f = 1 / 298.257223563, e2 = f * (2 - f);
        for (double lon = -180; lon <= 180; lon += 45)
            for (double lat = -90; lat <= 90; lat += 22.5)
                for (const double h : {-10000.0, 0.0, 8848.0, 1e5}) {
                    const double b = qDegreesToRadians(lat), l = qDegreesToRadians(lon);
                    const double n = a / std::sqrt(1 - e2 * std::sin(b) * std::sin(b));
                    SpatialPoint point{lon, lat, h, {}};
                    QVERIFY(transform.forward(point));
                    VERIFY_NEAR(QPointF(point.x, point.y),
                                QPointF(std::cos(l), std::sin(l)) * (n + h) * std::cos(b), 1e-6);
                    VERIFY_NEAR(point.z, (n * (1 - e2) + h) * std::sin(b), 1e-6);
                    QVERIFY(transform.inverse(point));
                    const double turned = std::remainder(point.x - lon, 360.0) * std::cos(b);
                    VERIFY_NEAR(QPointF(turned, point.y), QPointF(0, lat), 1e-9);
                    VERIFY_NEAR(point.z, h, 1e-4);
                }
    }

    // The year of the moving frame counts; both moving, two years have nothing between them.
    void epochsOfBothEnds_data()
    {
        const support::Columns<QString, QString, double, double, double> row; // NaN: none; 0: refused
        row("from moving", "9000", "7844", 2010, 2030, 2010);
        row("to moving", "7844", "9000", 2010, 2030, 2030);
        row("to moving, given year alone", "7844", "9000", 2010, NAN, 2010);
        row("neither", "4258", "7844", 2010, 2030, 2010);
        row("both, one year", "9000", "9990", NAN, 2030, 2030);
        row("both, the same", "9000", "EPSG:7789", 2030, 2030, 2030);
        row("both, two years", "9000", "9990", 2010, 2030, 0);
        row("of an ensemble", "EPSG:4326+5773", "9000", 2010, 2030, 0);
    }
    void epochsOfBothEnds()
    {
        const auto [fromText, toText, epoch, wanted, expected] =
            support::row<QString, QString, double, double, double>();
        const SpatialSystem from(fromText), to(toText);
        const auto year = [](double value) {
            return std::isnan(value) ? std::nullopt : std::make_optional(value);
        };
        const bool isRefused = expected == 0;
        if (isRefused) {
            VERIFY_THROWS_LIKE(std::logic_error, operationEpoch(from, to, year(epoch), year(wanted)),
                               "Координаты на эпоху 2010 нельзя перевести на эпоху 2030");
        } else {
            QCOMPARE(operationEpoch(from, to, year(epoch), year(wanted)), year(expected));
        }
        const SpatialTransform transform(from, to);
        double x[] = {134}, y[] = {-25}, z[] = {1};
        SpatialPoint point{134, -25, 1, year(expected)};
        QCOMPARE(transform.forward(x, y, z, &epoch, &wanted, 1).empty(), !isRefused);
        QCOMPARE(transform.forward(point) && x[0] == point.x && y[0] == point.y && z[0] == point.z,
                 !isRefused);
    }

    // What is used at a point is one of those that work, and what missing files would give is none of them.
    void operations()
    {
        const SpatialTransform transform{SpatialSystem("EPSG:4326+5773"_s), SpatialSystem("4937"_s)};
        const auto used = transform.operationAt({10, 50, 100, {}});
        const auto all = transform.operations();
        QVERIFY(used && std::any_of(all.begin(), all.end(), [&](const TransformOperation &one) {
                    return one.name == used->name && one.isUsable();
                }));
        QVERIFY(!transform.operationAt({500, 95, 0, {}}));
        for (const GridOffer &offer :
             SpatialTransform(SpatialSystem("4979"_s), SpatialSystem("EPSG:9518"_s)).gridOffers())
            QVERIFY(!offer.missing().isEmpty() && !offer.operation().isUsable());
    }

    // Twenty and no years of Australia's plate, 7 cm a year; per point.
    void epochs()
    {
        const SpatialTransform transform{SpatialSystem("9000"_s), SpatialSystem("7844"_s)};
        double x[] = {134, 134, 500}, y[] = {-25, -25, 95}, z[] = {1, 2, 3}, t[] = {2020, 2030, 2020};
        const auto failed = transform.forward(x, y, z, t, 3);
        QCOMPARE(failed, std::vector<std::size_t>{2});
        VERIFY_NEAR(QPointF(x[0], y[0]), QPointF(134, -25), 1e-9);
        VERIFY_NEAR(QPointF(x[1], y[1]), QPointF(133.999996895, -25.000005311), 1e-9);
        QVERIFY(z[1] == 2.0 && std::isnan(x[2]) && std::isnan(z[2]));
    }

    // Never silently without the geoid.
    void missingGeoid()
    {
        const SpatialTransform transform{SpatialSystem("4979"_s), SpatialSystem("EPSG:9518"_s)};
        SpatialPoint point{10, 50, 100, {}};
        const bool isInstalled = transform.missingHeights().isEmpty();
        QCOMPARE(transform.forward(point), isInstalled);
        QCOMPARE(point.z != 100.0, isInstalled);
        QVERIFY(isInstalled || transform.missingHeights().contains("us_nga_egm08_25.tif"_s));
        QVERIFY(!gridFolders().isEmpty());
        VERIFY_THROWS(std::invalid_argument, addGridFolder("/no/such"_s), "Нет каталога /no/such"_s);
    }
};

NIVORA_TEST(TestSpatial)
#include "tst_spatial.moc"
