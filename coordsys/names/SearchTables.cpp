#include "SearchTables_p.h"

#include "SearchWords_p.h"

#include <QFile>

namespace nivora::cs {
namespace {

enum Column { Names, Codes, Words, RussianRemark, EnglishRemark, Columns };

SearchAlias aliasOf(const QStringList &cells)
{
    SearchAlias alias{{}, {}, wordsOf(cells.at(Words)), {cells.at(RussianRemark), cells.at(EnglishRemark)}};
    for (const QString &name : cells.at(Names).split(QLatin1Char(';')))
        if (std::vector<std::string> words = wordsOf(name); !words.empty())
            alias.names.push_back(std::move(words));
    for (const QString &code : cells.at(Codes).split(QLatin1Char(';'), Qt::SkipEmptyParts))
        alias.codes << withAuthority(code);
    return alias;
}

} // namespace

QString SearchAlias::remark(const QString &language) const
{
    return remarks[language.startsWith(QLatin1String("ru")) ? 0 : 1];
}

QString withAuthority(const QString &code)
{
    return code.contains(QLatin1Char(':')) ? code : QStringLiteral("EPSG:") + code;
}

std::optional<std::vector<QStringList>> tableRows(const QFileInfo &info)
{
    QFile file(info.absoluteFilePath());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    std::vector<QStringList> rows;
    while (!file.atEnd()) {
        QString line = QString::fromUtf8(file.readLine());
        while (line.endsWith(QLatin1Char('\n')) || line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            rows.push_back(line.split(QLatin1Char('\t')));
    }
    return rows;
}

std::optional<std::vector<SearchAlias>> aliasesIn(const QFileInfo &file)
{
    const auto rows = tableRows(file);
    if (!rows)
        return std::nullopt;
    std::vector<SearchAlias> aliases;
    for (const QStringList &cells : *rows)
        if (cells.size() == Columns)
            aliases.push_back(aliasOf(cells));
    return aliases;
}

} // namespace nivora::cs
