#pragma once

#include "entries/Entry.h"
#include "reading/Epsg.h"

#include <QRectF>

#include <map>
#include <vector>

namespace catalogue {

/// What CoordSys text of the catalogue's own making says, apart from its datum.
struct PlaneText
{
    int projection = 0;
    QString unit;
    QStringList params;
};
PlaneText planeOf(const Entry &entry);

/// Collects the rectangles of systems by projection and parameters. Systems that differ in the datum alone
/// share one rectangle, since "cs_mbr.xml" cannot tell datums apart.
class BoundsTable
{
public:
    struct Record
    {
        int projection;
        QStringList params;
        QRectF rect;
    };

    /// Unites with the rectangle of the system's area, cut to the zone for zoned grids. World-wide systems
    /// get the rectangle of addWorld(); longitude/latitude, and areas too wide for a rectangle of their
    /// edges, are passed over.
    void addArea(const Entry &entry, const EpsgSystem &system);
    /// Unites with the rectangle of everything the projection can show.
    void addWorld(const Entry &entry);
    /// In the order of first addition, rounded outward.
    std::vector<Record> records() const;

private:
    void unite(const Entry &entry, const std::vector<QPointF> &degrees);

    std::vector<Record> m_records;
    std::map<QString, std::size_t> m_index;
};

} // namespace catalogue
