#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QDir>
#include <QFileInfo>
#include <QList>

namespace nivora::cs {

/// The coordinate systems that a user keeps, in named branches, stored in "UserCoordSystem.xml".
/// An entry keeps its source text verbatim, whether or not a system can be made from it.
/// Threads: const calls may run together; changing, loading and saving belong to one thread at a time.
class NIVORA_CS_EXPORT UserCoordSystem
{
public:
    /// The stored words for the source types.
    static const QString PrjTag;
    static const QString Proj4Tag;
    static const QString EpsgTag;
    static const QString WktTag;
    static const QString OracleTag;

    /// One entry. The system may be null: a text that cannot be read is kept.
    class NIVORA_CS_EXPORT CoordSystemParam
    {
    public:
        CoordSystemParam() = default;
        /// Builds the system when \p cs is null and gives it the description; failures are logged.
        CoordSystemParam(const CoordSystemTypes::SourceData &source, const QString &description,
                         const CoordSystemPtr &cs);

        const CoordSystemTypes::SourceData &source() const { return m_source; }
        const QString &description() const { return m_description; }
        /// The system, built when absent; null when it cannot be built.
        CoordSystemPtr coordSystem() const;
        /// The system as it stands, never built here.
        const CoordSystemPtr &storedSystem() const { return m_system; }

    private:
        friend class UserCoordSystem;

        void describeSystem();

        CoordSystemTypes::SourceData m_source;
        QString m_description;
        CoordSystemPtr m_system;
    };

    /// One branch.
    struct CsDataType
    {
        QString name;
        QList<CoordSystemParam> entries;
    };

    /// Reads nothing yet; the file is "UserCoordSystem.xml" in \p dir.
    explicit UserCoordSystem(const QDir &dir);

    /// Keeps the file's name and moves it to another directory; nothing is copied.
    void setDir(const QDir &dir);
    const QFileInfo &fileInfo() const { return m_file; }
    const QList<CsDataType> &data() const { return m_branches; }
    bool isEmpty() const { return m_branches.isEmpty(); }

    static CoordSystemTypes::SourceType stringToSourceType(const QString &text);
    static QString sourceTypeToString(CoordSystemTypes::SourceType type);

    /// Index of the first branch of that name, -1 when there is none.
    int keyIndex(const QString &branch) const;
    /// Whether an entry has equal source data, and its description (empty when there is none).
    bool hasValue(const CoordSystemTypes::SourceData &source) const;
    QString description(const CoordSystemTypes::SourceData &source) const;
    /// The first stored system equal to the one that the source makes, null when there is none or it makes
    /// none.
    CoordSystemPtr getCoordSystem(const CoordSystemTypes::SourceData &source) const;
    /// The first stored system equal to the given one, null when there is none. Never throws: an equality
    /// that cannot be decided is logged and passed over.
    CoordSystemPtr storedEqual(const CoordSystem &cs) const;
    bool hasCoordSystem(const CoordSystemPtr &cs) const;

    /// Adds an entry, or replaces description and system of the one with equal source data in that branch.
    /// False when no system can be made from the source; the entry is stored all the same.
    bool setCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source,
                        const QString &description);
    /// Removes the entry with equal source data; nothing happens when there is none.
    void removeCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source);
    /// The stored entry that a text stands for (CoordSys strings only, clauses included), else a new one of
    /// the detected notation. Throws as MapHeaderCoordsysConverter::prjStrToTABProjInfo for a malformed \p
    /// text.
    CoordSystemParam testStringValue(const QString &text) const;

    /// A system without a description of its own; null, and logged, when it cannot be made.
    static CoordSystemPtr csStringToInternalNoDescription(const CoordSystemTypes::SourceData &source);

    /// Replaces the contents by the file's. A file that cannot be opened or is not well-formed leaves the
    /// store as it was; then std::logic_error "Не могу открыть файл …" is thrown unless \p quiet.
    void loadFromFile(bool quiet);
    /// Writes the file through a temporary one, so that the old file stays whole whatever happens. A file
    /// there that cannot be read is first copied to "….bak" (never over an older copy). Throws
    /// std::logic_error when the file exists and \p overwrite is false, or when it cannot be written.
    void saveToFile(bool overwrite) const;
    static void saveToFile(const QFileInfo &file, const QList<CsDataType> &branches, bool overwrite);

private:
    const CoordSystemParam *find(const CoordSystemTypes::SourceData &source) const;

    QFileInfo m_file;
    QList<CsDataType> m_branches;
};

} // namespace nivora::cs
