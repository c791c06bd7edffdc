#pragma once

#include <QtCore/qglobal.h>

#if defined(MVPLUGINQT_BUILD)
#define MVPLUGINQT_EXPORT Q_DECL_EXPORT
#else
#define MVPLUGINQT_EXPORT Q_DECL_IMPORT
#endif
