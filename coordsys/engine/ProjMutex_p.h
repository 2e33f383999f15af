#pragma once

#include <coordsys/ProjEngine.h>

#include <QMutexLocker>

namespace nivora::cs {

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
inline ProjMutex *newProjMutex() { return new ProjMutex; }
using ProjLocker = QMutexLocker<ProjMutex>;
#else
inline ProjMutex *newProjMutex() { return new ProjMutex(QMutex::Recursive); }
using ProjLocker = QMutexLocker;
#endif

} // namespace nivora::cs
