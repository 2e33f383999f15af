#pragma once

#include "datums/DatumChoice.h"
#include "engines/Library.h"
#include "entries/Entry.h"
#include "entries/Names.h"
#include "entries/Precedence.h"
#include "planes/Bounds.h"
#include "planes/Forms.h"
#include "planes/PlaneCheck.h"

#include <optional>

namespace catalogue {

/// A system that is not in the catalogue, and why.
struct Refusal
{
    int code = 0;
    QString name;
    QString reason; ///< short, for counting
    QString detail;
};

/// Makes the catalogue of systems.
class Generator
{
public:
    /// \p tables is the directory of the hand-made tables. The references are kept.
    Generator(const Database &database, const QString &tables, const Library &library);

    /// Examines every EPSG system, telling how far it has come on stderr. Call once.
    void run();

    const Catalogue &catalogue() const { return m_catalogue; }
    const std::vector<Refusal> &refusals() const { return m_refusals; }
    std::vector<BoundsTable::Record> bounds() const { return m_bounds.records(); }
    std::size_t examined() const { return m_epsg.systems().size(); }
    /// How many systems took each kind of datum text.
    const std::map<DatumText::Source, int> &sources() const { return m_sources; }
    int accurateTwins() const { return m_accurateTwins; }
    /// How many entries the library wrote, most of them with an affine clause.
    int writtenEntries() const { return m_writtenEntries; }
    const std::set<QString> &unknownAreas() const { return m_categories.unknownAreas(); }

private:
    /// A row of "extras.tsv": a system of its own, or the name and place of an EPSG system.
    struct Extra
    {
        Entry entry;
        bool planeOnly = false; ///< its ellipsoid differs on purpose
        bool wholeWorld = false;
    };
    struct Found
    {
        DatumText datum;
        Form form;
    };

    void readExtras(const QString &tables);
    void addExtra(const Extra &extra);
    void addSystem(const EpsgSystem &system, const Extra *extra);
    std::vector<Form> formsOf(const EpsgSystem &system, const Srs &definition,
                              const DatumChoice &choice) const;
    std::optional<Found> search(const DatumChoice &choice, const std::vector<Form> &forms,
                                const PlaneCheck &check, QString &fault) const;
    QString searchWritten(const EpsgSystem &system, const DatumChoice &choice,
                          DatumText::Source &source) const;
    void add(const EpsgSystem &system, Entry entry, const QString &params, DatumText::Source source);
    void addTwin(const EpsgSystem &system, const Entry &entry, const Found &found, const DatumChoice &choice,
                 const PlaneCheck &check);
    void refuse(const EpsgSystem &system, const QString &reason, const QString &detail);

    const Library &m_library;
    Epsg m_epsg;
    Shifts m_shifts;
    Driver m_driver;
    DatumChooser m_datums;
    Places m_places;
    Categories m_categories;
    Names m_names;
    Precedence m_precedence;
    std::vector<std::pair<QRegularExpression, QString>> m_leftOut;
    std::vector<Extra> m_extras;
    std::map<int, const Extra *> m_extraByCode;
    Catalogue m_catalogue;
    BoundsTable m_bounds;
    std::vector<Refusal> m_refusals;
    std::map<DatumText::Source, int> m_sources;
    int m_accurateTwins = 0;
    int m_writtenEntries = 0;
};

} // namespace catalogue
