#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/ProjLibMetadata.h>

#include <QtMath>

#include <cmath>

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
        QVERIFY(m_search->loadPlaces(QFileInfo(support::resources(), QStringLiteral("places.tsv"))) > 200);
        QVERIFY(m_search->loadAliases(QFileInfo(support::resources(), QStringLiteral("aliases.tsv"))) > 100);
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
        QTest::newRow("the authority before the code") << "EPSG:3857" << 3857;
        QTest::newRow("a code that the catalogue lacks") << "3035" << 3035; // not 23035
        QTest::newRow("a code of nothing") << "999999" << -1;
        QTest::newRow("an exact name before others that hold it") << "wgs 72 / utm zone 3n" << 32203;
        QTest::newRow("alias of a code") << "Google" << 3857;
        QTest::newRow("alias of a code that the catalogue lacks") << "LAEA Europe" << 3035;
        QTest::newRow("alias of words, with others") << "gauss-krueger 28407" << 28407;
        QTest::newRow("sharp s, whole number") << "Gauß zone 7" << 28407; // not a zone at 75 degrees
        QTest::newRow("a country") << "germany utm" << 32631;
        QTest::newRow("a country in Russian") << "Германия UTM" << 32631;
        QTest::newRow("a slip in each word") << "Grmany utmm" << -1; // "utm" is too short for slips
        QTest::newRow("a letter missing") << "pulkvo 28407" << 28407;
        QTest::newRow("two letters swapped") << "plukovo 28407" << 28407;
        QTest::newRow("two slips in a word") << "plukvo 28407" << -1;
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

    void everyWordIsHeld()
    {
        const auto hits = m_search->find(QStringLiteral("UTM юЖн зон"), 1000);
        QVERIFY(hits.size() > 10);
        for (const MapinfoSearch::Hit &hit : hits) {
            const QString all = hit.name + hit.category + QString::number(hit.epsg);
            for (const char *word : {"utm", "юж", "зон"})
                QVERIFY2(all.contains(QString::fromUtf8(word), Qt::CaseInsensitive), qPrintable(all));
        }
    }

    void places_data()
    {
        QTest::addColumn<QPointF>("lonLat");
        QTest::addColumn<int>("code");
        QTest::newRow("Moscow: UTM zone 37") << QPointF(37.6, 55.8) << 32637;
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
        bool found = false;
        double last = 0.0;
        for (const MapinfoSearch::Hit &hit : hits) {
            QRectF area = ProjLibMetadata().rectWgs84ForCrs(hit.epsg, ProjLibMetadata::EPSG);
            if (area.width() < 0.0)
                area.setWidth(area.width() + 360.0);
            // Sizes on the sphere, as Archimedes has them: width by the difference of the sines of latitude.
            const double size = area.width() * (std::sin(qDegreesToRadians(area.bottom())) -
                                                std::sin(qDegreesToRadians(area.top())));
            QVERIFY2(size >= last - 1e-9, qPrintable(hit.name)); // 1e-9: two ways of rounding one size
            last = size;
            QVERIFY(lonLat.y() >= area.top() && lonLat.y() <= area.bottom());
            found = found || hit.epsg == code;
        }
        QVERIFY(found);
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
        QVERIFY(search.find(QStringLiteral("place two"), 1).isEmpty());
        QCOMPARE(search.find(QStringLiteral("place three 27700"), 1).value(0).epsg, 27700);
        QCOMPARE(search.loadPlaces(QFileInfo(copy.dir(), QStringLiteral("none"))), -1);
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
    std::unique_ptr<MapinfoSearch> m_search;
};

NIVORA_TEST(TestSearch)
#include "tst_search.moc"
