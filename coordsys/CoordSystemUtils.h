#pragma once

// The free functions of the library under one name. Sources of the library include the smaller headers.

#include <coordsys/CoordSysEnvironment.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/EpsgCandidates.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ShiftQuality.h>
#include <coordsys/SourceTags.h>
#include <coordsys/SpatialReferenceText.h>
