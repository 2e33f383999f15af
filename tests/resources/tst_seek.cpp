#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>

#include <vector>

using namespace nivora::cs;

/// The index behind a search by equality must give what comparing with every entry in turn gives.
class TestSeek : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(m_factory = support::shippedFactory()); }

    void indexAgreesWithWalk()
    {
        const auto catalogue = m_factory->mapinfoCoordSystem();
        const QList<CoordSystemParamsList> categories = catalogue->projectionList();
        // The walk builds and compares every entry: a sample here keeps the run short. The step has no common
        // divisor with the 60 zones of the regular categories.
        constexpr int step = 97;
        std::vector<CoordSystemPtr> systems;
        int counted = 0;
        for (int category = 0; category < categories.size(); ++category) {
            const QList<CoordSystemParams> &entries = categories.at(category).entries;
            for (int index = 0; index < entries.size(); ++index) {
                if (counted++ % step != 0)
                    continue;
                systems.push_back(m_factory->createWithoutDescription(catalogue->getStrMB(category, index)));
                const int code = entries.at(index).epsg();
                if (code > 0)
                    systems.push_back(m_factory->createFromProj(
                        ProjLibMetadata().projStringForCrs(code, ProjLibMetadata::EPSG)));
            }
        }
        // Strangers: a meridian, an ellipsoid, a unit or a shift that no entry has, and plans.
        for (const char *prj :
             {"8, 104, \"m\", 39.123, 0, 1, 500000, 0", "8, 1001, \"m\", 39, 0, 1, 7500001, 0",
              "8, 999, 3, 1, 2, 3, \"m\", 39, 0, 1, 7500000, 0", "1, 999, 5, 7, 7, 7",
              "3, 74, \"survey ft\", -122, 39.3, 40, 41.7, 6561666.667, 1640416.667"})
            systems.push_back(m_factory->createWithoutDescription(QStringLiteral("Earth Projection ") +
                                                                  QLatin1String(prj)));
        for (const char *unit : {"m", "survey ft", "li"})
            systems.push_back(m_factory->createWithoutDescription(
                QStringLiteral("NonEarth Units \"%1\" Bounds (0, 0) (7, 7)").arg(QLatin1String(unit))));

        int found = 0;
        for (const CoordSystemPtr &cs : systems) {
            for (const bool ignoreRect : {false, true}) {
                const MapinfoCoordSystem::Position expected = catalogue->seekProjByWalk(*cs, ignoreRect);
                const MapinfoCoordSystem::Position actual = catalogue->seekProj(*cs, ignoreRect);
                QVERIFY2(actual == expected, qPrintable(cs->projStr()));
                found += expected != MapinfoCoordSystem::PairNone;
            }
        }
        const int all = static_cast<int>(2 * systems.size());
        QVERIFY2(found > all / 4 && found < all, qPrintable(QString::number(found))); // both answers occurred
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

NIVORA_TEST(TestSeek)
#include "tst_seek.moc"
