#pragma once

// The one door to the utility library: the host's own, or the stand-ins beside this file.

#ifdef NIVORA_EXTERNAL_UTILS
#include <nivora/utils/Utils.h>
#else
#include <platform/utils/CachedValue.h>
#include <platform/utils/ProgressHandler.h>
#include <platform/utils/Utils.h>
#endif
