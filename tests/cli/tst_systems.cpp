#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

// The Kremlin. cs2cs 9.1.1 gives both planes' coordinates, with +towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1 for
// the Gauss-Krueger one.
const QByteArray lonLat = "37.617300000 55.755800000\n";
const QByteArray utm37 = "413224.1377 6179766.9539\n";
const QByteArray zone7 = "7413298.7768 6182343.5196\n";

const QString zone7Text = QStringLiteral(R"(Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0)");
const QString geographicWkt = QStringLiteral(
    R"(GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]])");
const QString utmWkt =
    QStringLiteral(R"(PROJCS["WGS 84 / UTM zone 37N",%1,PROJECTION["Transverse_Mercator"],)"
                   R"(PARAMETER["latitude_of_origin",0],PARAMETER["central_meridian",39],)"
                   R"(PARAMETER["scale_factor",0.9996],PARAMETER["false_easting",500000],)"
                   R"(PARAMETER["false_northing",0],UNIT["metre",1]])")
        .arg(geographicWkt);
const QString utmWkt2 = QStringLiteral(
    R"(PROJCRS["UTM 37N",BASEGEOGCRS["WGS 84",DATUM["World Geodetic System 1984",)"
    R"(ELLIPSOID["WGS 84",6378137,298.257223563]]],CONVERSION["UTM zone 37N",METHOD["Transverse Mercator"],)"
    R"(PARAMETER["Latitude of natural origin",0],PARAMETER["Longitude of natural origin",39],)"
    R"(PARAMETER["Scale factor at natural origin",0.9996],PARAMETER["False easting",500000],)"
    R"(PARAMETER["False northing",0]],CS[Cartesian,2],AXIS["E",east],AXIS["N",north],)"
    R"(LENGTHUNIT["metre",1]])");

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), static_cast<qint64>(content.size()));
}

} // namespace

