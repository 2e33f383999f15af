#pragma once

// The one door to the logging library: the host's CuteLogger, or the stand-in over Qt's logging categories.

#ifdef NIVORA_EXTERNAL_CUTELOGGER
#include <Logger.h>
#else
#include <platform/logger/CuteLogger.h>
#endif
