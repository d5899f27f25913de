// XN_List<T>: the framework's sequence container.
//
// Elements are kept by value, back to back, in one relocatable host memory block (a BM handle) whose
// size is always exactly `count` elements: every insertion and deletion reallocates the block by one
// element. Because the block can move, elements are moved as raw bytes: T must survive a bitwise move
// (no pointers into itself). Elements are constructed and destroyed in place by the list.
//
// A list whose block could not be (re)allocated is inert: it is empty, holds no block, and
// insertions do nothing. Operations report no errors; memory exhaustion while copying an element
// propagates as the allocator's exception, with the list left as it was before the call.
#pragma once

#include "BM.hpp"

#include <climits>
#include <cstring>
#include <exception>
#include <new>
#include <type_traits>

template <typename T>
class XN_List {
public:
    long count;    // number of elements in use
    GSHandle data; // the elements' block, `count` * sizeof(T) bytes; null when the list is inert

    // An empty list with an empty block (inert if the block cannot be allocated).
    XN_List() : count(0), data(BMAllocateHandle(0, 0, 0)) {}

    // Copies every element into a block of its own; the copy is inert when the source is or when
    // its block cannot be allocated.
    XN_List(const XN_List& other) : count(0), data(nullptr) {
        if (other.data == nullptr)
            return;
        data = BMAllocateHandle(BlockBytes(other.count), 0, 0);
        if (data == nullptr)
            return;
        try {
            HandleLock mine(data);
            HandleLock theirs(other.data);
            for (long i = 0; i < other.count; ++i) {
                ConstructAt(i, other.ElementAt(i));
                count = i + 1;
            }
        } catch (...) {
            ReleaseBlock();
            throw;
        }
    }

    XN_List& operator=(const XN_List& other) {
        XN_List copy(other);
        std::swap(count, copy.count);
        std::swap(data, copy.data);
        return *this;
    }

    virtual ~XN_List() { ReleaseBlock(); }

    // Inserts a copy of `element` so that it ends up at `index`. Only -1 means "append"; any other
    // index must lie within 0..count (not checked: callers pass -1 or a valid position).
    void AddData(T element, long index) {
        if (data == nullptr)
            return;
        if (index == -1)
            index = count;
        if (!ResizeBlock(count + 1))
            return;
        try {
            HandleLock lock(data);
            if (index < count)
                std::memmove(SlotBytes(index + 1), SlotBytes(index), BlockBytes(count - index));
            ConstructAt(index, element);
        } catch (...) {
            {
                HandleLock lock(data);
                CloseGap(index, count + 1);
            }
            ResizeBlock(count);
            throw;
        }
        ++count;
    }

    // Removes the element at `index`; an index outside 0..count-1 is ignored.
    void DeleteData(const long& index) {
        if (data == nullptr || index < 0 || index >= count)
            return;
        {
            HandleLock lock(data);
            ElementAt(index).~T();
            CloseGap(index, count);
        }
        --count;
        ResizeBlock(count);
    }

    // Removes every element; the block is kept, shrunk to size 0.
    void Reset() {
        if (data != nullptr) {
            DestroyElements();
            count = 0;
            ResizeBlock(0);
        }
        count = 0;
    }

    // Appends `n` elements at once, element i constructed in place from make(i) (called for i = 0 to
    // n - 1 in order): one resize of the block for all of them. With `replace` the list's elements
    // are destroyed first, within the same resize. Memory exhaustion while making an element
    // propagates, leaving the elements held before the call (none with `replace`).
    template <class Make>
    void AppendMade(long n, Make make, bool replace = false) {
        if (data == nullptr)
            return;
        if (replace && count > 0) {
            DestroyElements();
            count = 0;
        }
        const long first = count;
        if (n <= 0) {
            if (replace)
                ResizeBlock(0);
            return;
        }
        if (!ResizeBlock(first + n))
            return;
        std::exception_ptr failure;
        {
            HandleLock lock(data);
            long made = 0;
            try {
                for (; made < n; ++made) {
                    std::memset(static_cast<void*>(SlotBytes(first + made)), 0, sizeof(T));
                    new (SlotBytes(first + made)) T(make(made));
                }
            } catch (...) {
                for (long i = 0; i < made; ++i)
                    ElementAt(first + i).~T();
                failure = std::current_exception();
            }
        }
        if (failure) {
            ResizeBlock(first);
            std::rethrow_exception(failure);
        }
        count = first + n;
    }

