#include "AppendTarget.h"

#include "Output.h"
#include "OutputFormat.h"
#include "StagedOutput.h"

#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <algorithm>

using nivora::files::identityOf;
using nivora::files::withoutLinks;

AppendTarget::AppendTarget(const QString &out, const OutputFormat &format, const StagedOutput &stage)
    : m_out(out)
    , m_copy(stage.path())
    , m_driver(format.name())
{
    if (!QFileInfo::exists(out))
        throw Failure(QObject::tr("%1 does not exist: there is nothing to append to").arg(out));
    m_parts = format.filesOf(out);
    if (m_parts.isEmpty())
        throw Failure(QObject::tr("%1 cannot be read as %2").arg(out, m_driver));
    for (const QString &part : m_parts) {
        m_asCopied.push_back(identityOf(withoutLinks(part)));
        QFile file(part);
        const QString copy = stage.path(QFileInfo(part).fileName());
        if (!file.copy(copy))
            throw Failure(QObject::tr("cannot read %1: %2").arg(part, file.errorString()));
        QFile::setPermissions(copy, QFile::permissions(copy) | QFileDevice::WriteOwner);
    }
}

Dataset AppendTarget::open() const
{
    const GdalMessages messages;
    const QByteArray driver = m_driver.toUtf8();
    const char *const drivers[] = {driver.constData(), nullptr};
    Dataset dataset(GDALOpenEx(QFile::encodeName(m_copy).constData(), GDAL_OF_VECTOR | GDAL_OF_UPDATE,
                               drivers, nullptr, nullptr));
    const int layers = dataset ? GDALDatasetGetLayerCount(dataset.get()) : 0;
    for (int i = 0; i < layers; ++i)
        if (OGR_L_TestCapability(GDALDatasetGetLayer(dataset.get(), i), OLCSequentialWrite))
            return dataset;
    throw Failure(QObject::tr("%1: nothing can be appended to files of %2").arg(m_out, m_driver));
}

OGRLayerH AppendTarget::layer(GDALDatasetH dataset, const QString &name) const
{
    OGRLayerH named = GDALDatasetGetLayerByName(dataset, name.toUtf8().constData());
    const int count = GDALDatasetGetLayerCount(dataset);
    OGRLayerH layer = !named && count == 1 ? GDALDatasetGetLayer(dataset, 0) : named;
    if (!layer)
        throw Failure(QObject::tr("%1 has no layer \"%2\" to append to").arg(m_out, name));
    if (!OGR_L_TestCapability(layer, OLCSequentialWrite))
        throw Failure(QObject::tr("%1: nothing can be appended to files of %2").arg(m_out, m_driver));
    return layer;
}

void AppendTarget::checkUnchanged() const
{
    std::size_t i = 0;
    for (const QString &part : m_parts)
        if (!(identityOf(withoutLinks(part)) == m_asCopied[i++]))
            throw Failure(QObject::tr("%1 was changed meanwhile; nothing was appended").arg(part));
}

qint64 featureCount(GDALDatasetH dataset)
{
    qint64 count = 0;
    for (int i = 0; i < GDALDatasetGetLayerCount(dataset); ++i)
        count += OGR_L_GetFeatureCount(GDALDatasetGetLayer(dataset, i), TRUE);
    return count;
}
