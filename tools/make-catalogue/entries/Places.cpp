#include "entries/Places.h"

#include "reading/Patterns.h"

#include <algorithm>

namespace catalogue {

Places::Places(const QString &tables)
{
    std::vector<std::pair<QString, QString>> names;
    for (const Table::Row &row : Table(tables + QStringLiteral("/places.tsv"))) {
        m_places[row.text("prefix")] = {row.text("region"), row.text("category")};
        if (!row.text("name_ru").isEmpty())
            names.emplace_back(row.text("prefix"), row.text("name_ru"));
    }
    for (const Table::Row &row : Table(tables + QStringLiteral("/regions_ru.tsv")))
        names.emplace_back(row.text("name_en"), row.text("name_ru"));
    std::stable_sort(names.begin(), names.end(),
                     [](const auto &a, const auto &b) { return a.first.size() > b.first.size(); });
    for (const auto &[english, russian] : names)
        // Not behind another Latin word: "New Guinea" is not a kind of Guinea.
        m_russian.emplace_back(
            pattern(QStringLiteral("(?<![A-Za-z.'] )\\b%1\\b").arg(QRegularExpression::escape(english))),
            russian);
}

Place Places::of(const QString &area, bool &known) const
{
    for (int length = area.size(); length > 0; --length) {
        const bool wordEnds = length == area.size() || !area[length].isLetter();
        const auto found = wordEnds ? m_places.find(area.left(length)) : m_places.end();
        if (found != m_places.end()) {
            known = true;
            return found->second;
        }
    }
    known = false;
    return {QStringLiteral("world"), QStringLiteral("global")};
}

QString Places::translated(QString text) const
{
    for (const auto &[english, russian] : m_russian)
        text.replace(english, russian);
    return text;
}

Categories::Categories(const QString &tables, const Places &places)
    : m_places(places)
{
    for (const Table::Row &row : Table(tables + QStringLiteral("/categories.tsv"))) {
        m_index[row.text("id")] = static_cast<int>(m_list.size());
        m_list.push_back({row.text("id"), row.text("name_ru"), row.text("name_en"),
                          pattern(row.text("names")), pattern(row.text("areas")),
                          !row.text("names").isEmpty()});
    }
}

int Categories::index(const QString &id) const
{
    const auto found = m_index.find(id);
    if (found == m_index.end())
        throw Failure(QStringLiteral("unknown category: %1").arg(id));
    return found->second;
}

int Categories::of(const QString &name, const QString &area, bool projected) const
{
    if (projected)
        for (std::size_t i = 0; i < m_list.size(); ++i)
            if (m_list[i].hasRule && m_list[i].names.match(name).hasMatch() &&
                m_list[i].areas.match(area).hasMatch())
                return static_cast<int>(i);
    bool known = false;
    const Place place = m_places.of(area, known);
    if (!known)
        m_unknownAreas.insert(area);
    return index(projected ? place.category : QStringLiteral("ll-") + place.region);
}

} // namespace catalogue
