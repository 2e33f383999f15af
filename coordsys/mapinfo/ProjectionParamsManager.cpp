#include <coordsys/ProjectionParamsManager.h>

#include "CatalogueRevision_p.h"
#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "InputFile_p.h"
#include "XmlElement_p.h"
#include <coordsys/ExportCoordSystemParamsToMitabInternal.h>
#include <platform/Logger.h>
#include <platform/Utils.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace nivora::cs {
namespace {

QString textOf(const XmlElement &e, const char *name) { return e.attribute(QLatin1String(name)); }
int intOf(const XmlElement &e, const char *name) { return textOf(e, name).toInt(); }
double doubleOf(const XmlElement &e, const char *name) { return textOf(e, name).toDouble(); }

/// Calls \p add for each entry of a section. A comment between entries ends the section: files in the field
/// switch their tails off that way. \p lineMessage has %1 for the entry's line.
template <typename Add> void readEntries(const XmlElement &section, const QString &lineMessage, Add add)
{
    for (const XmlElement &e : section.children) {
        if (e.name.isEmpty())
            return;
        const auto message = [&] { return lineMessage.arg(e.line); };
        try {
            add(e);
        } catch (const std::logic_error &error) {
            LOG_ERROR(CoordSysTexts::tr("%1: Ошибка %2").arg(message(), QString::fromUtf8(error.what())));
        } catch (...) {
            std::throw_with_nested(std::runtime_error(message().toStdString()));
        }
    }
}

/// Throws std::invalid_argument for an empty name or a negative factor.
void readUnit(const XmlElement &e, LinearUnit &unit)
{
    unit.setName(textOf(e, "name_mi"));
    unit.setLocalizedName(textOf(e, "name_l10n"));
    unit.setDescription(textOf(e, "descr"));
    unit.setConversion(doubleOf(e, "conv"));
    unit.setUnitCode(intOf(e, "id"));
}

template <typename Record, typename Matches>
const Record *firstThat(const std::vector<std::unique_ptr<Record>> &records, Matches matches)
{
    const auto found =
        std::find_if(records.begin(), records.end(), [&](const auto &r) { return matches(*r); });
    return found == records.end() ? nullptr : found->get();
}

template <typename Record>
const Record *firstWithId(const std::vector<std::unique_ptr<Record>> &records, int id)
{
    return firstThat(records, [id](const Record &r) { return r.id == id; });
}

template <typename Record>
const Record *firstWithName(const std::vector<std::unique_ptr<Record>> &records, const QString &name)
{
    return firstThat(records, [&](const Record &r) { return r.name() == name || r.localizedName() == name; });
}

template <typename Record, typename Key> const Record *orThrow(const Record *record, const Key &key)
{
    if (!record)
        throw UnknownUnitException(key);
    return record;
}

template <typename Record> void append(std::vector<std::unique_ptr<Record>> &records, Record record)
{
    ++catalogueRevision();
    records.push_back(std::make_unique<Record>(std::move(record)));
}

template <typename Record> QList<LinearUnit> copiesOf(const std::vector<std::unique_ptr<Record>> &records)
{
    QList<LinearUnit> units;
    units.reserve(static_cast<int>(records.size()));
    for (const auto &record : records)
        units.append(*record);
    return units;
}

void addProjections(const XmlElement &section, ProjectionParamsManager &manager)
{
    readEntries(section, CoordSysTexts::tr("Строка %1: Не удалось добавить проекцию"),
                [&](const XmlElement &e) {
                    MIProjectionParam record;
                    record.name = textOf(e, "name");
                    record.id = intOf(e, "id");
                    manager.appendMIProjectionParam(std::move(record));
                });
}

void addEllipsoids(const XmlElement &section, ProjectionParamsManager &manager)
{
    readEntries(section, CoordSysTexts::tr("Строка %1: Не удалось добавить эллипсоид"),
                [&](const XmlElement &e) {
                    MIEllipsoidParam record;
                    record.id = intOf(e, "id");
                    record.name = textOf(e, "name");
                    record.name_mitab = textOf(e, "name_mitab");
                    record.semi_major = doubleOf(e, "semi_major");
                    record.inv_flatenning = doubleOf(e, "inv_flatenning");
                    manager.appendMIEllipsoidParam(std::move(record));
                });
}

void addDatums(const XmlElement &section, ProjectionParamsManager &manager)
{
    static constexpr std::pair<const char *, double MIDatumParam::*> figures[] = {
        {"dx", &MIDatumParam::dx}, {"dy", &MIDatumParam::dy}, {"dz", &MIDatumParam::dz},
        {"rx", &MIDatumParam::rx}, {"ry", &MIDatumParam::ry}, {"rz", &MIDatumParam::rz},
        {"sa", &MIDatumParam::sa}, {"pm", &MIDatumParam::pm},
    };
    readEntries(section, CoordSysTexts::tr("Строка %1: Не удалось добавить датум"), [&](const XmlElement &e) {
        MIDatumParam record;
        record.id = intOf(e, "id");
        record.name = textOf(e, "name");
        record.name_mitab = textOf(e, "name_mitab");
        record.epsg_mitab = intOf(e, "epsg_mitab");
        record.ellipsoid = intOf(e, "ellipsoid");
        for (const auto &[name, member] : figures)
            record.*member = doubleOf(e, name);
        manager.appendMIDatumParam(std::move(record));
    });
}

void addLinearUnits(const XmlElement &section, ProjectionParamsManager &manager)
{
    readEntries(section, CoordSysTexts::tr("Строка %1: Не удалось добавить линейную единицу измерения"),
                [&](const XmlElement &e) {
                    MIUnitConvParam record;
                    readUnit(e, record);
                    record.id = intOf(e, "id");
                    record.name_proj4 = textOf(e, "name_proj4");
                    manager.appendMIUnitConvParam(std::move(record));
                });
}

void addAreaUnits(const XmlElement &section, ProjectionParamsManager &manager)
{
    readEntries(section, CoordSysTexts::tr("Строка %1: Не удалось добавить площадную единицу измерения"),
                [&](const XmlElement &e) {
                    MIAreaConvParam record;
                    readUnit(e, record);
                    record.id = intOf(e, "id");
                    manager.appendMIAreaConvParam(std::move(record));
                });
}

void readSections(const XmlElement &root, ProjectionParamsManager &manager)
{
    static constexpr std::pair<const char *, void (*)(const XmlElement &, ProjectionParamsManager &)>
        readers[] = {
            {"projections", addProjections}, {"ellipsoids", addEllipsoids}, {"datums", addDatums},
            {"units", addLinearUnits},       {"areas", addAreaUnits},
        };
    for (const XmlElement &section : root.children)
        for (const auto &[name, read] : readers)
            if (section.name == QLatin1String(name))
                read(section, manager);
}

} // namespace

