#include "MapinfoScanner_p.h"

namespace nivora::cs {
namespace {

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

/// From the first three dashes behind a quote to the last three before one.
bool takeHeading(const TextRef &line, CatalogueLine &result)
{
    const int first = line.indexOf(QLatin1String("\"---"));
    const int last = first < 0 ? -1 : line.lastIndexOf(QLatin1String("---\""));
    if (last < first + 4)
        return false;
    result.kind = CatalogueLine::Heading;
    result.taken = line.mid(first, last + 4 - first);
    result.name = line.mid(first + 4, last - first - 4).trimmed();
    return true;
}

/// Where "\p4326" at the end of a name begins, -1 without it.
int codeMarkIn(const TextRef &name)
{
    int digits = 0;
    while (digits < name.size() && isDigit(name.at(name.size() - 1 - digits)))
        ++digits;
    const int mark = name.size() - digits - 2;
    return digits > 0 && mark >= 0 && name.mid(mark, 2) == QLatin1String("\\p") ? mark : -1;
}

/// From the first quote on; the name ends at the first quote with a comma behind it and something behind
/// that.
bool takeEntry(const TextRef &line, CatalogueLine &result)
{
    const int quote = line.indexOf(QLatin1Char('"'));
    const int end = quote < 0 ? -1 : line.indexOf(QLatin1String("\","), quote + 1);
    if (end < 0 || end + 2 >= line.size())
        return false;
    const TextRef quoted = line.mid(quote + 1, end - quote - 1);
    const int mark = codeMarkIn(quoted);
    result.kind = CatalogueLine::Entry;
    result.taken = line.mid(quote);
    result.name = (mark < 0 ? quoted : quoted.left(mark)).trimmed();
    result.code = mark < 0 ? TextRef() : quoted.mid(mark + 2);
    result.values = line.mid(end + 2);
    return true;
}

} // namespace

CoordSystemParams CatalogueLine::entry() const
{
    bool hasCode = false;
    const int number = code.toInt(&hasCode);
    CoordSystemParams entry =
        hasCode ? CoordSystemParams(name.toString(), number) : CoordSystemParams(name.toString());
    for (int from = 0; from <= values.size();) {
        const int comma = values.indexOf(QLatin1Char(','), from);
        const int to = comma < 0 ? values.size() : comma;
        entry.params.append(values.mid(from, to - from).trimmed().toString());
        from = to + 1;
    }
    return entry;
}

CatalogueLine readCatalogueLine(const TextRef &line)
{
    CatalogueLine result;
    result.taken = line;
    if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
        return result;
    if (!takeHeading(line, result) && !takeEntry(line, result))
        result.kind = CatalogueLine::Rejected;
    return result;
}

int scanCategories(const QString &text, QList<CoordSystemParamsList> &categories)
{
    CoordSystemParamsList current;
    int count = 0;
    const auto flush = [&] {
        if (!current.entries.isEmpty())
            categories.append(current);
    };
    for (int from = 0; from < text.size();) {
        const int newLine = text.indexOf(QLatin1Char('\n'), from);
        const int to = newLine < 0 ? text.size() : newLine;
        const CatalogueLine line = readCatalogueLine(midRef(text, from, to - from).trimmed());
        from = to + 1;
        if (line.kind == CatalogueLine::Heading) {
            flush();
            current = CoordSystemParamsList{{}, line.name.toString()};
        } else if (line.kind == CatalogueLine::Entry) {
            current.entries.append(line.entry());
            ++count;
        }
    }
    flush();
    return count;
}

} // namespace nivora::cs
