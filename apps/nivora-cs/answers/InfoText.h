#pragma once

#include <coordsys/SystemInfo.h>

#include <QJsonValue>
#include <QString>

/// What is known of a system as a JSON object: null for what is not known, with the reasons under "unknown".
/// \p heights: what heightsJson() tells, \p calibration what proofJson() does.
QString infoJson(const nivora::cs::CoordSystem &cs, const nivora::cs::SystemInfo &info,
                 const QJsonValue &heights, const QJsonValue &calibration);

/// The same for people: a line "Title: value" for each thing that is known.
QString infoPage(const nivora::cs::CoordSystem &cs, const nivora::cs::SystemInfo &info);
