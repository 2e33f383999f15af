#include <coordsys/MapHeaderRecord.h>

#include <QObject>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int leastBytes = 512;
constexpr qint32 cookie = 42424242;

/// Offsets from the start of the file; numbers are little-endian.
enum Offset {
    CookieAt = 0x100,
    VersionAt = 0x104,
    BlockSizeAt = 0x106,
    DatumAt = 0x16a,
    ProjectionAt = 0x16d,
    EllipsoidAt = 0x16e,
    UnitAt = 0x16f,
    ParametersAt = 0x190,
    ShiftAt = 0x1c0,
    DatumFiguresAt = 0x1d8,
    HasAffineAt = 0x200,
    AffineUnitAt = 0x201,
    AffineAt = 0x208,
    AffineEnd = 0x238,
};

constexpr int firstWithDatumFigures = 300; ///< earlier versions have junk there
constexpr int firstWithDatumNumber = 500;  ///< and with an affine part

template <typename T> T numberAt(const QByteArray &header, int offset)
{
    return qFromLittleEndian<T>(header.constData() + offset);
}

double doubleAt(const QByteArray &header, int offset)
{
    const auto bits = numberAt<quint64>(header, offset);
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

template <std::size_t N> void readDoubles(const QByteArray &header, int offset, double (&values)[N])
{
    for (double &value : values) {
        value = doubleAt(header, offset);
        offset += static_cast<int>(sizeof value);
    }
}

void readAffine(const QByteArray &header, TABProjInfo_t &info)
{
    if (header.size() < AffineEnd || numberAt<quint16>(header, BlockSizeAt) <= leastBytes ||
        header.at(HasAffineAt) == 0)
        return;
    info.nAffineFlag = 1;
    info.nAffineUnits = static_cast<std::uint8_t>(header.at(AffineUnitAt));
    readDoubles(header, AffineAt, info.dAffineParams);
}

} // namespace

TABProjInfo_t mapHeaderRecord(const QByteArray &header)
{
    if (header.size() < leastBytes || numberAt<qint32>(header, CookieAt) != cookie)
        throw std::runtime_error(QObject::tr("Это не заголовок файла MAP").toStdString());
    const int version = numberAt<qint16>(header, VersionAt);
    TABProjInfo_t info;
    info.nProjId = static_cast<std::uint8_t>(header.at(ProjectionAt));
    info.nEllipsoidId = static_cast<std::uint8_t>(header.at(EllipsoidAt));
    info.nUnitsId = static_cast<std::uint8_t>(header.at(UnitAt));
    readDoubles(header, ParametersAt, info.adProjParams);
    info.dDatumShiftX = doubleAt(header, ShiftAt);
    info.dDatumShiftY = doubleAt(header, ShiftAt + 8);
    info.dDatumShiftZ = doubleAt(header, ShiftAt + 16);
    if (version >= firstWithDatumFigures)
        readDoubles(header, DatumFiguresAt, info.adDatumParams);
    info.nDatumId = version >= firstWithDatumNumber ? numberAt<qint16>(header, DatumAt) : qint16{0};
    if (version >= firstWithDatumNumber)
        readAffine(header, info);
    return info;
}

} // namespace nivora::cs
