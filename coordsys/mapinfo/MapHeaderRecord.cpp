#include <coordsys/MapHeaderRecord.h>

#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Utils.h>

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace nivora::cs {
namespace {

constexpr int shortHeader = 512;
constexpr int longHeader = 1024;
constexpr std::int32_t cookie = 42424242;
constexpr double integerLimit = 1e9; ///< coordinates are whole numbers from -1e9 to 1e9
constexpr int oldScaleVersion = 100; ///< up to this one the scale is a power of ten
constexpr int junkVersion = 200;     ///< up to this one nothing stands behind the shift
constexpr int fullVersion = 500;     ///< from this one on: datum number, affine transformation

bool hasSeventhParameter(const TABProjInfo_t &record)
{
    const Projection *const row = projectionByNumber(record.nProjId);
    return row && row->overflowsRecord();
}

enum Offset : int {
    Cookie = 0x100,
    Version = 0x104,
    BlockSize = 0x106,
    Precision = 0x160,
    Quadrant = 0x161,
    DatumNumber = 0x16a,
    Projection = 0x16d,
    Ellipsoid = 0x16e,
    Unit = 0x16f,
    Scale = 0x170,
    Displacement = 0x180,
    Parameters = 0x190,
    Shift = 0x1c0,
    DatumFigures = 0x1d8,
    AffineFlag = 0x200,
    AffineUnit = 0x201,
    AffineFigures = 0x208,
    SeventhParameter = 0x268,
};

std::runtime_error damaged(const QString &reason)
{
    return std::runtime_error(
        CoordSysTexts::tr("Повреждён заголовок файла карты: %1").arg(reason).toStdString());
}

/// The bytes of a header; numbers are little-endian and not aligned.
class Header
{
public:
    explicit Header(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
        if (m_bytes.size() < shortHeader)
            throw damaged(CoordSysTexts::tr("файл слишком короток"));
        if (integer<std::int32_t>(Cookie) != cookie)
            throw damaged(CoordSysTexts::tr("нет опознавательного числа"));
        if (integer<std::int16_t>(BlockSize) < shortHeader)
            throw damaged(CoordSysTexts::tr("неверный размер блока"));
    }

    template <typename T> T integer(int offset) const
    {
        return qFromLittleEndian<T>(m_bytes.constData() + offset);
    }
    double number(int offset) const
    {
        const auto bits = integer<quint64>(offset);
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value))
            throw damaged(CoordSysTexts::tr("не число"));
        return value;
    }
    void setByte(int offset, std::uint8_t value) { m_bytes[offset] = static_cast<char>(value); }
    void setShort(int offset, std::int16_t value) { qToLittleEndian(value, m_bytes.data() + offset); }
    void setNumber(int offset, double value)
    {
        quint64 bits = 0;
        std::memcpy(&bits, &value, sizeof value);
        qToLittleEndian(bits, m_bytes.data() + offset);
    }

    int version() const { return integer<std::int16_t>(Version); }
    bool hasSecondPart() const
    {
        return version() >= fullVersion && integer<std::int16_t>(BlockSize) > shortHeader &&
               m_bytes.size() >= longHeader;
    }
    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

struct Reader
{
    const Header &header;
    void byte(int offset, std::uint8_t &value) { value = header.integer<std::uint8_t>(offset); }
    void number(int offset, double &value) { value = header.number(offset); }
};

struct Writer
{
    Header &header;
    void byte(int offset, const std::uint8_t &value) { header.setByte(offset, value); }
    void number(int offset, const double &value) { header.setNumber(offset, value); }
};

template <typename Io, typename Array> void numbers(Io &io, int offset, Array &values)
{
    for (auto &value : values) {
        io.number(offset, value);
        offset += static_cast<int>(sizeof(double));
    }
}

/// What reading and writing share.
template <typename Io, typename Record> void walk(Io &&io, int version, Record &r)
{
    io.byte(Projection, r.nProjId);
    io.byte(Ellipsoid, r.nEllipsoidId);
    io.byte(Unit, r.nUnitsId);
    numbers(io, Parameters, r.adProjParams);
    io.number(Shift, r.dDatumShiftX);
    io.number(Shift + 8, r.dDatumShiftY);
    io.number(Shift + 16, r.dDatumShiftZ);
    if (version > junkVersion)
        numbers(io, DatumFigures, r.adDatumParams);
}

template <typename Io, typename Record> void walkSecondPart(Io &&io, Record &r)
{
    io.byte(AffineFlag, r.projection.nAffineFlag);
    io.byte(AffineUnit, r.projection.nAffineUnits);
    numbers(io, AffineFigures, r.projection.dAffineParams);
    io.number(SeventhParameter, r.seventhParameter);
}

/// One axis: which coordinates the whole numbers ±1e9 stand for. A reflected axis has its origin reflected
/// with it.
std::pair<double, double> rangeOf(const Header &header, int axis, bool reflected)
{
    const bool old = header.version() <= oldScaleVersion;
    const double scale =
        old ? std::pow(10.0, header.integer<std::uint8_t>(Precision)) : header.number(Scale + 8 * axis);
    const double displacement = old ? 0.0 : header.number(Displacement + 8 * axis);
    if (scale == 0.0)
        throw damaged(CoordSysTexts::tr("нулевой масштаб"));
    const auto coordinate = [=](double whole) {
        return reflected ? -(whole + displacement) / scale : (whole - displacement) / scale;
    };
    return std::minmax({coordinate(-integerLimit), coordinate(integerLimit)});
}

/// Scale and origin were computed from the bounds; this takes their rounding away, far below the step of the
/// whole numbers.
void snap(double &low, double &high)
{
    constexpr int digits = 13;
    constexpr int mostDecimals = 300;
    const int decimals = digits - static_cast<int>(std::floor(std::log10(high - low)));
    for (double *bound : {&low, &high})
        *bound = QString::number(*bound, 'f', std::clamp(decimals, 0, mostDecimals)).toDouble();
}

/// False for NaN and for what a damaged scale makes infinite.
bool hasExtent(double low, double high) { return low < high && std::isfinite(high - low); }

void setBounds(const Header &header, TABProjInfo_t &r)
{
    const int quadrant = header.integer<std::uint8_t>(Quadrant);
    std::tie(r.dXMin, r.dXMax) = rangeOf(header, 0, quadrant == 0 || quadrant == 2 || quadrant == 3);
    std::tie(r.dYMin, r.dYMax) = rangeOf(header, 1, quadrant == 0 || quadrant == 3 || quadrant == 4);
    r.nBoundsFlag = hasExtent(r.dXMin, r.dXMax) && hasExtent(r.dYMin, r.dYMax);
    if (!r.nBoundsFlag)
        return;
    snap(r.dXMin, r.dXMax);
    snap(r.dYMin, r.dYMax);
}

int datumByFigures(const TABProjInfo_t &r, const ProjectionParamsManager &manager)
{
    const double *p = r.adDatumParams;
    const int found = manager.findDatumByParams(
        r.nEllipsoidId, {r.dDatumShiftX, r.dDatumShiftY, r.dDatumShiftZ}, {p[0], p[1], p[2]}, p[3], p[4]);
    if (found >= 0)
        return found;
    return std::all_of(p, p + 5, [](double figure) { return figure == 0.0; }) ? 999 : 9999;
}

void setDatum(const Header &header, TABProjInfo_t &r)
{
    const auto manager = activeCatalogues()->projectionParamsManager();
    const int written = header.version() >= fullVersion ? header.integer<std::int16_t>(DatumNumber) : 0;
    const bool isKnown = isUserDatum(written) || (written > 0 && manager->datumByID(written));
    r.nDatumId = static_cast<std::int16_t>(isKnown ? written : datumByFigures(r, *manager));
}

QByteArray headerBytes(QIODevice &device) { return device.read(longHeader); }

void openOrThrow(QFile &file, QIODevice::OpenMode mode)
{
    if (!file.open(mode))
        throw std::runtime_error(CoordSysTexts::tr("Не могу открыть файл %1: %2")
                                     .arg(file.fileName(), file.errorString())
                                     .toStdString());
}

} // namespace

