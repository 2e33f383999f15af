#pragma once

#include <coordsys/TABProjInfo.h>

#include <QString>

class QIODevice;

namespace nivora::cs {

/// The projection record in the header of a MapInfo table's .map file.
struct MapHeaderRecord
{
    TABProjInfo_t projection;      ///< with the affine clause and the bounds that the file was made with
    double seventhParameter = 0.0; ///< of projection 35, which has no room in the record
};

/// Reads the record from the start of a device, at most 1024 bytes. The datum of files older than version
/// 500, which have no number for it, and of one that the active catalogue does not know, is found by
/// ellipsoid and figures; it is 999 or 9999 when the catalogue has none.
/// Throws std::runtime_error "Повреждён заголовок файла карты: …" for what is no such header: shorter than
/// 512 bytes, without its cookie, with a scale of 0 or a number that is not finite. Thread-safe.
NIVORA_CS_EXPORT MapHeaderRecord readMapHeader(QIODevice &device);
/// The same from a file; also throws std::runtime_error "Не могу открыть файл …".
NIVORA_CS_EXPORT MapHeaderRecord readMapHeader(const QString &path);

/// Replaces projection, ellipsoid, unit, parameters and datum in an existing file of version 500 or later;
/// what the coordinates are counted by (scale, origin, and so the bounds) stays. Throws like readMapHeader,
/// and std::runtime_error "Файл карты не может содержать …" for an affine transformation where the header has
/// no room for it; the file is unchanged then.
NIVORA_CS_EXPORT void replaceMapHeader(const QString &path, const MapHeaderRecord &record);

/// The record as a CoordSys string, as MapHeaderCoordsysConverter::tabProjInfoToString with all parameters.
NIVORA_CS_EXPORT QString coordSysText(const MapHeaderRecord &record);

} // namespace nivora::cs
