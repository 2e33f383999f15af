#include <coordsys/SystemGuess.h>

#include "GeographicExtent_p.h"
#include "GuessGroups_p.h"
#include "GuessScore_p.h"
#include "PlaceNames_p.h"
#include "SearchWords_p.h"
#include "SystemGuessData_p.h"
#include <coordsys/NumberText.h>

#include <QDir>

#include <algorithm>
#include <cmath>
#include <map>

namespace nivora::cs {
namespace {

constexpr std::size_t sampleSize = 24;
constexpr std::size_t mostInverted = 3000; ///< systems whose inverse is tried
constexpr std::size_t mostClusters = 10;   ///< places where the data may lie that are looked at closely
constexpr std::size_t mostInCluster = 80;
constexpr std::size_t mostShifts = 150; ///< each costs some milliseconds
constexpr double clusterReachM = 2000.0;
constexpr double leastShare = 0.3;
constexpr double doubtfulShare = 0.5;
constexpr double hopeless = 15.0; ///< so much less likely than the first, natural logarithm
constexpr int mostMembers = 30;

/// Points from all parts of the data, those at its edges among them.
std::vector<QPointF> sampleOf(const QVector<QPointF> &points)
{
    std::vector<QPointF> all;
    std::copy_if(points.begin(), points.end(), std::back_inserter(all),
                 [](const QPointF &p) { return std::isfinite(p.x()) && std::isfinite(p.y()); });
    if (all.size() <= sampleSize)
        return all;
    std::vector<QPointF> sample;
    const auto byX = [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); };
    const auto byY = [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); };
    const auto [west, east] = std::minmax_element(all.begin(), all.end(), byX);
    const auto [south, north] = std::minmax_element(all.begin(), all.end(), byY);
    sample.insert(sample.end(), {*west, *east, *south, *north});
    for (std::size_t i = sample.size(); i < sampleSize; ++i)
        sample.push_back(all[i * all.size() / sampleSize]);
    return sample;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The longitude within half a turn of another.
double longitudeNear(double longitude, double other)
{
    return other + std::remainder(longitude - other, 360.0);
}

/// NaN when half of the points are none.
QPointF centreOf(const std::vector<QPointF> &lonLat)
{
    std::vector<double> xs;
    std::vector<double> ys;
    for (const QPointF &point : lonLat) {
        if (!std::isfinite(point.x()) || !std::isfinite(point.y()))
            continue;
        xs.push_back(xs.empty() ? point.x() : longitudeNear(point.x(), xs.front()));
        ys.push_back(point.y());
    }
    if (xs.empty() || xs.size() * 2 < lonLat.size())
        return {NAN, NAN};
    return {std::remainder(median(xs), 360.0), median(ys)};
}

QRectF boxOf(const std::vector<QPointF> &lonLat, const QPointF &centre)
{
    QPointF low = centre;
    QPointF high = centre;
    for (const QPointF &point : lonLat) {
        if (!std::isfinite(point.x()) || !std::isfinite(point.y()))
            continue;
        const double x = longitudeNear(point.x(), centre.x());
        low = {std::min(low.x(), x), std::min(low.y(), point.y())};
        high = {std::max(high.x(), x), std::max(high.y(), point.y())};
    }
    return {low, high};
}

double shareInside(const QRectF &area, const std::vector<QPointF> &lonLat)
{
    const auto inside = std::count_if(lonLat.begin(), lonLat.end(), [&area](const QPointF &point) {
        return std::isfinite(point.x() + point.y()) && areaHolds(area, QRectF(point, QSizeF(0.0, 0.0)));
    });
    return static_cast<double>(inside) / static_cast<double>(lonLat.size());
}

QString nameOrCode(const SystemGuess::Member &member)
{
    return member.code.isEmpty() ? member.name : member.code;
}

bool isBetter(const GuessCandidate &a, const GuessCandidate &b) { return a.score > b.score; }

/// One question.
class Guessing
{
public:
    Guessing(const SystemIndex &index, const SearchLexicon &lexicon, const PlaneTable &table,
             const CoordSystemPtr &wgs84, const std::optional<NamedPlace> &place,
             const SystemGuess::Question &question)
        : m_index(index)
        , m_table(table)
        , m_question(question)
        , m_sample(sampleOf(question.points))
        , m_readings(readingsOf(m_sample, question.isSwapped))
        , m_doubtOfLengths(doubtOfLengths(m_sample))
        , m_place(place)
        , m_score(index, lexicon, table, place)
        , m_ground(table, wgs84)
    {}

