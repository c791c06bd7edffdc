#pragma once

#include "MVPluginQtExport.h"

// Common base of the SDK objects.
class MVPLUGINQT_EXPORT CCoreBase
{
public:
    CCoreBase();
    virtual ~CCoreBase();
};
