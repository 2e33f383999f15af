#include "CalibrationText.h"

#include "Output.h"

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/SystemInfo.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QObject>

#include <algorithm>
#include <cmath>

using namespace nivora::cs;

namespace {

/// As many digits as the deviation tells, two of it.
QString figureText(const CalibrationParameter &figure)
{
    if (!(figure.deviation > 0.0))
        return QString::number(figure.value, 'g', 12);
    const int decimals = qBound(0, 1 - static_cast<int>(std::floor(std::log10(figure.deviation))), 15);
    return QObject::tr("%1 ± %2").arg(QString::number(figure.value, 'f', decimals),
                                      QString::number(figure.deviation, 'f', decimals));
}

QJsonValue numberOrNull(double value) { return std::isfinite(value) ? QJsonValue(value) : QJsonValue(); }

QJsonArray pointJson(const QPointF &p) { return {p.x(), p.y()}; }

QJsonObject residualJson(const CalibrationPair &pair, const CalibrationResidual &residual)
{
    return {{QStringLiteral("name"), pair.name},
            {QStringLiteral("local"), pointJson(pair.local)},
            {QStringLiteral("known"), pointJson(pair.known)},
            {QStringLiteral("weight"), pair.weight},
            {QStringLiteral("used"), residual.isUsed},
            {QStringLiteral("offsetM"), pointJson(residual.offsetM)},
            {QStringLiteral("lengthM"), residual.lengthM},
            {QStringLiteral("heightM"), numberOrNull(residual.heightM)},
            {QStringLiteral("probability"), residual.probability},
            {QStringLiteral("suspect"), residual.isSuspect}};
}

QJsonArray figuresJson(const CalibrationFit &fit)
{
    QJsonArray figures;
    for (const CalibrationParameter &figure : fit.parameters())
        figures << QJsonObject{{QStringLiteral("name"), figure.name},
                               {QStringLiteral("value"), figure.value},
                               {QStringLiteral("deviation"), numberOrNull(figure.deviation)},
                               {QStringLiteral("unit"), figure.unit}};
    return figures;
}

QJsonArray residualsJson(const CalibrationAnswer &answer)
{
    QJsonArray rows;
    const auto pairs = answer.calibration.pairs();
    const auto residuals = answer.fit.residuals();
    for (int i = 0; i < residuals.size(); ++i)
        rows << residualJson(pairs.at(i), residuals.at(i));
    return rows;
}

/// Columns of equal width, the first flush left.
QString aligned(const QVector<QStringList> &table)
{
    QString text;
    for (const QStringList &row : table) {
        for (int column = 0; column < row.size(); ++column) {
            int width = 0;
            for (const QStringList &other : table)
                width = std::max(width, static_cast<int>(other.at(column).size()));
            text += column == 0 ? row.at(0).leftJustified(width)
                                : QStringLiteral("  ") + row.at(column).rightJustified(width);
        }
        while (text.endsWith(QLatin1Char(' ')))
            text.chop(1);
        text += QLatin1Char('\n');
    }
    return text;
}

QString probabilityText(const CalibrationResidual &residual)
{
    return residual.probability >= 0.001 ? QString::number(100.0 * residual.probability, 'f', 1)
                                         : QStringLiteral("<0.1");
}

} // namespace

QString metresText(double value)
{
    return std::isfinite(value) ? QString::number(value, 'f', 4) : QObject::tr("unknown");
}

CalibrationAnswer answerOf(const Calibration &calibration, const CalibrationFit &fit, const QString &name)
{
    CalibrationAnswer answer{calibration, fit, {}, {}};
    if (!fit.isUsable() || fit.model() == CalibrationModel::Polynomial)
        return answer;
    answer.coordSys = QStringLiteral("CoordSys ") + fit.coordSysText();
    try {
        const CoordSystemPtr system = fit.system();
        if (!name.isEmpty())
            system->setDescription(name);
        answer.wkt2 = exportSystem(*system, SystemFormat::Wkt2).trimmed();
    } catch (const std::exception &e) {
        answer.wkt2 = QStringLiteral("(%1)").arg(oneLine(QString::fromUtf8(e.what())));
    }
    return answer;
}

QStringList summaryLines(const CalibrationAnswer &answer)
{
    const CalibrationFit &fit = answer.fit;
    const auto pairs = answer.calibration.pairs();
    const auto used =
        std::count_if(pairs.begin(), pairs.end(), [](const CalibrationPair &p) { return p.isUsed; });
    return {QObject::tr("Model: %1").arg(calibrationText(fit.model())),
            QObject::tr("Points: %1 of %2, redundancy %3")
                .arg(QString::number(used), QString::number(pairs.size()), QString::number(fit.redundancy())),
            QObject::tr("Residuals: RMS %1 m, greatest %2 m; standard deviation of a coordinate %3 m")
                .arg(metresText(fit.rmsM()), metresText(fit.greatestM()), metresText(fit.sigmaM()))};
}

QStringList figureLines(const CalibrationFit &fit)
{
    QStringList lines;
    for (const CalibrationParameter &figure : fit.parameters())
        lines << QStringLiteral("%1 = %2 %3").arg(figure.name, figureText(figure), figure.unit).trimmed();
    return lines;
}