    SystemGuess::Answer answer(int limit);

private:
    const IndexedSystem &indexed(const PlaneOfSystem &system) const
    {
        return m_index.systems()[static_cast<std::size_t>(system.system)];
    }
    const Plane &planeOf(const PlaneOfSystem &system) const
    {
        return m_table.planes()[static_cast<std::size_t>(system.plane)];
    }
    std::vector<QPointF> readSample(const GuessReading &reading, const PlaneOfSystem &system) const;
    bool isInBox(const GuessReading &reading, const PlaneOfSystem &system) const;
    std::vector<GuessCandidate> inBoxes() const;
    bool place(GuessCandidate &candidate);
    std::vector<GuessCandidate> placed(std::vector<GuessCandidate> candidates);
    std::vector<GuessCandidate> onGround(const std::vector<GuessCandidate> &candidates);
    SystemGuess::Member memberOf(const GuessCandidate &candidate, const GuessCandidate &first) const;
    SystemGuess::Entry entryOf(const GuessGroup &group) const;
    std::optional<SystemGuess::Doubt> doubt(const QVector<SystemGuess::Entry> &entries);

    const SystemIndex &m_index;
    const PlaneTable &m_table;
    const SystemGuess::Question &m_question;
    std::vector<QPointF> m_sample;
    std::vector<GuessReading> m_readings;
    double m_doubtOfLengths;
    std::optional<NamedPlace> m_place;
    GuessScore m_score;
    GuessGround m_ground;
    using Inverted = std::tuple<int, double, const GuessReading *>; ///< plane, meridian
    std::map<Inverted, std::vector<QPointF>> m_inverted;
};

std::vector<QPointF> Guessing::readSample(const GuessReading &reading, const PlaneOfSystem &system) const
{
    std::vector<QPointF> points;
    for (const QPointF &point : m_sample)
        points.push_back(readPoint(reading, point, planeOf(system)));
    return points;
}

/// Whether a third of the data lie in the area's box, somewhat widened.
bool Guessing::isInBox(const GuessReading &reading, const PlaneOfSystem &system) const
{
    constexpr double widening = 0.02;
    constexpr double metresOfDegree = 111e3;
    const double around = !m_place ? 0.0
                                   : GuessScore::nearAreaM /
                                         (system.metresPerUnit > 0.0 ? system.metresPerUnit : metresOfDegree);
    const double x = widening * system.box.width() + around;
    const double y = widening * system.box.height() + around;
    const QRectF box = system.box.adjusted(-x, -y, x, y);
    std::size_t inside = 0;
    for (const auto &sample : m_sample) {
        const QPointF point = readPoint(reading, sample, planeOf(system));
        const double east =
            system.plane == 0
                ? box.left() + std::fmod(std::fmod(point.x() - box.left(), 360.0) + 360.0, 360.0)
                : point.x();
        inside +=
            east >= box.left() && east <= box.right() && point.y() >= box.top() && point.y() <= box.bottom();
    }
    return static_cast<double>(inside) >= leastShare * static_cast<double>(m_sample.size());
}

std::vector<GuessCandidate> Guessing::inBoxes() const
{
    std::vector<GuessCandidate> candidates;
    for (const PlaneOfSystem &system : m_table.systems()) {
        if (!m_score.isNear(indexed(system)))
            continue;
        for (const GuessReading &reading : m_readings)
            if (isReadingFor(reading, system, planeOf(system)) && isInBox(reading, system)) {
                GuessCandidate candidate;
                candidate.system = &system;
                candidate.reading = &reading;
                candidate.score = m_score.beforehand(indexed(system), reading) -
                                  (system.metresPerUnit == 0.0 ? 0.0 : m_doubtOfLengths);
                candidates.push_back(std::move(candidate));
            }
    }
    std::stable_sort(candidates.begin(), candidates.end(), isBetter);
    candidates.resize(std::min(candidates.size(), mostInverted));
    return candidates;
}

/// Where the data would lie; false when that is outside of the system's area, and not near it.
bool Guessing::place(GuessCandidate &candidate)
{
    const PlaneOfSystem &system = *candidate.system;
    const Inverted key{system.plane, system.meridianDeg, candidate.reading};
    auto known = system.plane == 0 ? m_inverted.end() : m_inverted.find(key);
    if (known == m_inverted.end())
        known =
            m_inverted.insert_or_assign(key, m_ground.inverse(system, readSample(*candidate.reading, system)))
                .first;
    candidate.lonLat = known->second;
    candidate.centre = centreOf(candidate.lonLat);
    candidate.share = shareInside(indexed(system).extent, candidate.lonLat);
    if (!std::isfinite(candidate.centre.x()))
        return false;
    return candidate.share >= leastShare ||
           (m_place && metresFrom(indexed(system).extent, candidate.centre) <= GuessScore::nearAreaM);
}

std::vector<GuessCandidate> Guessing::placed(std::vector<GuessCandidate> candidates)
{
    std::vector<GuessCandidate> placed;
    for (GuessCandidate &candidate : candidates) {
        if (!place(candidate))
            continue;
        candidate.score += m_score.there(candidate);
        placed.push_back(std::move(candidate));
    }
    std::stable_sort(placed.begin(), placed.end(), isBetter);
    return placed;
}

/// The likeliest places with what lies there, on WGS 84.
std::vector<GuessCandidate> Guessing::onGround(const std::vector<GuessCandidate> &candidates)
{
    struct Cluster
    {
        const GuessCandidate *first;
        std::size_t count;
    };
    std::vector<Cluster> clusters;
    std::vector<GuessCandidate> result;
    for (const GuessCandidate &candidate : candidates) {
        const auto isHere = [&](const Cluster &cluster) {
            return cluster.first->reading == candidate.reading &&
                   metresBetween(cluster.first->centre, candidate.centre) < clusterReachM;
        };
        auto cluster = std::find_if(clusters.begin(), clusters.end(), isHere);
        if (cluster == clusters.end() && clusters.size() < mostClusters)
            cluster = clusters.insert(clusters.end(), {&candidate, 0});
        if (cluster == clusters.end() || ++cluster->count > mostInCluster)
            continue;
        if (m_ground.shiftCount() >= mostShifts && m_ground.needsShift(*candidate.system, candidate.centre))
            continue;
        result.push_back(candidate);
        result.back().ground = m_ground.onWgs84(*candidate.system, candidate.lonLat, candidate.centre);
        result.back().score += GuessScore::ofDatum(result.back().ground);
    }
    std::stable_sort(result.begin(), result.end(), isBetter);
    return result;
}

SystemGuess::Member Guessing::memberOf(const GuessCandidate &candidate, const GuessCandidate &first) const
{
    const MapinfoSearch::Hit &hit = indexed(*candidate.system).hit;
    std::size_t where = 0;
    return {hit.code, hit.name, hit.isWithdrawn, metresApart(candidate, first, where)};
}

SystemGuess::Entry Guessing::entryOf(const GuessGroup &group) const
{
    const GuessCandidate &first = *group.members.front();
    SystemGuess::Entry entry;
    for (const GuessCandidate *member : group.members) {
        if (entry.members.size() < mostMembers)
            entry.members << memberOf(*member, first);
        else
            ++entry.more;
    }
    entry.assumptions = first.reading->assumptions();
    entry.centre = centreOf(first.ground.lonLat);
    entry.box = boxOf(first.ground.lonLat, entry.centre);
    entry.area = indexed(*first.system).extent;
    entry.share = first.share;
    if (m_place)
        entry.distanceM = metresFrom(m_place->area, entry.centre);
    entry.spreadM = group.spreadM;
    entry.deciding = m_sample[group.deciding];
    entry.isShiftKnown = first.ground.isShiftKnown;
    return entry;
}

std::optional<SystemGuess::Doubt> Guessing::doubt(const QVector<SystemGuess::Entry> &entries)
{
    const int stated = m_index.withCode(m_question.stated);
    const auto system = std::find_if(m_table.systems().begin(), m_table.systems().end(),
                                     [stated](const PlaneOfSystem &row) { return row.system == stated; });
    if (stated < 0 || system == m_table.systems().end())
        return std::nullopt;
    const GuessReading plain;
    GuessCandidate candidate;
    candidate.system = &*system;
    candidate.reading = &plain;
    place(candidate);
    SystemGuess::Doubt doubt{m_question.stated, candidate.share, candidate.share < doubtfulShare, {}};
    for (const SystemGuess::Entry &entry : entries)
        if (doubt.fits.isEmpty() && entry.share >= doubtfulShare && entry.assumptions.isEmpty())
            doubt.fits = nameOrCode(entry.members.first());
    return doubt;
}

SystemGuess::Answer Guessing::answer(int limit)
{
    SystemGuess::Answer answer;
    if (m_sample.empty())
        return answer;
    const std::vector<GuessCandidate> candidates = onGround(placed(inBoxes()));
    const std::vector<GuessGroup> groups = groupsOf(candidates);
    for (const GuessGroup &group : groups)
        if (answer.entries.size() < limit && group.score > groups.front().score - hopeless)
            answer.entries << entryOf(group);
    answer.doubt = doubt(answer.entries);
    return answer;
}

} // namespace