struct NIVORA_CS_NO_EXPORT ProjectionParamsManager::Data
{
    std::vector<std::unique_ptr<MIProjectionParam>> projections;
    std::vector<std::unique_ptr<MIEllipsoidParam>> ellipsoids;
    std::vector<std::unique_ptr<MIDatumParam>> datums;
    std::vector<std::unique_ptr<MIUnitConvParam>> linearUnits;
    std::vector<std::unique_ptr<MIAreaConvParam>> areaUnits;
    bool isDamaged = false;
};

ProjectionParamsManager::ProjectionParamsManager()
    : m_data(std::make_unique<Data>())
{}

ProjectionParamsManager::~ProjectionParamsManager() = default;

bool ProjectionParamsManager::isDamaged() const { return m_data->isDamaged; }

const std::vector<std::unique_ptr<MIProjectionParam>> &ProjectionParamsManager::projections() const
{
    return m_data->projections;
}

const std::vector<std::unique_ptr<MIEllipsoidParam>> &ProjectionParamsManager::ellipsoids() const
{
    return m_data->ellipsoids;
}

const std::vector<std::unique_ptr<MIDatumParam>> &ProjectionParamsManager::datums() const
{
    return m_data->datums;
}

const std::vector<std::unique_ptr<MIUnitConvParam>> &ProjectionParamsManager::linearUnits() const
{
    return m_data->linearUnits;
}

const std::vector<std::unique_ptr<MIAreaConvParam>> &ProjectionParamsManager::areaUnitRecords() const
{
    return m_data->areaUnits;
}

bool ProjectionParamsManager::initFromXML()
{
    const auto catalogues = activeCatalogues();
    return initFromXML(catalogues->resourceDir(), catalogues->language());
}

bool ProjectionParamsManager::initFromXML(const QDir &dir, const QString &language)
{
    clear();
    m_data->isDamaged = false;
    QFile file(QFileInfo(dir, QStringLiteral("projection_%1.xml").arg(language)).filePath());
    if (!openInput(file).isEmpty()) {
        LOG_ERROR(CoordSysTexts::tr("Не могу открыть файл %1").arg(file.fileName()));
        return false;
    }
    LOG_INFO(CoordSysTexts::tr("Файл с параметрами проекций: %1").arg(file.fileName()));
    QString damage;
    try {
        XmlElement root;
        damage = readXml(file, root);
        m_data->isDamaged = !damage.isEmpty();
        if (!m_data->isDamaged) // half a catalogue would be worse than none
            readSections(root, *this);
    } catch (...) {
        std::throw_with_nested(std::runtime_error(
            CoordSysTexts::tr("Ошибка загрузки файла проекций %1").arg(file.fileName()).toStdString()));
    }
    LOG_DEBUG(QStringLiteral("projections=%1, ellipsoids=%2, datums=%3, lunits=%4, aunits=%5")
                  .arg(QString::number(m_data->projections.size()),
                       QString::number(m_data->ellipsoids.size()), QString::number(m_data->datums.size()),
                       QString::number(m_data->linearUnits.size()),
                       QString::number(m_data->areaUnits.size())));
    ExportCoordSystemParamsToMitabInternal::replaceEllipsoidParameters(m_data->ellipsoids);
    ExportCoordSystemParamsToMitabInternal::replaceDatumParameters(m_data->datums);
    if (m_data->isDamaged) // behind the driver's complaints: the last line names the cause
        LOG_ERROR(QStringLiteral("%1:%2").arg(file.fileName(), damage));
    return true;
}

