#include "Comparison.h"

#include <algorithm>
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

std::string timeText(double seconds)
{
    char text[32];
    const char *unit = seconds >= 1e-3 ? "ms" : seconds >= 1e-6 ? "us" : "ns";
    const double scale = seconds >= 1e-3 ? 1e3 : seconds >= 1e-6 ? 1e6 : 1e9;
    std::snprintf(text, sizeof text, "%.3f %s", seconds * scale, unit);
    return text;
}

} // namespace

void add(const Row &row, const std::function<void(benchmark::State &)> &library,
         const std::function<void(benchmark::State &)> &engine)
{
    rows().push_back(row);
    const auto registerSide = [&row](const char *side, const std::function<void(benchmark::State &)> &work) {
        auto *one = benchmark::RegisterBenchmark((row.name + side).c_str(), work)->Repetitions(repetitions);
        if (row.iterations > 0)
            one->Iterations(row.iterations);
    };
    registerSide("/library", library);
    if (engine)
        registerSide("/engine", engine);
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
        const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
        const auto [slot, isNew] = m_best.emplace(name, seconds);
        if (!isNew)
            slot->second = std::min(slot->second, seconds);
    }
    if (!runs.empty() && runs.front().run_type == Run::RT_Iteration)
        GetErrorStream() << "done: " << runs.front().run_name.function_name << std::endl;
}

void Reporter::printTable() const
{
    std::printf("\n%-44s %12s %12s %8s %8s\n", "best CPU time", "library", "engine", "ratio", "aim");
    for (const Row &row : rows()) {
        const auto library = m_best.find(row.name + "/library");
        const auto engine = m_best.find(row.name + "/engine");
        if (library == m_best.end())
            continue; // left out by --benchmark_filter
        const bool both = engine != m_best.end();
        char ratio[16] = "-";
        char aim[16] = "-";
        if (both)
            std::snprintf(ratio, sizeof ratio, "%.3f", library->second / engine->second);
        if (row.aim > 0.0)
            std::snprintf(aim, sizeof aim, row.kind == Row::Ratio ? "%.2f" : "%g us", row.aim);
        std::printf("%-44s %12s %12s %8s %8s\n", row.name.c_str(), timeText(library->second).c_str(),
                    both ? timeText(engine->second).c_str() : "-", ratio, aim);
    }
}

} // namespace comparison
