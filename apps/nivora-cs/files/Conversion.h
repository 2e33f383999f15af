#pragma once

#include "AppendTarget.h"
#include "LayerCopy.h"
#include "LayerHeights.h"
#include "Losses.h"
#include "OutputFormat.h"
#include "OutputProbe.h"
#include "RejectedList.h"
#include "Session.h"
#include "StagedOutput.h"

class CommandLine;

/// A file of features on its way into another.
class Conversion
{
public:
    /// Throws Failure for arguments and files that cannot be used.
    explicit Conversion(const CommandLine &line);
    /// An exit status. Throws Failure, after which there is no output.
    int run();

private:
    void convertLayer(int index);
    nivora::cs::CoordSystemPtr sourceSystem(OGRLayerH layer);
    nivora::cs::CoordSystemPtr withoutAffine(const nivora::cs::CoordSystemPtr &system) const;
    nivora::cs::CoordSystemPtr carriable(const nivora::cs::CoordSystemPtr &target);
    nivora::cs::CoordSystemPtr plan();
    std::vector<int> convertibleLayers();
    void findHeights(OGRLayerH source, OutputLayer &layer, GeometryChange &change);
    void findExisting(OutputLayer &layer, GeometryChange &change);
    void findPoints(OGRLayerH source, const nivora::cs::CoordSystemPtr &from, GeometryChange &change) const;
    void describe(OGRLayerH source, OutputLayer &layer) const;
    void settle(OGRLayerH source, OutputLayer &layer, GeometryChange &change);
    void openTarget(const OutputLayer &first);
    QStringList writeWhole(const std::vector<int> &layers);
    QStringList writeKinds(const std::vector<int> &layers);
    /// The output that is being written, where its driver makes it.
    QString written() const;
    void nameAsAsked() const;
    void closeTarget();
    void noteWarnings();
    void noteLayer(const LayerCopy &copy, const OutputLayer &layer);
    void checkCount();
    OGRSpatialReferenceH untouchedReference(OGRLayerH source) const;
    void tell() const;

    const CommandLine &m_line;
    Session m_session;
    GdalMessages m_messages;
    QString m_in, m_out;
    nivora::cs::CoordSystemPtr m_from, m_to; ///< null when not given
    nivora::cs::OperationChoice m_choice;
    nivora::cs::BulkOptions m_bulk;
    nivora::cs::OperationTally m_tally, m_heightTally;
    std::optional<nivora::cs::CoordTransform> m_way; ///< of the last layer that was transformed
    double m_mostBendM = 0.0;                        ///< 0: no vertices are added
    TextCoding m_coding;
    Losses m_losses;
    Dataset m_source;
    OutputFormat m_format;
    StagedOutput m_stage;
    QString m_file;                       ///< the output that is being written, by its name
    std::optional<AppendTarget> m_append; ///< set: features are added to what is there
    std::optional<QRectF> m_extent;       ///< of the source, where it was read already
    std::optional<FeatureChoice> m_choiceOfFeatures;
    RejectedList m_rejected;
    OutputProbe m_probe;
    ValueProbe m_values;
    Dataset m_target;
    bool m_transaction = false;
    std::optional<MapInfoTarget> m_mapInfo; ///< what the files are given at the end
    QStringList m_notes;                    ///< of the drivers
    qint64 m_features = 0;                  ///< of the output that is being written
    qint64 m_before = 0;                    ///< that were there
    qint64 m_allFeatures = 0;
    SpatialReference m_reference{nullptr, OSRDestroySpatialReference}; ///< with heights
};
