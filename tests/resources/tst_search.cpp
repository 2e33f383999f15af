#include <support/SampleStep.h>
#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/ProjLibMetadata.h>

#include <QFile>

#include <algorithm>

using namespace nivora::cs;

class TestSearch : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_factory = support::shippedFactory());
        m_search = std::make_unique<MapinfoSearch>(*m_factory->mapinfoCoordSystem());
        MapinfoCoordSystem english([](const QString &) { return CoordSystemPtr(); });
        english.loadFromPRJ(support::resources(), QStringLiteral("en"));
        m_search->addNames(english);
        m_search->loadTables(support::resources());
    }

    void words_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("firstCode");
        QTest::newRow("a code alone") << "32637" << 32637;
        QTest::newRow("a code that is part of an earlier one") << "2601" << 2601; // 32601
        QTest::newRow("words in any order, Cyrillic, capitals") << "ЗОНА крюгера 42 28407" << 28407;
        QTest::newRow("punctuation is a blank") << "utm,37; 32637" << 32637;
        QTest::newRow("accents do not count") << "LA\u0301MBERT RGF93 2154" << 2154;
        QTest::newRow("letters and digits run together") << "wgs84" << 4326;
        QTest::newRow("the other language") << "longitude pulkovo 4284" << 4284;
        QTest::newRow("words of both languages") << "Pulkovo зона Gauss 28407" << 28407;
        QTest::newRow("what is in use in a town") << "лондон национальная" << 27700;
        QTest::newRow("the longest name of a town") << "нижний новгород ск-95 3°" << 2649;
        QTest::newRow("a town that the catalogue names") << "Berlin Soldner" << 3068;
        QTest::newRow("a town's name that is a datum's") << "Beijing 1954" << 4214;
        QTest::newRow("a town of a large country") << "Toronto" << 32617;
        QTest::newRow("the authority before the code") << "EPSG:3857" << 3857;
        QTest::newRow("a code of another authority") << "esri 54030" << -2;
        QTest::newRow("a code of nothing") << "999999" << -1;
        QTest::newRow("an exact name before others that hold it") << "wgs 72 / utm zone 3n" << 32203;
        QTest::newRow("alias of a code") << "Google" << 3857;
        QTest::newRow("alias of words, with others") << "gauss-krueger 28407" << 28407;
        QTest::newRow("sharp s, zone of six degrees first") << "Gauß zone 7" << 28407;
        QTest::newRow("zone and hemisphere as one") << "utm 22s" << 32722;
        QTest::newRow("hemisphere in words") << "UTM 56 south" << 32756;
        QTest::newRow("zone behind its number") << "СК-42 7 зона" << 28407;
        QTest::newRow("Roman zone") << "jgd2011 zone 9" << 6677;
        QTest::newRow("central meridian") << "ГК ЦМ 45" << 2498;
        QTest::newRow("three degrees") << "CGCS2000 3-degree zone 39" << 4527;
        QTest::newRow("unit") << "florida west feet" << 2237;
        QTest::newRow("withdrawn behind what is in force") << "Mexico ITRF92 LCC" << 6362;
        QTest::newRow("a country") << "germany utm 32" << 25832;
        QTest::newRow("a country in a Russian case") << "Чехии" << 5514;
        QTest::newRow("a country and a family of zones") << "Россия зона 9" << 28409;
        QTest::newRow("a country's own system, whatever it is called") << "финляндия национальная" << 3067;
        QTest::newRow("a country that is being typed") << "swis" << 2056;
        QTest::newRow("a country with another's name in it") << "Южная Африка lo 29" << 2053;
        QTest::newRow("behind a preposition") << "по казахстану зона 13" << 28413;
        QTest::newRow("a town with a year that no datum has") << "warsaw 2000" << 2180;
        QTest::newRow("the datum named with a town") << "new beijing zone 18" << 4573;
        QTest::newRow("an abbreviation in a name") << "wien gk" << 31256;
        QTest::newRow("its zone") << "хельсинки gk25" << 3879;
        QTest::newRow("a large zone in a small country") << "quito utm" << 32717;
        QTest::newRow("the zone beside a town's") << "buenos aires argentina 5" << 5347;
        QTest::newRow("a nickname beside a town") << "таллин l-est97" << 3301;
        QTest::newRow("a word that nothing has") << "new zorbl nztm" << 2193;
        QTest::newRow("a slip in each word") << "pulkvo gaus kruger zone 7" << 28407;
        QTest::newRow("two slips in a long word") << "amresfort" << 28992;
        QTest::newRow("a slip in a town") << "lodnon grid" << 27700;
        QTest::newRow("a town that is being typed") << "wladiwost" << 28422;
        QTest::newRow("German vowels without their marks") << "muenchen" << 25832;
        QTest::newRow("a foreign name in Cyrillic") << "амерсфорт" << 28992;
        QTest::newRow("two words as one") << "псевдомеркатор" << 3857;
        QTest::newRow("a country in its own language") << "日本" << 6668;
        QTest::newRow("a small town") << "Новочеркасск зона 7" << 28407;
        QTest::newRow("a zone of what a nickname names") << "gsk-2011 zone 7" << 20907;
        QTest::newRow("a realization of what a nickname names") << "пз-90.11" << 9475;
        QTest::newRow("a zone alone") << "zone 33" << 32633;
        QTest::newRow("a unit alone") << "feet" << 2234;
        QTest::newRow("all zones at once are nothing to compute") << "WGS 84 UTM" << 32601;
        QTest::newRow("what nobody published") << "МСК-50" << -1;
        QTest::newRow("nothing of the kind") << "qqqq" << -1;
        QTest::newRow("no words") << " -- " << -1;
        QTest::newRow("empty") << "" << -1;
    }
    void words()
    {
        QFETCH(QString, text);
        QFETCH(int, firstCode);
        const auto hits = m_search->find(text, 5);
        QCOMPARE(hits.isEmpty() ? -1 : hits.first().epsg, firstCode);
        QVERIFY(hits.size() <= 5);
        QVERIFY(m_search->find(text, 0).isEmpty());
    }

    void remarks()
    {
        const QString text = QStringLiteral("мск-77 зона 1");
        QVERIFY(m_search->remark(text, QStringLiteral("ru")).contains(QStringLiteral("не опубликованы")));
        QVERIFY(m_search->remark(text, QStringLiteral("en")).contains(QStringLiteral("not published")));
        QVERIFY(m_search->remark(QStringLiteral("Омск"), QStringLiteral("ru")).isEmpty());
    }

    /// Whoever asks for a code gets one name for it: by the search and by the system.
    void oneNameForACode()
    {
        for (const int code : {4326, 32637, 28407, 3035, 26917, 25832, 2193})
            QCOMPARE(m_search->find(QString::number(code), 1).value(0).name,
                     m_factory->createFromEpsg(code)->description());
    }

    void wordsOfNoUseAreTold()
    {
        const auto answer = m_search->answer(QStringLiteral("zorbl Sweden"), std::nullopt, 5);
        QCOMPARE(answer.without, QStringList{QStringLiteral("zorbl")});
        QCOMPARE(answer.hits.value(0).epsg, 3006);
        QVERIFY(m_search->answer(QStringLiteral("Sweden"), std::nullopt, 5).without.isEmpty());
    }

    /// What the table of countries gives is known and in force: a withdrawn code would lead people astray.
    void countriesNameSystemsInForce()
    {
        QFile table(support::resources().filePath(QStringLiteral("countries.tsv")));
        QVERIFY(table.open(QIODevice::ReadOnly));
        int codes = 0;
        while (!table.atEnd()) {
            const QString line = QString::fromUtf8(table.readLine()).trimmed();
            const QStringList listed =
                line.section(QLatin1Char('\t'), 1).split(QLatin1Char(';'), Qt::SkipEmptyParts);
            for (const QString &code : listed) {
                if (codes++ % support::sampleStep(1) > 0)
                    continue;
                const auto hit =
                    m_search->find(QString(code).replace(QLatin1Char(':'), QLatin1Char(' ')), 1).value(0);
                QVERIFY2(hit.code.endsWith(code) && !hit.isWithdrawn, qPrintable(line + code));
            }
        }
        QVERIFY(codes > 500);
    }

    void places_data()
    {
        QTest::addColumn<QPointF>("lonLat");
        QTest::addColumn<int>("code");
        QTest::newRow("Moscow: zone 7") << QPointF(37.6, 55.8) << 28407;
        QTest::newRow("Fiji: map grid, west of 180") << QPointF(178.2, -17.8) << 3460;
        QTest::newRow("Fiji: map grid, east of 180") << QPointF(-179.5, -17.8) << 3460;
        QTest::newRow("the same written beyond 180") << QPointF(180.5, -17.8) << 3460;
        QTest::newRow("London: British grid") << QPointF(-0.1, 51.5) << 27700;
    }
    void places()
    {
        QFETCH(QPointF, lonLat);
        QFETCH(int, code);
        const auto hits = m_search->at(lonLat, 100000);
        const auto first =
            std::find_if(hits.begin(), hits.end(), [code](const auto &hit) { return hit.epsg == code; });
        QVERIFY(first != hits.end() &&
                first - hits.begin() < 8); // in force there: before the many local ones
        for (const MapinfoSearch::Hit &hit : hits) {
            if (hit.epsg <= 0)
                continue;
            const QRectF area = ProjLibMetadata().rectWgs84ForCrs(hit.epsg, ProjLibMetadata::EPSG);
            QVERIFY2(lonLat.y() >= area.top() && lonLat.y() <= area.bottom(), qPrintable(hit.name));
        }
        QVERIFY(m_search->at(QPointF(qQNaN(), 0), 10).isEmpty());
        QCOMPARE(m_search->at(lonLat, 3).size(), 3);
    }

    void brokenPlaces()
    {
        const support::ResourceCopy copy;
        copy.write(QStringLiteral("places.tsv"),
                   "# lon\tlat\tnames\n28.33\t57.82\tPlace one;P1\nx\t1\tPlace two\n"
                   "1\t2\n\n3\t4\t;\n-0.1\t51.5\tPlace three");
        MapinfoSearch search(*m_factory->mapinfoCoordSystem());
        QCOMPARE(search.loadPlaces(QFileInfo(copy.dir(), QStringLiteral("places.tsv"))), 3);
        QCOMPARE(search.find(QStringLiteral("place one 32635"), 1).value(0).epsg, 32635);
        QCOMPARE(search.find(QStringLiteral("place three 27700"), 1).value(0).epsg, 27700);
        QCOMPARE(search.loadPlaces(QFileInfo(copy.dir(), QStringLiteral("none"))), -1);
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
    std::unique_ptr<MapinfoSearch> m_search;
};

NIVORA_TEST(TestSearch)
#include "tst_search.moc"
