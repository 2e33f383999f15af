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
    double aim; ///< the ratio library / engine, or what the library may take where there is no engine call
    enum Kind { Ratio, Microseconds, Megabytes } kind;
    int iterations = 0;     ///< in each repetition; 0 for as many as half a second takes
    const char *peer = "-"; ///< what another program was seen to take on the same machine
    /// Wall for work on several threads; Given for what the work itself measures and hands to
    /// State::SetIterationTime(), megabytes too.
    enum Clock { Processor, Wall, Given } clock = Processor;
};

/// Registers "name/library" and "name/engine" and remembers the aim (0 for none). A null \p engine leaves the
/// library's time alone.
void add(const Row &row, const std::function<void(benchmark::State &)> &library,
         const std::function<void(benchmark::State &)> &engine);

/// The same for figures that were measured before: seconds, or megabytes. NaN for what could not be measured,
/// which is an error.
void addGiven(const Row &row, double library);

/// Prints a Markdown table with the best time of either side: CPU time, because what else the machine does
/// must not decide a ratio, but where the row says otherwise.
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
