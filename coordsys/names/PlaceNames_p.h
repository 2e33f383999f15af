#pragma once

#include <QRectF>
#include <QString>

#include <optional>

namespace nivora::cs {

class SearchLexicon;
class SystemIndex;

/// What a text names: a country, or a region that areas of use are called by, else a town, or a place as
/// "37.6, 55.7", which have no extent. Degrees, width may run on across the 180th meridian. The names, and
/// what is forgiven in them, are those of the search.
std::optional<QRectF> areaNamed(const QString &text, const SearchLexicon &lexicon, const SystemIndex &index);

} // namespace nivora::cs
