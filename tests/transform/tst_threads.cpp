#include <object/FirstCalls.h>

#include "CoordTransformCache_p.h"
#include "ParallelFor_p.h"
#include <coordsys/CoordTransform.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemSearch.h>
#include <coordsys/UserCoordSystem.h>

#include <QSemaphore>
#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace nivora::cs;

namespace {

/// Runs the body in four threads that start together; the number of those that answered false or threw.
template <typename F> int failuresOfFour(F &&body)
{
    std::atomic<int> ready{0}, failures{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            ++ready;
            while (ready < 4)
                std::this_thread::yield();
            try {
                if (!body(i))
                    ++failures;
            } catch (const std::exception &) {
                ++failures;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    return failures;
}

} // namespace

/// Meant for the thread sanitizer; elsewhere it still finds deadlocks and crashes.
class TestTransformThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    /// What goes wrong in a helper reaches the caller, whose own share went well.
    void helpersFailure()
    {
        QThreadPool pool;
        QSemaphore thrown;
        const std::thread::id caller = std::this_thread::get_id();
        const auto work = [&] {
            if (std::this_thread::get_id() == caller)
                return thrown.acquire();
            thrown.release();
            throw std::runtime_error("of a helper");
        };
        VERIFY_THROWS(std::runtime_error, parallelFor(pool, 1, work), "of a helper");
    }

    void firstCallsRace_data()
    {
        const support::Columns<QString> row;
        for (const char *text :
             {"prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0", "epsg:32637",
              "prj:CoordSys NonEarth Units \"ft\" Bounds (0, 0) (10, 20)",
              "proj:+proj=eqc +R=6370997 +units=m +no_defs", "proj:+proj=longlat +datum=WGS84 +no_defs"})
            row.named(text);
    }

    // Each thread asks a fresh object for its lazily found facts in another order.
    void firstCallsRace()
    {
        const auto [system] = support::row<QString>();
        const CoordSystemPtr twin = support::made(system), warm = support::made(system);
        QStringList expected;
        for (const firstcalls::Question &question : firstcalls::questions)
            expected << question.ask(*warm, twin);
        for (int round = 0; round < 3; ++round) {
            const CoordSystemPtr cs = support::made(system);
            QCOMPARE(failuresOfFour([&](int thread) {
                         bool same = true;
                         for (int i = 0; i < expected.size(); ++i) {
                             const int k = (i + thread * 4) % expected.size();
                             same = firstcalls::questions[k].ask(*cs, twin) == expected[k] && same;
                         }
                         return same;
                     }),
                     0);
        }
    }

    void sharedTransform()
    {
        const auto factory = support::shippedFactory();
        const CoordSystemPtr from = factory->createFromPrj("Earth Projection 1, 1001"_s);
        const CoordSystemPtr to = factory->createFromEpsg(32637);
        const CoordSystemPtr plan = factory->createNonEarth(7, QRectF());
        const std::size_t before = coordTransformCache().size();
        QCOMPARE(failuresOfFour([&](int thread) {
                     const CoordTransform t(from, to), mixed(to, plan); // constructed in all threads at once
                     for (int i = 0; i < 200; ++i) {
                         const QPointF in(39.0 + thread, 55.0 + i * 1e-3);
                         QPointF out, back;
                         QRectF rect;
                         if (!t.forward(in, out) || !t.inverse(out, back) || !support::near(in, back, 1e-8) ||
                             !mixed.forward(out, out) || !mixed.inverse(out, out) ||
                             !to->inverse(out, back) || !t.forwardMesh(QRectF(in, QSizeF(1, 1)), rect, 3))
                             return false;
                     }
                     return true;
                 }),
                 0);
        QCOMPARE(coordTransformCache().size(), std::min(before + 2, CoordTransformCache::mostQueues));
    }

    void creators()
    {
        const auto factory = support::shippedFactory();
        QCOMPARE(failuresOfFour([&](int thread) {
                     const QStringList texts{"epsg:32637"_s,
                                             "proj:+proj=utm +zone=38 +datum=WGS84 +units=m +no_defs"_s,
                                             "prj:Earth Projection 1, 28"_s, "prj:NonEarth Units \"km\""_s};
                     for (int i = 0; i < 8; ++i) {
                         const CoordSystemPtr cs =
                             factory->createFromTaggedString(texts[(i + thread) % texts.size()]);
                         factory->setCurrentCoordSystem(cs);
                         if (!factory->currentCoordSystem() || cs->description().isEmpty() ||
                             CoordSysFactory::defaultCoordSysFactory() != factory ||
                             CoordSysFactory::cropCoordSystems().size() != 2)
                             return false;
                     }
                     return true;
                 }),
                 0);
    }

    /// The index with a user's own systems is made anew by whoever asks first behind a change; their places
    /// are put into a copy, since other threads read the first one. What was asked for goes on with what it
    /// had.
    void ownSystemsChange()
    {
        const auto factory = support::shippedFactory();
        UserCoordSystem &store = *factory->userCoordSystem();
        const QString branch = QStringLiteral("threads");
        const auto own = [](int n) {
            return CoordSystem::SourceData{
                CoordSystem::Prj,
                QStringLiteral("Earth Projection 8, 1001, 7, 42.%1, 0, 1, 250000, 0").arg(n)};
        };
        const CoordSystem::SourceData kept = own(9);
        store.setCoordSystem(branch, kept, QStringLiteral("Vyazniki kept"));
        constexpr int rounds = 6;
        const auto change = [&](int round) {
            const QString name = QStringLiteral("Vyazniki %1").arg(round);
            store.setCoordSystem(branch, own(round), name);
            store.setCoordSystem(branch, own(round), name + QStringLiteral(" renamed"));
            store.removeCoordSystem(branch, own(round));
            return true;
        };
        // A country is asked for, since ranking by it reads what the places are kept beside.
        const auto isFound = [&](int thread) {
            const auto search = systemSearch(*factory);
            const auto first = [](const QVector<MapinfoSearch::Hit> &hits) { return hits.value(0).name; };
            const auto byPlace = [&] {
                return search->answer(QStringLiteral("vyazniki"), QPointF(42.0 + 0.1 * thread, 56.2), 1).hits;
            };
            const auto byName = [&] { return search->find(QStringLiteral("vyazniki kept russia"), 1); };
            const bool isPlaceFirst = thread % 2 == 0;
            const QString one = first(isPlaceFirst ? byPlace() : byName());
            const QString other = first(isPlaceFirst ? byName() : byPlace());
            return one.startsWith(QLatin1String("Vyazniki")) && other.startsWith(QLatin1String("Vyazniki"));
        };
        const int failures = failuresOfFour([&](int thread) {
            bool isRight = true;
            for (int round = 0; round < rounds; ++round)
                isRight = (thread == 0 ? change(round) : isFound(thread)) && isRight;
            return isRight;
        });
        store.removeCoordSystem(branch, kept);
        QCOMPARE(failures, 0);
        QVERIFY(!systemSearch(*factory)->find(QStringLiteral("vyazniki kept"), 1).value(0).isOwn());
    }
};

NIVORA_TEST(TestTransformThreads)
#include "tst_threads.moc"
