#pragma once

#include "CoordSysText_p.h"
#include "ReadingFault_p.h"
#include <coordsys/TABProjInfo.h>

#include <QStringList>

#include <vector>

namespace nivora::cs {

class ProjectionParamsManager;

constexpr int fullUserDatum = 9999; ///< also has rotations, scale and prime meridian
constexpr int fullDatumEnd = 11;    ///< items of projection and full datum

/// A word that begins a clause.
bool isClauseWord(const CoordSysToken *token);

/// Reads the words and numbers of a text from left to right, and notes the first that it does not understand.
class RecordReader
{
public:
    RecordReader(const CoordSysText &text, const ProjectionParamsManager &manager);

    const TABProjInfo_t &record() const { return m_info; }
    void readSystem();
    void readClauses();
    /// Goes over the tokens again behind the parameters; what nothing claims is not understood.
    void understandRest();
    void throwFault() const { m_fault.throwNoted(); }
    const QStringList &assumptions() const { return m_assumptions; }

private:
    using Item = const CoordSysToken *;

    using Fault = ReadingFault;

    int size() const { return static_cast<int>(m_items.size()); }
    Item at(int i) const { return m_items[static_cast<std::size_t>(i)]; }
    bool isWord(int i, const char *word) const
    {
        return i < size() && at(i)->kind == CoordSysToken::Word && at(i)->is(QLatin1String(word));
    }
    bool removeFirst(const char *word);
    void checkKeywords();
    int beforeWords() const;
    bool isAffineByNumber() const;

    double number(int i, const char *place, int count);
    int integer(int i, const char *place);
    std::uint8_t unit(int i);

    void readPlan(int unitIndex);
    void readEarth(int code);
    int ownTokens(int code) const;
    int readDatum();
    void readParameters();
    void checkOwnCount() const;
    int understandClause(int i);
    int understandAffine(int i);
    int understandBounds(int i);
    bool areCorners(int i) const;
    void understandSurplus(int i);
    void assumeMissing();

    const CoordSysText &m_text;
    const ProjectionParamsManager &m_manager;
    const PrjClauses m_announced;
    std::vector<Item> m_items;
    std::vector<Item> m_keywords;
    bool m_isNonEarth = false;
    int m_own = 0;        ///< so many items belong to the projection itself
    int m_next = 0;       ///< behind the last one that has been read
    int m_parameters = 0; ///< so many of the projection's have been read
    bool m_needsUnit = false;
    bool m_hasAffine = false; ///< its clause was gone over
    bool m_hasBounds = false;
    TABProjInfo_t m_info;

    ReadingFault m_fault;
    QStringList m_assumptions;
};

} // namespace nivora::cs
