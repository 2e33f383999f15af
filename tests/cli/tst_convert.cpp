#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <QPolygonF>
#include <QRegularExpression>

#include <cmath>

namespace {

/// A MIF of one point with a text in Windows-1251.
QByteArray mif(const QString &clause, const char *point = "100.5 -20.25")
{
    return "Version 300\nCharset \"WindowsCyrillic\"\nDelimiter \",\"\nCoordSys " + clause.toUtf8() +
           "\nColumns 2\n  Id Integer\n  Name Char(20)\nData\n\nPoint " + point + "\n";
}

QByteArray clauseOf(const QByteArray &mifText)
{
    static const QRegularExpression line(QStringLiteral("^CoordSys (.*)$"),
                                         QRegularExpression::MultilineOption);
    return line.match(QString::fromUtf8(mifText)).captured(1).toUtf8();
}

/// Of all rings of a WKT; there are no holes.
double areaOf(const QByteArray &wkt)
{
    static const QRegularExpression ring(QStringLiteral("\\(([^()]+)\\)")); // "(0 0,1 0,1 1,0 0)"
    double area = 0.0;
    for (auto rings = ring.globalMatch(QString::fromLatin1(wkt)); rings.hasNext();) {
        QPolygonF places;
        for (const QString &place : rings.next().captured(1).split(QLatin1Char(',')))
            places << QPointF(place.section(QLatin1Char(' '), 0, 0).toDouble(),
                              place.section(QLatin1Char(' '), 1, 1).toDouble());
        double twice = 0.0;
        for (int i = 1; i < places.size(); ++i)
            twice += places.at(i - 1).x() * places.at(i).y() - places.at(i).x() * places.at(i - 1).y();
        area += std::fabs(twice) / 2.0;
    }
    return area;
}

/// A directory with the inputs of one test.
class Place
{
public:
    void write(const char *name, const QByteArray &content) const
    {
        QFile file(m_dir.filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    QByteArray read(const char *name) const
    {
        QFile file(m_dir.filePath(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    CliRun convert(const QString &arguments) const
    {
        return runShell(QStringLiteral("nivora-cs convert ") + arguments, m_dir.path());
    }
    QString path() const { return m_dir.path(); }
    QStringList files() const
    {
        return QDir(m_dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

private:
    QTemporaryDir m_dir;
};

const char *const geometries[] = {
    "POINT ZM (37 55 3 4)",
    "LINESTRING Z (37 55 1,38 56 2)",
    "MULTIPOLYGON (((37 55,38 55,38 56,37 55)),((39 55,40 55,40 56,39 55)))",
    "GEOMETRYCOLLECTION (POINT (37 55),COMPOUNDCURVE (CIRCULARSTRING (37 55,37.5 55.5,38 55),(38 55,39 56)))",
    "CURVEPOLYGON M (CIRCULARSTRING M (37 55 1,38 56 2,39 55 3,38 54 4,37 55 5))",
    "TIN (((37 55,38 55,37 56,37 55)))",
    "POINT EMPTY",
};

} // namespace

class TestCliConvert : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clauses_data()
    {
        QTest::addColumn<QString>("clause");
        const QString bounds = QStringLiteral(" Bounds (-1000, -2000) (3000, 4000)");
        const auto row = [&](const char *clause) {
            QTest::newRow(clause) << QString::fromUtf8(clause) + bounds;
        };
        row("NonEarth Units \"survey ft\"");
        row("Earth Projection 8, 999, 3, 24, -123, -94, \"m\", 39, 0, 1, 0, 0");
        row("Earth Projection 8, 9999, 3, 24, -123, -94, -0.02, 0.25, 0.13, 1.1, 0, \"km\", 39, 0, 1, 0, 0");
        row("Earth Projection 3, 62, \"survey ft\", -98, 27.5, 28.5, 30.5, 0, 0");
        row("Earth Projection 8, 1001, \"m\", 39, 0, 1, 0, 0 Affine Units \"m\", 0.0000000000001, 0.5, 5, "
            "-0.5, 1, 7");
        row("NonEarth Units \"m\" Affine Units \"ft\", 2, 0, 0, 0, 2, 0");
    }

    // Written by this program through the driver, read back by it: a MIF to the letter; a table to half of
    // the step that it counts coordinates in (6000 m in 2e9 steps).
    void clauses()
    {
        QFETCH(QString, clause);
        const Place place;
        place.write("a.mif", mif(clause));
        place.write("a.mid", "1,\"\xcc\xee\xf1\xea\xe2\xe0\"\n");
        const CliRun toMif = place.convert(QStringLiteral("a.mif b.mif"));
        QVERIFY2(toMif.status == 0, toMif.describe());
        const QByteArray first = clauseOf(place.read("b.mif"));
        QCOMPARE(place.convert(QStringLiteral("b.mif c.mif")).status, 0);
        QCOMPARE(place.read("c.mif"), place.read("b.mif"));
        QVERIFY2(place.read("b.mif").contains("Point 100.5 -20.25\n"), place.read("b.mif"));
        QCOMPARE(place.read("b.mid"), place.read("a.mid"));
        for (const QString &part : clause.split(QLatin1Char(' ')))
            QVERIFY2(first.contains(part.toUtf8()), first);

        QCOMPARE(place.convert(QStringLiteral("b.mif t.tab")).status, 0);
        QCOMPARE(place.convert(QStringLiteral("t.tab d.mif")).status, 0);
        QCOMPARE(clauseOf(place.read("d.mif")), first);
        QVERIFY2(place.read("d.mif").contains("Point 100.5"), place.read("d.mif"));
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<int>("lossyStatus");
        const auto row = [](const char *arguments, const char *reason, int lossyStatus) {
            QTest::newRow(arguments) << QString::fromUtf8(arguments) << QString::fromUtf8(reason)
                                     << lossyStatus;
        };
        row("affine.mif o.kml", "affine transformation", 0);
        row("points.csv o.csv --from 4326", "no coordinate system", 0);
        row("points.csv o.kml --from 4326 --to 32637", "GDAL converts into it", 0);
        row("shapes.csv o.mif --from 4326", "no measures", 0);
        row("surface.csv o.mif --from 4326", "no surfaces", 0);
        row("mixed.csv o.shp --from 4326", "cannot be written", 1);
        row("points.csv o.mif --from 4326", "are cut to 0 letters", 0);
        row("coded.csv o.gpkg --from 4326", "not UTF-8, see --encoding", 0);
        row("big.json o.mif", "is Real, not Integer64", 0);
        row("points.csv o.gpkg --to 32637", "give --from", 2);
        row("points.csv o.gpkg --from nothing", "--from", 2);
        row("points.csv o.gpkg --segmentize 0", "greater than 0", 2);
        row("nosuch.tab o.mif", "cannot read nosuch.tab", 2);
        row("damaged.tab o.mif", "", 2);
        row("points.csv points.csv", "exists already", 2);
        row("points.csv o.nope", "list-formats", 2);
        row("points.csv nodir/o.gpkg", "nodir", 2);
    }

    // Nothing is left behind: no output, no part of one, no directory.
    void refusals()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, reason);
        QFETCH(int, lossyStatus);
        const Place place;
        place.write("affine.mif",
                    mif(QStringLiteral("NonEarth Units \"m\" Affine Units \"m\", 2, 0, 0, 0, 2, 0")));
        place.write("affine.mid", "1,a\n");
        place.write("points.csv", "id,WKT,name\n1,POINT (37 55),\xE6\x97\xA5\n");
        place.write("mixed.csv", "id,WKT\n1,POINT (37 55)\n2,\"LINESTRING (37 55,38 56)\"\n");
        place.write("shapes.csv", "id,WKT\n1,POINT M (37 55 1)\n");
        place.write("surface.csv", "id,WKT\n2,\"POLYHEDRALSURFACE (((37 55,38 55,37 56,37 55)))\"\n");
        place.write("coded.csv", "id,WKT,name\n1,POINT (37 55),\xcc\xee\n");
        place.write("big.json", "{\"type\":\"Feature\",\"properties\":{\"n\":123456789012},"
                                "\"geometry\":{\"type\":\"Point\",\"coordinates\":[37,55]}}");
        place.write("damaged.tab", "!table\n!version 300\n!charset Neutral\n\nDefinition Table\n"
                                   "  Type NATIVE Charset \"Neutral\"\n  Fields 1\n    Id Integer ;\n");
        place.write("damaged.map", QByteArray(600, 'x'));
        place.write("damaged.dat", QByteArray());
        const QStringList before = place.files();
        const CliRun refused = place.convert(arguments);
        QVERIFY2(refused.isRefusal(reason), refused.describe());
        QCOMPARE(place.files(), before);
        const CliRun lossy = place.convert(arguments + QStringLiteral(" --lossy"));
        QVERIFY2(lossy.status == lossyStatus, lossy.describe());
        if (lossyStatus == 2)
            QCOMPARE(place.files(), before);
        else
            QVERIFY2(lossy.err.contains("nivora-cs: lost: "), lossy.describe());
    }

    // Through BulkTransform, which copies between equal systems, and back into text.
    void geometriesSurvive()
    {
        const Place place;
        QByteArray table = "id,WKT\n";
        for (const char *geometry : geometries)
            table += "7,\"" + QByteArray(geometry) + "\"\n";
        place.write("a.csv", table);
        QCOMPARE(place.convert(QStringLiteral("a.csv b.gpkg --from 4326 --to 4326")).status, 0);
        QCOMPARE(place.convert(QStringLiteral("b.gpkg c.csv --to 4326 --lossy")).status, 0);
        const QByteArray result = place.read("c.csv");
        for (const char *geometry : geometries)
            QVERIFY2(result.contains(geometry), result);
        // The geometries of the source say their system themselves.
        QCOMPARE(place.convert(QStringLiteral("b.gpkg d.gml --to 32637 --lossy")).status, 0);
        const QByteArray gml = place.read("d.gml");
        QVERIFY2(gml.contains("EPSG::32637") && !gml.contains("EPSG::4326"), gml);
    }

    // (37, 55) in UTM zone 37 by cs2cs 9.1.1; the second feature's latitude does not exist.
    void transforms()
    {
        const Place place;
        place.write("a.csv",
                    "id,WKT\n1,\"LINESTRING Z (39 55 7,37 55 8)\"\n2,\"LINESTRING (37 55,37 95)\"\n");
        const CliRun run = place.convert(QStringLiteral("a.csv b.csv --from 4326 --to 32637 --lossy"));
        QVERIFY2(run.status == 1 && run.err.contains("1 of 2 features left out"), run.describe());
        QVERIFY2(place.read("b.csv").contains("372071.8086") && place.read("b.csv").contains("6096620.7064"),
                 place.read("b.csv"));
        QCOMPARE(place.read("b.rejected.csv"),
                 QByteArray("layer,fid,x,y,reason\n\"a\",2,37,95,cannot be transformed\n"));

        // A parallel in an azimuthal plane is an arc of 60 degrees and 3330 km: its middle lies 446 km off.
        place.write("p.csv", "id,WKT\n1,\"LINESTRING Z (0 60 0,60 60 60)\"\n");
        const auto vertices = [&place](const char *metres) {
            place.convert(
                QStringLiteral("p.csv q.csv --overwrite --lossy --from 4326 --to 3575 --segmentize ") +
                QLatin1String(metres));
            return place.read("q.csv").count(',') - 1; // header, behind the geometry; one less than vertices
        };
        QCOMPARE(vertices("500000"), 2);
        QCOMPARE(vertices("400000"), 3);
        // A plane that is a thousand times smaller bends as many metres.
        place.convert(
            QStringLiteral("p.csv s.mif --from 4326 --lossy --segmentize 400000 --to 'CoordSys Earth "
                           "Projection 5, 104, \"m\", 0, 90, 90 Affine Units \"m\", 0.001, 0, 0, 0, "
                           "0.001, 0'"));
        QVERIFY2(place.read("s.mif").contains("Pline 3\n"), place.read("s.mif"));
        // 2^n pieces are off by 446 km / 4^n: 109 m at n = 6, 27 m at n = 7
        QCOMPARE(vertices("50"), 129);
    }

    void seams_data()
    {
        QTest::addColumn<QByteArray>("geometry");
        QTest::addColumn<QString>("systems");
        QTest::addColumn<QByteArrayList>("parts"); // of the output
        QTest::addColumn<QByteArray>("reason");    // for which it is rejected
        const auto row = [](const char *name, const char *geometry, const char *systems,
                            const QByteArrayList &parts, const char *reason = "") {
            QTest::newRow(name) << QByteArray(geometry) << QString::fromLatin1(systems) << parts
                                << QByteArray(reason);
        };
        // 20037508.342789 m is 180 degrees, 19926188.851996 m 179, 20148827.833583 m 181; 111325.142866 m is
        // 1 north.
        row("a polygon over 180",
            "POLYGON ((19926188.851996 0,20148827.833583 0,20148827.833583 111325.142866,"
            "19926188.851996 111325.142866,19926188.851996 0))",
            "--from 3857 --to 4326", {"MULTIPOLYGON (((", "180 0", "-180 0", "179", "-179"});
        row("a line over 180, with heights", "LINESTRING Z (19926188.851996 0 1,20148827.833583 0 3)",
            "--from 3857 --to 4326", {"MULTILINESTRING Z ((179", "180 0 1.99999", "(-180 0 1.99999", "-179"});
        row("one that does not", "POLYGON ((0 0,111319.490793 0,0 111325.142866,0 0))",
            "--from 3857 --to 4326", {"\"POLYGON ((0 0,"});
        row("around the pole",
            "POLYGON ((-1000000 -1000000,1000000 -1000000,1000000 1000000,-1000000 1000000,"
            "-1000000 -1000000))",
            "--from 3995 --to 4326", {"\"POLYGON ((", "-180 90", "180 90"});
        row("the pole has no place in Mercator",
            "POLYGON ((-1000000 -1000000,1000000 -1000000,1000000 1000000,"
            "-1000000 1000000,-1000000 -1000000))",
            "--from 3995 --to 3857", {}, "where the output's map has no end");
        row("over a projection's own cut", "POLYGON ((-40 -10,-20 -10,-20 10,-40 10,-40 -10))",
            "--from 4326 --to '+proj=eqearth +lon_0=150 +datum=WGS84'",
            {"MULTIPOLYGON (((", "((16", "((-16"});
        row("longer than half of the earth", "LINESTRING (-170 0,20 0,170 0)",
            "--from 4326 --to '+proj=eqearth +lon_0=150 +datum=WGS84'", {}, "either way");
        row("all of the equator", "LINESTRING (-180 0,180 0)",
            "--from 4326 --to '+proj=eqearth +lon_0=150 +datum=WGS84'", {"MULTILINESTRING (("});
        row("drawn across 180 without a cut", "POLYGON ((177 -16,-178 -16,-178 -19,177 -19,177 -16))",
            "--from 4326 --to 3832", {}, "either way");
        // A box would have been cut in two.
        row("two sides of 180 are one on a map around it",
            "MULTIPOLYGON (((177 -16,180 -16,180 -19,177 -19,177 -16)),"
            "((-180 -16,-178 -16,-178 -19,-180 -19,-180 -16)))",
            "--from 4326 --to 3832", {"\"MULTIPOLYGON (((", "3005626.", "3562223."});
        row("the map folds there", "POLYGON ((-40 40,-30 40,-30 50,-40 50,-40 40))", "--from 4326 --to 5514",
            {}, "where the output's map has no end");
    }
    void seams()
    {
        QFETCH(QByteArray, geometry);
        QFETCH(QString, systems);
        QFETCH(QByteArrayList, parts);
        QFETCH(QByteArray, reason);
        const Place place;
        place.write("a.csv", "id,WKT\n1,\"" + geometry + "\"\n");
        const CliRun run = place.convert(QStringLiteral("a.csv b.csv --allow datum ") + systems);
        QCOMPARE(run.status, parts.isEmpty() ? 1 : 0);
        const QByteArray out = place.read("b.csv");
        for (const QByteArray &part : qAsConst(parts))
            QVERIFY2(out.contains(part), out.left(2000));
        QVERIFY2(place.read("b.rejected.csv").contains(reason), place.read("b.rejected.csv"));
    }

    // All maps that keep areas show the same one, wherever they are cut open.
    void seamsKeepArea_data()
    {
        QTest::addColumn<QByteArray>("geometry");
        QTest::addColumn<int>("hemisphere"); // on whose polar map it fits; 0 for none
        const auto row = [](const char *name, const QByteArray &ring, int hemisphere) {
            QTest::newRow(name) << "POLYGON ((" + ring + "))" << hemisphere;
        };
        const auto coast = [](double latitude, double firstX) {
            QByteArrayList places;
            for (int i = 0; i <= 72; ++i)
                places << QByteArray::number(std::remainder(firstX + 5.0 * i, 360.0)) + ' ' +
                              QByteArray::number(latitude + 3.0 * std::sin(10.0 * M_PI * i / 72.0));
            return places;
        };
        QByteArrayList antarctica = coast(-70.0, -180.0);
        antarctica.first() = "-180 -70";
        const QByteArray closed = antarctica.mid(0, 72).join(',') + ",180 -70,180 -90,-180 -90,-180 -70";
        row("Antarctica, with the pole's row", closed, -1);
        row("a cap that merely winds around the pole", coast(70.0, 5.0).join(','), 1);
        row("a box", "-180 60,-180 90,180 90,180 60,-180 60", 1);
        row("over 180, running on", "170 -30,190 -30,200 10,160 20,170 -30", 0);
    }
    void seamsKeepArea()
    {
        QFETCH(QByteArray, geometry);
        QFETCH(int, hemisphere);
        const Place place;
        place.write("a.csv", "id,WKT\n1,\"" + geometry + "\"\n");
        QStringList targets{"'+proj=eqearth +datum=WGS84'"_s, "EPSG:8859"_s,
                            "'+proj=cea +lon_0=-100 +datum=WGS84'"_s};
        if (hemisphere != 0)
            targets << (hemisphere > 0 ? "EPSG:6931"_s : "EPSG:6932"_s);
        QVector<double> areas;
        for (const QString &target : qAsConst(targets)) {
            const CliRun run = place.convert(
                "a.csv b.csv --overwrite --segmentize 1000 --allow datum --from 4326 --to "_s + target);
            QVERIFY2(run.status == 0, run.describe());
            areas << areaOf(place.read("b.csv"));
            QVERIFY2(areas.last() > 1e13, run.describe()); // not the strip between the coast and its chord
            QVERIFY2(std::fabs(areas.last() / areas.first() - 1.0) < 1e-3, qPrintable(target));
        }
    }

    // The European equal-area grid has its false origin in an affine clause, polar maps in their parameters.
    void thereAndBack_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("hasClause");
        QTest::newRow("a false origin in the clause") << "EPSG:3035" << true;
        QTest::newRow("around the pole") << "EPSG:3413" << false;
    }
    void thereAndBack()
    {
        QFETCH(QString, code);
        QFETCH(bool, hasClause);
        const Place place;
        place.write("a.csv", "id,WKT\n1,\"POINT (4321000.25 3210000.5)\"\n");
        CliRun done = place.convert("a.csv a.gpkg --lossy --from "_s + code);
        QVERIFY2(done.status == 0, done.describe());
        const CliRun refused = place.convert("a.gpkg b.mif"_s);
        QCOMPARE(refused.err.contains("--allow affine") || refused.err.contains("affine"), hasClause);
        for (const QString &line : {"a.gpkg b.mif --overwrite --allow affine,names,types,texts"_s,
                                    "b.mif c.gpkg --lossy"_s, "c.gpkg d.csv --lossy"_s}) {
            done = place.convert(line);
            QVERIFY2(done.status == 0, done.describe());
        }
        QVERIFY2(place.read("d.csv").contains("4321000.25 3210000.5"), place.read("d.csv"));
        const CliRun info = runShell("nivora-cs info --format mapinfo @b.mif"_s, place.path());
        QCOMPARE(info.out.contains("Affine"), hasClause);
    }

    // Formats whose drivers say nothing of heights, or lose them in a layer of any type.
    void heights_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"o.geojson", "o.fgb", "o.shp", "o.dxf"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void heights()
    {
        QFETCH(QString, name);
        const Place place;
        place.write("a.csv", "id,WKT\n1,POINT Z (37 55 3)\n");
        place.convert(QStringLiteral("a.csv %1 --from 4326 --lossy").arg(name));
        place.convert(QStringLiteral("%1 b.csv --lossy").arg(name));
        QVERIFY2(place.read("b.csv").contains("POINT Z (37 55 3)"), place.read("b.csv"));
    }

    // What was there before does not speak for what is there now; what has no system is a plan, and counted
    // in steps that the data need.
    void overwrites()
    {
        const Place place;
        place.write("a.csv", "id,WKT\n1,POINT (37.123456789 55)\n");
        QCOMPARE(place.convert(QStringLiteral("a.csv o.shp --from 4326")).status, 0);
        QCOMPARE(place.convert(QStringLiteral("a.csv o.shp --overwrite")).status, 0);
        QVERIFY(!place.files().contains(QStringLiteral("o.prj")));
        QCOMPARE(place.convert(QStringLiteral("o.shp o.tab")).status, 0);
        QCOMPARE(place.convert(QStringLiteral("o.tab o.mif")).status, 0);
        QVERIFY2(clauseOf(place.read("o.mif")).startsWith("NonEarth Units \"m\" Bounds"),
                 place.read("o.mif"));
        QVERIFY2(place.read("o.mif").contains("Point 37.12345678"), place.read("o.mif"));
        place.write("c.csv", "WKT,\xcc\xee\nPOINT (37 55),\xcc\xee\n");
        QCOMPARE(place.convert(QStringLiteral("c.csv c.geojson --from 4326 --encoding cp1251")).status, 0);
        QVERIFY2(place.read("c.geojson").contains("\"Мо\": \"Мо\""), place.read("c.geojson"));
    }

    void formatsAreListed()
    {
        const CliRun run = ::run({QStringLiteral("list-formats")});
        QVERIFY2(run.status == 0 && run.out.contains("MapInfo File\trw\ttab,mif,mid\t"), run.describe());
    }
};

NIVORA_TEST(TestCliConvert)
#include "tst_convert.moc"