class TestCliSystems : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // 178.764741540 E to 178.540312608 W by x / (6378137 m) in degrees; the pole's by (0, 0) inside.
    void rectanglesOverTheMeridian()
    {
        const CliRun over =
            ::run(words("rect --from 3857 --to 4326 --precision 6 -- 19900000 0 300000 300000"));
        QCOMPARE(over.out, QByteArray("178.764742 0.000000 2.694946 2.693953\n"));
        const CliRun pole =
            ::run(words("rect --from 3995 --to 4326 --precision 0 -- -1000000 -1000000 2000000 2000000"));
        QVERIFY2(pole.out.startsWith("-180 ") && pole.out.contains(" 360 "), pole.describe());
        const CliRun torn = ::run(words("rect --from 4326 --to 3857 -- 170 0 20 10"));
        QVERIFY2(torn.status == 1 && torn.err.contains("crosses the cut"), torn.describe());
    }

    void notations_data()
    {
        writeFile(m_dir.filePath(QStringLiteral("карта.prj")), "\xEF\xBB\xBF\n" + utmWkt.toUtf8() + "\r\n");
        writeFile(m_dir.filePath(QStringLiteral("zone.txt")),
                  "CoordSys\n\tEarth Projection 8, 1001,\n\"m\", 39, 0, 1,"
                  " 7500000, 0\n");
        QTest::addColumn<QString>("cs");
        QTest::addColumn<QByteArray>("expected");
        const auto s = [](const char *text) { return QString::fromUtf8(text); };
        QTest::newRow("digits are an EPSG code") << s("32637") << utm37;
        QTest::newRow("tag in capitals, blanks around") << s("  EPSG: 32637 ") << utm37;
        QTest::newRow("oracle:") << s("oracle:8307") << lonLat;
        QTest::newRow("PROJ string") << s("+proj=utm +zone=37") << utm37;
        QTest::newRow("PROJ string with commas is no CoordSys string")
            << s("+proj=tmerc +lon_0=39 +x_0=7500000 +ellps=krass +towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1")
            << zone7;
        QTest::newRow("proj:") << s("proj:+proj=utm +zone=37") << utm37;
        QTest::newRow("WKT 1") << utmWkt << utm37;
        QTest::newRow("WKT 1, lower case, blank before the bracket")
            << QString(utmWkt).replace(QLatin1String("PROJCS["), QLatin1String(" projcs [")) << utm37;
        QTest::newRow("wkt:") << s("wkt:") + utmWkt << utm37;
        QTest::newRow("WKT 2") << utmWkt2 << utm37;
        QTest::newRow("CoordSys string") << s("CoordSys ") + zone7Text << zone7;
        QTest::newRow("prj:") << s("prj:") + zone7Text << zone7;
        QTest::newRow("what is left is a CoordSys string")
            << s("8, 1001, \"m\", 39, 0, 1, 7500000, 0") << zone7;
        QTest::newRow("file of WKT, byte order mark, Russian name") << file(s("карта.prj")) << utm37;
        QTest::newRow("file of several lines, not WKT") << file(s("zone.txt")) << zone7;
    }
    void notations()
    {
        QFETCH(QString, cs);
        QFETCH(QByteArray, expected);
        const QStringList pair = words("transform --from 4326 --to") + QStringList(cs);
        const CliRun forward = run(pair, lonLat);
        QVERIFY2(forward.status == 0 && forward.out == expected && forward.err.isEmpty(), forward.describe());
        const CliRun back = run(pair + words("--inverse --precision 8"), expected);
        // A tenth of a millimetre of the plane is about 1e-9 degree.
        QVERIFY2(back.out == "37.61730000 55.75580000\n", back.describe());
    }

    /// Every example of the help texts runs, in the order in which it is read.
    void helpExamples()
    {
        writeFile(m_dir.filePath(QStringLiteral("moscow.prj")), utmWkt.toUtf8());
        writeFile(m_dir.filePath(QStringLiteral("points.csv")), "7413298,6182343,a\n");
        int examples = 0;
        for (const QString &command : words("info transform rect mgrs user")) {
            const CliRun help = run({command, QStringLiteral("--help")});
            QVERIFY2(help.status == 0 && help.out.contains("x is always first"), help.describe());
            const QString text = QString::fromUtf8(help.out);
            const QString part =
                text.section(QStringLiteral("Examples:\n"), 1).section(QStringLiteral("\n\n"), 0, 0);
            for (const QString &line : part.split(QLatin1Char('\n'))) {
                if (!line.startsWith(QLatin1String("  ")))
                    continue;
                ++examples;
                const CliRun example = runShell(line, m_dir.path(), "37 55\n");
                QVERIFY2(example.status == 0 && example.err.isEmpty(),
                         line.toUtf8() + '\n' + example.describe());
            }
        }
        QVERIFY(examples >= 2 * 5);
        QCOMPARE(run(words("--help")).status, 0);
        QVERIFY(run(words("--version")).out.startsWith("nivora-cs "));
    }

    void refusals_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QStringList &arguments, const char *message) {
            QTest::newRow(name) << arguments << QString::fromUtf8(message);
        };
        const auto cs = [&row](const char *name, const QString &text, const char *message) {
            row(name, words("transform --to 4326 --from") + QStringList(text), message);
        };
        const auto s = [](const char *text) { return QString::fromUtf8(text); };
        cs("blank", s("  "), "is empty");
        cs("unknown code", s("epsg:999999"), "no system EPSG:999999");
        cs("code with a letter", s("epsg:4326x"), "Nearest: EPSG:4326 (WGS 84)");
        cs("code too large", s("99999999999"), "no system EPSG:99999999999");
        cs("code 0", s("0"), "no system EPSG:0");
        cs("unknown Oracle number", s("oracle:1"), "SRID=1");
        cs("Oracle number in letters", s("oracle:x"), "is no Oracle number");
        cs("percent signs", s("+proj=%1 %2"), "Not a coordinate system +proj=%1 %2");
        cs("no file", s("@/nowhere/x.prj"), "Cannot read the file /nowhere/x.prj: No such");
        cs("a directory", s("@/"), "Cannot read the file /: This is not a file");
        cs("a file without end", s("@/dev/zero"), "This is not a file");
        writeFile(m_dir.filePath(s("empty.prj")), "\n");
        writeFile(m_dir.filePath(s("binary.prj")), QByteArray("\1\2\0\3", 4));
        cs("no text in a file", file(s("binary.prj")), "it is no text");
        cs("empty file", file(s("empty.prj")), "no text");
        // A message that quotes such a text stays one readable line.
        cs("long text", QStringLiteral("PROJCS[\"") + QString(100000, QLatin1Char('a')),
           "Cannot read the WKT text");
        row("no such command", words("foo"), "no command \"foo\"");
        row("no such option", words("info --foo 1"), "info has no option --foo");
        row("another command's option", words("info --mesh 4326"), "info has no option --mesh");
        row("another action's option", words("user list --branch a"), "user list has no option --branch");
        row("one dash", words("transform -from 4326 --to 4326"), "--from instead of -from");
        row("an option twice", words("info --language en --language ru 4326"), "--language is given twice");
        row("a value for a switch", words("info --json=yes 4326"), "--json takes no value");
        row("an option for a value", words("transform --from --to 4326"), "--from needs a value, and --to");
        row("unknown format", words("info --format xml 4326"), "--format takes json, wkt1");
        row("no value", words("transform --to 1 --from"), "--from needs a value");
        row("an empty directory", words("user list --user-dir="), "--user-dir needs a value");
        row("a notation and relations", words("info --format wkt2 --to 4326 4326"), "goes without --to");
        row("option missing", words("transform --from 4326"), "needs --to");
        row("argument missing", words("info"), "expected 1, given 0");
        row("three numbers", words("rect 1 -2 3"), "expected 4, given 3");
        row("rectangle without extent", words("rect 1 2 0 3"), "greater than 0");
        row("infinite rectangle", words("rect 1 2 inf 3"), "\"inf\" is no number");
        row("precision", words("mgrs --cs 4326 --precision 6"), "from 0 to 5");
        row("no action", words("user"), "list, add, set, remove or check");
        row("missing file", words("transform --from 4326 --to 4326 /nowhere/a"),
            "cannot read /nowhere/a: No such file");
        row("directory for a file", words("transform --from 4326 --to 4326 /"),
            "cannot read /: Is a directory");
    }
    void refusals()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const CliRun refused = run(arguments);
        QVERIFY2(refused.isRefusal(message) && refused.err.size() < 1000, refused.describe());
    }

    /// Names of files are bytes: \351 is no UTF-8, a byte order mark belongs to the name.
    void fileNames_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QByteArray>("out");
        const auto s = [](const char *text) { return QString::fromUtf8(text); };
        const QString name = s("n=$(printf '\\351\\277'); ");
        QTest::newRow("system") << name + s("echo 32637 > \"$n\"; nivora-cs info --format mapinfo \"@$n\"")
                                << QByteArray(
                                       "CoordSys Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0\n");
        QTest::newRow("points")
            << name + s("echo 0 0 > \"$n\"; nivora-cs transform --from 4326 --to 4326 --precision 0 \"$n\"")
            << QByteArray("0 0\n");
        QTest::newRow("store")
            << name + s("mkdir -p d; nivora-cs user --user-dir \"d/$n\" add 4326; LC_ALL=C ls -b d")
            << QByteArray("\\351\\277\n");
        QTest::newRow("mark") << s("n=$(printf '\\357\\273\\277a'); echo 1 0 > \"$n\"; echo 2 0 >> \"$n\"; "
                                   "nivora-cs measure --cs 3857 \"$n\" | tail -n 1")
                              << QByteArray("Length in the plane: 1.0000 m\n");
        QTest::newRow("colon") << s("echo 3857 > :a; nivora-cs info --format mapinfo @:a")
                               << QByteArray("CoordSys Earth Projection 10, 157, \"m\", 0\n");
    }
    void fileNames()
    {
        QFETCH(QString, line);
        QFETCH(QByteArray, out);
        const QTemporaryDir dir;
        const CliRun done = runShell(line, dir.path());
        const bool isUtf8 = !line.contains(QLatin1String("\\351"));
        if (QT_VERSION < QT_VERSION_CHECK(6, 0, 0) || isUtf8)
            QVERIFY2(done.out == out && done.err.isEmpty(), done.describe());
        else // Qt 6 can open no such file: nothing else may be opened instead
            QVERIFY2(done.out.isEmpty() && done.err.contains("must be UTF-8"), done.describe());
    }

    void resources()
    {
        const support::ResourceCopy copy;
        const auto tryInfo = [&copy](const char *arguments) {
            return run(words(arguments) + QStringList{QStringLiteral("--resources"), copy.dir().path()});
        };
        QVERIFY(tryInfo("info 4326 --language en").out.contains("Code: EPSG:4326\n"));
        QVERIFY(tryInfo("info 4326 --language xx").isRefusal(QStringLiteral("projection_xx.xml")));
        copy.remove(QStringLiteral("OracleSRID.xml"));
        QVERIFY(tryInfo("info oracle:8307").isRefusal(QStringLiteral("OracleSRID.xml")));
        copy.write(QStringLiteral("projection_en.xml"), "<no xml");
        QVERIFY(tryInfo("info 4326 --language en").isRefusal(copy.dir().path()));
        const CliRun verbose = run(words("info 4326 --verbose"));
        QVERIFY2(verbose.status == 0 && verbose.err.contains("info: "), verbose.describe());
    }

    void info()
    {
        const CliRun done = run(words("info --json") + QStringList(QStringLiteral("prj:") + zone7Text));
        const QJsonObject json = QJsonDocument::fromJson(done.out).object();
        const auto value = [&json](const char *key) { return json[QLatin1String(key)]; };
        QCOMPARE(value("notation").toString(), QStringLiteral("prj"));
        QCOMPARE(value("epsg").toInt(), 28407);
        QCOMPARE(value("geographic").toBool(true), false);
        QCOMPARE(value("unit")[QLatin1String("name")].toString(), QStringLiteral("m"));
        QCOMPARE(value("bounds").toArray().size(), 4);
        QCOMPARE(value("ellipsoid")[0].toDouble(), 6378245.0); // Krassovsky's
        QCOMPARE(value("datum").toString(), QStringLiteral("Pulkovo 1942"));
        QVERIFY(value("unknown").toObject().isEmpty());
        for (const char *form :
             {"prj", "proj", "wkt", "wkt2", "tagged"}) { // each reads back as the same system
            const QStringList to(value(form).toString());
            const CliRun again = run(words("transform --from 4326 --to") + to, lonLat);
            QVERIFY2(again.out == zone7, form + again.describe());
        }
        QVERIFY(value("mapHeader").toString().contains(QStringLiteral("datum=1001")));
    }

    void page_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("shown");
        QTest::addColumn<QByteArray>("missing"); // a line that would say what does not exist
        const auto row = [](const char *name, const char *options, const QString &cs, const char *shown,
                            const char *missing) {
            QTest::newRow(name) << words(options) + QStringList(cs) << QByteArray(shown)
                                << QByteArray(missing);
        };
        const auto s = [](const char *text) { return QString::fromUtf8(text); };
        row("name, code, kind", "", s("32637"),
            "Name: WGS 84 / UTM zone 37N\nCode: EPSG:32637\nKind: Projected (Transverse Mercator)\n",
            "Affine");
        row("a plan has no ellipsoid", "", s("CoordSys NonEarth Units \"m\" Bounds (0, 0) (100, 50)"),
            "Kind: Plan without a place on the earth\n", "Ellipsoid");
        row("a unit that nobody names", "", s("+proj=merc +ellps=WGS84 +to_meter=2.5"),
            "\nUnit: unknown (2.5 m)\n", "\nAssumed: The unit");
        row("a height left out", "", s("7405"), "\nAssumed: ", "\nAffine");
        row("figures that are missing", "", s("Earth Projection 8, 104, \"m\", 39"),
            "\nAssumed: ", "\nCode:");
        row("no such projection in CoordSys text", "", s("8857"), "\nCoordSys: none: ", "NonEarth");
        row("grads from Paris have the text of their code", "", s("4807"), "as CoordSys text 0 m away",
            "Bounds");
        row("no datum", "", s("+proj=longlat +ellps=krass"), "\nAssumed: No datum", "\nDatum:");
        row("Esri's names", "--format esri", s("28407"), "PROJCS[\"Pulkovo_1942_GK_Zone_7\"", "\n ");
        row("what had no name gets one, one line", "--format wkt1", s("+proj=utm +zone=37 +ellps=krass"),
            "PROJCS[\"+proj=utm", "unnamed");
        row("with its code", "--format wkt2", s("32637"), "    ID[\"EPSG\",32637]]\n", "BOUNDCRS");
        row("CoordSys as maps have it", "--format mapinfo", zone7Text, "CoordSys Earth Projection 8, 1001",
            ":");
        row("the scale on UTM's central meridian, by its definition", "--at 500000,0", s("32637"),
            "meridian: 0.999600000\nScale along the parallel: 0.999600000\n", "Name");
        row("the grid that is not installed, and the text beside it", "--to 4326", s("27700"),
            "good to 2 m; to 1 m with the grid uk_os_OSTN15_NTv2_OSGBtoETRS.tif; as CoordSys text 4", "Name");
        row("Russian", "--language ru", s("28407"), "Вид: Прямоугольная", "Kind:");
    }
    void page()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, shown);
        QFETCH(QByteArray, missing);
        const CliRun done = run(words("info") + arguments);
        QVERIFY2(done.status == 0 && done.err.isEmpty() && done.out.contains(shown) &&
                     !done.out.contains(missing),
                 done.describe());
    }

    /// One degree of the equator is pi/180 of the semi-major axis, or of the sphere; east is 90 degrees from
    /// north.
    void measure()
    {
        const CliRun done = run(words("measure --cs 4326"), "0 0\n1, 0\n");
        QVERIFY2(done.out.startsWith("Geodesic length: 111319.4908 m\nAzimuth at the start: 90.000000000") &&
                     done.out.endsWith("Length on a sphere of 6370997 m: 111194.8743 m\n"
                                       "Length in the plane: 111194.8743 m\n"),
                 done.describe());
        QCOMPARE(
            run(words("measure --cs") + QStringList(QStringLiteral("NonEarth Units \"ft\"")), "0 0\n3 4\n")
                .out,
            QByteArray("Length in the plane: 5.0000 ft\n"));
        QVERIFY(run(words("measure --cs 4326"), "0 0\n").isRefusal(QStringLiteral("two points")));
        // Past a bad line, several lines; a mile of the plane in survey feet, the ellipsoid's beside it.
        const CliRun two = run(words("measure --cs 2263"), "0 0\n5280 0\n\n0 0\nx\n5280 0\n5280 5280\n");
        QVERIFY2(two.status == 1 && two.err.startsWith("line 5: ") && two.out.count("Line ") == 2 &&
                     two.out.contains("Length in the plane: 5280.0000 survey ft (on the ellipsoid 52") &&
                     two.out.contains("Area in the plane when closed: 13939200.0000 survey ft² (on the"),
                 two.describe());
        // Across the date line along the 60th parallel: half the degrees, cos 60 on the sphere's radius.
        const CliRun rhumb =
            run(words("measure --cs") + QStringList(QStringLiteral("+proj=longlat +R=6370997 +no_defs")),
                "179 60\n-179 60\n");
        QVERIFY2(rhumb.out.contains("Rhumb line: 111194.8743 m, azimuth 90.000000000"), rhumb.describe());
    }

    void rect_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("expected");
        // Mercator on the sphere of 6378137 m: x is a * longitude, and one degree of longitude 111319.4908 m.
        const QByteArray square = "-222638.982 -111325.143 222638.982 222650.286\n";
        QTest::newRow("negative numbers") << "-2 -1 2 2" << 0 << square;
        QTest::newRow("numbers before options") << "-2 -1 +2 2 --language en" << 0 << square;
        QTest::newRow("mesh of four") << "--mesh 4 -2 -1 2 2" << 0 << square;
        QTest::newRow("bare mesh") << "--mesh -2 -1 2 2" << 0 << square;
        QTest::newRow("bare mesh before a count")
            << "--mesh 0 -1 2 2" << 0 << QByteArray("0.000 -111325.143 222638.982 222650.286\n");
        QTest::newRow("inverse") << "--inverse 0 -111325.1429 111319.4908 222650.2857" << 0
                                 << QByteArray("0.000 -1.000 1.000 2.000\n");
        QTest::newRow("corner beyond the pole") << "0 0 10 95" << 1 << QByteArray();
        QTest::newRow("mesh too large") << "--mesh 1000 0 0 1e-6 80" << 2 << QByteArray();
    }
    void rect()
    {
        QFETCH(QString, arguments);
        QFETCH(int, status);
        QFETCH(QByteArray, expected);
        const CliRun done =
            run(words("rect --from 4326 --to 3857 --precision 3") + words(arguments.toUtf8()));
        QVERIFY2(done.status == status && done.out == expected, done.describe());
        QCOMPARE(done.errLines().size(), status == 0 ? 0 : 1);
    }

private:
    QString file(const QString &name) const { return QLatin1Char('@') + m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

NIVORA_TEST(TestCliSystems)
#include "tst_systems.moc"
