#pragma once

// Words of a query that neither a system nor a place has as they were written.

#include <string>
#include <vector>

namespace nivora::cs {

class SearchLexicon;
class SystemIndex;

/// What a word was meant to be: the same in another spelling ("koeln", "амерсфорт"), two words written as
/// one, a slip or the beginning of a place's name. The word itself when it is known, or nothing is near it.
std::vector<std::string> meantBy(const std::string &word, const SearchLexicon &lexicon,
                                 const SystemIndex &index);

} // namespace nivora::cs
