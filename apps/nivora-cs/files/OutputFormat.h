#pragma once

#include "GdalFiles.h"
#include "MapInfoTarget.h"

#include <coordsys/CoordSystem.h>

#include <QRectF>

#include <optional>

/// What a layer of the output is made from.
struct OutputLayer
{
    QString name;
    OGRwkbGeometryType type = wkbUnknown;
    nivora::cs::CoordSystemPtr system; ///< null for none
    QRectF bounds;                     ///< to create the layer with; empty for none
    std::optional<MapInfoTarget> mapInfo;
    OGRSpatialReferenceH reference = nullptr; ///< borrowed: of a source that passes untouched
    QStringList columns;                      ///< of the source, for names that must not meet
    QString numbersColumn; ///< of the source's features, empty when they are mere positions
    QString geometryColumn;
    bool storesNumbers = false; ///< the source may, in a column or beside each feature
    bool keepsNumbers = false;
    bool isElsewhere = false;       ///< the driver may write coordinates of another system
    bool isProbe = false;           ///< features must come back in the order in which they were written
    QString heightsAbove;           ///< what the reference should say of heights; empty for nothing
    bool heightsAreUnclear = false; ///< what is given has no known meaning in a system that has one
    QString heightsMissing; ///< why heights are not converted, where they should be; empty where they are
    /// Of the output, to add to; null for a new one. Then type and columns are its own.
    OGRLayerH existing = nullptr;
    nivora::cs::CoordSystemPtr existingSystem; ///< null for none
};

/// The format of an output and what its driver has to be told.
class OutputFormat
{
public:
    /// \p name empty: by the extension of \p path. \p source is read for its characters. Throws Failure.
    /// \p encoding: of the texts that it writes, empty for the usual one.
    OutputFormat(const QString &path, const QString &name, const QString &source, const QString &encoding);

    QString name() const { return driverName(m_driver); }
    bool isMapInfo() const { return m_isMapInfo; }
    bool isXml() const { return name().contains(QLatin1String("KML")) || name() == QLatin1String("GML"); }
    bool isTable() const { return m_isMapInfo && !m_isMif; }
    /// Whether a file can be read once it is written.
    bool canBeRead() const { return has(GDAL_DCAP_OPEN); }
    /// Whether columns can have the type; some drivers make them and fail with the first value.
    bool holdsType(OGRFieldType type) const;
    /// Whether columns may differ by letter case alone.
    bool tellsCases() const;
    /// Whether no layer without columns can be read: a table names a column then that it does not have.
    bool needsColumns() const { return m_isMapInfo; }
    /// Whether features can be given numbers of their own.
    bool holdsNumbers() const;
    /// Whether a large file of it is opened without reading it.
    bool opensQuickly() const;
    bool holdsManyLayers() const { return has(GDAL_DCAP_MULTIPLE_VECTOR_LAYERS); }
    /// The name under which the driver makes a file that is asked for as \p name: some write the suffix in
    /// small letters whatever is asked for, and do not find it again.
    QString ownName(const QString &name) const;
    /// Null when it cannot be made. \p layer is its first.
    Dataset create(const QString &path, const OutputLayer &layer) const;
    /// Null when it cannot be made.
    OGRLayerH createLayer(GDALDatasetH dataset, const OutputLayer &layer) const;
    /// The files of a data set of this format, none when there is no such at \p path.
    QStringList filesOf(const QString &path) const;

private:
    bool has(const char *capability) const;
    bool hasLayerOption(const char *option) const;
    char **namesOf(const OutputLayer &layer, char **options) const;

    GDALDriverH m_driver;
    bool m_isMapInfo;
    bool m_isMif;
    QByteArray m_encoding; ///< empty for the driver's own
};
