#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

#include <memory>
#include <optional>

class QDir;
class QIODevice;

namespace nivora::cs {

class MapinfoSearch;

/// What has to be assumed for coordinates to lie in a system.
enum class GuessAssumption {
    Swapped,       ///< the first value is the northing or latitude
    Kilometres,    ///< in a system that counts metres
    Feet,          ///< international ones, in a system that counts metres
    PrefixMissing, ///< the number of the zone before the easting is left out
    PrefixAdded,   ///< a number of the zone stands before an easting that has none
    DegreesAsDms,  ///< 554512.3 or 55.45123 for 55°45'12.3"
};

/// The assumption in words, for people.
NIVORA_CS_EXPORT QString assumptionText(GuessAssumption assumption);

/// Finds the systems that bare coordinates may be in: those of PROJ's database, of the catalogue and of the
/// user whose area of use, computed in each system's own plane in advance, holds the data. It is no search by
/// name and converts nothing for keeps. Systems that the data cannot tell apart are one entry. x is longitude
/// or easting first, places are longitude and latitude on WGS 84 in degrees. Threads: const calls may run
/// together; a guess takes its turn with other searches of PROJ's database.
class NIVORA_CS_EXPORT SystemGuess
{
public:
    /// What is asked.
    struct Question
    {
        QVector<QPointF> points;      ///< of the data; those that are not finite do not count
        std::optional<QPointF> place; ///< somewhere near the data, degrees
        bool isSwapped = false;       ///< y stands first: nothing else is tried then
        QString stated;               ///< "EPSG:28407", the system the data claim to be in; empty without one
    };

    /// A system that the data may be in.
    struct Member
    {
        QString code; ///< "EPSG:32637"; empty for the user's own and entries of the catalogue without one
        QString name; ///< for people; CoordSysFactory::createFromUserInput makes what has no code by it
        bool isWithdrawn = false; ///< the authority has another system in its place
        double metres = 0.0;      ///< from the first member, the most on the data
    };

    /// Systems that put the data on the same ground: all within 20 m of each other on the data, in the same
    /// unit and order of axes.
    struct Entry
    {
        QVector<Member> members; ///< the likeliest first, at most 30
        int more = 0;            ///< further members, so that nothing decides among them
        /// Under which they do.
        QVector<GuessAssumption> assumptions;
        QPointF centre;                  ///< of the data
        QRectF box;                      ///< of the data; width may run on across the 180th meridian
        QRectF area;                     ///< of use of the first member, likewise
        double share = 0.0;              ///< of the data that lies in that area, up to 1
        std::optional<double> distanceM; ///< from the place or area asked for, 0 inside
        double spreadM = 0.0;            ///< the most between two members on the data
        /// Where the members differ most, coordinates as in the data: a known position of this point, better
        /// than half of spreadM, decides among them.
        QPointF deciding;
        bool isShiftKnown =
            true; ///< false: PROJ knows no shift to WGS 84, places may be off by hundreds of m

        /// Whether a control point can decide.
        bool isDecidable() const { return more == 0; }
    };

    /// What a stated system is worth.
    struct Doubt
    {
        QString code;          ///< the stated one
        double share = 0.0;    ///< of the data inside its area of use
        bool isRaised = false; ///< most of the data lie outside
        QString fits; ///< the first system whose area holds them, "EPSG:28408", or a name; empty for none
    };

    /// An answer.
    struct Answer
    {
        QVector<Entry> entries;     ///< the likeliest first
        std::optional<Doubt> doubt; ///< for a stated system whose area is known
    };

    /// \p search, with its tables loaded, must outlive the guess; \p resources holds "system-planes.tsv".
    /// systemGuess() knows systems without a code too, this one does not.
    SystemGuess(const MapinfoSearch &search, const QDir &resources);
    ~SystemGuess();
    SystemGuess(const SystemGuess &) = delete;
    SystemGuess &operator=(const SystemGuess &) = delete;

    /// The entries that the data may be in, at most \p limit: by the distance from the place, else by towns,
    /// by what is in force where the data would lie, and by how small an area holds them. Nothing without
    /// points. Half a second; the first call some tenths more.
    Answer guess(const Question &question, int limit) const;
    /// The same for data that lie in an area, or near it: degrees, the width may run on across the 180th
    /// meridian; an area without an extent is a place. The question's own place does not count.
    Answer guessIn(const QRectF &area, const Question &question, int limit) const;

    /// The same for data in or near what areaNamed() knows by a text. Of a country: data in it go before
    /// those in its neighbours. Of a region: systems made for it go first. Nothing for a text that names no
    /// place.
    std::optional<Answer> guessNear(const QString &place, const Question &question, int limit) const;

    /// What a text names, in any language of the search and with slips: the area of a country, or of a region
    /// that areas of use are called by ("texas"); else a town, or "37.6, 55.7", longitude first, which have
    /// no extent. Nothing for other text.
    std::optional<QRectF> areaNamed(const QString &text) const;
    /// The middle of areaNamed().
    std::optional<QPointF> placeNamed(const QString &text) const;

    /// Writes "system-planes.tsv" anew from PROJ's database: half a minute. False when writing failed.
    bool writePlanes(QIODevice &file) const;

private:
    friend class SearchMaker;
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
