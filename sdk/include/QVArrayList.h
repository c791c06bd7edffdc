#pragma once

#include "QVResult.h"

#include <cstddef>
#include <initializer_list>
#include <new>
#include <utility>
#include <vector>

namespace QV {

// Ordered, contiguous list. Growth failures come back as results, never as exceptions,
// because these lists cross the plug-in boundary.
template <typename T>
class CArrayList
{
public:
    CArrayList() = default;
    CArrayList(std::initializer_list<T> items) : m_kItems(items) {}

    int GetCount() const { return static_cast<int>(m_kItems.size()); }
    bool IsEmpty() const { return m_kItems.empty(); }

    T& operator[](int index) { return m_kItems[static_cast<std::size_t>(index)]; }
    const T& operator[](int index) const { return m_kItems[static_cast<std::size_t>(index)]; }

    Result Add(const T& item)
    {
        try {
            m_kItems.push_back(item);
        } catch (const std::bad_alloc&) {
            return kOutOfMemory;
        } catch (...) {
            return kFail;
        }
        return kOk;
    }

    Result Add(T&& item)
    {
        try {
            m_kItems.push_back(std::move(item));
        } catch (const std::bad_alloc&) {
            return kOutOfMemory;
        } catch (...) {
            return kFail;
        }
        return kOk;
    }

    Result Reserve(int count)
    {
        if (count < 0) {
            return kOutOfRange;
        }
        try {
            m_kItems.reserve(static_cast<std::size_t>(count));
        } catch (...) {
            return kOutOfMemory;
        }
        return kOk;
    }

    Result RemoveAt(int index)
    {
        if (index < 0 || index >= GetCount()) {
            return kOutOfRange;
        }
        m_kItems.erase(m_kItems.begin() + index);
        return kOk;
    }

    Result Get(int index, T& out) const
    {
        if (index < 0 || index >= GetCount()) {
            return kOutOfRange;
        }
        out = m_kItems[static_cast<std::size_t>(index)];
        return kOk;
    }

    void Clear() { m_kItems.clear(); }

    int IndexOf(const T& item) const
    {
        for (std::size_t i = 0; i < m_kItems.size(); ++i) {
            if (m_kItems[i] == item) {
                return static_cast<int>(i);
            }
        }
        return -1;
    }

    bool Contains(const T& item) const { return IndexOf(item) >= 0; }

    typename std::vector<T>::iterator begin() { return m_kItems.begin(); }
    typename std::vector<T>::iterator end() { return m_kItems.end(); }
    typename std::vector<T>::const_iterator begin() const { return m_kItems.begin(); }
    typename std::vector<T>::const_iterator end() const { return m_kItems.end(); }

    bool operator==(const CArrayList& other) const { return m_kItems == other.m_kItems; }
    bool operator!=(const CArrayList& other) const { return m_kItems != other.m_kItems; }

private:
    std::vector<T> m_kItems;
};

// Opaque scene object; only the host knows what is behind it. Compared by identity.
class CHandle;

} // namespace QV
