#include "Catalogue.h"

#include <support/Support.h>

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>

#include <QRegularExpression>

#include <set>
#include <tuple>

using namespace nivora::cs;
using catalogue::Item;

/// The index behind a search by equality must give what comparing with every entry in turn gives.
class TestSeek : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_factory = support::shippedFactory());
        m_catalogue = m_factory->mapinfoCoordSystem();
        m_items = catalogue::items();
        for (const Item &item : m_items)
            m_built.push_back(m_catalogue->getProj(item.category, item.index));
    }

    void everyEntryAndCode_data() { catalogue::addParts(); }
    void everyEntryAndCode()
    {
        QStringList faults;
        m_missed = 0;
        for (const Item &item : catalogue::itemsOfPart()) {
            faults << compare(
                m_factory->createWithoutDescription(m_catalogue->getStrMB(item.category, item.index)));
            // The entry's affine clause is part of the code's plane: by code the system has none.
            const bool isPlain = item.entry.params.at(0).toInt() < 1000;
            if (item.entry.epsg() > 0 && isPlain)
                faults << compare(m_factory->createFromEpsg(item.entry.epsg()));
        }
        faults.removeAll(QString());
        QVERIFY2(faults.isEmpty(), qPrintable(catalogue::summary(faults)));
        QCOMPARE(m_missed, 0);
    }

    /// Entries of the catalogue with one thing changed: a meridian, a false origin, an ellipsoid, a unit, a
    /// shift, and the texts that PROJ's database has for codes.
    void strangers()
    {
        QStringList faults;
        int asked = 0;
        m_missed = 0;
        for (const Item &item : catalogue::items(16 * catalogue::sampleStep())) {
            QStringList params = item.entry.params;
            const int changed = asked++ % params.size();
            if (changed >= 2 && params.at(0) != "0"_s) {
                bool isNumber = false;
                const double number = params.at(changed).toDouble(&isNumber);
                if (isNumber)
                    params[changed] = QString::number(number + 1.0, 'g', 15);
            }
            try {
                faults << compare(m_factory->createWithoutDescription(prjFromParams(params, ", "_s)));
            } catch (const std::exception &) {
                // a parameter that makes no system
            }
            if (item.entry.epsg() > 0)
                faults << compare(m_factory->createFromProj(
                    ProjLibMetadata().projStringForCrs(item.entry.epsg(), ProjLibMetadata::EPSG)));
        }
        for (const char *unit : {"m", "survey ft", "li"})
            faults << compare(m_factory->createWithoutDescription(
                "NonEarth Units \"%1\" Bounds (0, 0) (7, 7)"_s.arg(QLatin1String(unit))));
        faults.removeAll(QString());
        QVERIFY2(faults.isEmpty(), qPrintable(catalogue::summary(faults)));
        QVERIFY2(m_missed > asked / 2, qPrintable(QString::number(m_missed)));
    }

    void codes()
    {
        std::set<int> seen;
        for (const Item &item : m_items)
            if (item.entry.epsg() > 0 && seen.insert(item.entry.epsg()).second)
                QCOMPARE(m_catalogue->seekByEPSG(item.entry.epsg()),
                         m_catalogue->getStrMB(item.category, item.index));
        QVERIFY(m_catalogue->seekByEPSG(1).isNull());
    }

    /// A host that changes figures, takes a datum away and writes nonsense. The walk is made by hand: every
    /// entry that can be built is compared.
    void editedByAHost()
    {
        const support::ResourceCopy copy;
        QFile shipped(support::resources().filePath("projection_en.xml"_s));
        QVERIFY(shipped.open(QIODevice::ReadOnly));
        QString xml = QString::fromUtf8(shipped.readAll());
        const auto edit = [&xml](const char *pattern, const char *text) {
            const QString before = xml;
            xml.replace(QRegularExpression(QString::fromLatin1(pattern)), QString::fromLatin1(text));
            return xml != before;
        };
        QVERIFY(edit("(<datum [^>]*id=\"1001\"[^>]* dx=)\"[^\"]*\"", "\\1\"500\""));
        QVERIFY(edit("<datum id=\"62\"[^>]*/>", ""));
        QVERIFY(edit("(<ellipsoid id=\"3\"[^>]* semi_major=)\"[^\"]*\"", "\\1\"nan\""));
        QVERIFY(edit("(name_mi=\"km\"[^>]* conv=)\"1000\"", "\\1\"999\""));
        copy.write("projection_en.xml"_s, xml.toUtf8());
        QByteArray catalogue = "\"--- A host's ---\"\n";
        // clang-format off
        for (const char *text : {"8, 1001, 7, 39, 0, 1, 7500000, 0", "1, 1001", "8, 62, 7, 39, 0, 1, 7500000, 0", "8, 1001, 1, 39, 0, 1, 7500, 0",
                                 "8, 104, 7, nan, 0, 1, inf, 1e300", "8, 104, 7, 39, 0, 1, 1e300, 0", "8, 999, 3, 1, 2, 3, 7, 39, 0, 1, 0, 0",
                                 "8, 104, \"km\", 39, 0, 1, 500, 0", "7, 104, 7, 115, 4, 53.31582, 53.1, 0.99984, 0, 0", "99, nonsense",
                                 "8, 9999, 3, 1, 2, 3, 0, 0, 0, 0, 0, 7, 39, 0, 1, 0, 0", "0, 7",
                                 "3, 62, 8, -120.5, 41.67, 43.33, 45.5, 4921250.000000, 0", "1, 104"})
            catalogue += "\"" + QByteArray(text).replace("\"", "") + "\", " + text + "\n";
        // clang-format on
        copy.write("projections_en.prj"_s, catalogue);

        const support::DefaultFactoryKeeper keeper;
        const auto host = std::make_shared<CoordSysFactory>(copy.dir(), copy.dir(), "en"_s);
        CoordSysFactory::setDefaultCoordSysFactory(host);
        QVERIFY(host->initCoordSystemEnvironment());
        const auto list = host->mapinfoCoordSystem();
        const int count = list->projectionList().first().entries.size();
        QVERIFY(count > 10);
        const auto built = [&](int index) -> CoordSystemPtr {
            try {
                return list->getProj(0, index);
            } catch (const std::exception &) {
                return nullptr; // equal to nothing
            }
        };
        int found = 0;
        for (int i = 0; i < count; ++i) {
            if (!built(i))
                continue;
            for (const CoordSystemPtr &cs : {host->createWithoutDescription(list->getStrMB(0, i)),
                                             host->createFromProj(built(i)->projStr())}) {
                int expected = -1;
                for (int k = 0; k < count && expected < 0; ++k)
                    expected = built(k) && cs->isEqual(built(k), true) ? k : -1;
                QCOMPARE(list->seekProj(cs, true).second, expected);
                found += expected >= 0;
            }
        }
        QVERIFY(found > 10);
    }

