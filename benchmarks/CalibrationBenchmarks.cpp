#include "CalibrationBenchmarks.h"

#include "Comparison.h"

#include <coordsys/Calibration.h>

#include <cmath>
#include <memory>

using namespace nivora::cs;

namespace comparison {
namespace {

constexpr int pointCount = 1000;
constexpr double aimUs = 10000.0;

/// Over 20 km, turned a little, with centimetres of something like noise.
QVector<CalibrationPair> somePairs()
{
    QVector<CalibrationPair> pairs;
    for (int i = 0; i < pointCount; ++i) {
        const QPointF local(20000.0 * std::fmod(i * 0.6180339887498949, 1.0), 20.0 * i);
        CalibrationPair pair;
        pair.local = local;
        pair.known = {412000.0 + 0.9999 * local.x() - 0.01 * local.y() + 0.01 * std::sin(7.7 * i),
                      6180000.0 + 0.01 * local.x() + 0.9999 * local.y() + 0.01 * std::cos(3.3 * i)};
        pairs << pair;
    }
    return pairs;
}

} // namespace

void addCalibrations(const std::shared_ptr<CoordSysFactory> &factory)
{
    const auto points = std::make_shared<Calibration>(factory->createFromEpsg(32637), somePairs(),
                                                      Calibration::Local{{}, factory->createFromEpsg(28407)});
    for (const CalibrationModel model : calibrationModels())
        add(
            {"control points, 1,000, " + calibrationWord(model).toStdString(), aimUs, Row::Microseconds},
            [points, model](benchmark::State &state) {
                for (auto _ : state)
                    benchmark::DoNotOptimize(points->fit(model).rmsM());
            },
            nullptr);
}

} // namespace comparison
