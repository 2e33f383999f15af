#include "CliRun.h"

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

        QCOMPARE(run({QStringLiteral("find"), QStringLiteral("qqqq")}).status, 1);
        QVERIFY(run({QStringLiteral("find")}).isRefusal(QStringLiteral("words")));
        QVERIFY(run({QStringLiteral("find"), QStringLiteral("--at"), QStringLiteral("37.6")})
                    .isRefusal(QStringLiteral("LON,LAT")));
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

    void check()
    {
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("own.prj"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("\"---Mine---\"\n"
                   "# a comment\n"
                   "\"Good\\p32637\", 8, 104, 7, 39, 0, 0.9996, 500000, 0\n"
                   "no entry at all\n"
                   "\"Unknown datum\", 8, 900, 7, 39, 0, 0.9996, 500000, 0\n"
                   "\"Good\\p32637\", 8, 104, 7, 39, 0, 0.9996, 500000, 0\n");
        file.close();
        const CliRun bad = run({QStringLiteral("list"), QStringLiteral("--check"), path});
        QCOMPARE(bad.status, 1);
        QCOMPARE(bad.outLines().size(), 3);
        QVERIFY2(bad.outLines().at(0).startsWith("line 4: not an entry") &&
                     bad.outLines().at(1).startsWith("line 5: cannot be built: Unknown datum") &&
                     bad.outLines().at(2).startsWith("line 6: duplicate"),
                 bad.out);
        QVERIFY(run({QStringLiteral("list"), QStringLiteral("--check"), dir.filePath(QStringLiteral("none"))})
                    .isRefusal(QStringLiteral("none")));
    }
};

NIVORA_TEST(TestCliCatalogue)
#include "tst_catalogue.moc"
