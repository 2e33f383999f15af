#pragma once

// What a text asks for, field by field.

#include "SearchLexicon_p.h"

#include <QRectF>

#include <optional>
#include <string>
#include <vector>

namespace nivora::cs {

enum class AskedUnit { Any, Feet, Metres };

class SystemIndex;

/// A text taken apart. Words that are understood as something else are no words any more.
struct SearchQuery
{
    /// What people say for systems, and what of the text that covers.
    struct Nickname
    {
        QStringList codes;              ///< "EPSG:3857", the likeliest first
        std::vector<std::string> words; ///< of the text
        bool isAll;                     ///< nothing else is asked for
    };

    std::vector<std::string> words;    ///< as search keys
    std::vector<std::string> allWords; ///< of the text, instead of none
    std::vector<Nickname> nicknames;
    QStringList authorities; ///< "ESRI"
    QStringList numbers;     ///< that may be codes
    std::optional<int> zone;
    char hemisphere = 0; ///< 'n', 's', 0 when it was not given
    std::optional<int> meridian;
    AskedUnit unit = AskedUnit::Any;
    bool isThreeDegree = false;
    bool isUtm = false;
    bool isNational = false; ///< the system for the whole country is asked for
    int country = -1;        ///< in the lexicon
    std::vector<std::string> countryWords;
    std::optional<QPointF> place; ///< degrees
    int placeCountry = -1;
    bool isUnpublished = false; ///< there are only remarks on what is asked for
    QString text;               ///< simplified, of lower case

    bool isEmpty() const { return allWords.empty() && !place; }
    /// Whether a code is all that is asked for.
    bool isOnlyCode() const
    {
        return numbers.size() == 1 && words.empty() && country < 0 && !place && nicknames.empty();
    }
};

/// The index tells a town from a datum's name ("Beijing 1954").
SearchQuery readQuery(const QString &text, const SearchLexicon &lexicon, const SystemIndex &index);

} // namespace nivora::cs
