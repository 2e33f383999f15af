#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace comparison {

/// One figure: the library's work beside the bare engine call that does the same.
struct Row
{
    std::string name;
    double aim; ///< the ratio library / engine, or microseconds of the library where there is no engine call
    enum Kind { Ratio, Microseconds } kind;
    int iterations = 0;      ///< in each repetition; 0 for as many as half a second takes
    const char *peer = "-";  ///< what another program was seen to take on the same machine
    bool isWallTime = false; ///< for work on several threads
};

/// Registers "name/library" and "name/engine" and remembers the aim (0 for none). A null \p engine leaves the
/// library's time alone.
void add(const Row &row, const std::function<void(benchmark::State &)> &library,
         const std::function<void(benchmark::State &)> &engine);

/// Prints a Markdown table with the best time of either side: CPU time, because what else the machine does
/// must not decide a ratio, but for work on several threads the time on the wall.
class Reporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;
    void printTable() const;
    /// False when a run reported an error; its row is missing from the table then.
    bool allRan() const { return m_allRan; }

private:
    std::map<std::string, double> m_best; ///< seconds per iteration by benchmark name
    bool m_allRan = true;
};

} // namespace comparison
