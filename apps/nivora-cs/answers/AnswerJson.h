#pragma once

#include "Explanation.h"

#include <coordsys/Measures.h>

#include <QJsonArray>
#include <QJsonObject>

/// Answers as JSON, each under a name of its own in one object; docs/answers.schema.json says which. What is
/// not known is null.

QJsonObject explanationJson(const Explanation &explanation);
QJsonArray candidatesJson(const nivora::cs::CoordSystem &system);
QJsonObject placeJson(const nivora::cs::CoordSystemPtr &system, const QPointF &point);
QJsonArray offersJson(const QVector<nivora::cs::GridOffer> &offers);
/// null for none
QJsonValue textOrNull(const QString &text);
QJsonValue numberOrNull(const std::optional<double> &value);

/// Writes the object to standard output.
void printJson(const QJsonObject &answer);
