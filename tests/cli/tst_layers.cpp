#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <QTemporaryDir>

/// What convert adds to, takes apart, and does to heights.
class TestCliLayers : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    CliRun convert(const QString &arguments) const
    {
        return runShell(QStringLiteral("nivora-cs convert %1").arg(arguments), m_dir.path());
    }
    /// The output as a table: a line of geometry and values for each feature.
    QByteArray rows(const QString &file) const
    {
        const CliRun run = runShell(
            QStringLiteral("rm -f rows.csv; nivora-cs convert --lossy '%1' rows.csv && tail -n +2 rows.csv")
                .arg(file),
            m_dir.path());
        return run.status == 0 ? run.out : run.describe();
    }
    void write(const char *name, const QByteArray &content) const
    {
        support::writeFile(m_dir.filePath(QLatin1String(name)), content);
    }

private Q_SLOTS:
    void initTestCase()
    {
        write("two.csv", "name,WKT\nодин,POINT (37 55)\ntwo,POINT (38 55)\n");
        write("one.csv", "name,WKT\nten,POINT (30 50)\n");
        write("line.csv", "name,WKT\nten,\"LINESTRING (30 50,31 50)\"\n");
        write("more.csv", "name,other,WKT\nten,1,POINT (30 50)\n");
        write("mixed.csv",
              "name,WKT\na,POINT (37 55)\nb,\"LINESTRING (1 2,3 4)\"\nc,\"POLYGON ((1 2,3 4,3 2,1 2))\"\n"
              "d,\"MULTILINESTRING ((1 2,3 4),(5 6,7 8))\"\ne,\n");
        write("high.csv", "name,WKT\na,POINT Z (10 50 100)\nb,\"LINESTRING Z (10 50 100,10 50 0)\"\n");
    }

    /// A file's own system is doubted when its area does not hold the data; without one it is found all the
    /// same.
    void guessing_data()
    {
        const support::Columns<QString, QString, bool>
            row; // file, what is lost, whether its system is doubted
        for (const char *format : {"shp", "gpkg", "mif", "fgb"})
            row(format, format, "", true);
        row("no prj", "shp", "rm guessed.prj", false);
    }
    void guessing()
    {
        const auto [format, loss, isDoubted] = support::row<QString, QString, bool>();
        write("zone8.csv",
              "name,WKT\na,POINT (8420000 6142000)\nb,POINT (8426000 6145000)\nc,POINT (8423000 6149000)\n");
        const QString file = QStringLiteral("guessed.") + format;
        const CliRun made = convert(QStringLiteral("--overwrite --from 28407 zone8.csv ") + file);
        QVERIFY2(made.status == 0, made.describe());
        if (!loss.isEmpty())
            QCOMPARE(runShell(loss, m_dir.path()).status, 0);
        const CliRun run =
            runShell(QStringLiteral("nivora-cs guess --near 43,55.5 --limit 1 ") + file, m_dir.path());
        QVERIFY2(run.out.contains("1. EPSG:28408"), run.describe());
        QCOMPARE(run.status, isDoubted ? 1 : 0);
        QCOMPARE(run.out.startsWith("stated as EPSG:28407, but 0 % of the data lie inside its area of use: "
                                    "fits EPSG:28408"),
                 isDoubted);
    }

    void appending_data()
    {
        const support::Columns<QString, QString, QString> row; // format, options of the second, refusal or ""
        for (const QString &format :
             QStringLiteral("gpkg tab shp geojson fgb sqlite").split(QLatin1Char(' ')))
            row(format, format, "--from 4326 one.csv", "");
        row("another system", "gpkg", "--from 4284 one.csv", "is in another system");
        row("into its system", "tab", "--from 4284 --to 4326 one.csv", "");
        row("no system", "gpkg", "one.csv", "is in another system");
        row("another column", "gpkg", "--from 4326 more.csv", "has no column \"other\"");
        row("another kind", "gpkg", "--from 4326 --format GPKG line.csv", "holds other geometries");
        row("a format that is written at once", "mif", "--from 4326 one.csv", "nothing can be appended");
        row("to be replaced", "gpkg", "--overwrite --from 4326 one.csv", "exclude each other");
        row("outside of its bounds", "tab", "--from 4326 far.csv", "!features left out");
    }
    void appending()
    {
        const auto [format, options, refusal] = support::row<QString, QString, QString>();
        write("far.csv", "name,WKT\nfar,POINT (300 50)\n");
        const QString out = QStringLiteral("'ö ") + QLatin1String(QTest::currentDataTag()) +
                            QLatin1Char('.') + format + QLatin1Char('\'');
        write("two.vrt", "<OGRVRTDataSource><OGRVRTLayer name='two'><SrcDataSource>two.csv</SrcDataSource>"
                         "<GeometryType>wkbPoint</GeometryType></OGRVRTLayer></OGRVRTDataSource>");
        QCOMPARE(convert(QStringLiteral("--from 4326 two.vrt ") + out).status, 0);
        const QByteArray before = rows(out.mid(1, out.size() - 2));
        const CliRun run = convert(QStringLiteral("--append %1 %2").arg(options, out));
        const QByteArray after = rows(out.mid(1, out.size() - 2));
        if (refusal.startsWith(QLatin1Char('!'))) {
            QVERIFY2(run.status == 1 && run.err.contains(refusal.mid(1).toUtf8()) && after == before,
                     run.describe());
        } else if (!refusal.isEmpty()) {
            QVERIFY2(run.isRefusal(refusal) && after == before, run.describe());
        } else {
            QVERIFY2(run.status == 0 && run.err.isEmpty(), run.describe());
            QVERIFY2(after.startsWith(before) && after.count('\n') == 3 && after.contains("ten"),
                     after.constData());
        }
    }

    // More than what a driver's blocks are kept in memory for.
    void largeTable()
    {
        QByteArray lines;
        for (int i = 0; i < 75000; ++i)
            lines +=
                QByteArray::number(i).rightJustified(254, '.') + ",POINT (" + QByteArray::number(i) + " 2)\n";
        write("large.csv", "text,WKT\n" + lines);
        const QString clause =
            QStringLiteral("'CoordSys NonEarth Units \"m\" Bounds (-1, -1) (1999999, 1999999)'");
        QCOMPARE(convert(QStringLiteral("--lossy large.csv large.tab --from ") + clause).status, 0);
        const QByteArrayList again = rows(QStringLiteral("large.tab")).split('\n');
        QCOMPARE(again.size(), 75001); // one is behind the last line feed
        for (const int row : {0, 1, 65536, 74999})
            QVERIFY2(again.at(row).contains("POINT (" + QByteArray::number(row) + " 2)") &&
                         again.at(row).contains(QByteArray::number(row).rightJustified(254, '.')),
                     again.at(row));
    }

    // Nothing was there; somebody else was there meanwhile; a database that is not written to its end.
    void appendingToWhatChanges()
    {
        QVERIFY(convert(QStringLiteral("--append --from 4326 one.csv none.gpkg"))
                    .isRefusal(QStringLiteral("nothing to append to")));
        QCOMPARE(convert(QStringLiteral("--from 4326 two.csv w.gpkg")).status, 0);
        write("w.gpkg-wal", "x");
        QVERIFY(convert(QStringLiteral("--append --from 4326 one.csv w.gpkg"))
                    .isRefusal(QStringLiteral("open in another program")));
        QVERIFY(convert(QStringLiteral("--overwrite --from 4326 one.csv w.gpkg"))
                    .isRefusal(QStringLiteral("open in another program")));
    }

    void split()
    {
        const CliRun plain = convert(QStringLiteral("--from 4326 mixed.csv m.shp"));
        QVERIFY2(plain.isRefusal(QStringLiteral("--split writes a file for each kind")), plain.describe());
        const CliRun run = convert(QStringLiteral("--split --from 4326 mixed.csv m.shp"));
        QVERIFY2(run.status == 0 && run.err.isEmpty(), run.describe());
        QCOMPARE(rows(QStringLiteral("m_points.shp")), QByteArray("\"POINT (37 55)\",a\n,e\n"));
        QCOMPARE(rows(QStringLiteral("m_lines.shp")).count('\n'), 2);
        QCOMPARE(rows(QStringLiteral("m_polygons.shp")).count('\n'), 1);
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("m.shp"))));
        // One of the names is taken: none of the others changes.
        QCOMPARE(runShell(QStringLiteral("rm m_points.*"), m_dir.path()).status, 0);
        QVERIFY(convert(QStringLiteral("--split --from 4326 mixed.csv m.shp"))
                    .isRefusal(QStringLiteral("m_lines.shp")));
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("m_points.shp"))));
        QCOMPARE(convert(QStringLiteral("--split --overwrite --from 4326 mixed.csv m.shp")).status, 0);
    }

    void heights_data()
    {
        const support::Columns<QString, QString, QString>
            row; // arguments; what the output or the refusal holds
        row("by the geoid", "--from 4979 --to 4326+5773", "POINT Z (10 50 51.97", "");
        row("and back", "--from EPSG:4326+5773 --to 4979", "POINT Z (10 50 148.02", "");
        row("along a line", "--from 4979 --to 4326+5773", "10 50 51.97", "10 50 -48.02");
        row("of no known meaning", "--from 4326 --to EPSG:32632+5773", "Z (571666.4475",
            "1: heights of \"high\" are passed on");
        row("a system that is left out", "--from 4326+5773 --to 32632", "",
            "above (EGM96 height); --allow heights");
        row("and may be", "--allow heights --from 4326+5773 --to 32632", " 100)", "");
    }
    void heights()
    {
        const auto [arguments, expected, further] = support::row<QString, QString, QString>();
        const CliRun run = convert(QStringLiteral("--overwrite %1 high.csv high.gpkg").arg(arguments));
        if (expected.isEmpty()) {
            QVERIFY2(run.isRefusal(further), run.describe());
            return;
        }
        QVERIFY2(run.status == 0, run.describe());
        const QByteArray all =
            rows(QStringLiteral("high.gpkg")) + "1:" + run.err.mid(run.err.indexOf("note: ") + 5);
        QVERIFY2(all.contains(expected.toUtf8()) && all.contains(further.toUtf8()), all + run.describe());
    }

    void heightLines_data()
    {
        const support::Columns<QString, QByteArray, QByteArray> row; // arguments, input, output; "" refused
        const QString toGeoid = QStringLiteral("--from 4979 --to 4326+5773 ");
        row("degrees, y first", toGeoid + QLatin1String("--dms=1 --letters ru --skip 1"),
            "10 50 100\n50d30'N 10d30'E 100 a", "10 50 100\n10°30'00.0\"В 50°30'00.0\"С 52.6897 a\n");
        row("decimal commas", toGeoid + QLatin1String("--precision 1 --decimal-comma"), "10,5 50,5 100,25",
            "10.5 50.5 52.9397\n");
        row("a doubtful comma", toGeoid, "10 50 100,25", "* * * 10 50 100,25\n");
        row("commas between", toGeoid + QLatin1String("--precision 0"), "10,50,100,25", "10,50,51.9706,25\n");
        row("quotes of tables", toGeoid + QLatin1String("--csv --dms=0"), "x,y,z\n10,50,100",
            "x,y,z\n\"10°00'00\"\"E\",\"50°00'00\"\"N\",51.9706\n");
        row("no degrees", "--from 4979 --to 4978 --dms", "10 50 100", "");
        row("years of both ends", "--from 7844 --to 9000 --to-epoch 2030 --epoch 2010 --precision 9",
            "134 -25 1", "134.000003105 -24.999994689 1.0000\n");
        row("years apart", "--from 9000 --to 9990 --to-epoch 2030 --epoch 2010", "134 -25 1", "");
        row("years apart, by line", "--from 9000 --to 9990 --to-epoch 2030 --t", "134 -25 1 2010",
            "* * * 2010\n");
        row("strict", "--from 4326 --to '+proj=longlat +ellps=bessel' --strict", "10 50 100", "");
    }
    void heightLines()
    {
        const auto [arguments, input, output] = support::row<QString, QByteArray, QByteArray>();
        write("p.txt", input);
        const CliRun run = runShell(
            QStringLiteral("nivora-cs transform --z ") + arguments + QStringLiteral(" p.txt"), m_dir.path());
        if (output.isEmpty())
            QVERIFY2(run.status == 2 && run.out.isEmpty(), run.describe());
        else
            QCOMPARE(run.out, output);
    }

    void heightsExplained()
    {
        const auto explain = [this](const char *arguments) {
            return runShell(QStringLiteral("nivora-cs transform --z --explain ") + QLatin1String(arguments),
                            m_dir.path());
        };
        const CliRun here = explain("--from 4979 --to 4326+5773 --at 10,50,3");
        QVERIFY2(here.out.startsWith("Used at 10, 50:\n    WGS 84 to EGM96 height (1): good to 1 m"),
                 here.describe());
        const CliRun missing = explain("--from 4979 --to EPSG:9518");
        QVERIFY2(missing.out.contains("us_nga_egm08_25.tif"), missing.describe());
        QVERIFY(explain("--from 4978 --to 4258 --json").out.contains("\"heights\": null"));
        QVERIFY(explain("--from 4978 --to 4258 --at 1,2,3,4").isRefusal(QStringLiteral("X,Y,Z")));
    }

    // Text above the geoid in a table, its columns where they were; what names no operation with heights.
    void heightColumns()
    {
        write("t.csv", "n;lat;h;lon;\"x y\"\nA;50;100;10;\"q;r\"\nB;50d30;;10,5;z\nC;1\n");
        const CliRun run =
            runShell(QStringLiteral("nivora-cs transform --from 4326+5773 --to 4979 --csv --x lon --y lat "
                                    "--z=h --decimal-comma --operation 'WGS 84 to EGM96 height (1)' t.csv"),
                     m_dir.path());
        QCOMPARE(run.out,
                 QByteArray(
                     "n;lat;h;lon;\"x y\"\nA;50.000000000;148.0294;10.000000000;\"q;r\"\nB;*;*;*;z\nC;1\n"));
        QVERIFY(run.status == 1 && run.errLines().size() == 2);
        QVERIFY(
            runShell(QStringLiteral(
                         "echo 1 2 3 | nivora-cs transform --z --from 4326+5773 --to 4979 --max-error 0.1"),
                     m_dir.path())
                .isRefusal(QStringLiteral("EGM96 height (1)")));
    }
};

NIVORA_TEST(TestCliLayers)
#include "tst_layers.moc"