private:
    /// Numbers of entries in file order, -1 for none.
    struct Answer
    {
        int withRect = -1;
        int withoutRect = -1;
    };

    /// Empty when index and walk agree.
    QString compare(const CoordSystemPtr &cs)
    {
        // Hundreds of systems share their texts, and with them the answer.
        const CoordSystem::SourceData source = cs->sourceParameters();
        const QString text = source.type == CoordSystem::Prj ? source.string : QString();
        if (!m_asked.emplace(source.type, text, cs->projStr()).second)
            return QString();
        const Answer expected = walk(*cs);
        const auto name =
            expected.withoutRect < 0
                ? std::make_pair(QString(), int(CoordSystem::EPSG_UNDEFINDED))
                : std::make_pair(m_items.at(static_cast<std::size_t>(expected.withoutRect)).entry.name(),
                                 m_items.at(static_cast<std::size_t>(expected.withoutRect)).entry.epsg());
        m_missed += expected.withoutRect < 0;
        const bool same = m_catalogue->seekProj(*cs, false) == position(expected.withRect) &&
                          m_catalogue->seekProj(*cs, true) == position(expected.withoutRect) &&
                          m_catalogue->getHumanReadableTextWithEpsg(*cs, true) == name;
        return same ? QString() : text + QLatin1Char(' ') + cs->projStr();
    }

    /// Whatever is equal with its bounds is equal without them.
    Answer walk(const CoordSystem &cs) const
    {
        Answer answer;
        for (std::size_t i = 0; i < m_built.size(); ++i) {
            if (!cs.isEqual(m_built[i], true))
                continue;
            if (answer.withoutRect < 0)
                answer.withoutRect = static_cast<int>(i);
            if (cs.isEqual(m_built[i], false)) {
                answer.withRect = static_cast<int>(i);
                break;
            }
        }
        return answer;
    }

    MapinfoCoordSystem::Position position(int number) const
    {
        if (number < 0)
            return MapinfoCoordSystem::PairNone;
        const Item &item = m_items.at(static_cast<std::size_t>(number));
        return {item.category, item.index};
    }

    std::shared_ptr<CoordSysFactory> m_factory;
    std::shared_ptr<const MapinfoCoordSystem> m_catalogue;
    std::vector<Item> m_items;
    std::vector<CoordSystemPtr> m_built;                 ///< by item
    std::set<std::tuple<int, QString, QString>> m_asked; ///< source type and texts of the systems compared
    int m_missed = 0;
};

NIVORA_TEST(TestSeek)
#include "tst_seek.moc"
