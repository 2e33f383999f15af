#pragma once

#include "engines/Driver.h"
#include "reading/Table.h"

#include <QRegularExpression>

namespace catalogue {

/// How the datum of a system is written in CoordSys text.
struct DatumText
{
    enum class Source { Standard, EqualShift, Grs80, User };
    Source source = Source::User;
    QString text;          ///< "1001" or "9999, 3, 23.57, ..."
    double distance = 0.0; ///< metres at the centre of the area from the best shift
};

struct DatumChoice
{
    std::vector<DatumText> candidates; ///< the best first; empty when the datum cannot be written
    QString accurate;                  ///< the user datum with the best shift, empty when no shift is known
    QString reason;                    ///< why there are no candidates
    double ellipsoidTolerance = 0.001; ///< metres in each semi-axis
};

/// Chooses datum numbers and shifts for EPSG systems.
class DatumChooser
{
public:
    /// \p tables is the directory of the hand-made tables.
    DatumChooser(const Epsg &epsg, const Driver &driver, const Shifts &shifts, const QString &tables);

    DatumChoice choose(const EpsgSystem &system) const;

private:
    struct Override
    {
        QRegularExpression datum;
        QRegularExpression area;
        int number;    ///< -1: none
        QString shift; ///< operation, "zero", or empty for the best by area
        int ellipsoid; ///< of a user datum, -1: the nearest
    };

    const Override *overrideFor(const EpsgDatum &datum, const Area &area) const;
    std::optional<Figures> bestFigures(const EpsgDatum &datum, const Area &area, const Override *rule) const;
    std::vector<std::pair<int, DatumText::Source>> numbers(const EpsgSystem &system, const EpsgDatum &datum,
                                                           const Override *rule,
                                                           const std::optional<Figures> &best) const;

    const Epsg &m_epsg;
    const Driver &m_driver;
    const Shifts &m_shifts;
    std::set<int> m_uncoded; ///< numbers that no EPSG system may use
    std::vector<QRegularExpression> m_zeroShift;
    std::vector<Override> m_overrides;
};

/// The text of a user datum: 999 with three figures, 9999 with seven and the meridian.
QString userDatumText(int ellipsoid, const Figures &figures, double meridian);

} // namespace catalogue
