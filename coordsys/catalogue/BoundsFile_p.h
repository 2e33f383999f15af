#pragma once

#include <coordsys/TABProjInfo.h>

#include <QByteArray>
#include <QString>

#include <vector>

namespace nivora::cs {

/// The records of "cs_mbr.xml", in its order; those without finite bounds are left out. None where the XML is
/// damaged, which is logged under \p fileName.
std::vector<TABProjInfo_t> boundsIn(const QByteArray &xml, const QString &fileName);

} // namespace nivora::cs
