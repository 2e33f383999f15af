#include "CoordinateColumns.h"

#include "PeopleText.h"

#include <QObject>

#include <algorithm>

namespace {

struct NamePair
{
    const char *x;
    const char *y;
};
constexpr NamePair usualNames[] = {
    {"x", "y"},     {"lon", "lat"},        {"longitude", "latitude"}, {"long", "lat"},
    {"lng", "lat"}, {"долгота", "широта"}, {"easting", "northing"},   {"east", "north"},
    {"e", "n"},     {"восток", "север"},   {"x_coord", "y_coord"},    {"rechtswert", "hochwert"},
};

/// The one column of that name, -1 when there is none or another of that name.
int columnOf(const QStringList &names, const char *wanted)
{
    const auto fits = [wanted](const QString &name) {
        return name.trimmed().compare(QString::fromUtf8(wanted), Qt::CaseInsensitive) == 0;
    };
    if (std::count_if(names.begin(), names.end(), fits) != 1)
        return -1;
    return static_cast<int>(std::find_if(names.begin(), names.end(), fits) - names.begin());
}

int columnOf(const QStringList &names, const QString &name)
{
    return columnOf(names, name.toUtf8().constData());
}

} // namespace

CoordinateColumns coordinateColumns(const QStringList &names)
{
    for (const NamePair &pair : usualNames) {
        const int x = columnOf(names, pair.x), y = columnOf(names, pair.y);
        if (x >= 0 && y >= 0)
            return {names.at(x).trimmed(), names.at(y).trimmed(), true};
    }
    return {};
}

CoordinateColumns wantedColumns(const QString &x, const QString &y, const QStringList &names)
{
    const CoordinateColumns found =
        x.isEmpty() && y.isEmpty() ? coordinateColumns(names) : CoordinateColumns();
    if (!found.byHeader)
        return {x.isEmpty() ? QStringLiteral("1") : x, y.isEmpty() ? QStringLiteral("2") : y, false};
    const bool isXy = found.x.compare(QLatin1String("x"), Qt::CaseInsensitive) == 0;
    if (isXy && columnOf(names, found.y) < columnOf(names, found.x))
        throw DoubtfulColumns(
            QObject::tr(
                R"(the table has "%1" before "%2": say with --x and --y which of them is the easting)")
                .arg(found.y, found.x));
    return found;
}

void tellColumns(const CoordinateColumns &columns, const QStringList &names)
{
    if (columns.byHeader && (columnOf(names, columns.x) != 0 || columnOf(names, columns.y) != 1))
        report(QObject::tr(R"(x is the column "%1", y is the column "%2")").arg(columns.x, columns.y));
}

void refuseSwappedHeader(std::string_view line)
{
    if (std::any_of(line.begin(), line.end(), isDigit)) // "55 N 37 E" is a point
        return;
    QStringList names;
    for (const char *p = line.data(), *const end = p + line.size(); p != end;) {
        const char *const behind = std::find_if(p, end, isSeparator);
        names << QString::fromUtf8(p, static_cast<int>(behind - p));
        p = std::find_if_not(behind, end, isSeparator);
    }
    const CoordinateColumns found = coordinateColumns(names);
    if (found.byHeader && columnOf(names, found.y) < columnOf(names, found.x))
        throw Failure(
            QObject::tr("the first line has \"%1\" before \"%2\", but x is read first: give --csv, with "
                        "--x and --y where names leave it open")
                .arg(found.y, found.x));
}