SystemGuess::Answer SystemGuess::Data::answer(const std::optional<NamedPlace> &place,
                                              const Question &question, int limit)
{
    const Tables &known = tables();
    return Guessing(known.index, search.lexicon, known.planes, wgs84, place, question).answer(limit);
}

SystemGuess::SystemGuess(const MapinfoSearch &search, const QDir &resources)
    : m_data(new Data(*search.m_data, QFileInfo(resources, QStringLiteral("system-planes.tsv"))))
{}

SystemGuess::~SystemGuess() = default;

SystemGuess::Answer SystemGuess::guess(const Question &question, int limit) const
{
    if (!question.place)
        return m_data->answer(std::nullopt, question, limit);
    return guessIn(QRectF(*question.place, QSizeF(0.0, 0.0)), question, limit);
}

SystemGuess::Answer SystemGuess::guessIn(const QRectF &area, const Question &question, int limit) const
{
    return m_data->answer(NamedPlace{area, -1, {}}, question, limit);
}

std::optional<SystemGuess::Answer> SystemGuess::guessNear(const QString &place, const Question &question,
                                                          int limit) const
{
    const auto named = namedPlace(place, m_data->search.lexicon, m_data->search.index());
    return named ? std::make_optional(m_data->answer(named, question, limit)) : std::nullopt;
}

std::optional<QRectF> SystemGuess::areaNamed(const QString &text) const
{
    const auto named = namedPlace(text, m_data->search.lexicon, m_data->search.index());
    return named ? std::make_optional(named->area) : std::nullopt;
}

std::optional<QPointF> SystemGuess::placeNamed(const QString &text) const
{
    const std::optional<QRectF> area = areaNamed(text);
    if (!area)
        return std::nullopt;
    const QPointF middle = area->center();
    return area->width() > 0.0 ? QPointF(std::remainder(middle.x(), 360.0), middle.y()) : middle;
}

bool SystemGuess::writePlanes(QIODevice &file) const
{
    const std::vector<CodelessSystem> &codeless = m_data->codeless;
    const auto writeLine = [&file](const CodelessSystem &system) {
        const QByteArray line = CodelessAreas::line(system);
        return file.write(line) == line.size();
    };
    return PlaneTable::write(file, m_data->search.index()) &&
           std::all_of(codeless.begin(), codeless.end(), writeLine);
}

} // namespace nivora::cs
