#include "GuessGroups_p.h"

#include <algorithm>
#include <cmath>

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

/// With the candidate as a member; false when it is too far from one of them.
bool join(GuessGroup &group, const GuessCandidate &candidate)
{
    double spread = group.spreadM;
    std::size_t deciding = group.deciding;
    for (const GuessCandidate *member : group.members) {
        std::size_t where = 0;
        const double metres =
            hasSameForm(*member, candidate) ? metresApart(*member, candidate, where) : HUGE_VAL;
        if (!(metres <= sameGroundM))
            return false;
        if (metres > spread) {
            spread = metres;
            deciding = where;
        }
    }
    group.spreadM = spread;
    group.deciding = deciding;
    group.members.push_back(&candidate);
    return true;
}

/// What all members together are worth.
double scoreOf(const GuessGroup &group)
{
    double sum = 0.0;
    const double best = group.members.front()->score;
    for (const GuessCandidate *member : group.members)
        sum += std::exp(member->score - best);
    return best + std::log(sum);
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
    std::vector<GuessGroup> groups;
    for (const GuessCandidate &candidate : candidates) {
        const bool isIn = std::any_of(groups.begin(), groups.end(),
                                      [&](GuessGroup &group) { return join(group, candidate); });
        if (!isIn)
            groups.push_back({{&candidate}, 0.0, 0.0, 0});
    }
    for (GuessGroup &group : groups)
        group.score = scoreOf(group);
    std::stable_sort(groups.begin(), groups.end(),
                     [](const GuessGroup &a, const GuessGroup &b) { return a.score > b.score; });
    return groups;
}

} // namespace nivora::cs
