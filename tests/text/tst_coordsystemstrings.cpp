#include <coordsys/CoordSystemStrings.h>

#include <support/Support.h>

#include <array>
#include <random>

using namespace nivora::cs;
using Types = CoordSystemTypes;

class TestCoordSystemStrings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void detect_data()
    {
        const support::Columns<QString, int> row;
        // clang-format off
        row("empty", "", Types::Unknown);
        row("plain prj", "CoordSys Earth Projection 1, 104", Types::Prj);
        row("no word before the numbers", " 8 , 1001", Types::Prj);
        row("plan anywhere, any case", "план nonearth", Types::Prj);
        row("bare earth is nothing", "CoordSys Earth", Types::Unknown);
        row("proj", "  +proj=longlat +datum=WGS84", Types::Proj4);
        row("proj not first", "+datum=WGS84 +proj=longlat", Types::Unknown);
        row("several shift values: prj wins", "+proj=longlat +towgs84=1,2,3", Types::Prj);
        row("epsg", "4326", Types::Epsg);
        row("blank before", " 4326", Types::Epsg);
        row("line feed behind", "4326\n", Types::Epsg);
        row("blank behind", "4326 ", Types::Unknown);
        row("with authority", "EPSG:4326", Types::Unknown);
        row("three digits", "432", Types::Unknown);
        row("eight digits", "12345678", Types::Unknown);
        row("wkt wins over its own numbers", "GEOGCS[\"x\",DATUM[\"y\",SPHEROID[\"z\",6378137,298]]]", Types::Wkt);
        row("wkt not first", "[projcs", Types::Wkt);
        row("local needs its bracket", "LOCAL_CS", Types::Unknown);
        // Long texts: a run that is tried again from within takes seconds and runs into the timeout.
        row("blanks before a word", QByteArray(100000, ' ') + "x", Types::Unknown);
        row("blanks between", "CoordSys" + QByteArray(100000, '\t') + "Earth Projection 1", Types::Prj);
        row("digits without a comma", QByteArray(400000, '1') + "  x", Types::Unknown);
        row("digits and blanks", QByteArray(100000, '1') + "\n ,\t 1", Types::Prj);
        row("wkt 2", "PROJCRS[\"x\"", Types::Unknown);
        // clang-format on
    }
    void detect()
    {
        const auto [text, type] = support::row<QString, int>();
        QCOMPARE(static_cast<int>(tryDetectTypeCoordSystem(text)), type);
    }

    void clauses_data()
    {
        const support::Columns<QString, QString, QString, QRectF>
            row; // text, flags (affine, bounds), affine, bounds
        // clang-format off
        row("empty", "", "00", "", {});
        row("four digits elsewhere", "Earth Projection 8, 1001, 7, 3900, 0, 1, 500000, 0", "00", "", {});
        row("affine by thousands", "Earth Projection 1001, 104, \"m\", 1, 0, 0, 0, 1, 0", "10", "\"m\" 1 0 0 0 1 0", {});
        row("bounds by thousands", "CoordSys Earth Projection 2001, 104, 7, 10, 20, -5, -6", "01", "", QRectF(-5, -6, 15, 26));
        row("both by thousands", "3008, 104, 7, 39, 0, 1, 0, 0, 3, 1, 2, 3, 4, 5, 6, 0, 0, 9, 8", "11", "3 1 2 3 4 5 6", QRectF(0, 0, 9, 8));
        row("4000 announces nothing", "Earth Projection 4008, 104, 7", "00", "", {});
        row("bounds by words", "Earth Projection 1, 104 bounds (0, 0) (100, 50)", "02", "", QRectF(0, 0, 100, 50));
        row("exponents", "Earth Projection 1, 104 Bounds(-1e-05 ,-2.5E+1 )(1e2,0)", "02", "", QRectF(-1e-5, -25, 100.00001, 25));
        row("Cyrillic unit", "1, 104 AFFINE  units \"метр\", 1, 0, 5, 0, 1, 6", "10", "\"метр\" 1 0 5 0 1 6", {});
        row("both by words", "1, 104 Affine Units \"m\", 1, 0, 5, 0, 1, 6 Bounds (0, 0) (1, 1)", "12", "\"m\" 1 0 5 0 1 6", QRectF(0, 0, 1, 1));
        row("five digits announce nothing", "Earth Projection 10008, 104, 7", "00", "", {});
        row("plan's unit behind affine",
            "NonEarth Affine Units \"m\", 1, 0, 5, 0, 1, +6 Units \"ft\" Bounds (0, 0) (1, 1)", "12",
            "\"m\" 1 0 5 0 1 6", QRectF(0, 0, 1, 1));
        row("also behind thousands", "1008, 104, 7, 39, 0, 1, 5, 0 Affine Units m, 1, 0, 5, 0, 1, 6", "10", "", {});
        row("bounds before affine", "1, 104 Bounds (0, 0) (1, 1) Affine Units \"m\", 1, 0, 5, 0, 1, 6", "12", "", QRectF(0, 0, 1, 1));
        row("too short for thousands", "3001, 104", "11", "", {});
        row("half of the bounds", "1, 104 Bounds (0, 0)", "02", "", {});
        row("bounds that overflow", "1, 104 Bounds (-1e308, 0) (1e308, 1)", "02", "", {});
        row("numbers out of range count as 0", "1, 104 Bounds (-1e999, 0) (5, 1)", "02", "", QRectF(0, 0, 5, 1));
        // clang-format on
    }
    void clauses()
    {
        const auto [prj, flags, affine, bounds] = support::row<QString, QString, QString, QRectF>();
        const PrjClauses announced = hasAffineOrBoundsInString(prj);
        QCOMPARE(QString::number(announced.affine) + QString::number(announced.bounds), flags);
        const AffineAndBounds found = affineParamsAndBoundsFromPrj(prj);
        QCOMPARE(found.affine.join(QLatin1Char(' ')), affine);
        QCOMPARE(found.bounds, bounds);
    }

    void projText()
    {
        QCOMPARE(projUnitStringForLinearUnit(LinearUnit::NauticalMile), "+units=kmi"_s);
        QCOMPARE(projUnitStringForLinearUnit(LinearUnit::Chain), "+units=ch"_s);
        QCOMPARE(projUnitStringForLinearUnit(LinearUnit::Degree), "m"_s);
        QCOMPARE(projNonEarthString(LinearUnit::Rod),
                 "+proj=eqc +R=6370997 +to_meter=5.02921005842012 +no_defs"_s);
    }

    void systemLaw_data()
    {
        const support::Columns<QString> row; // form: %1 thousands, %2 affine, %3 bounds
        // clang-format off
        row.named("NonEarth%2 Units \"ft\"%3");
        row.named("NonEarth Units \"ft\"%2%3");
        row.named("Earth Projection 1, 104%2%3");
        row.named("Earth Projection %101, 104%2%3");
        row.named("Earth Projection 8, 999, 3, 23.5, -141, -81, \"survey ft\", 39, 0, 0.9996, 5e5, 0%2%3");
        row.named("%108, 999, 3, 23.5, -141, -81, \"survey ft\", 39, 0, 0.9996, 5e5, 0%2%3");
        row.named("CoordSys Earth Projection %103, 9999, 3, 24, -123, -94, -0.02, 0.25, 0.13, 1.1, 0, 7, 39, 50, 45, 55, 0, 0%2%3");
        // clang-format on
    }

    // A system reads back from its CoordSys string and from its tag, whatever form its clauses had; and both
    // follow the object when clauses are set, replaced and removed.
    void systemLaw()
    {
        const auto [form] = support::row<QString>();
        const support::DefaultFactoryKeeper keeper;
        const auto factory = support::shippedFactory();
        const auto verify = [&factory](const CoordSystem &cs, bool affine, bool bounds) {
            const QString prj = cs.prjStr();
            QCOMPARE(prj.count("Affine"_s), int(affine));
            QCOMPARE(prj.count("Bounds"_s), int(bounds));
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
        const bool byNumber = form.contains("%1"_s);
        for (int round = 0; round < 16; ++round) {
            const bool hasAffine = round & 1;
            const bool hasBounds = round & 2;
            QString affine = "%1 \"li\""_s.arg(byNumber ? ","_s : " Affine Units"_s);
            for (int i = 0; i < 6; ++i)
                affine += ", "_s + QString::number(figure(), 'g', 17);
            QString bounds = boundConditionAsString(QRectF(figure() - 9, figure() - 9, 9, 9));
            if (byNumber)
                bounds.replace(" Bounds "_s, ", "_s);
            QString prj = form;
            prj.replace("%10"_s, QString::number(100 * (hasAffine + 2 * hasBounds)));
            const CoordSystemPtr cs =
                factory->createWithoutDescription(prj.replace("%2"_s, hasAffine ? affine : QString())
                                                      .replace("%3"_s, hasBounds ? bounds : QString()));
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
        const CoordSystemPtr cs = factory->createWithoutDescription("NonEarth Units \"ft\""_s);
        const double nan = qQNaN(), inf = qInf();
        using Matrix = std::array<double, 6>;
        // clang-format off
        for (const Matrix &m : {Matrix{1, 1, 1, 1, 0, 0}, {0, 0, 0, 1, 5, 6}, {1, 0, 0, 0, 5, 6}, {1, 1, 1, 1 + 1e-12, 0, 0},
                                {nan, 0, 0, 1, 0, 0}, {1, 0, 0, inf, 0, 0}, {1, 0, 0, 1, nan, 0}, {1, 0, 0, 1, 0, -inf}})
            // clang-format on
            VERIFY_THROWS(std::invalid_argument, setAffineParamsArray(*cs, nullptr, m),
                          "Вырожденное аффинное преобразование");
        VERIFY_THROWS(std::invalid_argument,
                      factory->createFromPrj("NonEarth Units \"m\" Affine Units \"m\", 1, 2, 0, 2, 4, 0"_s),
                      "Вырожденное аффинное преобразование");
        QVERIFY(!cs->affineTransform());
        for (const double size : {1e-200, 1e-13, 1e200})
            setAffineParamsArray(*cs, nullptr, {size, 0, size, size, 0, 0});
        QCOMPARE(cs->affineUnit().unitCode(), int(LinearUnit::Foot));

        // An earlier unit does not stay when none is given and the system's has no name (an Indian yard).
        const CoordSystemPtr yards =
            factory->createFromProj("+proj=tmerc +lon_0=39 +datum=WGS84 +units=ind-yd"_s);
        yards->setAffineTransform(nullptr, cs->unit());
        setAffineParamsArray(*yards, nullptr, {1, 0, 0, 1, 5, 6});
        QVERIFY(!yards->affineUnit());
    }

    void create()
    {
        const support::DefaultFactoryKeeper keeper;
        QVERIFY(support::shippedFactory());
        const CoordSystemPtr utm = csStringToInternal("ePSG"_s, "32637"_s);
        QCOMPARE(utm->sourceParameters(), (Types::SourceData{Types::Epsg, "32637"_s}));
        QVERIFY(csStringToInternal({Types::Proj4, "+proj=longlat +datum=WGS84"_s})->isLatLong());

        // The first entry whose number is nothing but the number.
        const support::ResourceCopy copy;
        copy.write("OracleSRID.xml"_s,
                   R"(<s><cs srid="5,6" mbproj="1, 0"/><cs srid="5 6" mbproj="1, 0"/><cs mbproj="1, 0"/>
<cs srid=" 5" mbproj="1, 0"/><cs srid="5"/><cs srid="5" mbproj=" "/><cs srid="0x5" mbproj="1, 1"/><cs srid="5" mbproj="1, 0"/></s>)");
        const auto oracles = std::make_shared<CoordSysFactory>(copy.dir(), copy.dir(), "ru"_s);
        QVERIFY(oracles->initCoordSystemEnvironment());
        const CoordSystemPtr five = oracles->createFromOracleSRID(5);
        QCOMPARE(five->prjStr(), "Earth Projection 1, 1"_s);
        QCOMPARE(five->sourceParameters(), (Types::SourceData{Types::Oracle, "5"_s}));
        QVERIFY_EXCEPTION_THROWN(oracles->createFromOracleSRID(0), std::runtime_error);

        const support::LogCapture log;
        QVERIFY(!csStringToInternal("proj4%1"_s, "+proj=longlat"_s));
        QCOMPARE(log.lines("error"_s), QStringList{"Неизвестный тип проекции proj4%1"_s});

        CoordSysFactory::setDefaultCoordSysFactory(nullptr);
        VERIFY_THROWS(std::logic_error, csStringToInternal("epsg"_s, "4326"_s), "Не проинициализированы КС");
    }
};

NIVORA_TEST(TestCoordSystemStrings)
#include "tst_coordsystemstrings.moc"
