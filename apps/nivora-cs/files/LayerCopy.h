#pragma once

#include "FeatureBatch.h"
#include "OutputProbe.h"
#include "PeopleText.h"
#include "ValueProbe.h"

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
        ValueProbe &values;
        const TextCoding &coding; ///< of texts that are not UTF-8
    };
    using Advanced = std::function<void(GIntBig)>;
    using Rejected = std::function<void(const QString &layer, const Rejection &rejection)>;

    LayerCopy(const Job &job, Losses &losses, GdalMessages &messages);

    /// Calls \p advanced with the number of features written so far, now and then. Throws Failure.
    void run(const Rejected &rejected, const Advanced &advanced);
    /// Features of the output.
    GIntBig written() const { return m_written; }
    /// Whether numbers that the source stores are not in the output.
    bool numbersLost() const { return m_numbersLost; }
    /// What changed within reason, to be told.
    QStringList notes() const;
    /// Whether any geometry has heights.
    bool hasHeights() const { return m_hasHeights; }

private:
    void createLayer(std::vector<FeatureBatch::Item> &first);
    void settleType(const std::vector<FeatureBatch::Item> &first);
    void checkExisting() const;
    void checkType(OGRGeometryH geometry) const;
    void recodeNames();
    void recodeTexts(OGRFeatureH feature);
    void suggestSplit(const std::vector<OGRGeometryH> &samples);
    void checkKinds(const std::vector<FeatureBatch::Item> &items);
    QString roundingText() const;
    void checkSteps(const QVector<QPointF> &vertices);
    void checkValues(std::vector<FeatureBatch::Item> &items);
    void noteNumbers(const FeatureBatch::Item &item);
    void takeSamples(const QVector<QPointF> &vertices);
    bool write(FeatureBatch::Item &item, const Advanced &advanced);
    bool writePart(OGRFeatureH feature, Geometry geometry);
    LayerWriter::Plan plan() const;

    Job m_job;
    Losses &m_losses;
    GdalMessages &m_messages;
    std::unique_ptr<LayerWriter> m_writer;
    std::unique_ptr<SampleTaker> m_sampleTaker;
    std::vector<int> m_textFields; ///< of the source
    QVector<QPointF> m_samples;
    GIntBig m_written = 0;
    GIntBig m_read = 0;
    GIntBig m_firstNumber = 0;
    double m_roundingM = 0.0; ///< 0: a table's steps are fine enough
    bool m_numbersLost = false;
    bool m_hasHeights = false;
    bool m_hasFailed = false;                         ///< to write a feature
    using Kind = std::pair<OGRwkbGeometryType, bool>; ///< and whether there are curves inside
    std::set<Kind> m_kinds;
    std::set<FeatureKind> m_featureKinds;
    LostProperties m_lost;
};
