#include "CoordSysText_p.h"
#include "ProjectionTable_p.h"
#include "TextRefs_p.h"
#include <coordsys/CoordSystemStrings.h>

#include <QRegularExpression>

#include <algorithm>

namespace nivora::cs {
namespace {

/// The words that may begin a line behind the clause, which may go on over several lines.
constexpr const char *otherClauses[] = {
    "version", "charset",  "delimiter",   "unique",         "index", "coordsys", "transform",  "columns",
    "data",    "readonly", "rasterstyle", "begin_metadata", "open",  "type",     "definition", "fields",
};

TextRef firstWord(const TextRef &line)
{
    int from = 0;
    while (from < line.size() && line.at(from).isSpace())
        ++from;
    int end = from;
    while (end < line.size() && (line.at(end).isLetterOrNumber() || line.at(end) == QLatin1Char('_')))
        ++end;
    return line.mid(from, end - from);
}

bool is(const TextRef &word, const char *name)
{
    return word.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

bool beginsOther(const TextRef &word)
{
    return std::any_of(std::begin(otherClauses), std::end(otherClauses),
                       [&word](const char *name) { return is(word, name); });
}

/// The line that begins at \p from, its end included.
TextRef lineAt(const QString &text, int from)
{
    const int end = text.indexOf(QLatin1Char('\n'), from);
    return midRef(text, from, (end < 0 ? text.size() : end + 1) - from);
}

/// Behind the clause that begins at \p from.
int endOfClause(const QString &header, int from)
{
    int end = from + lineAt(header, from).size();
    while (end < header.size()) {
        const TextRef line = lineAt(header, end);
        if (beginsOther(firstWord(line)))
            break;
        end += line.size();
    }
    return end;
}

/// "Fields 2": so many lines of names follow.
int namesBehind(const TextRef &line)
{
    return line.mid(line.indexOf(QLatin1Char(' ')) + 1).trimmed().toInt();
}

} // namespace

bool isCoordSysText(const QString &text)
{
    // "CoordSys Earth", "Earth Projection 1, 104", "nonearth units", "Projection 1, 104"
    static const QRegularExpression words(
        QStringLiteral("^(coordsys\\b|earth(\\s+(projection|bounds|affine)\\b|$)|nonearth\\b|"
                       "projection\\s+\\d)"),
        QRegularExpression::CaseInsensitiveOption);
    // "1, 104", "8 104 7 39"
    static const QRegularExpression numbers(
        QStringLiteral("^(\\d{1,4})(?:\\s*,\\s*\\S|\\s+\\d+\\s+(?:[-+.\\d]|\"))"));
    const QRegularExpressionMatch match = numbers.match(text);
    const int projection = match.captured(1).toInt() % 1000; // the thousands announce clauses
    return words.match(text).hasMatch() || (projection != NonEarthPlan && projectionByNumber(projection));
}

CoordSysClause coordSysClauseIn(const QString &header)
{
    CoordSysClause clause;
    int names = 0;
    for (int at = 0; at < header.size(); at += lineAt(header, at).size()) {
        const TextRef line = lineAt(header, at);
        if (names > 0) {
            --names;
            continue;
        }
        const TextRef word = firstWord(line);
        if (is(word, "coordsys")) {
            clause.position = at;
            clause.length = endOfClause(header, at) - at;
            clause.text = header.mid(at, clause.length).simplified();
            return clause;
        }
        if (is(word, "fields"))
            names = namesBehind(line.trimmed());
        if (is(word, "transform") || is(word, "columns") || is(word, "data")) {
            clause.position = clause.position < 0 ? at : clause.position;
            if (!is(word, "transform"))
                return clause; // names of columns and data follow
        }
    }
    return clause;
}

} // namespace nivora::cs
