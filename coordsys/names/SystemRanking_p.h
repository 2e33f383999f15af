#pragma once

// How well each system answers a query.

#include "SearchQuery_p.h"
#include "SystemIndex_p.h"
#include "SystemsByWord_p.h"

#include <vector>

namespace nivora::cs {

/// The systems that answer a query, best first, and what of it none of them has.
struct RankedSystems
{
    std::vector<int> systems; ///< in the index
    QStringList without;      ///< words of the query that were of no use
};

/// Const calls of the tables only: any thread may rank.
RankedSystems rank(const SystemIndex &index, const SystemsByWord &byWord, const SearchLexicon &lexicon,
                   const SearchQuery &query);

} // namespace nivora::cs
