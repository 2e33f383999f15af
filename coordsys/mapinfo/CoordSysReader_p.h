#pragma once

#include "CoordSysText_p.h"
#include <coordsys/TABProjInfo.h>

#include <QStringList>

namespace nivora::cs {

class ProjectionParamsManager;

/// The record of a text as MapHeaderCoordsysConverter::prjStrToTABProjInfo() says, and throws: text that is
/// no number counts as 0, an unknown unit as the metre.
TABProjInfo_t lenientRecord(const CoordSysText &text, const ProjectionParamsManager &manager);

/// What a system is made from.
struct CoordSysReading
{
    TABProjInfo_t record;
    QStringList assumptions; ///< sentences on what the text leaves open, for people
};

/// The record of a text that was understood to its last token. Throws what lenientRecord() throws, and
/// std::logic_error with token and place
/// - for a token in a number's place that is not wholly a finite number,
/// - for an empty place between commas, and a blank within a number,
/// - for a unit that the catalogue lacks,
/// - for figures behind the parameters that are not 0, and for whatever stands behind the last clause;
/// NotEnoughtParamsException where bounds or an affine clause are announced and not there.
/// Parameters left out at the end are 0, a scale 1; bounds may be written with any separators.
CoordSysReading understoodRecord(const CoordSysText &text, const ProjectionParamsManager &manager);

} // namespace nivora::cs