QStringList warningLines(const CalibrationAnswer &answer)
{
    QStringList lines;
    const auto pairs = answer.calibration.pairs();
    const auto residuals = answer.fit.residuals();
    for (const int i : answer.fit.suspects())
        lines << QObject::tr("Suspected blunder: point %1, %2 m from where the others put it")
                     .arg(pairs.at(i).name, metresText(residuals.at(i).lengthM));
    return lines + answer.calibration.hints();
}

QVector<QStringList> residualTable(const CalibrationAnswer &answer)
{
    QVector<QStringList> table{{QObject::tr("point"), QObject::tr("east, m"), QObject::tr("north, m"),
                                QObject::tr("length, m"), QObject::tr("chance, %"), QString()}};
    const auto pairs = answer.calibration.pairs();
    const auto residuals = answer.fit.residuals();
    for (int i = 0; i < residuals.size(); ++i) {
        const CalibrationResidual &r = residuals.at(i);
        table << QStringList{pairs.at(i).name,
                             metresText(r.offsetM.x()),
                             metresText(r.offsetM.y()),
                             metresText(r.lengthM),
                             r.isUsed ? probabilityText(r) : QString(),
                             !r.isUsed     ? QObject::tr("left out")
                             : r.isSuspect ? QObject::tr("blunder?")
                                           : QString()};
    }
    return table;
}

QString calibrationPage(const CalibrationAnswer &answer)
{
    QString page = summaryLines(answer).join(QLatin1Char('\n')) + QLatin1Char('\n');
    for (const QString &line : figureLines(answer.fit))
        page += QStringLiteral("  %1\n").arg(line);
    page += QLatin1Char('\n') + aligned(residualTable(answer));
    for (const QString &line : warningLines(answer))
        page += QLatin1Char('\n') + line;
    page += warningLines(answer).isEmpty() ? QString() : QStringLiteral("\n");
    for (const QString &text : {answer.coordSys, answer.wkt2})
        if (!text.isEmpty())
            page += QStringLiteral("\n%1\n").arg(text);
    return page;
}

static QJsonObject fitJson(const CalibrationAnswer &answer)
{
    const CalibrationFit &fit = answer.fit;
    const auto justified = answer.calibration.justifiedModel();
    QJsonArray suspects, hull;
    for (const int i : fit.suspects())
        suspects << answer.calibration.pairs().at(i).name;
    for (const QPointF &corner : fit.hull())
        hull << pointJson(corner);
    return {{QStringLiteral("model"), calibrationWord(fit.model())},
            {QStringLiteral("justified"), justified ? calibrationWord(*justified) : QString()},
            {QStringLiteral("redundancy"), fit.redundancy()},
            {QStringLiteral("sigmaM"), numberOrNull(fit.sigmaM())},
            {QStringLiteral("rmsM"), numberOrNull(fit.rmsM())},
            {QStringLiteral("greatestM"), numberOrNull(fit.greatestM())},
            {QStringLiteral("parameters"), figuresJson(fit)},
            {QStringLiteral("points"), residualsJson(answer)},
            {QStringLiteral("suspects"), suspects},
            {QStringLiteral("hints"), QJsonArray::fromStringList(answer.calibration.hints())},
            {QStringLiteral("hull"), hull},
            {QStringLiteral("coordSys"), answer.coordSys},
            {QStringLiteral("wkt2"), answer.wkt2}};
}

QString calibrationJson(const CalibrationAnswer &answer)
{
    return QString::fromUtf8(QJsonDocument(fitJson(answer)).toJson());
}

QString proofPage(const CoordSystem &cs, const QFileInfo &userStore, const QPointF *at)
{
    const auto record = CalibrationStore(userStore).find(cs);
    if (!record)
        return {};
    const Calibration calibration = record->calibration();
    const CalibrationFit fit = calibration.fit(record->model);
    const QRectF area = fit.hull().boundingRect();
    const auto corner = [](const QPointF &p) {
        return QStringLiteral("%1 %2").arg(QString::number(p.x(), 'f', 1), QString::number(p.y(), 'f', 1));
    };
    QString page = QObject::tr("Made from control points: %1, %2\n")
                       .arg(record->date.toString(Qt::ISODate), calibration.knownSystem()->description());
    for (const QString &line : summaryLines({calibration, fit, {}, {}}))
        page += line + QLatin1Char('\n');
    page += QObject::tr("Holds between the points: %1 … %2\n")
                .arg(corner(area.topLeft()), corner(area.bottomRight()));
    if (at && !fit.isInside(*at))
        page += QObject::tr("This place lies outside the control points, where the fit is not proven\n");
    if (at)
        page += QObject::tr("Expected error of the fit at this place: %1 m\n")
                    .arg(metresText(fit.expectedErrorM(*at)));
    return page;
}

QJsonValue proofJson(const CoordSystem &cs, const QFileInfo &userStore)
{
    const auto record = CalibrationStore(userStore).find(cs);
    if (!record)
        return {};
    const Calibration calibration = record->calibration();
    const CalibrationFit fit = calibration.fit(record->model);
    QJsonObject json = fitJson({calibration, fit, {}, {}});
    json[QStringLiteral("date")] = record->date.toString(Qt::ISODate);
    json[QStringLiteral("known")] = calibration.knownSystem()->description();
    return json;
}
