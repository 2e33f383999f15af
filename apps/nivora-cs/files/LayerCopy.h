#pragma once

#include "FeatureBatch.h"
#include "OutputProbe.h"
#include "PeopleText.h"

#include <functional>
#include <set>
#include <utility>

/// Copies a layer's definition and features.
class LayerCopy
{
public:
    /// All are borrowed.
    struct Job
    {
        OGRLayerH source;
        GDALDatasetH target;
        OutputLayer &layer; ///< its type is settled by the first features where the source leaves it open
        const OutputFormat &format;
        const GeometryChange &change;
        OutputProbe &probe;
        const TextCoding &coding; ///< of texts that are not UTF-8
    };
    using Rejected = std::function<void(const QString &layer, const Rejection &rejection)>;

    LayerCopy(const Job &job, Losses &losses, GdalMessages &messages);

    /// Calls \p advanced with the number of features written so far, now and then. Throws Failure.
    void run(const Rejected &rejected, const std::function<void(GIntBig)> &advanced);
    GIntBig written() const { return m_written; }

private:
    void createLayer(const std::vector<FeatureBatch::Item> &first);
    void recodeNames();
    void recodeTexts(OGRFeatureH feature);
    void createFields();
    int createField(OGRFieldDefnH field);
    void noteFieldLoss(OGRFieldDefnH wanted, int index);
    void checkKinds(const std::vector<FeatureBatch::Item> &items);
    void takeSamples(const QVector<QPointF> &vertices);
    Feature copyOf(FeatureBatch::Item &item);
    Geometry writable(Geometry geometry) const;
    bool write(FeatureBatch::Item &item);

    Job m_job;
    Losses &m_losses;
    GdalMessages &m_messages;
    OGRLayerH m_layer = nullptr;
    std::vector<int> m_textFields; ///< of the source
    std::vector<int> m_fieldMap;
    QVector<QPointF> m_samples;
    GIntBig m_written = 0;
    using Kind = std::pair<OGRwkbGeometryType, bool>; ///< and whether there are curves inside
    std::set<Kind> m_kinds;
    LostProperties m_lost;
};
