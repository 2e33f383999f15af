#include "WebMercatorText_p.h"

#include <QRegularExpression>
#include <QStringList>

namespace nivora::cs {

QString webMercatorText(const QString &proj)
{
    static const QRegularExpression radius(QStringLiteral("\\+(?<d_id>[Rab])=6378137"));   // "+a=6378137"
    static const QRegularExpression projection(QStringLiteral("\\+proj=(?<prj_id>\\w+)")); // "+proj=merc"
    static const QRegularExpression term(
        QStringLiteral("\\+(\\w+)=(\\S+)|\\+(\\w+)")); // "+lon_0=0", "+no_defs"
    static const QStringList kept = {
        QStringLiteral("proj"),  QStringLiteral("datum"),    QStringLiteral("ellps"),
        QStringLiteral("lon_0"), QStringLiteral("x_0"),      QStringLiteral("y_0"),
        QStringLiteral("units"), QStringLiteral("to_meter"), QStringLiteral("no_defs")};
    QString text = proj;
    QString letters;
    for (auto i = radius.globalMatch(proj); i.hasNext();)
        letters += i.next().captured(QStringLiteral("d_id"));
    const QString datum = QStringLiteral("+datum=WGS84");
    if (letters.contains(QLatin1Char('R')))
        text.replace(QStringLiteral("+R=6378137"), datum);
    if (letters.contains(QLatin1Char('a')) && letters.contains(QLatin1Char('b'))) {
        text.replace(QStringLiteral("+a=6378137"), datum);
        text.remove(QStringLiteral("+b=6378137"));
    }
    if (projection.match(text).captured(QStringLiteral("prj_id")) == QLatin1String("merc"))
        text.replace(QStringLiteral("+proj=merc"), QStringLiteral("+proj=webmerc"));

    QString result;
    for (auto i = term.globalMatch(text); i.hasNext();) {
        const QRegularExpressionMatch match = i.next();
        const bool bare = !match.captured(3).isEmpty();
        const QString key = bare ? match.captured(3) : match.captured(1);
        const bool isMetre = key == QLatin1String("units") && match.captured(2) == QLatin1String("m");
        if (!kept.contains(key) || isMetre)
            continue;
        result +=
            bare ? QStringLiteral(" +%1").arg(key) : QStringLiteral(" +%1=%2").arg(key, match.captured(2));
    }
    return result.trimmed();
}

} // namespace nivora::cs
