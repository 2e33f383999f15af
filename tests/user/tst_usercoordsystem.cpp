#include <coordsys/UserCoordSystem.h>

#include <support/Support.h>

#include <algorithm>
#include <thread>

using namespace nivora::cs;

namespace {

CoordSystemTypes::SourceData prj(const char *text)
{
    return {CoordSystemTypes::Prj, QString::fromUtf8(text)};
}

} // namespace

class TestUserCoordSystem : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        QVERIFY(support::shippedFactory());
        m_log = std::make_unique<support::LogCapture>();
        m_store = UserCoordSystem(QDir(m_dir.path()));
    }

    void cleanup() { m_log.reset(); }

    void entries()
    {
        QVERIFY(m_store.isEmpty());
        QVERIFY(set("A", "Earth Projection 1, 104", "first"));
        QVERIFY(set("B", "Earth Projection 1, 1001", "other"));
        // The same source in another spelling, in the same branch: replaced, and the user's own text stays.
        QVERIFY(set("A", "CoordSys Earth  Projection 1, 104", "second"));
        QCOMPARE(m_store.data().size(), 2);
        QCOMPARE(m_store.data().at(0).entries.size(), 1);
        QCOMPARE(entry(0, 0).source().string, "Earth Projection 1, 104"_s);
        QCOMPARE(entry(0, 0).storedSystem()->description(), "second"_s);
        QCOMPARE(m_store.description(prj("Earth Projection 1, 104")), "second"_s);
        QVERIFY(m_store.hasValue(prj("Earth Projection 1, 1001")));
        QVERIFY(!m_store.hasValue({CoordSystemTypes::Wkt, "Earth Projection 1, 1001"_s}));
        QCOMPARE(m_store.keyIndex("B"_s), 1);
        QCOMPARE(m_store.keyIndex("b"_s), -1);

        remove("B", "Earth Projection 1, 104"); // not in this branch
        remove("C", "Earth Projection 1, 104");
        QVERIFY(m_store.hasValue(prj("Earth Projection 1, 104")));
        remove("A", "Earth Projection 1, 104");
        QVERIFY(!m_store.hasValue(prj("Earth Projection 1, 104")));
        QCOMPARE(m_store.data().size(), 2);
    }

    void equalSystem()
    {
        set("A", "no system at all", "");
        set("A", "Earth Projection 1, 104", "mine");
        const CoordSystemPtr mine = entry(0, 1).storedSystem();
        // Another notation of the same system brings the stored one.
        QCOMPARE(m_store.getCoordSystem({CoordSystemTypes::Proj4, "+proj=longlat +datum=WGS84 +no_defs"_s}),
                 mine);
        QVERIFY(!m_store.getCoordSystem(prj("Earth Projection 1, 1001")));
        QVERIFY(!m_store.getCoordSystem(prj("no system at all")));
        QVERIFY(
            m_store.hasCoordSystem(support::shippedFactory()->createFromPrj("Earth Projection 1, 104"_s)));
        QVERIFY(!m_store.hasCoordSystem(nullptr));
    }

    void textThatMakesNoSystem()
    {
        QVERIFY(!set("A", "100% wrong %1", "kept"));
        const QStringList errors = m_log->lines("error"_s);
        QVERIFY(errors.size() == 1 && errors.at(0).endsWith(" (100% wrong %1)"_s));
        QCOMPARE(m_store.description(prj("100% wrong %1")), "kept"_s);
        QVERIFY(!entry(0, 0).coordSystem());
    }

    void testStringValue_data()
    {
        const support::Columns<QString, QString> row; // description: of the stored entry, empty: a new entry
        // clang-format off
        row("other spelling", "CoordSys Earth Projection 8,104,\"m\",39,0,1.0,500000,0", "plain");
        row("bounds count", "Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0 Bounds (0, 0) (1000, 1000)", "bounded");
        row("other bounds", "Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0 Bounds (0, 0) (2000, 1000)", "");
        row("affine counts", "Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0 Affine Units \"m\", 1, 0, 5, 0, 1, 5", "");
        row("other notation", "4326", "");
        // clang-format on
    }
    void testStringValue()
    {
        const auto [text, description] = support::row<QString, QString>();
        set("A", "malformed, but a CoordSys string it is called", "bad");
        set("A", "Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0", "plain");
        set("A", "Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0 Bounds (0, 0) (1000, 1000)", "bounded");
        const UserCoordSystem::CoordSystemParam found = m_store.testStringValue(text);
        QCOMPARE(found.description(), description);
        QVERIFY(found.coordSystem() && (!description.isEmpty() || found.source().string == text));
    }

    void reading()
    {
        support::writeFile(m_store.fileInfo().filePath(),
                           R"(<any><other><cs type="prj" str="Earth Projection 1, 0"/></other>
<branch><whatever type="EPSG" str="4326"/><!-- passed over --><cs type="PrJ" str="Earth Projection 1, 104" desc="мой"/></branch>
<branch name="B"><cs type="sql" str="?" desc=""/></branch></any>)");
        m_store.loadFromFile(false);

        QCOMPARE(m_store.data().size(), 2);
        QCOMPARE(m_store.data().at(0).name, "Каталог"_s);
        QCOMPARE(m_store.data().at(0).entries.size(), 2);
        QCOMPARE(entry(0, 0).description(), "Без имени"_s);
        QVERIFY(entry(0, 0).storedSystem()->description() != "Без имени"_s);
        QCOMPARE(entry(0, 0).storedSystem()->epsg(), 4326);
        QCOMPARE(entry(0, 1).storedSystem()->description(), "мой"_s);
        QVERIFY(!entry(1, 0).storedSystem());
        QCOMPARE(m_log->lines("info"_s).last(), "Пользовательские КС: UserCoordSystem.xml (3)"_s);
    }

    // Entries are made when they are asked for, once, whoever asks, and by the catalogues they came with.
    void lazyEntries()
    {
        const QTemporaryDir dir;
        CoordSysFactory factory(support::resources(), QDir(dir.path()), "en"_s);
        // The second one is a plan, which asks the store for its name while it is made.
        support::writeFile(dir.filePath("UserCoordSystem.xml"_s),
                           R"(<coordsys><branch name="A"><cs type="epsg" str="999999" desc="no code"/>
<cs type="wkt" str="LOCAL_CS[&quot;plan&quot;,UNIT[&quot;metre&quot;,1]]" desc="plan"/></branch></coordsys>)");
        QVERIFY(factory.initCoordSystemEnvironment());
        QCOMPARE(m_log->lines("error"_s), QStringList());

        CoordSysFactory::setDefaultCoordSysFactory(nullptr);
        const auto store = factory.userCoordSystem();
        std::vector<std::thread> threads;
        std::vector<CoordSystemPtr> made(8);
        for (CoordSystemPtr &cs : made)
            threads.emplace_back([&cs, &store] {
                cs = QList<UserCoordSystem::CsDataType>(store->data()).at(0).entries.at(1).storedSystem();
            });
        for (std::thread &thread : threads)
            thread.join();
        QVERIFY(made.front() && std::count(made.begin(), made.end(), made.front()) == 8);
        QCOMPARE(made.front()->description(), "plan"_s);
        for (int i = 0; i < 2; ++i)
            QVERIFY(!store->data().at(0).entries.at(0).storedSystem());
        QCOMPARE(m_log->lines("error"_s).size(), 1);
    }

private:
    UserCoordSystem::CoordSystemParam entry(int branch, int index)
    {
        return QList<UserCoordSystem::CsDataType>(m_store.data()).at(branch).entries.at(index);
    }
    bool set(const char *branch, const char *text, const char *description)
    {
        return m_store.setCoordSystem(QString::fromUtf8(branch), prj(text), QString::fromUtf8(description));
    }
    void remove(const char *branch, const char *text)
    {
        m_store.removeCoordSystem(QString::fromUtf8(branch), prj(text));
    }

    QTemporaryDir m_dir;
    UserCoordSystem m_store{QDir(m_dir.path())};
    std::unique_ptr<support::LogCapture> m_log;
};

NIVORA_TEST(TestUserCoordSystem)
#include "tst_usercoordsystem.moc"