void ProjectionParamsManager::clear()
{
    ++catalogueRevision();
    m_data->projections.clear();
    m_data->ellipsoids.clear();
    m_data->datums.clear();
    m_data->linearUnits.clear();
    m_data->areaUnits.clear();
}

void ProjectionParamsManager::appendMIProjectionParam(MIProjectionParam record)
{
    append(m_data->projections, std::move(record));
}

void ProjectionParamsManager::appendMIEllipsoidParam(MIEllipsoidParam record)
{
    append(m_data->ellipsoids, std::move(record));
}

void ProjectionParamsManager::appendMIDatumParam(MIDatumParam record)
{
    append(m_data->datums, std::move(record));
}

void ProjectionParamsManager::appendMIUnitConvParam(MIUnitConvParam record)
{
    append(m_data->linearUnits, std::move(record));
}

void ProjectionParamsManager::appendMIAreaConvParam(MIAreaConvParam record)
{
    append(m_data->areaUnits, std::move(record));
}

const MIProjectionParam *ProjectionParamsManager::projectionByID(int id) const
{
    return firstWithId(m_data->projections, id);
}

const MIEllipsoidParam *ProjectionParamsManager::ellipsoidByID(int id) const
{
    return firstWithId(m_data->ellipsoids, id);
}

const MIDatumParam *ProjectionParamsManager::datumByID(int id) const
{
    return firstWithId(m_data->datums, id);
}

int ProjectionParamsManager::findDatumByParams(int ellipsoid, const std::array<double, 3> &shift,
                                               const std::array<double, 3> &rotation, double scale,
                                               double pm) const
{
    const auto same = [](double a, double b) { return nivora::utils::fuzzyEq(a, b, 1e12); };
    const MIDatumParam *datum = firstThat(m_data->datums, [&](const MIDatumParam &d) {
        return d.ellipsoid == ellipsoid && same(d.dx, shift[0]) && same(d.dy, shift[1]) &&
               same(d.dz, shift[2]) && same(d.rx, rotation[0]) && same(d.ry, rotation[1]) &&
               same(d.rz, rotation[2]) && same(d.sa, scale) && same(d.pm, pm);
    });
    return datum ? datum->id : -1;
}

const MIUnitConvParam *ProjectionParamsManager::unitByID(int id, std::nothrow_t) const
{
    return firstWithId(m_data->linearUnits, id);
}

const MIUnitConvParam *ProjectionParamsManager::unitByID(int id) const
{
    return orThrow(unitByID(id, std::nothrow), id);
}

const MIUnitConvParam *ProjectionParamsManager::unitByName(const QString &name, std::nothrow_t) const
{
    const bool isNumber =
        !name.isEmpty() && name.front() >= QLatin1Char('0') && name.front() <= QLatin1Char('9');
    if (isNumber)
        return unitByID(name.toInt(), std::nothrow);
    QString bare = name;
    bare.remove(QLatin1Char('"'));
    return firstWithName(m_data->linearUnits, bare);
}

const MIUnitConvParam *ProjectionParamsManager::unitByName(const QString &name) const
{
    return orThrow(unitByName(name, std::nothrow), name);
}

const MIUnitConvParam *ProjectionParamsManager::unitByDescr(const QString &description) const
{
    return firstThat(m_data->linearUnits,
                     [&](const MIUnitConvParam &u) { return u.description() == description; });
}

const MIAreaConvParam *ProjectionParamsManager::areaUnitByID(int id, std::nothrow_t) const
{
    return firstWithId(m_data->areaUnits, id);
}

const MIAreaConvParam *ProjectionParamsManager::areaUnitByID(int id) const
{
    return orThrow(areaUnitByID(id, std::nothrow), id);
}

const MIAreaConvParam *ProjectionParamsManager::areaUnitByName(const QString &name, std::nothrow_t) const
{
    return firstWithName(m_data->areaUnits, name);
}

const MIAreaConvParam *ProjectionParamsManager::areaUnitByName(const QString &name) const
{
    return orThrow(areaUnitByName(name, std::nothrow), name);
}

QList<LinearUnit> ProjectionParamsManager::coordinateUnits() const { return copiesOf(m_data->linearUnits); }

QList<LinearUnit> ProjectionParamsManager::distanceUnits() const
{
    QList<LinearUnit> units;
    for (const auto &record : m_data->linearUnits)
        if (record->id != LinearUnit::Degree)
            units.append(*record);
    return units;
}

QList<LinearUnit> ProjectionParamsManager::areaUnits() const { return copiesOf(m_data->areaUnits); }

} // namespace nivora::cs
