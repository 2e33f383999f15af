#pragma once

#include <coordsys/Calibration.h>

#include <QFileInfo>
#include <QJsonObject>

/// A fit with the points it rests on, for the three forms of its answer.
struct CalibrationAnswer
{
    const nivora::cs::Calibration &calibration;
    const nivora::cs::CalibrationFit &fit;
    QString coordSys; ///< of the system; empty when there is none
    QString wkt2;     ///< likewise; a sentence in brackets when the notation has no form for it
};

/// The answer with the texts of the fit's system, which get the name unless it is empty.
CalibrationAnswer answerOf(const nivora::cs::Calibration &calibration, const nivora::cs::CalibrationFit &fit,
                           const QString &name);

QString calibrationPage(const CalibrationAnswer &answer);
QString calibrationJson(const CalibrationAnswer &answer);

/// What a saved system rests on: lines "Title: value", empty for a system without kept points. A point asked
/// for adds what is to be expected there.
QString proofPage(const nivora::cs::CoordSystem &cs, const QFileInfo &userStore, const QPointF *at = nullptr);
/// The same as an object, null without points.
QJsonValue proofJson(const nivora::cs::CoordSystem &cs, const QFileInfo &userStore);

/// Metres, to a tenth of a millimetre.
QString metresText(double value);
/// Lines for people: points, redundancy, root mean square and so on.
QStringList summaryLines(const CalibrationAnswer &answer);
/// The figures with their standard deviations, "dx = 12.3 m ± 0.1".
QStringList figureLines(const nivora::cs::CalibrationFit &fit);
/// Suspected blunders and hints, whole sentences.
QStringList warningLines(const CalibrationAnswer &answer);
/// Header and rows of the table of residuals.
QVector<QStringList> residualTable(const CalibrationAnswer &answer);
