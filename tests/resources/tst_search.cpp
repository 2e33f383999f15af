#include <support/Support.h>

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
        english.loadFromPRJ(support::resources(), "en"_s);
        m_search->addNames(english);
        QVERIFY(m_search->loadPlaces(QFileInfo(support::resources(), "places.tsv"_s)) > 200);
    }

    void words_data()
    {
        const support::Columns<QString, int> row;
        row("a code alone", "32637", 32637);
        row("a code that is part of an earlier one", "2601", 2601); // 32601
        row("words in any order, Cyrillic, capitals", "ЗОНА крюгера 42 28407", 28407);
        row("punctuation is a blank", "utm,37; 32637", 32637);
        row("accents do not count", "LA\u0301MBERT RGF93 2154", 2154);
        row("letters and digits run together", "wgs84", 4326);
        row("the other language", "longitude pulkovo 4284", 4284);
        row("words of both languages", "Pulkovo зона Gauss 28407", 28407);
        row("what is in use in a town", "лондон национальная", 27700);
        row("the longest name of a town", "нижний новгород ск-95 3°", 2649);
        row("a town that the catalogue names", "Berlin Soldner", 3068);
        row("nothing of the kind", "qqqq", -1);
        row("no words", " -- ", -1);
        row("empty", "", -1);
    }
    void words()
    {
        const auto [text, firstCode] = support::row<QString, int>();
        const auto hits = m_search->find(text, 5);
        QCOMPARE(hits.isEmpty() ? -1 : hits.first().epsg, firstCode);
        QVERIFY(hits.size() <= 5);
        QVERIFY(m_search->find(text, 0).isEmpty());
    }

    void everyWordIsHeld()
    {
        const auto hits = m_search->find("UTM юЖн 3"_s, 1000);
        QVERIFY(hits.size() > 20);
        for (const MapinfoSearch::Hit &hit : hits) {
            const QString all = hit.name + hit.category + QString::number(hit.epsg);
            for (const char *word : {"utm", "юж", "3"})
                QVERIFY2(all.contains(QString::fromUtf8(word), Qt::CaseInsensitive), qPrintable(all));
        }
    }

    void places_data()
    {
        const support::Columns<QPointF, int> row;
        row("Moscow: UTM zone 37", QPointF(37.6, 55.8), 32637);
        row("Fiji: map grid, west of 180", QPointF(178.2, -17.8), 3460);
        row("Fiji: map grid, east of 180", QPointF(-179.5, -17.8), 3460);
        row("the same written beyond 180", QPointF(180.5, -17.8), 3460);
        row("London: British grid", QPointF(-0.1, 51.5), 27700);
    }
    void places()
    {
        const auto [lonLat, code] = support::row<QPointF, int>();
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
        copy.write("places.tsv"_s, "# lon\tlat\tnames\n28.33\t57.82\tPlace one;P1\nx\t1\tPlace two\n"
                                   "1\t2\n\n3\t4\t;\n-0.1\t51.5\tPlace three");
        MapinfoSearch search(*m_factory->mapinfoCoordSystem());
        QCOMPARE(search.loadPlaces(QFileInfo(copy.dir(), "places.tsv"_s)), 3);
        QCOMPARE(search.find("place one 32635"_s, 1).value(0).epsg, 32635);
        QVERIFY(search.find("place two"_s, 1).isEmpty());
        QCOMPARE(search.find("place three 27700"_s, 1).value(0).epsg, 27700);
        QCOMPARE(search.loadPlaces(QFileInfo(copy.dir(), "none"_s)), -1);
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
    std::unique_ptr<MapinfoSearch> m_search;
};

NIVORA_TEST(TestSearch)
#include "tst_search.moc"
