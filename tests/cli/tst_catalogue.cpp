#include "CliRun.h"

#include <support/SampleStep.h>
#include <support/Support.h>
#include <support/TestRunner.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

class TestCliCatalogue : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void find()
    {
        const CliRun byCode = run({QStringLiteral("find"), QStringLiteral("32637")});
        QCOMPARE(byCode.status, 0);
        QVERIFY2(byCode.out.startsWith("32637\t") && byCode.out.contains("Earth Projection 8, 104"),
                 byCode.out);

        const CliRun json = run({QStringLiteral("find"), QStringLiteral("--json"), QStringLiteral("--at"),
                                 QStringLiteral("-0.1,51.5"), QStringLiteral("27700")});
        const QJsonArray list = QJsonDocument::fromJson(json.out).array();
        QCOMPARE(list.size(), 1);
        QCOMPARE(list.first().toObject().value(QStringLiteral("epsg")).toInt(), 27700);

        const CliRun nothing = run({QStringLiteral("find"), QStringLiteral("qqqq")});
        QCOMPARE(nothing.status, 1);
        QCOMPARE(nothing.err, QByteArray("nivora-cs: nothing found\n"));
        const CliRun town = run({QStringLiteral("find"), QStringLiteral("utm"), QStringLiteral("Псков")});
        QVERIFY2(town.out.contains("32635\t"), town.out); // zone 35 from 24 to 30 degrees
        QVERIFY(run({QStringLiteral("find")}).isRefusal(QStringLiteral("words")));
        QVERIFY(run({QStringLiteral("find"), QStringLiteral("--at"), QStringLiteral("37.6")})
                    .isRefusal(QStringLiteral("LON,LAT")));
        QVERIFY(run({QStringLiteral("find"), QStringLiteral("--at"), QStringLiteral("55.75,97.6")})
                    .isRefusal(QStringLiteral("no place on the earth")));
    }

    void list()
    {
        const CliRun categories = run({QStringLiteral("list")});
        QCOMPARE(categories.status, 0);
        const QString first = QString::fromUtf8(categories.outLines().first()).section(QLatin1Char('\t'), 1);
        const CliRun systems = run({QStringLiteral("list"), QStringLiteral("--category"), first.toUpper()});
        QCOMPARE(systems.status, 0);
        QCOMPARE(systems.outLines().size(),
                 QString::fromUtf8(categories.outLines().first()).section(QLatin1Char('\t'), 0, 0).toInt());
        QVERIFY(run({QStringLiteral("list"), QStringLiteral("--category"), QStringLiteral("?")})
                    .isRefusal(QStringLiteral("no category")));
    }

    void check_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("findings"); // how the lines of the output begin
        const QByteArray heading = "\"---Mine---\"\n";
        const QByteArray zone37 = "\"Zone 37\\p32637\", 8, 104, 7, 39, 0, 0.9996, 500000, 0\n";
        const auto row = [](const char *name, const QByteArray &content, const QStringList &findings) {
            QTest::newRow(name) << content << findings;
        };
        const QByteArray windows = "\"---\xCC\xEE\xE8---\"\n"; // Мои in Windows-1251

        row("nothing", "", {});
        row("comments, blank lines, entries before a heading", zone37 + "# a comment\n\n" + heading, {});
        row("line breaks of Windows", heading + "\"A\", 1, 104\r\n\"B\", 1, 0\r\n", {});
        row("one encoding all through", windows + "\"\xC0\", 1, 104\n", {});
        row("no entry", heading + "no entry at all\n\"No values\",\n",
            {QStringLiteral("line 2: not an entry: no entry at all"),
             QStringLiteral("line 3: not an entry: \"No values\"")});
        row("unknown datum", heading + "\"Datum 900\", 8, 900, 7, 39, 0, 0.9996, 500000, 0\n",
            {QStringLiteral("line 2: cannot be built: Datum 900: ")});
        row("projection that PROJ refuses", heading + "\"Scale 0\", 8, 104, 7, 39, 0, 0, 500000, 0\n",
            {QStringLiteral("line 2: cannot be built: Scale 0: ")});
        row("the same again", heading + zone37 + zone37,
            {QStringLiteral("line 3: duplicate of line 2: Zone 37")});
        row("a code again", heading + zone37 + "\"Other\\p32637\", 1, 104\n",
            {QStringLiteral("line 3: duplicate of the code 32637 on line 2: Other")});
        row("cut off within an entry", heading + "\"Zone 38\", 8, 104, 7, 45, 0, 0.9996, 50",
            {QStringLiteral("line 2: 7 values where 8 are needed: Zone 38"),
             QStringLiteral("line 2: no line break at the end")});
        row("cut off within a name", heading + "\"Zone 3",
            {QStringLiteral("line 2: not an entry: \"Zone 3"),
             QStringLiteral("line 2: no line break at the end")});
        row("a user datum that lacks figures", heading + "\"Mine\", 1, 9999, 3, 1, 2, 3, 0, 0, 0\n",
            {QStringLiteral("line 2: 9 values where 11 are needed: Mine")});
        row("Windows-1251 behind a plain heading", heading + "\"\xC0\xE1\", 1, 104\n",
            {QStringLiteral("line 2: not UTF-8")});
        row("UTF-8 behind a Windows-1251 heading", windows + "\"Абв\", 1, 104\n",
            {QStringLiteral("line 2: UTF-8, where the first line is in windows-1251")});
        row("sixteen bits a sign", QByteArray("\"\0A\0\"\0,\0\n", 9),
            {QStringLiteral("line 1: not an entry"), QStringLiteral("line 1: a zero byte")});
    }

    /// What loading passes over in silence is told here, each line by its number.
    void check()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, findings);
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("own.prj"));
        support::writeFile(path, content);
        const CliRun checked = run({QStringLiteral("list"), QStringLiteral("--check"), path});
        QCOMPARE(checked.status, findings.isEmpty() ? 0 : 1);
        const QList<QByteArray> lines = checked.outLines();
        QVERIFY2(lines.size() == findings.size(), checked.out);
        for (int i = 0; i < lines.size(); ++i)
            QVERIFY2(QString::fromUtf8(lines.at(i)).startsWith(findings.at(i)), checked.out);
    }

    void checkOfShippedAndMissing()
    {
        QFile shipped(support::resources().filePath(QStringLiteral("projections_ru.prj")));
        QVERIFY(shipped.open(QIODevice::ReadOnly));
        const QByteArray whole = shipped.readAll();
        const auto part = whole.lastIndexOf('\n', whole.size() / support::sampleStep(1) - 1) + 1;
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("shipped.prj"));
        support::writeFile(path, whole.left(part));
        QCOMPARE(run({QStringLiteral("list"), QStringLiteral("--check"), path}).out, QByteArray());
        QVERIFY(run({QStringLiteral("list"), QStringLiteral("--check"), QStringLiteral("/none")})
                    .isRefusal(QStringLiteral("/none")));
    }
};

NIVORA_TEST(TestCliCatalogue)
#include "tst_catalogue.moc"
