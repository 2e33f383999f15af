#include "CalibrationReport.h"

#include <coordsys/CoordSystem.h>

#include <QObject>

#include <algorithm>
#include <cmath>

using namespace nivora::cs;

namespace {

constexpr double widthPx = 640.0;
constexpr double heightPx = 480.0;
constexpr double marginPx = 60.0;
constexpr double longestPx = 60.0; ///< of a residual's arrow

QString number(double value) { return QString::number(value, 'f', 1); }

/// 1, 2 or 5 by a power of ten, not above the value.
double roundLength(double value)
{
    const double power = std::pow(10.0, std::floor(std::log10(value)));
    const double digit = value / power;
    return power * (digit >= 5.0 ? 5.0 : digit >= 2.0 ? 2.0 : 1.0);
}

/// Where points lie in the drawing: north up, degrees of longitude as long as they are there.
class Drawing
{
public:
    Drawing(const QVector<CalibrationPair> &pairs, bool isLatLong)
    {
        double left = pairs.first().known.x(), right = left, bottom = pairs.first().known.y(), top = bottom;
        for (const CalibrationPair &pair : pairs) {
            left = std::min(left, pair.known.x());
            right = std::max(right, pair.known.x());
            bottom = std::min(bottom, pair.known.y());
            top = std::max(top, pair.known.y());
        }
        m_aspect = isLatLong ? std::cos((bottom + top) / 2.0 / CoordSystem::RADIANS_TO_DEGREES) : 1.0;
        m_centre = {(left + right) / 2.0, (bottom + top) / 2.0};
        const double wide = (right - left) * m_aspect, high = top - bottom;
        m_scale = std::min((widthPx - 2 * marginPx) / std::max(wide, 1e-12),
                           (heightPx - 2 * marginPx) / std::max(high, 1e-12));
    }
    QPointF place(const QPointF &known) const
    {
        const QPointF d = known - m_centre;
        return {widthPx / 2.0 + d.x() * m_aspect * m_scale, heightPx / 2.0 - d.y() * m_scale};
    }

private:
    double m_aspect = 1.0, m_scale = 1.0;
    QPointF m_centre;
};

QString arrow(const QPointF &from, const QPointF &to, const QString &colour)
{
    return QStringLiteral("<line x1=\"%1\" y1=\"%2\" x2=\"%3\" y2=\"%4\" stroke=\"%5\" stroke-width=\"2\" "
                          "marker-end=\"url(#tip)\"/>\n")
        .arg(number(from.x()), number(from.y()), number(to.x()), number(to.y()), colour);
}

QString pointDrawing(const QPointF &at, const CalibrationPair &pair, const CalibrationResidual &residual,
                     double pxPerM)
{
    const QString colour = !residual.isUsed     ? QStringLiteral("#888888")
                           : residual.isSuspect ? QStringLiteral("#c00000")
                                                : QStringLiteral("#1f5fa8");
    const QPointF tip = at + QPointF(residual.offsetM.x(), -residual.offsetM.y()) * pxPerM;
    return arrow(at, tip, colour) +
           QStringLiteral(
               "<circle cx=\"%1\" cy=\"%2\" r=\"3\" fill=\"%3\"/>\n<text x=\"%4\" y=\"%5\">%6</text>\n")
               .arg(number(at.x()), number(at.y()), colour, number(at.x() + 6.0), number(at.y() - 6.0),
                    pair.name.toHtmlEscaped());
}

/// How long an arrow is that stands for so many metres.
QString scaleBar(double pxPerM)
{
    const double metres = roundLength(longestPx / pxPerM);
    const QPointF from(20.0, heightPx - 20.0), to(20.0 + metres * pxPerM, heightPx - 20.0);
    return arrow(from, to, QStringLiteral("#000000")) +
           QStringLiteral("<text x=\"20\" y=\"%1\">%2</text>\n")
               .arg(number(heightPx - 28.0), QObject::tr("%1 m of a residual").arg(QString::number(metres)));
}

QString svgOf(const CalibrationAnswer &answer)
{
    const auto pairs = answer.calibration.pairs();
    const auto residuals = answer.fit.residuals();
    if (residuals.isEmpty())
        return {};
    double longestM = 1e-9;
    for (const CalibrationResidual &residual : residuals)
        longestM = std::max(longestM, residual.lengthM);
    const Drawing drawing(pairs, answer.calibration.knownSystem()->isLatLong());
    QString svg =
        QStringLiteral(
            "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %1 %2\" width=\"%1\" height=\"%2\" "
            "font-family=\"sans-serif\" font-size=\"12\">\n"
            "<defs><marker id=\"tip\" viewBox=\"0 0 10 10\" refX=\"9\" refY=\"5\" markerWidth=\"6\" "
            "markerHeight=\"6\" orient=\"auto\"><path d=\"M0,0 L10,5 L0,10 z\"/></marker></defs>\n"
            "<rect width=\"%1\" height=\"%2\" fill=\"#ffffff\" stroke=\"#cccccc\"/>\n")
            .arg(QString::number(widthPx), QString::number(heightPx));
    for (int i = 0; i < residuals.size(); ++i)
        svg += pointDrawing(drawing.place(pairs.at(i).known), pairs.at(i), residuals.at(i),
                            longestPx / longestM);
    return svg + scaleBar(longestPx / longestM) + QStringLiteral("</svg>\n");
}

QString htmlRow(const QStringList &cells, const QString &tag)
{
    QString row = QStringLiteral("<tr>");
    for (const QString &cell : cells)
        row += QStringLiteral("<%1>%2</%1>").arg(tag, cell.toHtmlEscaped());
    return row + QStringLiteral("</tr>\n");
}

QString paragraph(const QString &text) { return QStringLiteral("<p>%1</p>\n").arg(text.toHtmlEscaped()); }

/// A name may hold what separates the columns.
QString markdownRow(QStringList cells)
{
    for (QString &cell : cells)
        cell.replace(QLatin1Char('|'), QStringLiteral("\\|"))
            .replace(QLatin1Char('<'), QStringLiteral("&lt;"));
    return QStringLiteral("| %1 |\n").arg(cells.join(QStringLiteral(" | ")));
}

} // namespace

