#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemStrings.h>

#include <support/Support.h>
#include <support/TestRunner.h>

#include <array>
#include <random>

using namespace nivora::cs;

class TestCoordSystemStrings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void detect_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("type");
        const auto row = [](const char *name, const QByteArray &text, CoordSystemTypes::SourceType type) {
            QTest::newRow(name) << QString::fromUtf8(text) << static_cast<int>(type);
        };
        row("empty", "", CoordSystemTypes::Unknown);
        row("plain prj", "CoordSys Earth Projection 1, 104", CoordSystemTypes::Prj);
        row("no word before the numbers", " 8 , 1001", CoordSystemTypes::Prj);
        row("plan anywhere, any case", "план nonearth", CoordSystemTypes::Prj);
        row("bare earth is nothing", "CoordSys Earth", CoordSystemTypes::Unknown);
        row("proj", "  +proj=longlat +datum=WGS84", CoordSystemTypes::Proj4);
        row("proj not first", "+datum=WGS84 +proj=longlat", CoordSystemTypes::Unknown);
        row("several shift values: prj wins", "+proj=longlat +towgs84=1,2,3", CoordSystemTypes::Prj);
        row("epsg", "4326", CoordSystemTypes::Epsg);
        row("blank before", " 4326", CoordSystemTypes::Epsg);
        row("line feed behind", "4326\n", CoordSystemTypes::Epsg);
        row("blank behind", "4326 ", CoordSystemTypes::Unknown);
        row("with authority", "EPSG:4326", CoordSystemTypes::Unknown);
        row("three digits", "432", CoordSystemTypes::Unknown);
        row("eight digits", "12345678", CoordSystemTypes::Unknown);
        row("wkt wins over its own numbers", "GEOGCS[\"x\",DATUM[\"y\",SPHEROID[\"z\",6378137,298]]]",
            CoordSystemTypes::Wkt);
        row("wkt not first", "[projcs", CoordSystemTypes::Wkt);
        row("local needs its bracket", "LOCAL_CS", CoordSystemTypes::Unknown);
        // Long texts: a run that is tried again from within takes seconds and runs into the timeout.
        row("blanks before a word", QByteArray(100000, ' ') + "x", CoordSystemTypes::Unknown);
        row("blanks between", "CoordSys" + QByteArray(100000, '\t') + "Earth Projection 1",
            CoordSystemTypes::Prj);
        row("digits without a comma", QByteArray(400000, '1') + "  x", CoordSystemTypes::Unknown);
        row("digits and blanks", QByteArray(100000, '1') + "\n ,\t 1", CoordSystemTypes::Prj);
        row("wkt 2", "PROJCRS[\"x\"", CoordSystemTypes::Unknown);
    }
    void detect()
    {
        QFETCH(QString, text);
        QFETCH(int, type);
        QCOMPARE(static_cast<int>(tryDetectTypeCoordSystem(text)), type);
    }

    void clauses_data()
    {
        QTest::addColumn<QString>("prj");
        QTest::addColumn<QString>("flags"); // affine, bounds
        QTest::addColumn<QString>("affine");
        QTest::addColumn<QRectF>("bounds");
        const auto row = [](const char *name, const char *prj, const char *flags, const char *affine,
                            const QRectF &bounds = {}) {
            QTest::newRow(name) << QString::fromUtf8(prj) << QString::fromLatin1(flags)
                                << QString::fromUtf8(affine) << bounds;
        };
        row("empty", "", "00", "");
        row("none", "Earth Projection 8, 104, 7, 39, 0, 1, 500000, 0", "00", "");
        row("four digits elsewhere", "Earth Projection 8, 1001, 7, 3900, 0, 1, 500000, 0", "00", "");
        row("affine by thousands", "Earth Projection 1001, 104, \"m\", 1, 0, 0, 0, 1, 0", "10",
            "\"m\" 1 0 0 0 1 0");
        row("bounds by thousands", "CoordSys Earth Projection 2001, 104, 7, 10, 20, -5, -6", "01", "",
            QRectF(-5, -6, 15, 26));
        row("both by thousands", "3008, 104, 7, 39, 0, 1, 0, 0, 3, 1, 2, 3, 4, 5, 6, 0, 0, 9, 8", "11",
            "3 1 2 3 4 5 6", QRectF(0, 0, 9, 8));
        row("4000 announces nothing", "Earth Projection 4008, 104, 7", "00", "");
        row("bounds by words", "Earth Projection 1, 104 bounds (0, 0) (100, 50)", "02", "",
            QRectF(0, 0, 100, 50));
        row("exponents", "Earth Projection 1, 104 Bounds( -1e-05 ,-2.5E+1 )(1e2,0)", "02", "",
            QRectF(-1e-5, -25, 100.00001, 25));
        row("unit with a blank", "1, 104 Affine Units \"survey ft\", 1e-05, 0, 5, 0, 1, 6", "10",
            "\"survey ft\" 1e-05 0 5 0 1 6");
        row("Cyrillic unit", "1, 104 AFFINE  units \"метр\", 1, 0, 5, 0, 1, 6", "10", "\"метр\" 1 0 5 0 1 6");
        row("both by words", "1, 104 Affine Units \"m\", 1, 0, 5, 0, 1, 6 Bounds (0, 0) (1, 1)", "12",
            "\"m\" 1 0 5 0 1 6", QRectF(0, 0, 1, 1));
        row("five digits announce nothing", "Earth Projection 10008, 104, 7", "00", "");
        row("plan's unit behind affine",
            "NonEarth Affine Units \"m\", 1, 0, 5, 0, 1, +6 Units \"ft\" Bounds (0, 0) (1, 1)", "12",
            "\"m\" 1 0 5 0 1 6", QRectF(0, 0, 1, 1));
        row("a coefficient is missing", "8, 104, 7, 39, 0, 1, 500000, 0 Affine Units \"m\", 1, 0, 500", "10",
            "");
        row("the unit has no quotes", "8, 104, 7, 39, 0, 1, 500000, 0 Affine Units m, 1, 0, 5, 0, 1, 6", "10",
            "");
        row("also behind thousands", "1008, 104, 7, 39, 0, 1, 5, 0 Affine Units m, 1, 0, 5, 0, 1, 6", "10",
            "");
        row("bounds before affine", "1, 104 Bounds (0, 0) (1, 1) Affine Units \"m\", 1, 0, 5, 0, 1, 6", "12",
            "", QRectF(0, 0, 1, 1));
        row("too short for thousands", "3001, 104", "11", "");
        row("half of the bounds", "1, 104 Bounds (0, 0)", "02", "");
        row("bounds that overflow", "1, 104 Bounds (-1e308, 0) (1e308, 1)", "02", "");
        row("numbers out of range count as 0", "1, 104 Bounds (-1e999, 0) (5, 1)", "02", "",
            QRectF(0, 0, 5, 1));
    }
    void clauses()
    {
        QFETCH(QString, prj);
        QFETCH(QString, flags);
        QFETCH(QString, affine);
        QFETCH(QRectF, bounds);
        const PrjClauses announced = hasAffineOrBoundsInString(prj);
        QCOMPARE(QString::number(announced.affine) + QString::number(announced.bounds), flags);
        const AffineAndBounds found = affineParamsAndBoundsFromPrj(prj);
        QCOMPARE(found.affine.join(QLatin1Char(' ')), affine);
        QCOMPARE(found.bounds, bounds);
    }

    void boundsText()
    {
        QCOMPARE(boundConditionAsString(QRectF(10, 20, 30, 40)), QStringLiteral(" Bounds (10, 20) (40, 60)"));
        const QRectF fine(-7786100.123456789, 1e-7, 12345678.87654321, 0.3);
        QCOMPARE(boundConditionAsString(affineParamsAndBoundsFromPrj(boundConditionAsString(fine)).bounds),
                 boundConditionAsString(fine));
    }

    void projText()
    {
        QCOMPARE(projUnitStringForLinearUnit(LinearUnit::NauticalMile), QStringLiteral("+units=kmi"));
        QCOMPARE(projUnitStringForLinearUnit(LinearUnit::Chain), QStringLiteral("+units=ch"));
        QCOMPARE(projUnitStringForLinearUnit(LinearUnit::Degree), QStringLiteral("m"));
        QCOMPARE(projNonEarthString(LinearUnit::Rod),
                 QStringLiteral("+proj=eqc +R=6370997 +to_meter=5.02921005842012 +no_defs"));
    }

    void systemLaw_data()
    {
        QTest::addColumn<QString>("form"); // %1 thousands, %2 affine, %3 bounds
        const auto row = [](const char *form) { QTest::newRow(form) << QString::fromUtf8(form); };
        row("NonEarth%2 Units \"ft\"%3");
        row("NonEarth Units \"ft\"%2%3");
        row("Earth Projection 1, 104%2%3");
        row("Earth Projection %101, 104%2%3");
        row("Earth Projection 8, 999, 3, 23.5, -141, -81, \"survey ft\", 39, 0, 0.9996, 5e5, 0%2%3");
        row("%108, 999, 3, 23.5, -141, -81, \"survey ft\", 39, 0, 0.9996, 5e5, 0%2%3");
        row("CoordSys Earth Projection %103, 9999, 3, 24, -123, -94, -0.02, 0.25, 0.13, 1.1, 0, 7, 39, 50, "
            "45, "
            "55, 0, 0%2%3");
    }

    // A system reads back from its CoordSys string and from its tag, whatever form its clauses had; and both
    // follow the object when clauses are set, replaced and removed.
    void systemLaw()
    {
        QFETCH(QString, form);
        const support::DefaultFactoryKeeper keeper;
        const auto factory = support::shippedFactory();
        const auto verify = [&factory](const CoordSystem &cs, bool affine, bool bounds) {
            const QString prj = cs.prjStr();
            QCOMPARE(prj.count(QLatin1String("Affine")), int(affine));
            QCOMPARE(prj.count(QLatin1String("Bounds")), int(bounds));
            const CoordSystemPtr back = factory->createWithoutDescription(prj);
            QVERIFY2(back->isEqual(cs, true), qPrintable(prj));
            QVERIFY(!bounds || back->rectNumericCoordSys() == cs.rectNumericCoordSys());
            QCOMPARE(back->prjStr(), prj);
            QVERIFY(!affine || back->affineUnit() == cs.affineUnit());
            const QString tag = cs.taggedString();
            QVERIFY2(factory->createFromTaggedString(tag)->isEqual(cs, true), qPrintable(tag));
        };
        std::mt19937 random(20261121);
        const auto figure = [&random] { return std::uniform_real_distribution<double>(-2.0, 2.0)(random); };
        const bool byNumber = form.contains(QLatin1String("%1"));
        for (int round = 0; round < 16; ++round) {
            const bool hasAffine = round & 1;
            const bool hasBounds = round & 2;
            QString affine = QStringLiteral("%1 \"li\"")
                                 .arg(byNumber ? QLatin1String(",") : QLatin1String(" Affine Units"));
            for (int i = 0; i < 6; ++i)
                affine += QStringLiteral(", ") + QString::number(figure(), 'g', 17);
            QString bounds = boundConditionAsString(QRectF(figure() - 9, figure() - 9, 9, 9));
            if (byNumber)
                bounds.replace(QLatin1String(" Bounds "), QLatin1String(", "));
            QString prj = form;
            prj.replace(QLatin1String("%10"), QString::number(100 * (hasAffine + 2 * hasBounds)));
            const CoordSystemPtr cs = factory->createWithoutDescription(
                prj.replace(QLatin1String("%2"), hasAffine ? affine : QString())
                    .replace(QLatin1String("%3"), hasBounds ? bounds : QString()));
            verify(*cs, hasAffine, hasBounds);
            setAffineParamsArray(*cs, nullptr, {figure(), 3, -3, figure(), 1e6, figure()});
            verify(*cs, true, hasBounds);
            cs->setRectCoordSystem(QRectF(figure(), figure(), 7, 8));
            verify(*cs, true, true);
            cs->setAffineTransform(nullptr);
            verify(*cs, false, true);
        }
    }

    // |AE - BD| <= 1e-12 (|A| + |B|)(|D| + |E|), whatever the size of the figures.
    void singular()
    {
        const support::DefaultFactoryKeeper keeper;
        const auto factory = support::shippedFactory();
        const CoordSystemPtr cs = factory->createWithoutDescription(QStringLiteral("NonEarth Units \"ft\""));
        const double nan = qQNaN(), inf = qInf();
        for (const std::array<double, 6> &m : {std::array<double, 6>{1, 1, 1, 1, 0, 0},
                                               {0, 0, 0, 1, 5, 6},
                                               {1, 0, 0, 0, 5, 6},
                                               {1, 1, 1, 1 + 1e-12, 0, 0},
                                               {nan, 0, 0, 1, 0, 0},
                                               {1, 0, 0, inf, 0, 0},
                                               {1, 0, 0, 1, nan, 0},
                                               {1, 0, 0, 1, 0, -inf}})
            VERIFY_THROWS(std::invalid_argument, setAffineParamsArray(*cs, nullptr, m),
                          QStringLiteral("Вырожденное аффинное преобразование"));
        VERIFY_THROWS(std::invalid_argument,
                      factory->createFromPrj(
                          QStringLiteral("NonEarth Units \"m\" Affine Units \"m\", 1, 2, 0, 2, 4, 0")),
                      QStringLiteral("Вырожденное аффинное преобразование"));
        QVERIFY(!cs->affineTransform());
        for (const double size : {1e-200, 1e-13, 1e200})
            setAffineParamsArray(*cs, nullptr, {size, 0, size, size, 0, 0});
        QCOMPARE(cs->affineUnit().unitCode(), int(LinearUnit::Foot));

        // An earlier unit does not stay when none is given and the system's has no name (an Indian yard).
        const CoordSystemPtr yards =
            factory->createFromProj(QStringLiteral("+proj=tmerc +lon_0=39 +datum=WGS84 +units=ind-yd"));
        yards->setAffineTransform(nullptr, cs->unit());
        setAffineParamsArray(*yards, nullptr, {1, 0, 0, 1, 5, 6});
        QVERIFY(!yards->affineUnit());
    }

    void create()
    {
        const support::DefaultFactoryKeeper keeper;
        QVERIFY(support::shippedFactory());
        const CoordSystemPtr utm = csStringToInternal(QStringLiteral("ePSG"), QStringLiteral("32637"));
        QVERIFY(utm);
        QCOMPARE(utm->sourceParameters(),
                 (CoordSystemTypes::SourceData{CoordSystemTypes::Epsg, QStringLiteral("32637")}));
        QVERIFY(csStringToInternal({CoordSystemTypes::Proj4, QStringLiteral("+proj=longlat +datum=WGS84")})
                    ->isLatLong());

        // The first entry whose number is nothing but the number.
        const support::ResourceCopy copy;
        copy.write(
            QStringLiteral("OracleSRID.xml"),
            "<s><cs srid=\"5,6\" mbproj=\"1, 0\"/><cs srid=\"5 6\" mbproj=\"1, 0\"/><cs mbproj=\"1, 0\"/>"
            "<cs srid=\" 5\" mbproj=\"1, 0\"/><cs srid=\"0x5\" mbproj=\"1, 1\"/><cs srid=\"5\" mbproj=\"1, "
            "0\"/></s>");
        const auto oracles = std::make_shared<CoordSysFactory>(copy.dir(), copy.dir(), QStringLiteral("ru"));
        QVERIFY(oracles->initCoordSystemEnvironment());
        QCOMPARE(oracles->createFromOracleSRID(5)->prjStr(), QStringLiteral("Earth Projection 1, 1"));
        QVERIFY_EXCEPTION_THROWN(oracles->createFromOracleSRID(0), std::runtime_error);

        const support::LogCapture log;
        QVERIFY(!csStringToInternal(QStringLiteral("proj4%1"), QStringLiteral("+proj=longlat")));
        QCOMPARE(log.lines(QStringLiteral("error")),
                 QStringList{QStringLiteral("Неизвестный тип проекции proj4%1")});

        CoordSysFactory::setDefaultCoordSysFactory(nullptr);
        VERIFY_THROWS(std::logic_error, csStringToInternal(QStringLiteral("epsg"), QStringLiteral("4326")),
                      QStringLiteral("Не проинициализированы КС"));
    }
};

NIVORA_TEST(TestCoordSystemStrings)
#include "tst_coordsystemstrings.moc"
