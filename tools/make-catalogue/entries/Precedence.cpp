#include "entries/Precedence.h"

#include "reading/Patterns.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace catalogue {
namespace {

void requireTheBestFirst(const std::vector<Entry> &sorted)
{
    std::map<QString, const Entry *> first;
    QStringList faults;
    for (const Entry &entry : sorted) {
        const Entry *leader = first.emplace(entry.params, &entry).first->second;
        if (entry.rank < leader->rank)
            faults << QStringLiteral("%1 stands behind %2").arg(entry.nameEn, leader->nameEn);
    }
    if (!faults.isEmpty())
        throw Failure(QStringLiteral("precedence.tsv: ") + faults.join(QLatin1Char('\n')));
}

} // namespace

Precedence::Precedence(const QString &tables)
{
    for (const Table::Row &row : Table(tables + QStringLiteral("/precedence.tsv")))
        m_rules.push_back({row.integer("rank"), pattern(row.text("pattern"))});
}

int Precedence::of(const QString &name) const
{
    const auto rule = std::find_if(m_rules.begin(), m_rules.end(),
                                   [&](const Rule &r) { return r.pattern.match(name).hasMatch(); });
    return rule == m_rules.end() ? 0 : rule->rank;
}

void Precedence::sort(std::vector<Entry> &entries) const
{
    std::stable_sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
        return std::tie(a.category, a.rank) < std::tie(b.category, b.rank);
    });
    requireTheBestFirst(entries);
}

} // namespace catalogue
