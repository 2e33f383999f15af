#pragma once

#include <coordsys/CoordSystemParams.h>

#include <QDir>
#include <QFileInfo>
#include <QPointF>
#include <QStringList>
#include <QVector>

#include <memory>
#include <optional>
#include <utility>

namespace nivora::cs {

class MapinfoCoordSystem;

/// Finds systems the way people look for them: by words, by code, by country, town or place, in one index of
/// a catalogue and of all longitude/latitude and projected systems of PROJ's database. It reads the catalogue
/// at construction and the database when something is looked for first; make a new one after loading more.
/// Threads: const calls may run together.
class NIVORA_CS_EXPORT MapinfoSearch
{
public:
    /// An entry that was found.
    struct Hit
    {
        /// Category and index, as MapinfoCoordSystem takes them; both -1 for a system that the PROJ database
        /// has and the catalogue does not: CoordSysFactory::createFromUserInput makes it by its code. Of a
        /// user's own system -2 less its branch, and its number in that, as UserCoordSystem::data() had them
        /// when the search was made; createFromUserInput makes it by its name.
        std::pair<int, int> position;
        QString category; ///< its name, the branch of a user's own system, else empty
        QString name;     ///< of the entry
        int epsg = CoordSystemTypes::EPSG_UNDEFINDED; ///< EPSG_UNDEFINDED when it has none

        QString code;             ///< "EPSG:4326", "ESRI:54030"; empty when it has none
        bool isWithdrawn = false; ///< the authority has another system in its place

        /// Whether the position is one.
        bool isInCatalogue() const { return position.first >= 0; }
        /// Whether it is a user's own system.
        bool isOwn() const { return position.first < -1; }
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
    /// Towns: a UTF-8 file, a line each of longitude, latitude (degrees), names and the country, separated by
    /// tabs, the names by semicolons; other lines are passed over. After loadCountries(). Returns how many
    /// were read, -1 when the file cannot be opened.
    int loadPlaces(const QFileInfo &file);
    /// Countries: a UTF-8 file, a line each of names and of the codes in force ("2154", "ESRI:102003"; the
    /// country's own first), separated by a tab, each list by semicolons. Returns as loadPlaces().
    int loadCountries(const QFileInfo &file);
    /// What people say for systems: a UTF-8 file, a line each of names (separated by semicolons), codes
    /// (likewise), words that the catalogue uses instead, and a remark in Russian and in English, separated
    /// by tabs, any of them empty but the first. Returns as loadPlaces().
    int loadAliases(const QFileInfo &file);
    /// The three tables of a resource directory; those that it lacks are left out.
    void loadTables(const QDir &resources);
    /// @}

    /// What a search gives.
    struct Answer
    {
        QVector<Hit> hits;   ///< best first
        QStringList without; ///< words of the text that no system has and that were left aside
    };

    /// The systems that a text means, best first, at most \p limit. What it asks for counts, not how it is
    /// spelled: zone and hemisphere as one ("22s", "zone 7", "7 зона"), units, datums, authorities and codes,
    /// countries and towns with the systems in force there, nicknames of systems ("google"), methods of
    /// projection, names in every language loaded; letter case and accents do not count, letters and digits
    /// are words apart ("wgs84"). Systems in force come before withdrawn ones, everyday ones before their
    /// twins. Slips of the hand are forgiven in words that are none. With \p lonLat (degrees) only what is in
    /// use there. Nothing for a text without words or systems. Some milliseconds; a tenth of a second on the
    /// first call.
    Answer answer(const QString &text, const std::optional<QPointF> &lonLat, int limit) const;

    /// The hits of answer() for a text alone.
    QVector<Hit> find(const QString &text, int limit) const;

    /// What there is to say on a text apart from entries, for instance that the parameters of a system are
    /// not published; empty mostly. \p language "ru", or English.
    QString remark(const QString &text, const QString &language) const;

    /// Systems whose area of use holds a point (longitude and latitude in degrees): those in force in the
    /// country, zones and small areas first. Nothing for a point that is not finite.
    QVector<Hit> at(const QPointF &lonLat, int limit) const;

    /// Whether the authority has withdrawn the system of a code ("EPSG:4326"); false for a code of nothing.
    bool isWithdrawn(const QString &code) const;

private:
    friend class SearchMaker;
    friend class SystemGuess;
    struct Data;
    NIVORA_CS_NO_EXPORT explicit MapinfoSearch(std::unique_ptr<Data> data);
    std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
