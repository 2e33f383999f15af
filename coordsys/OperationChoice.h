#pragma once

#include <coordsys/coordsys_export.h>

#include <QRectF>
#include <QSharedDataPointer>
#include <QString>

#include <optional>

namespace nivora::cs {

/// Which operations a transformation may go by. By default PROJ's own choice at each place. A value that can
/// be kept as text; it knows no systems, so that whether anything fits it shows when a CoordTransform is
/// made. Threads: const calls may run together.
class NIVORA_CS_EXPORT OperationChoice
{
public:
    OperationChoice();
    OperationChoice(const OperationChoice &other);
    /// Copies.
    OperationChoice &operator=(const OperationChoice &other);
    ~OperationChoice();

    /// One operation for all points: by its code ("EPSG:1623", "urn:ogc:def:coordinateOperation:EPSG::1623"),
    /// its name, WKT 2 or PROJJSON, or as PROJ text ("+proj=pipeline …"). Of a code, a name and WKT the
    /// projections at both ends are the systems' own, and it may run backwards. PROJ text has no ends: it
    /// takes and gives the coordinates of the systems as CoordTransform has them, x = longitude or easting
    /// first, degrees or radians as its first and last step have them. Empty: PROJ chooses.
    OperationChoice withOperation(const QString &text) const;
    /// The best operation for an area, longitudes and latitudes in degrees, everywhere. A width that is
    /// negative, or reaches beyond 180, crosses the 180th meridian. Throws std::invalid_argument for one that
    /// is not on the earth.
    OperationChoice withArea(const QRectF &area) const;
    /// None that leaves the datums' difference out.
    OperationChoice withoutBallpark() const;
    /// None whose own accuracy is worse, or unknown; projections are exact. Metres; throws
    /// std::invalid_argument for what is not greater than 0.
    OperationChoice withMostError(double metres) const;

    QString operation() const;                ///< as given, without blanks around it
    std::optional<QRectF> area() const;       ///< as given
    bool allowsBallpark() const;              ///< true by default
    std::optional<double> mostErrorM() const; ///< metres
    bool isDefault() const;                   ///< nothing is chosen
    /// The same choice.
    bool operator==(const OperationChoice &other) const;
    /// Another choice.
    bool operator!=(const OperationChoice &other) const { return !(*this == other); }

    /// A JSON object on one line, "{}" by default.
    QString toText() const;
    /// What toText() wrote. Throws std::invalid_argument for another text, unknown keys included.
    static OperationChoice fromText(const QString &text);

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

} // namespace nivora::cs