QString calibrationHtml(const CalibrationAnswer &answer)
{
    QString page = QStringLiteral("<!DOCTYPE html>\n<html>\n<head><meta charset=\"utf-8\"><title>%1</title>\n"
                                  "<style>td{text-align:right;padding:0 1em} td:first-child{text-align:left}"
                                  "</style></head>\n<body>\n<h1>%1</h1>\n")
                       .arg(QObject::tr("Calibration").toHtmlEscaped());
    for (const QString &line : summaryLines(answer) + figureLines(answer.fit) + warningLines(answer))
        page += paragraph(line);
    page += svgOf(answer) + QStringLiteral("<table>\n");
    const auto table = residualTable(answer);
    for (int i = 0; i < table.size(); ++i)
        page += htmlRow(table.at(i), i == 0 ? QStringLiteral("th") : QStringLiteral("td"));
    page += QStringLiteral("</table>\n");
    for (const QString &text : {answer.coordSys, answer.wkt2})
        page += text.isEmpty() ? QString() : QStringLiteral("<pre>%1</pre>\n").arg(text.toHtmlEscaped());
    return page + QStringLiteral("</body>\n</html>\n");
}

QString calibrationMarkdown(const CalibrationAnswer &answer)
{
    QString page = QStringLiteral("# %1\n\n").arg(QObject::tr("Calibration"));
    for (const QString &line : summaryLines(answer) + figureLines(answer.fit) + warningLines(answer))
        page += QStringLiteral("- %1\n").arg(line);
    page += QLatin1Char('\n') + svgOf(answer) + QLatin1Char('\n');
    const auto table = residualTable(answer);
    for (int i = 0; i < table.size(); ++i) {
        page += markdownRow(table.at(i));
        if (i == 0)
            page += QStringLiteral("|---|---:|---:|---:|---:|---|\n");
    }
    for (const QString &text : {answer.coordSys, answer.wkt2})
        page += text.isEmpty() ? QString() : QStringLiteral("\n```\n%1\n```\n").arg(text);
    return page;
}
