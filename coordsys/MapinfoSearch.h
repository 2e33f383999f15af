#pragma once

#include <coordsys/CoordSystemParams.h>

#include <QFileInfo>
#include <QPointF>
#include <QVector>

#include <memory>
#include <utility>

namespace nivora::cs {

class MapinfoCoordSystem;

/// Finds entries of a catalogue the way people look for them: by words, by code, by place. It reads the
/// catalogue once, at construction, and keeps its own copy; make a new one after loading more. Threads: const
/// calls may run together.
class NIVORA_CS_EXPORT MapinfoSearch
{
public:
    /// An entry that was found.
    struct Hit
    {
        /// Category and index, as MapinfoCoordSystem takes them; both -1 for a system that the PROJ database
        /// has and the catalogue does not: CoordSysFactory::createFromEpsg makes it by its code.
        std::pair<int, int> position;
        QString category;                             ///< its name, empty outside of the catalogue
        QString name;                                 ///< of the entry
        int epsg = CoordSystemTypes::EPSG_UNDEFINDED; ///< EPSG_UNDEFINDED when it has none

        /// Whether the position is one.
        bool isInCatalogue() const { return position.first >= 0; }
    };

    /// Reads the catalogue; it need not outlive the search.
    explicit MapinfoSearch(const MapinfoCoordSystem &catalogue);
    ~MapinfoSearch();
    MapinfoSearch(const MapinfoSearch &) = delete;
    MapinfoSearch &operator=(const MapinfoSearch &) = delete;

    /// \name Further words, not while other threads search
    /// @{
    /// More names by which the entries are found: those of the same catalogue in another language. Positions
    /// where the two do not hold the same parameters are passed over.
    void addNames(const MapinfoCoordSystem &otherLanguage);
    /// Towns by which find() knows places: a UTF-8 file, a line each of longitude, latitude (degrees) and
    /// names, separated by tabs, the names by semicolons; other lines are passed over. Returns how many were
    /// read, -1 when the file cannot be opened.
    int loadPlaces(const QFileInfo &file);
    /// What people say for systems: a UTF-8 file, a line each of names (separated by semicolons), EPSG codes
    /// (likewise), words that the catalogue uses instead, and a remark in Russian and in English, separated
    /// by tabs, any of them empty but the first. Returns how many were read, -1 when the file cannot be
    /// opened.
    int loadAliases(const QFileInfo &file);
    /// @}

    /// Entries that hold all words of \p text in name, category or code, in any order and as parts of words;
    /// letter case and accents do not count, and letters and digits are words apart ("wgs84" is "wgs 84"). A
    /// number is a whole code or a whole number in a name, and "EPSG" before it goes without saying. First
    /// comes the entry of just that name, then that whose code is a word of the text (or, when the text is a
    /// code that the catalogue does not have, the database's system), then those that the text is an alias
    /// of, those whose name begins each word so, and the rest, each group in file order. Behind them
    /// the entries in use in a town that some of the words name, as at() has them, and those in whose area of
    /// use words of the text stand ("Germany utm"), as long as the other words fit. When nothing is found,
    /// one slip of the hand is forgiven in each word. Nothing for a text without words or a limit below 1.
    /// Some milliseconds; up to 50 on the first call.
    QVector<Hit> find(const QString &text, int limit) const;

    /// What there is to say on a text apart from entries, for instance that the parameters of a system are
    /// not published; empty mostly. \p language "ru", or English.
    QString remark(const QString &text, const QString &language) const;

    /// Entries with an EPSG code whose area of use holds a point (longitude and latitude in degrees), the
    /// smallest area first, in file order within one size. The areas come from the PROJ database on first
    /// call, which takes some 40 ms.
    QVector<Hit> at(const QPointF &lonLat, int limit) const;

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
