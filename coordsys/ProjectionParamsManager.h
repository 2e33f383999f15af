#pragma once

#include <coordsys/CatalogueRecords.h>

#include <QDir>
#include <QList>

#include <array>
#include <memory>
#include <new>
#include <vector>

namespace nivora::cs {

/// The catalogue of projections, ellipsoids, datums and units by their MapInfo numbers, read from
/// "projection_<language>.xml". Records keep file order; of records with one id or name the first wins.
/// Threads: filled at start-up, const calls may run together afterwards. It owns its records: pointers live
/// until clear() or the next load.
class NIVORA_CS_EXPORT ProjectionParamsManager
{
public:
    ProjectionParamsManager();
    ~ProjectionParamsManager();
    ProjectionParamsManager(const ProjectionParamsManager &) = delete;
    ProjectionParamsManager &operator=(const ProjectionParamsManager &) = delete;

    /// Replaces the contents by those of "projection_<language>.xml" in \p dir and hands ellipsoids and
    /// datums to the MapInfo driver. False when the file cannot be opened (logged; the catalogue is empty
    /// then); a file that is not XML loads as an empty catalogue. An entry with unusable values is logged and
    /// skipped. Throws std::runtime_error "Ошибка загрузки файла проекций …" around any other failure.
    bool initFromXML(const QDir &dir, const QString &language);
    /// The same with the directory and language of the active factory. Throws std::logic_error without one.
    bool initFromXML();
    /// Whether the file of the last initFromXML() was not well-formed, or nested deeper than 64 elements
    /// (logged with line and column). It loads as an empty catalogue all the same; a start-up refuses it.
    bool isDamaged() const;
    /// Forgets all records: pointers to them die.
    void clear();

    /// Behind the others; a record of an id that is there already is not found by it.
    void appendMIProjectionParam(MIProjectionParam record);
    /// Likewise.
    void appendMIEllipsoidParam(MIEllipsoidParam record);
    /// Likewise.
    void appendMIDatumParam(MIDatumParam record);
    /// Likewise.
    void appendMIUnitConvParam(MIUnitConvParam record);
    /// Likewise.
    void appendMIAreaConvParam(MIAreaConvParam record);

    /// The first record with the id, null when there is none.
    const MIProjectionParam *projectionByID(int id) const;
    /// The same for ellipsoids.
    const MIEllipsoidParam *ellipsoidByID(int id) const;
    /// The same for datums.
    const MIDatumParam *datumByID(int id) const;
    /// Id of the first datum with the ellipsoid and equal figures (metres, arc-seconds in MapInfo's sign,
    /// ppm, degrees), -1 when there is none.
    int findDatumByParams(int ellipsoid, const std::array<double, 3> &shift,
                          const std::array<double, 3> &rotation, double scale, double pm) const;

    /// Linear units by id; the throwing form throws UnknownUnitException.
    const MIUnitConvParam *unitByID(int id, std::nothrow_t) const;
    const MIUnitConvParam *unitByID(int id) const;
    /// Linear units by unit name or localized name, letter case and all; double quotes are ignored, and a
    /// name that begins with a digit is taken for a number ("7x" is 0). The throwing form throws
    /// UnknownUnitException.
    const MIUnitConvParam *unitByName(const QString &name, std::nothrow_t) const;
    const MIUnitConvParam *unitByName(const QString &name) const;
    /// The first linear unit with exactly this description, null when there is none.
    const MIUnitConvParam *unitByDescr(const QString &description) const;
    /// Area units by id; the throwing form throws UnknownUnitException.
    const MIAreaConvParam *areaUnitByID(int id, std::nothrow_t) const;
    const MIAreaConvParam *areaUnitByID(int id) const;
    /// Area units by unit name or localized name as given: no number form, quotes count.
    const MIAreaConvParam *areaUnitByName(const QString &name, std::nothrow_t) const;
    const MIAreaConvParam *areaUnitByName(const QString &name) const;

    /// Copies in file order; distance units leave out degrees.
    QList<LinearUnit> coordinateUnits() const;
    /// Linear units but degrees.
    QList<LinearUnit> distanceUnits() const;
    /// Area units.
    QList<LinearUnit> areaUnits() const;

    /// The records in file order; borrowed.
    const std::vector<std::unique_ptr<MIProjectionParam>> &projections() const;
    /// Likewise.
    const std::vector<std::unique_ptr<MIEllipsoidParam>> &ellipsoids() const;
    /// Likewise.
    const std::vector<std::unique_ptr<MIDatumParam>> &datums() const;
    /// Likewise.
    const std::vector<std::unique_ptr<MIUnitConvParam>> &linearUnits() const;
    /// Likewise.
    const std::vector<std::unique_ptr<MIAreaConvParam>> &areaUnitRecords() const;

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
