#include "LayerSystem.h"

#include "BlockFiles.h"
#include "GdalFiles.h"
#include "MapInfoFiles.h"
#include "Output.h"
#include "Session.h"

#include <coordsys/MapHeaderRecord.h>

#include <cpl_conv.h>
#include <ogr_srs_api.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

using nivora::cs::CoordSystemPtr;

namespace {

QString nameOf(GDALDatasetH dataset) { return QFile::decodeName(withoutBlocks(GDALGetDescription(dataset))); }

/// The file that a layer of a MapInfo data set lies in; a data set may be a directory of tables.
QString fileOfLayer(GDALDatasetH dataset, OGRLayerH layer)
{
    const QFileInfo place(nameOf(dataset));
    if (!place.isDir())
        return place.filePath();
    const QString name = QString::fromUtf8(OGR_L_GetName(layer));
    const QDir dir(place.filePath());
    for (const QString &file : dir.entryList(QDir::Files))
        for (const char *suffix : {"tab", "mif"})
            if (file.compare(name + QLatin1Char('.') + QLatin1String(suffix), Qt::CaseInsensitive) == 0)
                return dir.filePath(file);
    return {};
}

/// The clause that a MapInfo file has its system in, empty when it has none.
QString mapInfoClause(const QString &file)
{
    const QFileInfo info(file);
    if (info.suffix().compare(QLatin1String("mif"), Qt::CaseInsensitive) == 0)
        return coordSysOfMif(file);
    const QString map = siblingOf(file, QStringLiteral("map"));
    return map.isEmpty() ? QString() : coordSysText(nivora::cs::readMapHeader(map));
}

} // namespace

CoordSystemPtr systemOfReference(const Session &session, OGRSpatialReferenceH reference)
{
    if (!reference)
        return nullptr;
    char *raw = nullptr;
    OSRExportToWkt(reference, &raw);
    const std::unique_ptr<char, void (*)(void *)> wkt(raw, VSIFree);
    return session.factory().createFromWkt(QString::fromUtf8(wkt.get()));
}

CoordSystemPtr systemOfLayer(const Session &session, GDALDatasetH dataset, OGRLayerH layer)
{
    const bool isMapInfo = driverName(GDALGetDatasetDriver(dataset)) == QLatin1String("MapInfo File");
    const QString file = isMapInfo ? fileOfLayer(dataset, layer) : QString();
    try {
        const QString clause = file.isEmpty() ? QString() : mapInfoClause(file);
        return clause.isEmpty() ? systemOfReference(session, OGR_L_GetSpatialRef(layer))
                                : session.factory().createFromPrj(clause);
    } catch (const std::exception &e) {
        throw Failure(QObject::tr("%1: its coordinate system cannot be used (%2); give --from")
                          .arg(nameOf(dataset), QString::fromUtf8(e.what())));
    }
}
