#include <support/Support.h>

#include <coordsys/GridFolders.h>
#include <coordsys/SpatialTransform.h>

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
