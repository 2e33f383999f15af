#include "CliRun.h"

#include "support/TestRunner.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <array>
#include <cmath>

/// A site turned by 12.5 degrees in zone 37, exact to a millimetre; P7 is spoilt.
class TestCliCalibrate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        write("site.csv", "point;x;y;E;N\n" + table(';', '.'));
    }

    void session()
    {
        const CliRun first =
            run(words("calibrate --to 32637 --save") + QStringList{name(), path("site.csv")} + store());
        QVERIFY2(first.status == 1 && first.out.contains("Suspected blunder: point P7"), first.describe());
        QVERIFY2(first.out.contains("CoordSys Earth Projection 8, 104"), first.describe());

        // Opened again, a point switched off, fitted anew, in the place of the first.
        const CliRun second = run(words("calibrate --without P7 --json --saved") +
                                  QStringList{name(), QStringLiteral("--save"), name()} + store());
        const QJsonObject json = QJsonDocument::fromJson(second.out).object();
        QVERIFY2(second.status == 0 && json[QStringLiteral("suspects")].toArray().isEmpty(),
                 second.describe());
        QVERIFY2(json[QStringLiteral("rmsM")].toDouble() < 0.002 &&
                     json[QStringLiteral("redundancy")].toInt() == 12,
                 second.describe());
        QVERIFY(!json[QStringLiteral("points")].toArray()[6].toObject()[QStringLiteral("used")].toBool());

        const CliRun page = run(words("info") + QStringList(name()) + store());
        QVERIFY2(page.out.contains("Points: 8 of 9") && page.out.contains("Holds between the points: "),
                 page.describe());
        QVERIFY(run(words("info --json") + QStringList(name()) + store()).out.contains("\"calibration\": {"));
        QVERIFY(run(words("info --at 90000,5") + QStringList(name()) + store())
                    .out.contains("outside the control points"));
        QVERIFY(!run(words("info --at 400,300") + QStringList(name()) + store()).out.contains("outside"));
        QCOMPARE(run(words("user list") + store()).out.count(name().toUtf8()), 1);
        QCOMPARE(read("UserCoordSystem.calibration.xml").count("<calibration "), 1);

        // The points go with the system.
        QCOMPARE(run(words("user remove") + QStringList(name()) + store()).status, 0);
        QCOMPARE(read("UserCoordSystem.calibration.xml").count("<calibration "), 0);
    }

    // The saved system takes a MIF to a database of the earth and back; a file that cannot hold it is
    // refused.
    void convertsByName()
    {
        QCOMPARE(run(words("calibrate --without P7 --to 32637 --save") +
                     QStringList{name(), path("site.csv")} + store())
                     .status,
                 0);
        write("in.mif",
              "Version 300\nDelimiter \",\"\nCoordSys NonEarth Units \"m\" Bounds (-9e4, -9e4) (9e4, 9e4)\n"
              "Columns 1\n  id Integer\nData\n\nPoint 1000 700\n");
        write("in.mid", "1\n");
        const auto convert = [this](const char *options, const char *in, const char *out) {
            return run(words("convert") + words(options) + QStringList{name(), path(in), path(out)} +
                       store());
        };
        const CliRun there = convert("--to 32637 --from", "in.mif", "out.gpkg");
        QVERIFY2(there.status == 0, there.describe());
        const CliRun back = convert("--to", "out.gpkg", "back.mif");
        QVERIFY2(back.status == 0, back.describe());
        const QByteArray text = read("back.mif");
        const QList<QByteArray> point = text.mid(text.indexOf("Point ")).split('\n').first().split(' ');
        QVERIFY2(std::fabs(point.value(1).toDouble() - 1000.0) < 1e-4 &&
                     std::fabs(point.value(2).toDouble() - 700.0) < 1e-4,
                 text);
        QVERIFY2(text.contains("Affine Units"), text);
        // In the site's own system, through a format whose systems are texts of WKT 2.
        const CliRun kept = convert("--from", "in.mif", "kept.gpkg");
        QVERIFY2(kept.status == 0, kept.describe());
        const CliRun again =
            run(words("convert") + QStringList{path("kept.gpkg"), path("again.mif")} + store());
        QVERIFY2(again.status == 0 && read("again.mif").contains("Point 1000 700") &&
                     read("again.mif").contains("Affine Units"),
                 again.describe());
        const CliRun shape = convert("--from", "in.mif", "out.shp");
        QVERIFY2(shape.isRefusal(QStringLiteral("affine transformation")), shape.describe());
    }

    void tables_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("options");
        const auto row = [](const char *title, const QByteArray &text, const char *options) {
            QTest::newRow(title) << text << QString::fromLatin1(options);
        };
        row("decimal commas", table(';', ','), "--decimal-comma");
        row("tabs, no header", table('\t', '.'), "");
        row("columns by name", "N\tE\tx\ty\n" + reordered(), "--x x --y y --to-x E --to-y N");
        row("north first, by its name", "x\ty\tN\tE\n" + reordered({0, 1, 3, 2}), "");
        row("by number, lines before", "survey of 1987\n" + reordered(),
            "--skip 1 --x 3 --y 4 --to-x 2 --to-y 1");
    }
    void tables()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const QString, options);
        write("t.csv", text);
        const CliRun r = run(words("calibrate --json --model similarity --to 32637") +
                             words(options.toLatin1()) + QStringList(path("t.csv")));
        const QJsonObject json = QJsonDocument::fromJson(r.out).object();
        QVERIFY2(r.status == 1 && json[QStringLiteral("points")].toArray().size() == 9, r.describe());
        const QJsonObject scale = json[QStringLiteral("parameters")].toArray()[2].toObject();
        QVERIFY2(std::fabs(scale[QStringLiteral("value")].toDouble() - 0.9999) <
                     3 * scale[QStringLiteral("deviation")].toDouble(),
                 r.describe());
    }

    // The known places in degrees as people write them.
    void degrees()
    {
        write("d.csv", "A;0;0;37°30'00.0\"E;55°40'00.0\"N\nB;1049.1;0;37°31'00.0\"E;55°40'00.0\"N\nC;0;1855."
                       "9;37°30'00.0\"E;55°41'00.0\"N\n");
        const CliRun r = run(words("calibrate --json --to 4326") + QStringList(path("d.csv")));
        const QJsonObject json = QJsonDocument::fromJson(r.out).object();
        QVERIFY2(r.status == 0 && json[QStringLiteral("greatestM")].toDouble() < 0.5, r.describe());
    }

    void refusals_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *title, const QByteArray &text, const char *options,
                            const char *message) {
            QTest::newRow(title) << text << QString::fromLatin1(options) << QString::fromLatin1(message);
        };
        row("a word for a number", "P1;1;2;3;4\nP2;1;2;x;4\n", "--to 32637", "line 2: known coordinates: x");
        row("degrees for a plane", "P1;1;2;3°5'N;4°E\n", "--to 32637", "degrees need a geographic system");
        row("too few columns", "1;2;3\n", "--to 32637", "the table has no column \"3\"");
        row("two points", "1;2;3;4\n5;6;7;9\n", "--to 32637 --model affine", "Points needed: 3");
        row("no model", "1;2;3;4\n", "--to 32637 --model cubic", "--model takes auto, shift");
        row("no point of that name", "1;2;3;4\n", "--to 32637 --without P9", "no point \"P9\"");
        row("no ellipsoid", "1;2;3;4\n", "--to 32637 --model helmert", "needs ellipsoid");
        row("a report of another kind", "1;2;3;4\n", "--to 32637 --report x.pdf", ".html or .md");
        row("no system", "1;2;3;4\n5;6;7;9\n", "--to 32637 --model polynomial --save X", "Points needed: 6");
        row("nothing", "", "--to 32637", "Points needed: 1");
    }
    void refusals()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const QString, options);
        QFETCH(const QString, message);
        write("t.csv", text);
        const CliRun r =
            run(words("calibrate") + words(options.toLatin1()) + QStringList(path("t.csv")) + store());
        QVERIFY2(r.isRefusal(message), r.describe());
        QVERIFY(!QFile::exists(path("UserCoordSystem.xml")));
    }

    void reports()
    {
        for (const char *file : {"r.html", "r.md"}) {
            QCOMPARE(run(words("calibrate --to 32637 --report") + QStringList{path(file), path("site.csv")})
                         .status,
                     1);
            const QByteArray text = read(file);
            QVERIFY2(text.count("<circle") == 9 && text.contains("#c00000") &&
                         text.contains("Earth Projection"),
                     text);
            const CliRun second =
                run(words("calibrate --to 32637 --report") + QStringList{path(file), path("site.csv")});
            QVERIFY2(second.isRefusal(QStringLiteral("--overwrite replaces it")), second.describe());
        }
    }

    // A name that another system has is not taken over, and nothing is lost.
    void keepsOtherSystems()
    {
        QCOMPARE(run(words("user add 32637 --description") + QStringList(name()) + store()).status, 0);
        const CliRun r =
            run(words("calibrate --to 32637 --save") + QStringList{name(), path("site.csv")} + store());
        QVERIFY2(r.isRefusal(QStringLiteral("another system with the name")), r.describe());
        QVERIFY(run(words("user list") + store()).out.contains("epsg:32637"));
    }

