#pragma once

#include <QtCore/qglobal.h>

// Host applications a plug-in can run in; a plug-in returns a combination of these bits.
enum ECompatibleApp : quint32
{
    CompatibleApp_Mirava = 0x00000001,
    CompatibleApp_MiravaPipeline = 0x00000002,
    CompatibleApp_MiravaTrial = 0x00000004,
    CompatibleApp_Figmora = 0x00800000,
    CompatibleApp_FigmoraPipeline = 0x01000000,
};
