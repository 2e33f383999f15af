#include "GuessGroups_p.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <utility>

namespace nivora::cs {
namespace {

constexpr double sameGroundM = 20.0;

bool hasSameForm(const GuessCandidate &a, const GuessCandidate &b)
{
    constexpr double betweenFeet = 1e-6; // the American and the international one differ by twice that
    // Where PROJ knows no shift, longitudes and latitudes are all that there is to compare.
    const bool isSameShift = a.ground.isShiftKnown == b.ground.isShiftKnown;
    return a.reading == b.reading && isSameShift &&
           std::fabs(a.system->metresPerUnit - b.system->metresPerUnit) <=
               betweenFeet * a.system->metresPerUnit;
}

/// Pairs that may be in one group.
class Neighbours
{
public:
    explicit Neighbours(const std::vector<GuessCandidate> &candidates);

    bool areNear(int a, int b) const { return pair(a, b) != nullptr; }
    /// The likeliest first.
    const std::vector<int> &of(int candidate) const { return m_near[static_cast<std::size_t>(candidate)]; }
    /// With the widest of its pairs.
    GuessGroup group(const std::vector<int> &members, const std::vector<GuessCandidate> &candidates) const;

private:
    struct Pair
    {
        double metres = 0.0;
        std::size_t where = 0; ///< the point of the sample
    };
    const Pair *pair(int a, int b) const
    {
        const auto known = m_pairs.find(std::minmax(a, b));
        return known == m_pairs.end() ? nullptr : &known->second;
    }

    std::vector<std::vector<int>> m_near;
    std::map<std::pair<int, int>, Pair> m_pairs;
};

/// Whether two are certainly too far from each other; costs less than metresApart().
bool areFarApart(const GuessCandidate &a, const GuessCandidate &b)
{
    constexpr double leastMetresOfDegree = 110e3;
    const double apartDeg = std::fabs(a.ground.lonLat.front().y() - b.ground.lonLat.front().y());
    return apartDeg * leastMetresOfDegree > sameGroundM;
}

Neighbours::Neighbours(const std::vector<GuessCandidate> &candidates)
    : m_near(candidates.size())
{
    const int size = static_cast<int>(candidates.size());
    for (int i = 0; i < size; ++i)
        for (int j = i + 1; j < size; ++j) {
            const GuessCandidate &a = candidates[static_cast<std::size_t>(i)];
            const GuessCandidate &b = candidates[static_cast<std::size_t>(j)];
            Pair apart;
            if (areFarApart(a, b) || !hasSameForm(a, b))
                continue;
            apart.metres = metresApart(a, b, apart.where);
            if (!(apart.metres <= sameGroundM))
                continue;
            m_pairs.emplace(std::make_pair(i, j), apart);
            m_near[static_cast<std::size_t>(i)].push_back(j);
            m_near[static_cast<std::size_t>(j)].push_back(i);
        }
    for (std::vector<int> &near : m_near)
        std::sort(near.begin(), near.end()); // candidates come the likeliest first
}

/// What all members together are worth.
double scoreOf(const std::vector<int> &members, const std::vector<GuessCandidate> &candidates)
{
    const auto score = [&](int member) { return candidates[static_cast<std::size_t>(member)].score; };
    const double best = score(members.front());
    return best + std::log(std::accumulate(members.begin(), members.end(), 0.0, [&](double sum, int member) {
               return sum + std::exp(score(member) - best);
           }));
}

GuessGroup Neighbours::group(const std::vector<int> &members,
                             const std::vector<GuessCandidate> &candidates) const
{
    GuessGroup group;
    group.score = scoreOf(members, candidates);
    for (auto a = members.begin(); a != members.end(); ++a) {
        group.members.push_back(&candidates[static_cast<std::size_t>(*a)]);
        for (auto b = a + 1; b != members.end(); ++b)
            if (const Pair *apart = pair(*a, *b); apart && apart->metres > group.spreadM) {
                group.spreadM = apart->metres;
                group.deciding = apart->where;
            }
    }
    return group;
}

/// The likeliest of those that are in no group yet, around one of them.
std::vector<int> groupAround(int candidate, const Neighbours &neighbours, const std::vector<bool> &isTaken)
{
    std::vector<int> members{candidate};
    for (const int near : neighbours.of(candidate)) {
        const bool fits = !isTaken[static_cast<std::size_t>(near)] &&
                          std::all_of(members.begin(), members.end(),
                                      [&](int member) { return neighbours.areNear(member, near); });
        if (fits)
            members.push_back(near);
    }
    std::sort(members.begin(), members.end());
    return members;
}

/// The likeliest group of those that are in none yet; empty when all are.
std::vector<int> likeliestAmong(const std::vector<int> &all, const Neighbours &neighbours,
                                const std::vector<bool> &isTaken,
                                const std::vector<GuessCandidate> &candidates)
{
    std::vector<int> likeliest;
    for (const int candidate : all) {
        if (isTaken[static_cast<std::size_t>(candidate)])
            continue;
        std::vector<int> around = groupAround(candidate, neighbours, isTaken);
        if (likeliest.empty() || scoreOf(around, candidates) > scoreOf(likeliest, candidates))
            likeliest = std::move(around);
    }
    return likeliest;
}

/// All that hang together with one, by neighbours of neighbours.
std::vector<int> hangingTogether(int first, const Neighbours &neighbours, std::vector<bool> &isSeen)
{
    std::vector<int> all{first};
    isSeen[static_cast<std::size_t>(first)] = true;
    for (std::size_t i = 0; i < all.size(); ++i)
        for (const int near : neighbours.of(all[i]))
            if (!isSeen[static_cast<std::size_t>(near)]) {
                isSeen[static_cast<std::size_t>(near)] = true;
                all.push_back(near);
            }
    return all;
}

} // namespace

double metresApart(const GuessCandidate &a, const GuessCandidate &b, std::size_t &where)
{
    double most = 0.0;
    for (std::size_t i = 0; i < std::min(a.ground.lonLat.size(), b.ground.lonLat.size()); ++i) {
        const double metres = metresBetween(a.ground.lonLat[i], b.ground.lonLat[i]);
        if (metres > most) {
            most = metres;
            where = i;
        }
    }
    return most;
}

std::vector<GuessGroup> groupsOf(const std::vector<GuessCandidate> &candidates)
{
    const Neighbours neighbours(candidates);
    std::vector<GuessGroup> groups;
    std::vector<bool> isSeen(candidates.size(), false);
    std::vector<bool> isTaken(candidates.size(), false);
    for (int first = 0; first < static_cast<int>(candidates.size()); ++first) {
        if (isSeen[static_cast<std::size_t>(first)])
            continue;
        const std::vector<int> all = hangingTogether(first, neighbours, isSeen);
        for (std::vector<int> members = likeliestAmong(all, neighbours, isTaken, candidates);
             !members.empty(); members = likeliestAmong(all, neighbours, isTaken, candidates)) {
            groups.push_back(neighbours.group(members, candidates));
            for (const int member : members)
                isTaken[static_cast<std::size_t>(member)] = true;
        }
    }
    std::stable_sort(groups.begin(), groups.end(),
                     [](const GuessGroup &a, const GuessGroup &b) { return a.score > b.score; });
    return groups;
}

} // namespace nivora::cs
