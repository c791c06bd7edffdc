#pragma once

#include "QVArrayList.h"

namespace QV {

// The SDK only declares the handle; this host's handle names one scene object by index.
// A scene never removes objects, so a handle stays valid for the life of its scene.
class CHandle
{
public:
    explicit CHandle(int index) : m_iIndex(index) {}
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;

    int Index() const { return m_iIndex; }

private:
    int m_iIndex;
};

} // namespace QV
