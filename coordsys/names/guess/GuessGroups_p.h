#pragma once

// Systems that data cannot tell apart.

#include "GuessGround_p.h"
#include "GuessReading_p.h"

#include <vector>

namespace nivora::cs {

/// A system that the data may be in, read in one way.
struct GuessCandidate
{
    const PlaneOfSystem *system = nullptr;
    const GuessReading *reading = nullptr;
    double score = 0.0;
    std::vector<QPointF> lonLat; ///< of the sample, on the system's own datum
    QPointF centre;              ///< likewise
    double share = 0.0;          ///< of the data in the area of use
    Ground ground;
};

/// Candidates that lie within 20 m of each other on the data, in the same unit and read in the same way.
struct GuessGroup
{
    std::vector<const GuessCandidate *> members; ///< the likeliest first
    double score = 0.0;
    double spreadM = 0.0;
    std::size_t deciding = 0; ///< the point of the sample where members differ most
};

/// The most between two candidates on the data; \p where it is.
double metresApart(const GuessCandidate &a, const GuessCandidate &b, std::size_t &where);

/// The candidates, the likeliest first, in groups, the likeliest first. Whoever is near the members of two
/// groups goes to the one that is the likelier with it.
std::vector<GuessGroup> groupsOf(const std::vector<GuessCandidate> &candidates);

} // namespace nivora::cs
