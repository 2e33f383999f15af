#include "AnswerJson.h"

#include "MeasureText.h"
#include "Output.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/EpsgCandidates.h>

#include <QJsonDocument>

using namespace nivora::cs;

namespace {

QJsonValue boxOrNull(const QRectF &area)
{
    return area.isNull() ? QJsonValue()
                         : QJsonValue(QJsonArray{area.left(), area.top(), area.right(), area.bottom()});
}

QJsonArray gridsJson(const QVector<TransformGrid> &grids)
{
    QJsonArray array;
    for (const TransformGrid &grid : grids)
        array << QJsonObject{{QStringLiteral("name"), grid.name},
                             {QStringLiteral("available"), grid.isAvailable},
                             {QStringLiteral("path"), textOrNull(grid.path)},
                             {QStringLiteral("url"), textOrNull(grid.url)},
                             {QStringLiteral("package"), textOrNull(grid.package)}};
    return array;
}

std::optional<double> known(double accuracyM)
{
    return accuracyM < 0.0 ? std::nullopt : std::make_optional(accuracyM);
}

QJsonObject operationJson(const TransformOperation &operation)
{
    return {{QStringLiteral("name"), operation.name},
            {QStringLiteral("shortName"), operation.shortName},
            {QStringLiteral("codes"), QJsonArray::fromStringList(operation.codes)},
            {QStringLiteral("accuracy"), numberOrNull(known(operation.accuracyM))},
            {QStringLiteral("worth"), numberOrNull(operation.worthM())},
            {QStringLiteral("ensemble"), textOrNull(operation.ensemble)},
            {QStringLiteral("timeDependent"), operation.isTimeDependent},
            {QStringLiteral("ballpark"), operation.isBallpark},
            {QStringLiteral("leavesOut"), textOrNull(operation.leavesOut)},
            {QStringLiteral("areaName"), textOrNull(operation.areaName)},
            {QStringLiteral("area"), boxOrNull(operation.area)},
            {QStringLiteral("grids"), gridsJson(operation.grids)},
            {QStringLiteral("pipeline"), textOrNull(operation.definition)}};
}

} // namespace

QJsonValue textOrNull(const QString &text) { return text.isEmpty() ? QJsonValue() : QJsonValue(text); }

QJsonValue numberOrNull(const std::optional<double> &value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

QJsonArray offersJson(const QVector<GridOffer> &offers)
{
    QJsonArray array;
    for (const GridOffer &offer : offers)
        array << QJsonObject{{QStringLiteral("operation"), offer.operation().shortName},
                             {QStringLiteral("areaName"), textOrNull(offer.operation().areaName)},
                             {QStringLiteral("area"), boxOrNull(offer.operation().area)},
                             {QStringLiteral("missing"), gridsJson(offer.missing())},
                             {QStringLiteral("with"), numberOrNull(offer.withM())},
                             {QStringLiteral("without"), numberOrNull(offer.withoutM())}};
    return array;
}

QJsonObject explanationJson(const Explanation &explanation)
{
    QJsonArray used;
    for (const OperationTally::Use &use : explanation.used) {
        QJsonObject operation = operationJson(use.operation);
        operation[QStringLiteral("points")] = use.points;
        used << operation;
    }
    QJsonArray elsewhere;
    for (const TransformOperation &operation : explanation.elsewhere)
        elsewhere << operationJson(operation);
    return {{QStringLiteral("equal"), explanation.isCopy},
            {QStringLiteral("here"), textOrNull(explanation.here)},
            {QStringLiteral("heights"), textOrNull(explanation.heights)},
            {QStringLiteral("used"), used},
            {QStringLiteral("elsewhere"), elsewhere},
            {QStringLiteral("grids"), offersJson(explanation.offers)}};
}

QJsonArray candidatesJson(const CoordSystem &system)
{
    QJsonArray array;
    for (const EpsgCandidate &candidate : epsgCandidates(system))
        array << QJsonObject{{QStringLiteral("epsg"), candidate.code},
                             {QStringLiteral("confidence"), candidate.confidence},
                             {QStringLiteral("name"), candidate.name}};
    return array;
}

QJsonObject placeJson(const CoordSystemPtr &system, const QPointF &point)
{
    const PlaneAt plane = planeAt(system, point);
    const auto factor = [&plane](double PlaneFactors::*member) {
        return plane.factors ? QJsonValue((*plane.factors).*member) : QJsonValue();
    };
    return {
        {QStringLiteral("longitude"), plane.lonLat.x()},
        {QStringLiteral("latitude"), plane.lonLat.y()},
        {QStringLiteral("meridianScale"), factor(&PlaneFactors::meridianScale)},
        {QStringLiteral("parallelScale"), factor(&PlaneFactors::parallelScale)},
        {QStringLiteral("arealScale"), factor(&PlaneFactors::arealScale)},
        {QStringLiteral("convergence"), factor(&PlaneFactors::convergenceDeg)},
        {QStringLiteral("gridNorthAzimuth"), plane.factors ? QJsonValue(plane.gridNorthDeg()) : QJsonValue()},
        {QStringLiteral("angularDistortion"), factor(&PlaneFactors::angularDistortionDeg)}};
}

void printJson(const QJsonObject &answer) { print(QString::fromUtf8(QJsonDocument(answer).toJson())); }