private:
    static QString name() { return QStringLiteral("Площадка 7"); }
    QString path(const char *file) const { return m_dir->filePath(QString::fromLatin1(file)); }
    QStringList store() const { return {QStringLiteral("--user-dir"), m_dir->path()}; }
    void write(const char *file, const QByteArray &text) const
    {
        QFile out(path(file));
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(text) == text.size());
    }
    QByteArray read(const char *file) const
    {
        QFile in(path(file));
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }
    static QList<QByteArray> numbers(int i)
    {
        const double x = 250.0 * (i % 3) + 40.0 * i, y = 300.0 * (i / 3) + 11.0 * i,
                     turn = 12.5 / 57.29577951308232;
        const double east =
            412345.678 + 0.9999 * (std::cos(turn) * x - std::sin(turn) * y) + (i == 6 ? 0.35 : 0.0);
        const double north = 6179012.345 + 0.9999 * (std::sin(turn) * x + std::cos(turn) * y);
        QList<QByteArray> texts;
        for (const double value : {x, y, east, north})
            texts << QByteArray::number(value, 'f', 3);
        return texts;
    }
    static QByteArray table(char delimiter, char mark)
    {
        QByteArray text;
        for (int i = 0; i < 9; ++i)
            text += 'P' + QByteArray::number(i + 1) + delimiter + numbers(i).join(delimiter) + '\n';
        return text.replace('.', mark);
    }
    static QByteArray reordered(const std::array<int, 4> &order = {3, 2, 0, 1})
    {
        QByteArray text;
        for (int i = 0; i < 9; ++i) {
            const QList<QByteArray> n = numbers(i);
            text += QList<QByteArray>{n[order[0]], n[order[1]], n[order[2]], n[order[3]]}.join('\t') + '\n';
        }
        return text;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

NIVORA_TEST(TestCliCalibrate)
#include "tst_calibrate.moc"
