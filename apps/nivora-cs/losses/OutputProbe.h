#pragma once

#include "OutputFormat.h"

#include <QDir>
#include <QPointF>
#include <QVector>

#include <vector>

class Losses;
class Session;

/// Whether a geometry is a surface made of patches.
bool isSurface(OGRGeometryH geometry);

/// What becomes of geometries in a format.
struct LostProperties
{
    bool heights = false;
    bool measures = false;
    bool curves = false;
    bool surfaces = false;
};

/// Finds out what a format keeps of a layer by writing a few features in a place of their own and reading
/// them as anyone would: what drivers say about themselves is not always so.
class OutputProbe
{
public:
    /// All are borrowed. \p fileName is that of the output.
    OutputProbe(const Session &session, const OutputFormat &format, const QDir &place,
                const QString &fileName);

    /// Whether a system with an affine transformation comes back with one.
    bool carriesAffine(const nivora::cs::CoordSystemPtr &system);
    /// Whether the system stays where it is at \p places, and which properties of \p geometries are lost.
    /// Adds each loss; so throws Failure.
    LostProperties check(const OutputLayer &layer, const std::vector<OGRGeometryH> &geometries,
                         const QVector<QPointF> &places, Losses &losses);
    /// Compares the systems once more, for further places.
    void checkSystem(const OutputLayer &layer, const QVector<QPointF> &places, Losses &losses);
    /// Whether a layer that is there has the system that a new one of the format would have.
    bool isSystemOf(const nivora::cs::CoordSystemPtr &existing) const;
    /// Whether the format carries another system, whose coordinates its driver may write.
    bool isElsewhere() const { return m_isElsewhere; }

private:
    struct Counts;
    Counts writtenAndRead(const OutputLayer &layer, const std::vector<OGRGeometryH> &geometries);
    void write(const QString &path, const OutputLayer &layer, const std::vector<OGRGeometryH> &geometries);

    const Session &m_session;
    const OutputFormat &m_format;
    QDir m_place;
    QString m_fileName;
    nivora::cs::CoordSystemPtr m_readAgain; ///< null for none
    QString m_heightsAgain;                 ///< what is said of heights then
    bool m_isConverted = false;             ///< the driver wrote other coordinates
    bool m_isElsewhere = false;
};
