#pragma once

#include <QRectF>
#include <QString>

#include <optional>
#include <vector>

namespace nivora::cs {

class SearchLexicon;
class SystemIndex;

/// What a text names.
struct NamedPlace
{
    QRectF area;      ///< degrees, width may run on across the 180th meridian; no extent: a place
    int country = -1; ///< in the lexicon, when it is a country
    /// Of a region that areas of use are called by: its words, as numbers in the index.
    std::vector<int> region;
};

/// A country, or a region, else a town, or a place as "37.6, 55.7". The names, and what is forgiven in them,
/// are those of the search.
std::optional<NamedPlace> namedPlace(const QString &text, const SearchLexicon &lexicon,
                                     const SystemIndex &index);

} // namespace nivora::cs
