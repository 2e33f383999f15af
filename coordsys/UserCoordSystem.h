#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QDir>
#include <QFileInfo>
#include <QList>
#include <QSharedDataPointer>

#include <functional>

namespace nivora::cs {

/// The coordinate systems that a user keeps, in named branches, stored in "UserCoordSystem.xml".
/// An entry keeps its source text verbatim, whether or not a system can be made from it. The systems of
/// entries read from the file are made when they are first asked for, or compared with a system that their
/// text does not rule out, with the catalogues of the store's
/// factory while it lives, else with the active ones. Threads: const calls may run together, on copies of
/// entries too; changing, loading and saving belong to one thread while no other one uses the store. Several
/// windows and processes may change the file: update() keeps what each of them did; of those that save what
/// they loaded long ago the last one stays. Ownership: the store may outlive its factory; entries and systems
/// taken from it outlive the store.
class NIVORA_CS_EXPORT UserCoordSystem
{
public:
    /// Makes the system of an entry; null when it cannot be made. Must be callable from any thread.
    using Maker = std::function<CoordSystemPtr(const CoordSystemTypes::SourceData &)>;

    /// The stored words for the source types.
    static const QString PrjTag;
    static const QString Proj4Tag;  ///< the word for PROJ text
    static const QString EpsgTag;   ///< the word for a code
    static const QString WktTag;    ///< the word for WKT
    static const QString OracleTag; ///< the word for an Oracle SRID

    /// One entry. The system may be null: a text that cannot be read is kept.
    class NIVORA_CS_EXPORT CoordSystemParam
    {
    public:
        CoordSystemParam();
        /// Builds the system when \p cs is null and gives it the description; failures are logged.
        CoordSystemParam(const CoordSystemTypes::SourceData &source, const QString &description,
                         const CoordSystemPtr &cs);
        /// Shares the system.
        CoordSystemParam(const CoordSystemParam &other);
        /// Likewise.
        CoordSystemParam &operator=(const CoordSystemParam &other);
        ~CoordSystemParam();

        /// What the entry was made from.
        const CoordSystemTypes::SourceData &source() const;
        /// The user's name for it.
        const QString &description() const;
        /// The system, tried again when it could not be built before; null when it still cannot (logged).
        CoordSystemPtr coordSystem() const;
        /// The system, built on the first call for an entry from the file; null, logged once, when it could
        /// not be built. Copies of the entry share it.
        CoordSystemPtr storedSystem() const;

    private:
        friend class UserCoordSystem;
        struct Data;
        QSharedDataPointer<Data> m_data;
    };

    /// One branch.
    struct CsDataType
    {
        QString name;                    ///< of the branch
        QList<CoordSystemParam> entries; ///< in file order
    };

    /// Reads nothing yet; the file is "UserCoordSystem.xml" in \p dir.
    explicit UserCoordSystem(const QDir &dir);
    /// A store of its own with the same entries, which share their systems.
    UserCoordSystem(const UserCoordSystem &other);
    /// Likewise.
    UserCoordSystem &operator=(const UserCoordSystem &other);
    ~UserCoordSystem();

    /// How systems of entries that are loaded from now on are made, in place of
    /// csStringToInternalNoDescription(). Start-up only.
    void setMaker(Maker maker);
    /// Keeps the file's name and moves it to another directory; nothing is copied.
    void setDir(const QDir &dir);
    /// Where the store is read from and written to.
    const QFileInfo &fileInfo() const;
    /// Refers to the store: take a copy before changing, loading or leaving it (copies are shared, so cheap).
    const QList<CsDataType> &data() const;
    /// No branches.
    bool isEmpty() const;

    /// The name that a branch without one gets when it is read: "Каталог" in every language, since files keep
    /// it.
    static QString defaultBranch();
    /// See nivora::cs::stringToSourceType.
    static CoordSystemTypes::SourceType stringToSourceType(const QString &text);
    /// See nivora::cs::sourceTypeToString.
    static QString sourceTypeToString(CoordSystemTypes::SourceType type);

    /// Index of the first branch of that name, -1 when there is none.
    int keyIndex(const QString &branch) const;
    /// Whether an entry has equal source data, and its description (empty when there is none).
    bool hasValue(const CoordSystemTypes::SourceData &source) const;
    /// The description of the entry with equal source data, empty when there is none.
    QString description(const CoordSystemTypes::SourceData &source) const;
    /// The first stored system equal to the one that the source makes, null when there is none or it makes
    /// none.
    CoordSystemPtr getCoordSystem(const CoordSystemTypes::SourceData &source) const;
    /// The first stored system equal to the given one, null when there is none. Never throws: an equality
    /// that cannot be decided is logged and passed over.
    CoordSystemPtr storedEqual(const CoordSystem &cs) const;
    /// Whether storedEqual() finds one.
    bool hasCoordSystem(const CoordSystemPtr &cs) const;

    /// Adds an entry, or replaces description and system of the one with equal source data in that branch.
    /// The entry keeps its own spelling then. False when no system can be made from the source; the entry is
    /// stored all the same.
    bool setCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source,
                        const QString &description);
    /// Removes the first entry with equal source data from the branch of that name (of several such branches,
    /// from the first that has it). False when there is none.
    bool removeCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source);
    /// The stored entry that a text stands for (CoordSys strings only, clauses included), else a new one of
    /// the detected notation. Throws as MapHeaderCoordsysConverter::prjStrToTABProjInfo for a malformed \p
    /// text.
    CoordSystemParam testStringValue(const QString &text) const;

    /// A system without a description of its own; null, and logged, when it cannot be made.
    static CoordSystemPtr csStringToInternalNoDescription(const CoordSystemTypes::SourceData &source);

    /// Replaces the contents by the file's; no system is made yet. What cannot be opened, is no regular file
    /// or not well-formed, or has another root than a store and no branches, leaves the store as it was; then
    /// std::logic_error "Не могу открыть файл …" is thrown, or, when \p quiet, logged for a file that exists.
    void loadFromFile(bool quiet);
    /// Why the last loadFromFile() took nothing: "path:line:column: reason", or "path: reason" for what
    /// could not be opened; empty when it was read.
    const QString &readProblem() const;
    /// One change of the file, whatever other windows and processes did to it since it was loaded: loads it
    /// (no file: an empty store), calls \p change with this store, and saves what that leaves, all under one
    /// lock. When \p change returns false, nothing is saved and false returned. Throws std::logic_error as
    /// loadFromFile(false) and saveToFile(true), and "Файл … изменяет другая программа" after five seconds of
    /// waiting; what \p change throws passes through. After an exception store and file are as before. \p
    /// change must not save.
    bool update(const std::function<bool(UserCoordSystem &store)> &change);
    /// Writes the file through a temporary one, so that the old file stays whole whatever happens. A file
    /// there that cannot be read is first copied to "….bak" (never over an older copy); temporary files of
    /// saves that were killed are removed. Throws std::logic_error when the file exists and \p overwrite is
    /// false, or when it cannot be written.
    void saveToFile(bool overwrite) const;
    static void saveToFile(const QFileInfo &file, const QList<CsDataType> &branches, bool overwrite);

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

} // namespace nivora::cs
