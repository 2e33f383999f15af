#pragma once

#include "entries/Places.h"
#include "reading/Epsg.h"

namespace catalogue {

/// The names of systems in the files.
class Names
{
public:
    Names(const QString &tables, const Places &places);

    QString english(const EpsgSystem &system) const;
    /// Wholly Russian, or the EPSG name where a word of the grid's name would stay English: two small Latin
    /// letters side by side make a word. Datums keep their proper names, codes ("TM35FIN") their letters.
    QString russian(const EpsgSystem &system) const;
    /// What tells a second entry from the first, in the language that \p name turned out to be in.
    QString remark(const QString &english, const QString &name) const;

private:
    struct Rule
    {
        QString part;
        QRegularExpression pattern;
        QString text;
    };
    QString datum(const QString &english) const;
    QString grid(const QString &english) const;
    QString applied(const char *part, QString text) const;
    bool staysWhole(const QString &grid) const;

    const Places &m_places;
    std::vector<Rule> m_rules;
};

} // namespace catalogue
