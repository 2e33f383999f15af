#include "Tests.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemCatalogModel.h>
#include <coordsys/CoordSystemFilterModel.h>
#include <coordsys/ProjLibMetadata.h>
#include <support/Support.h>

#include <QAbstractItemModelTester>
#include <QSet>

#include <limits>

using namespace nivora::cs;
using Model = CoordSystemCatalogModel;

namespace {

void forEachSystem(const Model &model, const QModelIndex &parent,
                   const std::function<void(QModelIndex)> &call)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (Model::isSystem(index))
            call(index);
        else
            forEachSystem(model, index, call);
    }
}

int codeOf(const QModelIndex &index) { return index.data(Model::CodeRole).toInt(); }

} // namespace

class TestCatalogModel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Everything that changes the tree, under the eyes of Qt's tester, which visits every row each time.
    void wholeTree()
    {
        Model model(support::shippedFactory());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.waitUntilPrepared();
        model.setRecentSystems({{QStringLiteral("one"), QStringLiteral("EPSG:4326"), 4326},
                                {QStringLiteral("two"), QStringLiteral("prj:Earth Projection 1, 104")}});
        model.setRecentSystems({});
        const auto store = model.factory()->userCoordSystem();
        store->setCoordSystem(QStringLiteral("branch"), {CoordSystem::Epsg, QStringLiteral("3067")},
                              QStringLiteral("mine"));
        model.reloadOwnSystems();
        QSet<int> codes;
        forEachSystem(model, model.sectionIndex(Model::EpsgDatabase), [&](const QModelIndex &system) {
            codes << codeOf(system);
            const QString tagged = system.data(Model::TaggedRole).toString();
            if (codeOf(system) > 0)
                QCOMPARE(tagged, QStringLiteral("EPSG:%1").arg(codeOf(system)));
            else
                QVERIFY2(tagged.section(QLatin1Char(':'), 0, 0) == system.data(Model::GroupRole).toString() &&
                             tagged == system.siblingAtColumn(Model::CodeColumn).data().toString(),
                         qPrintable(tagged));
        });
        for (const auto &area : ProjLibMetadata().listProjections(ProjLibMetadata::EPSG))
            for (const auto &system : area)
                QVERIFY2(codes.contains(system.id.mid(5).toInt()), qPrintable(system.id));
        const QModelIndex own = model.index(0, 0, model.index(0, 0, model.sectionIndex(Model::OwnSystems)));
        QCOMPARE(own.data().toString(), QStringLiteral("mine"));
        QVERIFY(own.data(Model::AreaRole).toRectF().contains(QPointF(25.0, 62.0)));
        store->removeCoordSystem(QStringLiteral("branch"), {CoordSystem::Epsg, QStringLiteral("3067")});
        QVERIFY(!model.index(5, 0, own.parent()).isValid());
    }

    /// A row makes the system that it names: a wrong tag would make its twin. Every 150th row is some hundred
    /// milliseconds; the catalogue's own tests build all of it.
    void create()
    {
        Model model(support::shippedFactory());
        model.waitUntilPrepared();
        int count = 0;
        for (const auto section : {Model::MapinfoCatalogue, Model::EpsgDatabase})
            forEachSystem(model, model.sectionIndex(section), [&](const QModelIndex &row) {
                if (++count % 150 != 0)
                    return;
                CoordSystemPtr made;
                try {
                    made = model.create(row);
                } catch (const std::exception &) {
                    QCOMPARE(section, Model::EpsgDatabase); // a few have no coordinates that PROJ can compute
                    return;
                }
                QCOMPARE(made->description(), row.data().toString());
                if (codeOf(row) != CoordSystem::EPSG_UNDEFINDED)
                    QCOMPARE(made->epsg(), codeOf(row));
            });
        VERIFY_THROWS(std::invalid_argument, model.create(model.sectionIndex(Model::EpsgDatabase)),
                      QStringLiteral("index"));
    }

    /// Systems of other authorities are found, made, and shown where they stand.
    void otherAuthorities()
    {
        Model model(support::shippedFactory());
        CoordSystemFilterModel filter(model);
        filter.setText(QStringLiteral("esri 54030"));
        filter.waitUntilFound();
        const QModelIndex row = filter.mapToSource(filter.index(0, 0));
        QCOMPARE(row.data(Model::TaggedRole).toString(), QStringLiteral("ESRI:54030"));
        QVERIFY(row.data(Model::AreaRole).toRectF().width() > 300.0);
        const CoordSystemPtr made = model.create(row);
        QCOMPARE(made->description(), QStringLiteral("World_Robinson"));
        QCOMPARE(model.indexOfSystem(*made), row);
        model.setRecentSystems({{made->description(), QStringLiteral("ESRI:54030")}});
        const QModelIndex recent = model.index(0, 0, model.sectionIndex(Model::RecentSystems));
        QVERIFY(model.create(recent)->isEqual(*made, true));
        QCOMPARE(recent.siblingAtColumn(Model::CodeColumn).data().toString(), QStringLiteral("ESRI:54030"));
    }

    void find_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("firstCode");
        QTest::newRow("code of the catalogue") << "28407" << 28407;
        QTest::newRow("code that only the database has")
            << "4936" << CoordSystem::EPSG_UNDEFINDED; // geocentric
        QTest::newRow("database only") << "7931" << 7931;
        QTest::newRow("words in the other language") << "utm zone 37n wgs 84" << 32637;
        QTest::newRow("only punctuation") << " ,-/" << CoordSystem::EPSG_UNDEFINDED;
    }
    void find()
    {
        QFETCH(QString, text);
        QFETCH(int, firstCode);
        Model model(support::shippedFactory());
        CoordSystemFilterModel filter(model);
        QAbstractItemModelTester tester(&filter, QAbstractItemModelTester::FailureReportingMode::QtTest);
        filter.setText(text);
        QCOMPARE(filter.isPending(), filter.isFiltering()); // nothing is read while one types
        QCOMPARE(filter.rowCount(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(!filter.isPending(),
                                 300000); // the model's thread tells, the list fills itself
        const QModelIndex first = filter.index(0, 0);
        QCOMPARE(first.isValid() ? codeOf(first) : CoordSystem::EPSG_UNDEFINDED, firstCode);
        QCOMPARE(filter.mapFromSource(filter.mapToSource(first)), first);
    }

    void places_data()
    {
        QTest::addColumn<QRectF>("place");
        QTest::addColumn<int>("inUse");
        QTest::addColumn<int>("elsewhere");
        QTest::newRow("point") << QRectF(37.6, 55.7, 0, 0) << 32637 << 32636;
        QTest::newRow("across the 180th meridian") << QRectF(179, 66, 1.2, 1) << 2636 << 32637;
        QTest::newRow("the same, a turn to the west") << QRectF(-181, 66, 1.2, 1) << 2636 << 32637;
        QTest::newRow("edge of an area") << QRectF(42, 30, 0, 0) << 32637 << 32636;
        QTest::newRow("not finite: everywhere, so nothing")
            << QRectF(std::numeric_limits<double>::quiet_NaN(), 0, 0, 0) << 0 << 32637;
    }
    void places()
    {
        QFETCH(QRectF, place);
        QFETCH(int, inUse);
        QFETCH(int, elsewhere);
        Model model(support::shippedFactory());
        model.waitUntilPrepared();
        CoordSystemFilterModel filter(model);
        filter.setPlace(place);
        filter.waitUntilFound();
        QCOMPARE(filter.mapFromSource(model.indexOfCode(inUse)).isValid(), inUse > 0);
        QVERIFY(!filter.mapFromSource(model.indexOfCode(elsewhere)).isValid());
    }

    /// Own systems without a code stay where their bounds hold the place, or are none.
    void ownAtPlace()
    {
        const auto factory = support::shippedFactory();
        UserCoordSystem &store = *factory->userCoordSystem();
        const QString branch = QStringLiteral("places");
        const CoordSystem::SourceData bounded{
            CoordSystem::Prj, QStringLiteral("Earth Projection 8, 1001, 7, 42.1, 0, 1, 250000, 0 "
                                             "Bounds (200000, 6200000) (300000, 6300000)")};
        const CoordSystem::SourceData plan{CoordSystem::Prj,
                                           QStringLiteral("NonEarth Units 7 Bounds (0, 0) (10, 10)")};
        store.setCoordSystem(branch, bounded, QStringLiteral("bounded"));
        store.setCoordSystem(branch, plan, QStringLiteral("plan"));
        const auto removed = qScopeGuard([&] {
            store.removeCoordSystem(branch, bounded);
            store.removeCoordSystem(branch, plan);
        });
        Model model(factory);
        model.waitUntilPrepared();
        CoordSystemFilterModel filter(model);
        const auto isShown = [&](const QString &name) {
            const QModelIndex section = model.sectionIndex(Model::OwnSystems);
            for (int group = 0; group < model.rowCount(section); ++group)
                for (int row = 0; row < model.rowCount(model.index(group, 0, section)); ++row)
                    if (const auto own = model.index(row, 0, model.index(group, 0, section));
                        own.data().toString() == name)
                        return filter.mapFromSource(own).isValid();
            return false;
        };
        for (const bool isInside : {true, false}) {
            filter.setPlace(QRectF(isInside ? 42.1 : -20.0, 56.3, 0.0, 0.0));
            filter.waitUntilFound();
            QCOMPARE(isShown(QStringLiteral("bounded")), isInside);
            QVERIFY(isShown(QStringLiteral("plan")));
        }
    }

    /// The word that stands in the way is named, and following the advice finds what was promised.
    void relaxations()
    {
        Model model(support::shippedFactory());
        model.waitUntilPrepared();
        CoordSystemFilterModel filter(model);
        filter.setText(QStringLiteral("utm 37 qwertyq"));
        filter.setPlace(QRectF(37.6, 55.7, 0, 0));
        filter.waitUntilFound();
        const auto ways = filter.relaxations();
        QCOMPARE(ways.size(), 1);
        QCOMPARE(ways.first().without, QStringLiteral("qwertyq"));
        filter.setText(ways.first().text);
        filter.waitUntilFound();
        QCOMPARE(filter.foundCount(), ways.first().count);
    }
};

std::unique_ptr<QObject> makeTestCatalogModel() { return std::make_unique<TestCatalogModel>(); }

#include "tst_catalogmodel.moc"
