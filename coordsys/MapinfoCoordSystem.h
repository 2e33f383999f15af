#pragma once

#include <coordsys/CoordSystemParams.h>

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QList>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace nivora::cs {

class MapinfoCoordSystemPrivate;
struct TABProjInfo_t;

/// The encoding in which loadFromPRJ() reads a file, told by the first line: Windows-1251 when that line is
/// Russian in it, else (and for a file that cannot be opened) UTF-8.
NIVORA_CS_EXPORT QByteArray codecNameForTextFile(const QString &path);

/// The catalogue of named MapInfo coordinate systems: categories of entries read from
/// "projections_<language>.prj". Systems are built on demand through a creator and cached by position
/// (category, entry). Threads: look-ups may run together; loading is start-up only; clear() may run while the
/// background fill does, but not while the PROJ lock is held. A cleared catalogue is finished: it builds
/// nothing any more. It may outlive its factory, which clears it as it goes; systems that it gave out live
/// on.
class NIVORA_CS_EXPORT MapinfoCoordSystem
{
public:
    /// Makes a system from a CoordSys string, or throws.
    using Creator = std::function<CoordSystemPtr(const QString &prj)>;
    /// Category and entry, from 0.
    using Position = std::pair<int, int>;

    /// (-1, -1): no entry.
    static constexpr Position PairNone{-1, -1};

    /// \p creator makes a system from a CoordSys string; an empty one raises std::bad_function_call when
    /// used.
    explicit MapinfoCoordSystem(Creator creator);
    /// Stops the background fill and waits for it.
    ~MapinfoCoordSystem();
    MapinfoCoordSystem(const MapinfoCoordSystem &) = delete;
    MapinfoCoordSystem &operator=(const MapinfoCoordSystem &) = delete;

    /// Appends the categories of "projections_<language>.prj" in \p dir. UTF-8 or Windows-1251, told by the
    /// first line. Rejected lines are passed over. Throws std::runtime_error "Не могу открыть файл …".
    bool loadFromPRJ(const QDir &dir, const QString &language);
    bool loadFromPRJ(const QFileInfo &file);

    /// The CoordSys string of an entry. Throws std::out_of_range.
    QString getStrMB(int category, int index) const;
    /// The system of an entry, built on first call; null after clear(). Throws std::out_of_range and whatever
    /// the creator throws.
    CoordSystemPtr getProj(int category, int index) const;
    CoordSystemPtr getProj(const Position &position) const;
    /// The same as getProj(): builds the entry when it is not there yet.
    CoordSystemPtr tryAddToCache(int category, int index) const;
    /// Builds all entries on Qt's global thread pool; returns at once. An entry that fails ends the fill, and
    /// so does the end of the application or of the process.
    void initInternalCache();
    /// Stops the background fill and waits for it. What it built stays, and it may be started again. Not
    /// while the PROJ lock is held.
    void stopInternalCache();

    /// The CoordSys string of the first entry with the code, null when there is none.
    QString seekByEPSG(int epsg) const;
    /// That entry itself.
    std::optional<CoordSystemParams> entryByEpsg(int epsg) const;
    /// The system of that entry; null when there is none, it cannot be built, or the database's system of the
    /// code has another plane.
    CoordSystemPtr systemOfCode(int epsg) const;
    /// Of some codes the one whose first entry has this record (clauses left aside), the first in file order;
    /// else EPSG_UNDEFINDED.
    int codeOfRecord(const TABProjInfo_t &record, const QVector<int> &codes) const;
    /// The codes of the entries that have this record but for rounded figures, in the order of the file.
    QVector<int> codesNearRecord(const TABProjInfo_t &record) const;
    /// The first entry, in file order, that equals the system (CoordSystem::isEqual with the flag), else
    /// PairNone. An entry that cannot be built is unequal (logged once).
    Position seekProj(const CoordSystem &cs, bool ignoreRect) const;
    Position seekProj(const CoordSystemPtr &cs, bool ignoreRect) const;
    /// Name and EPSG code of that entry; (null, EPSG_UNDEFINDED) when there is none.
    std::pair<QString, int> getHumanReadableTextWithEpsg(const CoordSystem &cs, bool ignoreRect) const;
    /// The same for the first entry that equals the system with its bounds, else the first without them:
    /// systems that differ by their bounds alone have names of their own.
    std::pair<QString, int> getHumanReadableTextWithEpsg(const CoordSystem &cs) const;

    /// All categories, in file order.
    QList<CoordSystemParamsList> projectionList() const;
    /// Stops the background fill, waits for it, and empties the catalogue for good.
    void clear();

private:
    friend class MapinfoCoordSystemPrivate;
    const std::unique_ptr<MapinfoCoordSystemPrivate> d;
};

} // namespace nivora::cs