MapHeaderRecord readMapHeader(QIODevice &device)
{
    const Header header(headerBytes(device));
    MapHeaderRecord record;
    TABProjInfo_t &r = record.projection;
    walk(Reader{header}, header.version(), r);
    if (!projectionByNumber(r.nProjId))
        throw damaged(CoordSysTexts::tr("неизвестная проекция"));
    if (header.hasSecondPart())
        walkSecondPart(Reader{header}, record);
    r.nAffineFlag = r.nAffineFlag != 0;
    setBounds(header, r);
    if (r.nProjId != 0)
        setDatum(header, r);
    return record;
}

MapHeaderRecord readMapHeader(const QString &path)
{
    QFile file(path);
    if (QFileInfo(path).exists() && !QFileInfo(path).isFile()) // a FIFO would be waited for
        throw damaged(CoordSysTexts::tr("это не файл"));
    openOrThrow(file, QIODevice::ReadOnly);
    return readMapHeader(file);
}

void replaceMapHeader(const QString &path, const MapHeaderRecord &record)
{
    QFile file(path);
    openOrThrow(file, QIODevice::ReadWrite);
    Header header(headerBytes(file));
    const TABProjInfo_t &r = record.projection;
    const bool needsSecondPart = r.nAffineFlag || hasSeventhParameter(r);
    if (header.version() < fullVersion || (needsSecondPart && !header.hasSecondPart()))
        throw std::runtime_error(
            CoordSysTexts::tr("Файл карты не может содержать такую систему координат: %1")
                .arg(path)
                .toStdString());
    walk(Writer{header}, header.version(), r);
    header.setShort(DatumNumber, std::max<std::int16_t>(r.nDatumId, 0));
    if (header.hasSecondPart())
        walkSecondPart(Writer{header}, record);
    if (!file.seek(0) || file.write(header.bytes()) != header.bytes().size() || !file.flush())
        throw std::runtime_error(
            CoordSysTexts::tr("Не могу записать файл %1: %2").arg(path, file.errorString()).toStdString());
}

QString coordSysText(const MapHeaderRecord &record)
{
    const MapHeaderCoordsysConverter converter;
    const QString text = converter.tabProjInfoToString(record.projection);
    if (!hasSeventhParameter(record.projection))
        return text;
    TABProjInfo_t bare = record.projection;
    bare.nAffineFlag = bare.nBoundsFlag = 0;
    const int ownPart = converter.tabProjInfoToString(bare).size();
    return QStringLiteral("%1, %2%3")
        .arg(text.left(ownPart), nivora::utils::toString(record.seventhParameter), text.mid(ownPart));
}

} // namespace nivora::cs