    // For lists of plain numbers: resizes to `newCount` elements (a negative count counts as 0).
    // With `keep` the first elements keep their values and added ones are 0; without, all are 0.
    // An inert list gets a new block.
    void SetSize(long newCount, bool keep) {
        static_assert(std::is_trivially_copyable<T>::value, "SetSize is for lists of plain values");
        if (newCount < 0)
            newCount = 0;
        const long oldCount = count;
        if (data != nullptr ? !ResizeBlock(newCount) : !AllocateBlock(newCount))
            return;
        count = newCount;
        const long firstZero = keep ? (oldCount < newCount ? oldCount : newCount) : 0;
        std::memset(SlotBytes(firstZero), 0, BlockBytes(newCount - firstZero));
    }

    // Linear search in ascending index order: true with the index of the first element for which
    // `match(pointer to the element, userData)` is true; false with `foundIndex` -1 otherwise. The
    // pointer points into the locked block and is valid only during the call.
    bool Search(bool (*match)(char* element, void* userData), long& foundIndex, void* userData) {
        foundIndex = -1;
        if (data == nullptr || match == nullptr)
            return false;
        HandleLock lock(data);
        for (long i = 0; i < count; ++i) {
            if (match(SlotBytes(i), userData)) {
                foundIndex = i;
                return true;
            }
        }
        return false;
    }

    long GetCount() const { return count; }

    // Copies the element at `index` into `value`; false (and `value` unchanged) when out of range.
    bool GetData(long index, T& value) const {
        if (data == nullptr || index < 0 || index >= count)
            return false;
        HandleLock lock(data);
        value = ElementAt(index);
        return true;
    }

    // The element at `index`, or null when out of range. The pointer is valid until the list changes
    // size (the block may move), unless the caller keeps the block locked.
    T* GetPtr(long index) {
        return data != nullptr && index >= 0 && index < count ? &ElementAt(index) : nullptr;
    }
    const T* GetPtr(long index) const {
        return data != nullptr && index >= 0 && index < count ? &ElementAt(index) : nullptr;
    }

    // The element at `index`, which must lie within 0..count-1; valid as GetPtr's result is.
    T& operator[](long index) { return ElementAt(index); }
    const T& operator[](long index) const { return ElementAt(index); }

private:
    // Locks a block for the scope and then restores the lock state it had before.
    class HandleLock {
    public:
        explicit HandleLock(GSHandle handle)
            : handle(handle), old(BMModifyHandleState(handle, HANDLE_STATE_LOCK, 0)) {}
        ~HandleLock() { BMModifyHandleState(handle, old, ~old); }
        HandleLock(const HandleLock&) = delete;
        HandleLock& operator=(const HandleLock&) = delete;

    private:
        GSHandle handle;
        GSFlags old;
    };

    // Blocks are limited to GSSize bytes.
    static constexpr long kMaxCount = INT_MAX / static_cast<long>(sizeof(T));

    static GSSize BlockBytes(long elements) { return static_cast<GSSize>(elements * sizeof(T)); }
    char* SlotBytes(long index) const { return *data + index * static_cast<long>(sizeof(T)); }
    T& ElementAt(long index) const { return *reinterpret_cast<T*>(SlotBytes(index)); }

    // Zeroes the slot, then copy-constructs `element` in it.
    void ConstructAt(long index, const T& element) {
        std::memset(static_cast<void*>(SlotBytes(index)), 0, sizeof(T));
        new (SlotBytes(index)) T(element);
    }

    // Moves the elements in slots index + 1 .. used - 1 down by one place, over the slot at `index`.
    // The block must be locked.
    void CloseGap(long index, long used) {
        if (index + 1 < used)
            std::memmove(SlotBytes(index), SlotBytes(index + 1), BlockBytes(used - index - 1));
    }

    void DestroyElements() {
        HandleLock lock(data);
        for (long i = 0; i < count; ++i)
            ElementAt(i).~T();
    }

    // Destroys the elements and releases the block: the list becomes inert.
    void ReleaseBlock() {
        if (data != nullptr) {
            DestroyElements();
            BMKillHandle(&data);
        }
        count = 0;
    }

    bool AllocateBlock(long elements) {
        data = elements <= kMaxCount ? BMAllocateHandle(BlockBytes(elements), 0, 0) : nullptr;
        if (data == nullptr)
            count = 0;
        return data != nullptr;
    }

    // Resizes the block to `elements` elements. When the host refuses, it keeps the old block
    // unchanged: the live elements in it are destroyed and the block released, so the list becomes
    // inert without leaking what it held.
    bool ResizeBlock(long elements) {
        GSHandle resized =
            elements <= kMaxCount ? BMReallocHandle(data, BlockBytes(elements), 0, 0) : nullptr;
        if (resized == nullptr) {
            ReleaseBlock();
            return false;
        }
        data = resized;
        return true;
    }
};
