#pragma once

#include "LayerWriter.h"
#include "SampleTaker.h"

#include <QDir>

#include <map>

/// Finds out what a format makes of features: writes some in a place of its own, reads them again as anyone
/// would, and compares each value, geometry, style and number.
class ValueProbe
{
public:
    /// How a format holds a kind of geometry.
    enum Verdict { Held, Split, Refused };

    /// \p place and \p fileName: where to write.
    ValueProbe(const QDir &place, QString fileName)
        : m_place(place)
        , m_fileName(std::move(fileName))
    {}

    /// Adds each loss. Throws Failure when nothing can be written at all.
    void check(const LayerWriter::Plan &plan, const std::vector<FeatureBatch::Item *> &samples,
               Losses &losses);
    /// Of a geometry of a kind that was among the samples.
    Verdict verdict(OGRGeometryH geometry) const;

private:
    struct Read
    {
        std::vector<Feature> features;
        std::vector<int> columns; ///< of what was read, for each of the source's; -1 for none
    };

    static std::vector<QByteArray> write(const QString &path, const LayerWriter::Plan &plan,
                                         const std::vector<FeatureBatch::Item *> &samples);
    Read writtenAndRead(const LayerWriter::Plan &plan,
                        const std::vector<FeatureBatch::Item *> &samples) const;
    void checkAlone(const LayerWriter::Plan &plan, FeatureBatch::Item &sample, Losses &losses);
    static void compare(const LayerWriter::Plan &plan, const FeatureBatch::Item &sample, OGRFeatureH again,
                        const std::vector<int> &columns, Losses &losses);

    QDir m_place;
    QString m_fileName;
    std::map<std::vector<int>, Verdict> m_verdicts; ///< those that are not held
};
