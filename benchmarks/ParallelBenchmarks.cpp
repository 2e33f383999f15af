#include "ParallelBenchmarks.h"

#include "Comparison.h"

#include <coordsys/BulkTransform.h>

#include <proj.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

using namespace nivora::cs;
using benchmark::State;

namespace comparison {
namespace {

std::function<void(State &)> converting(const std::shared_ptr<const BulkTransform> &bulk,
                                        const QVector<QPointF> &points, int threads)
{
    return [bulk, points, threads](State &state) {
        BulkOptions options;
        options.threads = threads;
        QVector<QPointF> out(points.size());
        for (auto _ : state) {
            const BulkResult result = bulk->forward(points.constData(), out.data(),
                                                    static_cast<std::size_t>(points.size()), options);
            if (!result.isComplete())
                state.SkipWithError("failed");
            benchmark::DoNotOptimize(out.constData());
        }
    };
}

/// A list's points one by one: both halves at the same time, or one after the other.
std::function<void(State &)> pointByPoint(const std::shared_ptr<const BulkTransform> &bulk,
                                          const QVector<QPointF> &points, bool atOnce)
{
    const auto half = [bulk, points](bool second) {
        const auto middle = points.cbegin() + points.size() / 2;
        QPointF out;
        std::for_each(second ? middle : points.cbegin(), second ? points.cend() : middle,
                      [&](const QPointF &in) { benchmark::DoNotOptimize(bulk->forward(in, out)); });
    };
    return [half, atOnce](State &state) {
        for (auto _ : state) {
            std::thread other;
            if (atOnce)
                other = std::thread(half, true);
            else
                half(true);
            half(false);
            if (other.joinable())
                other.join();
        }
    };
}

std::function<void(State &)> engineArray(const std::shared_ptr<PJ> &pj, const QVector<QPointF> &points)
{
    return [pj, points](State &state) {
        std::vector<PJ_COORD> buffer(static_cast<std::size_t>(points.size()));
        QVector<QPointF> out(points.size());
        for (auto _ : state) {
            for (int i = 0; i < points.size(); ++i)
                buffer[static_cast<std::size_t>(i)] =
                    proj_coord(points.at(i).x(), points.at(i).y(), 0.0, HUGE_VAL);
            if (proj_trans_array(pj.get(), PJ_FWD, buffer.size(), buffer.data()) != 0)
                state.SkipWithError("failed");
            for (int i = 0; i < out.size(); ++i)
                out[i] = QPointF(buffer[static_cast<std::size_t>(i)].xy.x,
                                 buffer[static_cast<std::size_t>(i)].xy.y);
            benchmark::DoNotOptimize(out.constData());
        }
    };
}

/// What the machine gives to work that shares nothing: without it the gain of two threads says little.
void spin(int count)
{
    double x = 1.0;
    for (int i = 0; i < count; ++i)
        benchmark::DoNotOptimize(x = std::sin(x) + 1.0);
}

void addCpuLoop()
{
    constexpr int count = 4'000'000;
    const auto two = [](State &state) {
        for (auto _ : state) {
            std::thread other(spin, count / 2);
            spin(count / 2);
            other.join();
        }
    };
    const auto one = [](State &state) {
        for (auto _ : state)
            spin(count);
    };
    add({"pure CPU loop, two threads beside one", 0.0, Row::Ratio, 3, "-", Row::Wall}, two, one);
}

} // namespace

void addParallel(const CoordTransform &transform, const std::shared_ptr<PJ> &pj,
                 const QVector<QPointF> &points)
{
    const auto bulk = std::make_shared<const BulkTransform>(transform);
    add({"BulkTransform, 1,000,000 points, one thread", 0.92, Row::Ratio, 3}, converting(bulk, points, 1),
        engineArray(pj, points));
    addCpuLoop();
    add({"BulkTransform, two threads beside one", 1.0 / 1.8, Row::Ratio, 3, "bare PROJ, own contexts: 0.5",
         Row::Wall},
        converting(bulk, points, 2), converting(bulk, points, 1));
    add({"BulkTransform, points one by one from two threads beside one", 1.0 / 1.8, Row::Ratio, 3,
         "bare PROJ, own contexts: 0.5", Row::Wall},
        pointByPoint(bulk, points, true), pointByPoint(bulk, points, false));
    const auto point = [bulk](State &state) {
        const QPointF in(38.0, 55.0);
        QPointF out;
        for (auto _ : state) {
            if (!bulk->forward(in, out))
                state.SkipWithError("failed");
            benchmark::DoNotOptimize(out);
        }
    };
    const auto bare = [pj](State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(proj_trans(pj.get(), PJ_FWD, proj_coord(38.0, 55.0, 0.0, HUGE_VAL)));
    };
    add({"BulkTransform, one point", 1.1, Row::Ratio}, point, bare);
}

} // namespace comparison
