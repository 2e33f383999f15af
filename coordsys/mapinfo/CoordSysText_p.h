#pragma once

#include "TextRefs_p.h"

#include <coordsys/CoordSystemStrings.h>

#include <QString>

#include <vector>

namespace nivora::cs {

/// A word, number or separator of a CoordSys text.
struct CoordSysToken
{
    enum Kind {
        Word,   ///< what is nothing else, junk included
        Number, ///< wholly a finite number
        Quoted, ///< between double quotes
        Comma,
        Open,
        Close,
    };
    Kind kind = Word;
    int position = 0;   ///< of its first character, the quote included
    int end = 0;        ///< behind its last one
    TextRef text;       ///< without the quotes
    double value = 0.0; ///< of a Number

    bool isItem() const { return kind <= Quoted; }
    bool is(QLatin1String word) const { return text.compare(word, Qt::CaseInsensitive) == 0; }
};

/// A CoordSys text taken apart: the one list of tokens that every reader of such text reads. Commas, blanks
/// and brackets separate, quotes keep a name with blanks together. Tabs and line ends join words, but not a
/// word and a separator. A sign with blanks behind it belongs to its number where a comma or a bracket stands
/// before it: "(- 106367759.649, 5)".
class CoordSysText
{
public:
    explicit CoordSysText(const QString &text);
    CoordSysText(const CoordSysText &) = delete;
    CoordSysText &operator=(const CoordSysText &) = delete;

    const QString &text() const { return m_text; }
    const std::vector<CoordSysToken> &tokens() const { return m_tokens; }

    /// As hasAffineOrBoundsInString() says.
    PrjClauses announced() const;
    /// The clauses that are announced, as affineParamsAndBoundsFromPrj() says.
    AffineAndBounds clauses(const PrjClauses &announced) const;

    /// Where a comma has nothing before it, a bracket nothing to it, or two numbers a blank alone between
    /// them that may be one ("500 000"): in a list with commas, or before a zero. Null when the separators
    /// leave nothing open.
    const CoordSysToken *oddSeparator() const;

private:
    struct Piece;
    void addWord(int from, int to);
    bool joinSign(CoordSysToken &number) const;
    std::vector<Piece> pieces() const;
    int endOfAffineWords() const;
    QRectF boundsFromWords() const;
    int endOfPlanUnit(int from) const;
    QStringList affineFromWords(const std::vector<Piece> &pieces, int endOfWords, int boundsKind) const;

    const QString m_text; ///< the tokens refer to it
    std::vector<CoordSysToken> m_tokens;
};

/// True for what begins as CoordSys text, whole or not: its words, "1, 104", or three numbers without commas,
/// where the first is a projection's. Other numbers are codes, years or places.
bool isCoordSysText(const QString &text);

/// The rectangle between two corners in any order; empty when its extent is beyond a double.
QRectF rectBetween(double x1, double y1, double x2, double y2);

} // namespace nivora::cs
