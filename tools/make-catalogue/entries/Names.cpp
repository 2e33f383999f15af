#include "entries/Names.h"

#include "reading/Patterns.h"

#include <algorithm>

namespace catalogue {
namespace {

bool hasEnglishWord(const QString &text)
{
    static const QRegularExpression word(QStringLiteral("[a-z]{2}"));
    return text.contains(word);
}

bool isRussian(const QString &text)
{
    static const QRegularExpression letter(QStringLiteral("[А-яЁё]"));
    return text.contains(letter);
}

} // namespace

Names::Names(const QString &tables, const Places &places)
    : m_places(places)
{
    for (const Table::Row &row : Table(tables + QStringLiteral("/names_ru.tsv")))
        m_rules.push_back({row.text("part"), pattern(row.text("pattern")), row.text("text")});
}

QString Names::english(const EpsgSystem &system) const
{
    return system.projected ? system.name : QStringLiteral("Longitude / Latitude (%1)").arg(system.name);
}

QString Names::russian(const EpsgSystem &system) const
{
    if (!system.projected)
        return QStringLiteral("Долгота / широта (%1)").arg(datum(system.name));
    // "datum / grid"; some national systems have the grid's name alone.
    const QString separator = QStringLiteral(" / ");
    const int cut = system.name.indexOf(separator);
    const QString head = cut < 0 ? QString() : datum(system.name.left(cut)) + separator;
    const QString english = cut < 0 ? system.name : system.name.mid(cut + separator.size());
    const QString tail = grid(english);
    return staysWhole(english) || hasEnglishWord(tail) ? system.name : head + tail;
}

QString Names::remark(const QString &english, const QString &name) const
{
    return isRussian(name) ? applied("remark", english) : english;
}

QString Names::datum(const QString &english) const { return m_places.translated(applied("datum", english)); }

QString Names::grid(const QString &english) const { return m_places.translated(applied("grid", english)); }

QString Names::applied(const char *part, QString text) const
{
    for (const Rule &rule : m_rules)
        if (rule.part == QLatin1String(part))
            text.replace(rule.pattern, rule.text);
    return text;
}

bool Names::staysWhole(const QString &grid) const
{
    return std::any_of(m_rules.begin(), m_rules.end(), [&](const Rule &rule) {
        return rule.part == QLatin1String("whole-name") && rule.pattern.match(grid).hasMatch();
    });
}

} // namespace catalogue
