#include "Names.h"

#include "Patterns.h"

namespace catalogue {

Names::Names(const QString &tables, const Places &places)
    : m_places(places)
{
    for (const Table::Row &row : Table(tables + QStringLiteral("/names_ru.tsv")))
        m_rules.push_back(
            {row.text("part") == QLatin1String("datum"), pattern(row.text("pattern")), row.text("text")});
}

QString Names::english(const EpsgSystem &system) const
{
    return system.projected ? system.name : QStringLiteral("Longitude / Latitude (%1)").arg(system.name);
}

QString Names::russian(const EpsgSystem &system) const
{
    if (!system.projected)
        return QStringLiteral("Долгота / широта (%1)").arg(translated(system.name, true));
    // "datum / grid"; some national systems have the grid's name alone.
    const QString separator = QStringLiteral(" / ");
    const int cut = system.name.indexOf(separator);
    if (cut < 0)
        return translated(system.name, false);
    return translated(system.name.left(cut), true) + separator +
           translated(system.name.mid(cut + separator.size()), false);
}

QString Names::translated(QString text, bool ofDatum) const
{
    for (const Rule &rule : m_rules)
        if (rule.ofDatum == ofDatum)
            text.replace(rule.pattern, rule.text);
    return ofDatum ? text : m_places.translated(text);
}

} // namespace catalogue
