#include "MapinfoScanner_p.h"

#include <algorithm>

namespace nivora::cs {
namespace {

bool isPlain(QChar c)
{
    const ushort code = c.unicode();
    return code >= 0x20 ? code != 0x85 && code != 0x2028 && code != 0x2029 : code == '\n' || code == '\t';
}

/// "--- Россия ---": what stands between the first and the last three dashes; null for another line.
QStringRef categoryIn(const QStringRef &line)
{
    const QLatin1String dashes("---");
    const int first = line.indexOf(dashes);
    const int last = first < 0 ? -1 : line.lastIndexOf(dashes);
    return last >= first + 3 ? line.mid(first + 3, last - first - 3).trimmed() : QStringRef();
}

/// Where "\p4326" at the end of a name begins, -1 without it.
int codeMarkIn(const QStringRef &name)
{
    int digits = 0;
    while (digits < name.size() && name.at(name.size() - 1 - digits) >= QLatin1Char('0') &&
           name.at(name.size() - 1 - digits) <= QLatin1Char('9'))
        ++digits;
    const int mark = name.size() - digits - 2;
    return digits > 0 && mark >= 0 && name.mid(mark, 2) == QLatin1String("\\p") ? mark : -1;
}

CoordSystemParams namedEntry(const QStringRef &quoted)
{
    const int mark = codeMarkIn(quoted);
    if (mark < 0)
        return CoordSystemParams(quoted.trimmed().toString());
    const QString name = quoted.left(mark).trimmed().toString();
    bool hasCode = false;
    const int code = quoted.mid(mark + 2).toInt(&hasCode);
    return hasCode ? CoordSystemParams(name, code) : CoordSystemParams(name);
}

/// "Longitude / Latitude (WGS 84)\p4326", 1, 104
bool appendEntry(const QStringRef &line, QList<CoordSystemParams> &entries)
{
    const int quote = line.indexOf(QLatin1Char('"'));
    const int end = quote < 0 ? -1 : line.indexOf(QLatin1String("\","), quote + 1);
    if (end < 0 || end + 2 >= line.size())
        return false;
    CoordSystemParams entry = namedEntry(line.mid(quote + 1, end - quote - 1));
    for (int from = end + 2; from <= line.size();) {
        const int comma = line.indexOf(QLatin1Char(','), from);
        const int to = comma < 0 ? line.size() : comma;
        entry.params.append(line.mid(from, to - from).trimmed().toString());
        from = to + 1;
    }
    entries.append(std::move(entry));
    return true;
}

} // namespace

int scanCategories(const QString &text, QList<CoordSystemParamsList> &categories)
{
    if (!std::all_of(text.begin(), text.end(), isPlain))
        return -1;
    CoordSystemParamsList current;
    int count = 0;
    const auto flush = [&] {
        if (!current.entries.isEmpty())
            categories.append(current);
    };
    for (int from = 0; from < text.size();) {
        const int newLine = text.indexOf(QLatin1Char('\n'), from);
        const int to = newLine < 0 ? text.size() : newLine;
        const QStringRef line = text.midRef(from, to - from).trimmed();
        from = to + 1;
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const QStringRef category = categoryIn(line);
        if (!category.isNull()) {
            flush();
            current = CoordSystemParamsList{{}, category.toString()};
        } else if (appendEntry(line, current.entries)) {
            ++count;
        }
    }
    flush();
    return count;
}

} // namespace nivora::cs
