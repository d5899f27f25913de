// GS::Array<T>: the host's growable array, as far as add-ons use it: the host fills one the add-on
// owns (the active libraries of 'GLIB'), the add-on reads it by index. Elements are kept by value and
// in order; copies are deep. The whole template lives in this header, so the add-on and the host
// share one layout.
#pragma once

#include "GSRoot.hpp"

#include <utility>
#include <vector>

namespace GS {

template <class T>
class Array {
public:
    Array() = default;

    // Number of elements.
    USize GetSize() const { return static_cast<USize>(items.size()); }
    bool IsEmpty() const { return items.empty(); }

    // Element `index` (0-based); `index` must be below GetSize().
    T& operator[](UIndex index) { return items[index]; }
    const T& operator[](UIndex index) const { return items[index]; }

    // Appends a copy of `item` (or takes it over).
    void Push(const T& item) { items.push_back(item); }
    void Push(T&& item) { items.push_back(std::move(item)); }
    // Removes every element.
    void Clear() { items.clear(); }

    typename std::vector<T>::iterator begin() { return items.begin(); }
    typename std::vector<T>::iterator end() { return items.end(); }
    typename std::vector<T>::const_iterator begin() const { return items.begin(); }
    typename std::vector<T>::const_iterator end() const { return items.end(); }

private:
    std::vector<T> items;
};

} // namespace GS
