#pragma once

// Systems that no authority has a code for: a user's own, and entries of the catalogue.

#include <coordsys/CoordSystemTypes.h>

#include <QByteArray>
#include <QHash>
#include <QRectF>
#include <QString>

#include <functional>
#include <optional>
#include <utility>

class QFileInfo;

namespace nivora::cs {

/// How such a system is found and made.
struct CodelessSystem
{
    std::pair<int, int> position; ///< as MapinfoSearch::Hit has it
    QString branch;               ///< of the user's store, or the catalogue's category
    QString name;
    QString text;                         ///< CoordSys, of the catalogue; empty for the user's own
    std::function<CoordSystemPtr()> make; ///< null, or an exception, for what cannot be made; for any thread
};

/// Where a system is in use.
struct LocatedSystem
{
    QRectF box;                 ///< in its own unit: of its bounds, else of the rule for its projection
    QRectF extent;              ///< the same in degrees, on its own datum
    double metresPerUnit = 0.0; ///< 0 for degrees
};

/// By its object, in some milliseconds. None for a system that cannot be made or whose bounds are no place on
/// the earth, as those of a plan. Never throws.
std::optional<LocatedSystem> located(const CodelessSystem &codeless);

/// The areas of the catalogue's entries without a code, written in advance: lines of "=", CoordSys text, unit
/// in metres, and the sides of box and extent, separated by tabs.
class CodelessAreas
{
public:
    /// Other lines are passed over; nothing from a file that cannot be read.
    explicit CodelessAreas(const QFileInfo &info);
    /// As in the file, else located().
    std::optional<LocatedSystem> of(const CodelessSystem &codeless) const;

    /// The line, with its end; a system that is nowhere has its text alone.
    static QByteArray line(const CodelessSystem &codeless);

private:
    QHash<QString, std::optional<LocatedSystem>> m_known; ///< by text
};

} // namespace nivora::cs
