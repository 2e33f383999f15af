#include <widgets/choosing/TypedSystem_p.h>

#include <coordsys/CoordSysFactory.h>

#include <QRegularExpression>

#include <cmath>

namespace nivora::cs {

CoordSystemPtr systemFromText(const CoordSysFactory &factory, const QString &text)
{
    return factory.createFromUserInput(text);
}

std::optional<QRectF> placeFromText(const QString &text)
{
    // 37.62, 55.75 | 37.62 55.75 | 37,62; 55,75 | 37,62 55,75
    static const QRegularExpression pair(QStringLiteral(
        R"(^\s*([-+]?\d+(?:[.,]\d+)?)\s*(?:[;\s]|,\s|,(?=[-+]?\d+\.))\s*([-+]?\d+(?:[.,]\d+)?)[\s,;]*$)"));
    const QRegularExpressionMatch match = pair.match(text);
    const auto number = [&](int group) {
        return match.captured(group).replace(QLatin1Char(','), QLatin1Char('.')).toDouble();
    };
    if (!match.hasMatch() || std::fabs(number(1)) > 360.0 || std::fabs(number(2)) > 90.0)
        return std::nullopt;
    return QRectF(number(1), number(2), 0.0, 0.0);
}

QString placeText(const QPointF &lonLat)
{
    return QStringLiteral("%1, %2").arg(QString::number(lonLat.x(), 'f', 2),
                                        QString::number(lonLat.y(), 'f', 2));
}

} // namespace nivora::cs
