#pragma once

#include "FeatureBatch.h"
#include "GdalFiles.h"

#include <QStringList>

#include <functional>

class QIODevice;

/// What was left out or changed on the way, and whether that is allowed.
class Losses
{
public:
    explicit Losses(bool allowed)
        : m_allowed(allowed)
    {}
    /// Throws Failure that names --lossy unless losses are allowed; each text is kept once.
    void add(const QString &what);
    const QStringList &all() const { return m_all; }

private:
    bool m_allowed;
    QStringList m_all;
};

/// Copies a layer's definition and features.
class LayerCopy
{
public:
    struct Job
    {
        OGRLayerH source;
        GDALDatasetH target;
        OGRSpatialReferenceH reference; ///< of the new layer; borrowed, null for none
        char **options;                 ///< for its creation
        const GeometryChange &change;
    };
    using Rejected = std::function<void(const QString &layer, const Rejection &rejection)>;

    LayerCopy(const Job &job, Losses &losses, GdalMessages &messages);

    /// Calls \p advanced with the number of features read so far, now and then. Throws Failure.
    void run(const Rejected &rejected, const std::function<void(GIntBig)> &advanced);
    /// Some of the vertices that were written.
    const QVector<QPointF> &samples() const { return m_samples; }
    GIntBig written() const { return m_written; }

private:
    void createLayer();
    void createFields();
    void noteFieldLoss(OGRFieldDefnH wanted, int index);
    void noteGeometryLoss(OGRGeometryH geometry);
    Feature copyOf(OGRFeatureH source);
    bool write(OGRFeatureH feature);
    QString name() const { return QString::fromUtf8(OGR_L_GetName(m_job.source)); }

    Job m_job;
    Losses &m_losses;
    GdalMessages &m_messages;
    OGRLayerH m_layer = nullptr;
    std::vector<int> m_fieldMap;
    QVector<QPointF> m_samples;
    GIntBig m_written = 0;
    bool m_curves = false, m_measures = false, m_heights = false,
         m_surfaces = false; ///< what the new layer can hold
};
