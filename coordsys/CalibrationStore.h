#pragma once

#include <coordsys/Calibration.h>

#include <QDate>
#include <QFileInfo>
#include <QSharedDataPointer>

namespace nivora::cs {

/// What a user's own system was made from. A plain value.
struct NIVORA_CS_EXPORT CalibrationRecord
{
    CoordSystemTypes::SourceData system; ///< source of the entry in the user's store
    QString name;                        ///< of the system, for people
    CoordSystemTypes::SourceData known;  ///< the system of the known coordinates
    CoordSystemTypes::SourceData local;  ///< projection and ellipsoid of the local ones; Unknown without
    int unitCode = LinearUnit::Meter;    ///< MapInfo's number of the unit of local coordinates
    /// What was fitted.
    CalibrationModel model = CalibrationModel::Similarity;
    QDate date; ///< when it was fitted
    /// The control points.
    QVector<CalibrationPair> pairs;

    /// The points with their systems, to look at or to fit anew. Throws as Calibration and as the creators of
    /// systems do. Needs active catalogues.
    Calibration calibration() const;
    /// The record of a fit; \p name and today's date with it. Throws as CalibrationFit::coordSysText().
    static CalibrationRecord of(const Calibration &calibration, const CalibrationFit &fit,
                                const QString &name);
};

/// Keeps the points that own systems were made from, in "UserCoordSystem.calibration.xml" beside the store of
/// the systems themselves, since programs that know nothing of them write that one without. Every call reads
/// or writes the file; it holds nothing. Threads: const calls may run together. Several processes and windows
/// may save: each change is made to what the others left, under the lock of the store of systems.
class NIVORA_CS_EXPORT CalibrationStore
{
public:
    /// \p userStore is the file of the user's systems (UserCoordSystem::fileInfo()).
    explicit CalibrationStore(const QFileInfo &userStore);
    /// Of the same file.
    CalibrationStore(const CalibrationStore &other);
    /// Likewise.
    CalibrationStore &operator=(const CalibrationStore &other);
    ~CalibrationStore();

    /// Of the file beside the store.
    QString filePath() const;
    /// All records; none when there is no file. Throws std::logic_error "path:line:column: reason" for a file
    /// that cannot be read.
    QVector<CalibrationRecord> records() const;
    /// The record of a system: that of its source text, or of its CoordSys string. None when there is none,
    /// or when the file cannot be read (logged).
    std::optional<CalibrationRecord> find(const CoordSystem &cs) const;
    /// Adds a record, or replaces that of an equal source. A file that cannot be read is first copied to
    /// "….bak" (never over an older copy). Throws std::logic_error when the file cannot be written, or
    /// another program holds it for seconds.
    void save(const CalibrationRecord &record) const;
    /// Takes out the record of a source. False when there is none, or no file. Throws as records() and
    /// save().
    bool remove(const CoordSystemTypes::SourceData &system) const;

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

} // namespace nivora::cs
