#pragma once

#include <platform/system/ReleasedBy.h>

#include <QString>
#include <QStringList>

#include <gdal.h>
#include <ogr_api.h>

#include <memory>
#include <vector>

/// What GDAL says while this lives stays off stderr; the texts are kept.
class GdalMessages
{
public:
    GdalMessages();
    ~GdalMessages();
    GdalMessages(const GdalMessages &) = delete;
    GdalMessages &operator=(const GdalMessages &) = delete;

    /// The last error, else the last warning; empty without any.
    QString reason() const;
    /// Different warnings in the order of their first occurrence, the first twenty.
    const QStringList &warnings() const { return m_warnings; }
    bool failed() const { return !m_error.isEmpty(); }
    /// Warnings of another thread.
    void add(const QStringList &warnings) { m_warnings << warnings; }
    void clear();

private:
    static void CPL_STDCALL take(CPLErr level, CPLErrorNum number, const char *text);

    QString m_error;
    QStringList m_warnings;
};

using Dataset = std::unique_ptr<void, ReleasedBy<GDALClose>>;
using Feature = std::unique_ptr<void, ReleasedBy<OGR_F_Destroy>>;
using Geometry = std::unique_ptr<void, ReleasedBy<OGR_G_DestroyGeometry>>;

/// Opens for reading. \p encoding: of the texts, for drivers that decode them; empty for what the file says.
/// Throws Failure with GDAL's reason.
Dataset openForReading(const QString &path, const GdalMessages &messages,
                       const QString &encoding = QString());

/// The name as drivers have it: CP1251 for windows-1251.
QByteArray driverEncoding(const QString &name);

/// What a driver wrote for a name: that file, or what it makes of layers without geometry in its place.
QString writtenFile(const QString &path);

/// The layers of these names, in their order; all without any. Throws Failure, with the names that \p path
/// has.
std::vector<int> layersNamed(const QStringList &wanted, GDALDatasetH dataset, const QString &path);

/// The driver that is named, else the one that the file's extension belongs to. Throws Failure.
GDALDriverH driverForWriting(const QString &path, const QString &format);
QString driverName(GDALDriverH driver);
