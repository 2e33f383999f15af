#pragma once

#include "GdalFiles.h"

#include <platform/files/FileSystem.h>

#include <QStringList>

#include <vector>

class OutputFormat;
class StagedOutput;

/// An output that features are added to. Its files are copied, the copy is written to, and takes their place
/// when all is done, so that whoever reads them meanwhile sees nothing of it.
class AppendTarget
{
public:
    /// Copies the files of \p out. Throws Failure when there are none, or another program is writing to them.
    AppendTarget(const QString &out, const OutputFormat &format, const StagedOutput &stage);

    /// The copy, for writing. Throws Failure when the format cannot be added to.
    Dataset open() const;
    /// Of the copy: the layer of that name, else the only one. Throws Failure.
    OGRLayerH layer(GDALDatasetH dataset, const QString &name) const;
    /// The files that the copy was made of.
    QStringList parts() const { return m_parts; }
    /// Throws Failure when one of them changed since it was copied.
    void checkUnchanged() const;

private:
    QString m_out;
    QString m_copy;
    QString m_driver;
    QStringList m_parts;
    std::vector<nivora::files::Identity> m_asCopied;
};

/// Features of all layers.
qint64 featureCount(GDALDatasetH dataset);
