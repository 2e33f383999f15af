#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <QTemporaryDir>

namespace {

/// A file of one feature, or of several with commas between them.
QByteArray geoJson(const QString &properties, const QString &geometry)
{
    QString features;
    for (const QString &one : geometry.split(QLatin1Char('|')))
        features +=
            (features.isEmpty() ? QString() : QStringLiteral(",")) +
            QStringLiteral("{\"type\":\"Feature\",\"properties\":{%1},\"geometry\":%2}").arg(properties, one);
    return (QStringLiteral("{\"type\":\"FeatureCollection\",\"features\":[") + features +
            QStringLiteral("]}"))
        .toUtf8();
}

const QString point = QStringLiteral(R"({"type":"Point","coordinates":[37.25,55.5]})");

} // namespace

/// What formats do to values and geometries: equal, or refused by the name of the loss and accepted by it
/// alone.
class TestCliLosses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        // Properties, geometry (a point when empty), for each extension the loss ("" for none).
        const support::Columns<QString, QString, QString> row;
        row("numbers", R"("a":123456.789,"b":-1e15,"c":5)", "", "gpkg shp tab mif geojson fgb kml");
        row("fine numbers", R"("a":1.23456789e-9)", "", "gpkg shp:types geojson fgb");
        row("large whole numbers", R"("a":123456789012)", "", "gpkg shp tab:types mif:types");
        row("a long text", QStringLiteral(R"("t":"%1")").arg(QString(300, QLatin1Char('x'))), "",
            "gpkg tab:texts shp:texts geojson fgb mif");
        row("line feeds", R"("t":"one\ntwo")", "", "gpkg tab shp geojson mif:texts");
        row("letters", R"("t":"日本","u":"Москва")", "", "gpkg shp mif:texts tab:texts");
        row("nothing", R"("n":5,"s":"x"},"geometry":null},{"type":"Feature","properties":{"n":null,"s":null)",
            "", "gpkg shp tab:types mif:types geojson");
        row("zones of time", R"("t":"2020-01-02T03:04:05+03:00")", "",
            "gpkg geojson fgb tab:types mif:types shp:types");
        row("dates", R"("t":"2020-01-02")", "", "gpkg geojson tab mif shp fgb:types");
        row("lists", R"("l":["a","b"])", "", "geojson gpkg:types fgb:types tab:types kml:types");
        row("names that differ by case", R"("Name":1,"name":2,"NAME":3)", "",
            "geojson fgb gpkg:names csv:names,datum tab:names shp:names");
        row("a column fid", R"("fid":"abc","geom":1)", "", "gpkg geojson tab");
        row("no columns", "", "", "gpkg shp tab mif geojson fgb kml");
        row("heights", R"("a":1)", R"({"type":"Point","coordinates":[37,55,7]})",
            "gpkg shp geojson tab:heights");
        row("several points", R"("a":1)", R"({"type":"MultiPoint","coordinates":[[1,2],[3,4]]})",
            "gpkg shp geojson tab:features mif:features");
        row("a collection", R"("a":1)",
            R"({"type":"GeometryCollection","geometries":[{"type":"Point","coordinates":[1,2]},{"type":"LineString","coordinates":[[1,2],[3,4]]}]})",
            "gpkg geojson mif:features tab:features");
        row("a line of one vertex", R"("a":1)",
            R"({"type":"LineString","coordinates":[[1,2]]}|{"type":"LineString","coordinates":[[1,2],[3,4]]})",
            "gpkg geojson mif:features tab:features");
        row("kinds of geometry", R"("a":1)",
            R"({"type":"Point","coordinates":[1,2]}|{"type":"LineString","coordinates":[[1,2],[3,4]]})",
            "gpkg shp:features tab mif geojson fgb kml gml");
        row("no geometry", R"("a":1)", R"({"type":"Point","coordinates":[1,2]}|null)",
            "gpkg shp tab mif geojson kml gml fgb:features");
        row("long names", R"("a_name_of_twenty_letters":1)", "",
            "gpkg shp:names tab mif geojson fgb kml gml");
        row("several polygons", R"("a":1)",
            R"({"type":"MultiPolygon","coordinates":[[[[1,2],[3,2],[3,4],[1,2]]],[[[5,2],[6,2],[6,4],[5,2]]]]})",
            "gpkg geojson mif tab shp kml");
    }
    void values()
    {
        const auto [properties, geometry, formats] = support::row<QString, QString, QString>();
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("a.geojson")),
                           geoJson(properties, geometry.isEmpty() ? point : geometry));
        for (const QString &format : formats.split(QLatin1Char(' '))) {
            const QString line = QStringLiteral("rm -f o.*; nivora-cs convert a.geojson o.%1")
                                     .arg(format.section(QLatin1Char(':'), 0, 0));
            const QString loss = format.section(QLatin1Char(':'), 1);
            const CliRun plain = runShell(line, dir.path());
            if (loss.isEmpty()) {
                QVERIFY2(plain.status == 0 && plain.err.isEmpty(),
                         qPrintable(format + QString::fromUtf8(plain.describe())));
                continue;
            }
            QVERIFY2(plain.isRefusal(QStringLiteral("--allow %1 goes on without").arg(loss)),
                     qPrintable(format + QString::fromUtf8(plain.describe())));
            const CliRun allowed = runShell(line + QStringLiteral(" --allow ") + loss, dir.path());
            QVERIFY2(allowed.status >= 0 && allowed.status < 2 && allowed.err.contains("nivora-cs: lost: "),
                     qPrintable(format + QString::fromUtf8(allowed.describe())));
        }
    }

    // Neither features nor columns: each format can be read all the same.
    void emptyLayers()
    {
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("a.mif")),
                           "Version 300\nCharset \"Neutral\"\nCoordSys Earth Projection 1, 104\n"
                           "Columns 0\nData\n");
        for (const char *format : {"tab", "mif", "gpkg", "shp", "geojson", "fgb"}) {
            const CliRun run =
                runShell(QStringLiteral("nivora-cs convert a.mif o.%1 && nivora-cs convert o.%1 "
                                        "%1.geojson")
                             .arg(QLatin1String(format)),
                         dir.path());
            QVERIFY2(run.status == 0, qPrintable(QLatin1String(format) + QString::fromUtf8(run.describe())));
        }
    }

    // The lines of a MIF with styles and a label; what is split stays as large as it was.
    void stylesAndParts()
    {
        const QTemporaryDir dir;
        support::writeFile(
            dir.filePath(QStringLiteral("s.mif")),
            "Version 300\nCharset \"WindowsCyrillic\"\nDelimiter \",\"\nCoordSys Earth Projection 1, 104\n"
            "Columns 1\n  Id Integer\nData\n\nPoint 37 55\n    Symbol (36,255,18)\nText\n    \"label\"\n"
            "    37 55 38 56\n    Font (\"Arial\",0,0,0)\n");
        support::writeFile(dir.filePath(QStringLiteral("s.mid")), "1\n2\n");
        const auto convert = [&dir](const char *arguments) {
            return runShell(QStringLiteral("nivora-cs convert ") + QLatin1String(arguments), dir.path());
        };
        const CliRun gpkg = convert("s.mif s.gpkg");
        QVERIFY2(gpkg.isRefusal(QStringLiteral("--allow styles")), gpkg.describe());
        QCOMPARE(convert("s.mif s.gpkg --allow styles").status, 0);
        QCOMPARE(convert("s.mif s.tab").status, 0);
        QVERIFY(convert("s.gpkg t.gpkg --allow stiles").isRefusal(QStringLiteral("\"stiles\"")));
        support::writeFile(
            dir.filePath(QStringLiteral("c.geojson")),
            geoJson(QStringLiteral("\"a\":1"),
                    QStringLiteral(
                        R"({"type":"GeometryCollection","geometries":[{"type":"Point","coordinates":[1,2]},)"
                        R"({"type":"Point","coordinates":[3,4]}]})")));
        QCOMPARE(convert("c.geojson c.mif --allow features").status, 0);
        QCOMPARE(convert("c.mif d.csv --allow datum").status, 0);
        QFile csv(dir.filePath(QStringLiteral("d.csv")));
        QVERIFY(csv.open(QIODevice::ReadOnly));
        QCOMPARE(csv.readAll().count("POINT"), 2);
    }

    // From one GeoPackage to another: numbers, names of columns, and what heights are above.
    void untouched()
    {
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("a.csv")), "id,WKT\n7,POINT Z (37 55 3)\n");
        support::writeFile(
            dir.filePath(QStringLiteral("a.vrt")),
            "<OGRVRTDataSource><OGRVRTLayer name='a'><SrcDataSource>a.csv</SrcDataSource><FID "
            "name='number'>id</FID>"
            "<GeometryField name='place' encoding='WKT' field='WKT'><SRS>EPSG:4326+5773</SRS></GeometryField>"
            "</OGRVRTLayer></OGRVRTDataSource>");
        const CliRun run = runShell(
            QStringLiteral("nivora-cs convert a.vrt b.gpkg && nivora-cs convert b.gpkg c.gpkg && "
                           "strings -n 3 c.gpkg; nivora-cs convert c.gpkg d.geojson && cat d.geojson"),
            dir.path());
        QVERIFY2(run.out.contains("\"place\"") && run.out.contains("EGM96"), run.describe());
        QVERIFY2(run.out.contains("\"id\": 7"), run.describe());
    }

    // Numbers that are stated, a layer without any geometry, arcs that are split where they bend.
    void kept()
    {
        const QTemporaryDir dir;
        support::writeFile(
            dir.filePath(QStringLiteral("i.geojson")),
            R"({"type":"FeatureCollection","features":[{"type":"Feature","id":17,"properties":{},)"
            R"("geometry":null},{"type":"Feature","id":5,"properties":{},"geometry":null}]})");
        support::writeFile(dir.filePath(QStringLiteral("t.csv")), "n,m\nx,y\n");
        support::writeFile(dir.filePath(QStringLiteral("c.csv")),
                           "n,WKT\n1,\"CIRCULARSTRING(0 0,100000 100000,200000 0)\"\n");
        const auto convert = [&dir](const char *arguments) {
            return runShell(QStringLiteral("nivora-cs convert ") + QLatin1String(arguments), dir.path());
        };
        const CliRun numbers =
            convert("i.geojson i.gpkg && nivora-cs convert i.gpkg j.geojson && cat j.geojson");
        QVERIFY2(numbers.out.contains("\"id\": 17") && numbers.out.contains("\"id\": 5"), numbers.describe());
        const CliRun table = convert("t.csv t.shp");
        QVERIFY2(table.status == 0 && table.err.contains("t.dbf"), table.describe());
        QVERIFY(QFile::exists(dir.filePath(QStringLiteral("t.dbf"))));
        QCOMPARE(convert("t.csv t.shp --overwrite").status, 0);
        const CliRun arcs = convert("--from 3857 --to 32631 --segmentize 1 c.csv c.gpkg && "
                                    "nivora-cs convert c.gpkg d.geojson && cat d.geojson");
        QVERIFY2(arcs.status == 0 && arcs.out.contains("\"LineString\"") && arcs.out.count("], [") > 100,
                 arcs.describe());
        const CliRun kml = convert("--from 3857 c.csv c.kml");
        QVERIFY2(kml.isRefusal(QStringLiteral("GDAL converts into it; --to 4326")), kml.describe());
    }

    // A MIF whose driver reads on where it is damaged; its objects, its MID, what is told.
    void damaged_data()
    {
        const support::Columns<QByteArray, QByteArray, QString> row;
        const QByteArray clause = "CoordSys Earth Projection 1, 104\n";
        row("whole", clause + "Data\nPoint 1 2\n    Symbol (35,0,12)\nNone\nText \"Blob\"\n1 2 3 4\n",
            "1\n2\n\"a\nb\"\n", "");
        row("a collection is one",
            clause + "Data\nCollection 2\nRegion 1\n3\n1 2\n3 4\n1 4\nPline 2\n1 2\n3 4\n", "1\n", "");
        row("an unknown object", clause + "Data\nPoint 1 2\nBlob 1 2\n", "1\n2\n", "features:line 8");
        row("no number", clause + "Data\nPline 2\n1 2\n3 x\n", "1\n", "features:line 9");
        row("broken off", clause + "Data\nLine 1 2 3 4\n    Pen (1,2", "1\n", "features:line 8");
        row("another object's values", clause + "Data\nPoint 1 2\n", "1\n2\n", "features:1 objects");
        row("no values", clause + "Data\nPoint 1 2\n", "", "types:no MID");
        row("an unknown system", "CoordSys Earth Projection 77, 104\nData\nPoint 1 2\n", "1\n",
            "datum:projection: 77");
    }
    void damaged()
    {
        const auto [data, mid, told] = support::row<QByteArray, QByteArray, QString>();
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("d.mif")),
                           QByteArray("Version 300\nDelimiter \",\"\n") + data.left(data.indexOf("Data")) +
                               "Columns 1\n  n Char(9)\n" + data.mid(data.indexOf("Data")));
        if (!mid.isEmpty())
            support::writeFile(dir.filePath(QStringLiteral("d.mid")), mid);
        const QString line = QStringLiteral("nivora-cs convert d.mif d.gpkg --allow styles");
        const QString loss = told.section(QLatin1Char(':'), 0, 0);
        const CliRun run = runShell(line, dir.path());
        if (told.isEmpty()) {
            QVERIFY2(!run.err.contains("damaged") && !run.err.contains("MID"), run.describe());
            return;
        }
        QVERIFY2(run.isRefusal(told.section(QLatin1Char(':'), 1)), run.describe());
        QVERIFY2(run.err.contains("--allow " + loss.toUtf8() + " goes on"), run.describe());
        QCOMPARE(runShell(line + QLatin1Char(',') + loss, dir.path()).status, 0);
    }

    // The driver gives no geometry for a text that it does not understand, and says nothing.
    void unreadableGeometries()
    {
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("w.csv")),
                           "id,WKT\n1,POINT (1 2)\n2,\n3,POINT EMPTY\n4,\"PONT (1 2)\"\n5,POINT (inf 5)\n");
        const QString line = QStringLiteral("nivora-cs convert w.csv w.geojson");
        const CliRun run = runShell(line, dir.path());
        QVERIFY2(run.isRefusal(QStringLiteral("read: 2, the first in feature 4: PONT (1 2)")),
                 run.describe());
        QCOMPARE(runShell(line + QStringLiteral(" --allow features"), dir.path()).status, 0);
    }

    // Where the system states no bounds, a table counts in millimetres around its data.
    void stepsOfTables()
    {
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("p.csv")), "x,y\n155000.123,463000.257\n");
        for (const char *system : {"3857", "28407", "21781", "2263"}) {
            const CliRun run = runShell(
                QStringLiteral(
                    "nivora-cs convert --allow datum --overwrite --from %1 --x x --y y p.csv p.tab && "
                    "nivora-cs convert --allow datum --overwrite p.tab q.csv && cat q.csv")
                    .arg(QLatin1String(system)),
                dir.path());
            const QStringList numbers = QString::fromUtf8(run.out)
                                            .section(QLatin1Char('('), 1)
                                            .section(QLatin1Char(')'), 0, 0)
                                            .split(QLatin1Char(' '));
            QVERIFY2(numbers.size() == 2 && qAbs(numbers[0].toDouble() - 155000.123) < 2e-3 &&
                         qAbs(numbers[1].toDouble() - 463000.257) < 2e-3,
                     run.describe());
        }
    }

    void tables_data()
    {
        // A table, further arguments, what the GeoJSON holds then.
        const support::Columns<QByteArray, QString, QString> row;
        row("blanks in names, degrees", "n,long itude,lat\nA,37d30'E,55:45:21.5\n",
            "--x 'long itude' --y LAT", "[ 37.5, 55.755972222");
        row("letters decide", "a;b\n554521.5N;0373702E\n", "--x a --y b", "[ 37.617222222");
        row("heights", "x,y,z\n1,2,3.5\n", "--x x --y y --z z", "[ 1.0, 2.0, 3.5 ]");
        row("decimal commas", "sep=;\nx;y\n37,5;55,5\n", "--x x --y y --decimal-comma", "[ 37.5, 55.5 ]");
        row("UTF-16", QByteArray("\xFF\xFEx\0,\0y\0\n\0001\0,\0002\0\n\0", 18), "--x x --y y",
            "[ 1.0, 2.0 ]");
        row("numbers of columns", "1,2\n", "--x 1 --y 2", "\"features\"");
        row("one twice", "x,x,y\n1,2,3\n", "--x x --y y", "!stands twice");
        row("none", "x,y\n1,2\n", "--x x --y q", "!no column \"q\"");
        row("not asked for", "x,y\n1,2\n", "", "!--x and --y");
    }
    void tables()
    {
        const auto [table, arguments, expected] = support::row<QByteArray, QString, QString>();
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("p.csv")), table);
        const CliRun run =
            runShell(QStringLiteral("nivora-cs convert --from 4326 p.csv p.geojson %1 && cat p.geojson")
                         .arg(arguments),
                     dir.path());
        if (expected.startsWith(QLatin1Char('!')))
            QVERIFY2(run.isRefusal(expected.mid(1)), run.describe());
        else
            QVERIFY2(run.status == 0 && QString::fromUtf8(run.out).contains(expected), run.describe());
    }

    void layersAndCharacters()
    {
        const QTemporaryDir dir;
        support::writeFile(dir.filePath(QStringLiteral("a.geojson")),
                           geoJson(QStringLiteral(R"("t":"Москва")"), point));
        support::writeFile(
            dir.filePath(QStringLiteral("two.vrt")),
            "<OGRVRTDataSource><OGRVRTLayer name='a'><SrcDataSource>a.geojson</SrcDataSource></OGRVRTLayer>"
            "<OGRVRTLayer name='b b'><SrcDataSource>a.geojson</SrcDataSource><SrcLayer>a</SrcLayer>"
            "</OGRVRTLayer></OGRVRTDataSource>");
        const auto convert = [&dir](const char *arguments) {
            return runShell(QStringLiteral("nivora-cs convert ") + QLatin1String(arguments), dir.path());
        };
        QVERIFY(convert("two.vrt o.shp").isRefusal(QStringLiteral("--allow layers")));
        QVERIFY(convert("two.vrt o.shp --layer c").isRefusal(QStringLiteral("a, b b")));
        QCOMPARE(convert("two.vrt o.shp --layer 'b b' --out-encoding windows-1251").status, 0);
        QVERIFY(
            QFile::remove(dir.filePath(QStringLiteral("o.cpg")))); // then nothing says what the letters are
        const CliRun back = convert("o.shp o.geojson --encoding cp1251 && cat o.geojson");
        QVERIFY2(QString::fromUtf8(back.out).contains(QStringLiteral("Москва")), back.describe());
        QVERIFY(convert("a.geojson o.gpkg --out-encoding cp1251").isRefusal(QStringLiteral("UTF-8 alone")));
    }
};

NIVORA_TEST(TestCliLosses)
#include "tst_losses.moc"
