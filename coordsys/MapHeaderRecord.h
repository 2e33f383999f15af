#pragma once

#include <coordsys/TABProjInfo.h>

#include <QByteArray>

namespace nivora::cs {

/// The projection record in the header of a MapInfo .map file, without bounds: those that a file was made
/// with belong to the file. \p header is its first 1024 bytes (512 in files without an affine part). Throws
/// std::runtime_error when it is shorter than 512 bytes or no header. Stateless; thread-safe.
NIVORA_CS_EXPORT TABProjInfo_t mapHeaderRecord(const QByteArray &header);

} // namespace nivora::cs
