#pragma once

#include <coordsys/SpatialSystem.h>

#include <QString>

#include <optional>

/// The system that a text describes, with its heights; none in a notation that has none. "@FILE" names a
/// file.
std::optional<nivora::cs::SpatialSystem> spatialSystemIn(const QString &text);

/// The same, but none for a system that says nothing of heights.
std::optional<nivora::cs::SpatialSystem> systemWithHeights(const QString &text);

/// A line of the page about a system; empty when it says nothing of heights.
QString heightsText(const QString &text);
/// kind, name, datum, unit and its metres; null when it says nothing of heights.
QJsonValue heightsJson(const QString &text);

/// A page about a system that has no plane; empty for others.
QString geocentricPage(const QString &text);
/// Its JSON, null for others.
QJsonValue geocentricJson(const QString &text);
