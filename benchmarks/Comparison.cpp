#include "Comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace comparison {
namespace {

constexpr int repetitions = 7;

std::vector<Row> &rows()
{
    static std::vector<Row> all;
    return all;
}

std::string figureText(Row::Kind kind, double seconds)
{
    char text[32];
    if (kind == Row::Megabytes) {
        std::snprintf(text, sizeof text, "%.1f MB", seconds);
        return text;
    }
    const char *unit = seconds >= 1e-3 ? "ms" : seconds >= 1e-6 ? "us" : "ns";
    const double scale = seconds >= 1e-3 ? 1e3 : seconds >= 1e-6 ? 1e6 : 1e9;
    std::snprintf(text, sizeof text, "%.3f %s", seconds * scale, unit);
    return text;
}

/// What a row is judged by: the ratio, microseconds or megabytes.
double reachedBy(const Row &row, double library, double ratio)
{
    switch (row.kind) {
    case Row::Ratio:
        return ratio;
    case Row::Microseconds:
        return library * 1e6;
    default:
        return library;
    }
}

std::string aimText(const Row &row)
{
    constexpr const char *formats[] = {"%.2f", "%g us", "%g MB"};
    char text[32] = "-";
    if (row.aim > 0.0)
        std::snprintf(text, sizeof text, formats[row.kind], row.aim);
    return text;
}

} // namespace

void add(const Row &row, const std::function<void(benchmark::State &)> &library,
         const std::function<void(benchmark::State &)> &engine)
{
    rows().push_back(row);
    const auto registerSide = [&row](const char *side, const std::function<void(benchmark::State &)> &work) {
        auto *one = benchmark::RegisterBenchmark((row.name + side).c_str(), work)->Repetitions(repetitions);
        if (row.clock == Row::Wall)
            one->UseRealTime();
        if (row.clock == Row::Given)
            one->UseManualTime();
        if (row.iterations > 0)
            one->Iterations(row.iterations);
    };
    registerSide("/library", library);
    if (engine)
        registerSide("/engine", engine);
}

void addGiven(const Row &row, double library)
{
    Row given = row;
    given.clock = Row::Given;
    given.iterations = 1;
    add(
        given,
        [library](benchmark::State &state) {
            for (auto _ : state) {
                if (std::isnan(library))
                    state.SkipWithError("could not be measured");
                else
                    state.SetIterationTime(library);
            }
        },
        nullptr);
}

bool Reporter::ReportContext(const Context &context)
{
    PrintBasicContext(&GetErrorStream(), context);
    return true;
}

void Reporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        const std::string &name = run.run_name.function_name;
        if (run.error_occurred) {
            GetErrorStream() << name << ": " << run.error_message << std::endl;
            m_allRan = false;
        }
        if (run.run_type != Run::RT_Iteration || run.error_occurred || run.iterations == 0)
            continue;
        const auto row = std::find_if(rows().begin(), rows().end(),
                                      [&name](const Row &r) { return name.rfind(r.name + "/", 0) == 0; });
        const bool onWall = row != rows().end() && row->clock != Row::Processor;
        const double seconds = (onWall ? run.real_accumulated_time : run.cpu_accumulated_time) /
                               static_cast<double>(run.iterations);
        const auto [slot, isNew] = m_best.emplace(name, seconds);
        if (!isNew)
            slot->second = std::min(slot->second, seconds);
    }
    if (!runs.empty() && runs.front().run_type == Run::RT_Iteration)
        GetErrorStream() << "done: " << runs.front().run_name.function_name << std::endl;
}

void Reporter::printTable() const
{
    std::puts("| best of seven | library | engine | ratio | aim | met | peer |\n"
              "|---|---|---|---|---|---|---|");
    for (const Row &row : rows()) {
        const auto library = m_best.find(row.name + "/library");
        const auto engine = m_best.find(row.name + "/engine");
        if (library == m_best.end())
            continue; // left out by --benchmark_filter
        const bool both = engine != m_best.end();
        const double ratio = both ? library->second / engine->second : 0.0;
        char ratioText[16] = "-";
        if (both)
            std::snprintf(ratioText, sizeof ratioText, "%.3f", ratio);
        const bool reached = reachedBy(row, library->second, ratio) <= row.aim;
        std::printf("| %s | %s | %s | %s | %s | %s | %s |\n", row.name.c_str(),
                    figureText(row.kind, library->second).c_str(),
                    both ? figureText(row.kind, engine->second).c_str() : "-", ratioText,
                    aimText(row).c_str(), row.aim > 0.0 ? (reached ? "yes" : "no") : "-", row.peer);
    }
}

} // namespace comparison
