#pragma once

#include "Epsg.h"
#include "Places.h"

namespace catalogue {

/// The names of systems in the files.
class Names
{
public:
    Names(const QString &tables, const Places &places);

    QString english(const EpsgSystem &system) const;
    QString russian(const EpsgSystem &system) const;

private:
    struct Rule
    {
        bool ofDatum;
        QRegularExpression pattern;
        QString text;
    };
    QString translated(QString text, bool ofDatum) const;

    const Places &m_places;
    std::vector<Rule> m_rules;
};

} // namespace catalogue
