#pragma once

// Areas of use in the planes of their systems, computed in advance.

#include "SystemIndex_p.h"

#include <QByteArray>
#include <QRectF>

#include <proj.h>

#include <functional>
#include <optional>
#include <vector>

class QFileInfo;
class QIODevice;

namespace nivora::cs {

/// The step from longitude and latitude to a plane.
struct Plane
{
    QByteArray pipeline; ///< PROJ text from degrees, from the base's meridian; empty: longitude and latitude
    int falseZone = 0;   ///< millions before a false easting of 500 km, 0 without
    std::vector<int> zones; ///< numbers that a zone of this meridian goes by; of others with 500 km none
    /// Of a system without a code: its object takes the plane to WGS 84 at once.
    std::function<CoordSystemPtr()> object;
};

/// A system with its area of use in its own coordinates.
struct PlaneOfSystem
{
    int system = -1;            ///< in the index
    int plane = -1;             ///< in planes()
    int base = -1;              ///< in bases()
    QRectF box;                 ///< of the area of use
    double metresPerUnit = 0.0; ///< 0 for degrees
    double meridianDeg = 0.0;   ///< of the base, from Greenwich
};

/// Filled once, only read afterwards.
class PlaneTable
{
public:
    /// The rows of the file that the database still has, the systems of longitude and latitude, and what the
    /// file does not know of, computed now.
    PlaneTable(const QFileInfo &file, const SystemIndex &index);

    /// A system without a code.
    void add(int system, const LocatedSystem &located, const std::function<CoordSystemPtr()> &object);

    const std::vector<Plane> &planes() const { return m_planes; }
    const std::vector<PlaneOfSystem> &systems() const { return m_systems; }
    /// Codes of geographic systems.
    const std::vector<QByteArray> &bases() const { return m_bases; }

    /// All rows, from the database. False when the device does not take them.
    static bool write(QIODevice &file, const SystemIndex &index);

private:
    void read(const QFileInfo &info, const SystemIndex &index, std::vector<bool> &known);
    void addRow(const QList<QByteArray> &cells, int plane, int system);
    int planeOf(const QByteArray &pipeline);
    int baseOf(const QByteArray &code);

    std::vector<Plane> m_planes;
    std::vector<PlaneOfSystem> m_systems;
    std::vector<QByteArray> m_bases;
    QHash<QByteArray, int> m_planeNumbers;
    QHash<QByteArray, int> m_baseNumbers;
};

} // namespace nivora::cs
