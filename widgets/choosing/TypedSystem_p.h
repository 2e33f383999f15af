#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QPointF>
#include <QRectF>
#include <QString>

#include <optional>

namespace nivora::cs {

class CoordSysFactory;

/// The system that a text in any notation stands for. Throws what the factory throws.
CoordSystemPtr systemFromText(const CoordSysFactory &factory, const QString &text);

/// "37.62, 55.75" or "37.62 55.75", longitude first, as a place without extent; nothing for other text and
/// for what is not on the earth. With a semicolon or blank between, commas may be decimal ones.
std::optional<QRectF> placeFromText(const QString &text);
QString placeText(const QPointF &lonLat);

} // namespace nivora::cs
