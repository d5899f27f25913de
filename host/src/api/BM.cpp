// Relocatable memory blocks. Each handle points to the first member of a Block record, its master
// pointer; the record stays put while the block it points to may move. Live records are kept in a
// registry so that a handle released twice is reported instead of corrupting memory.
#include "BM.hpp"

#include "BMInternal.hpp"
#include "achost/Faults.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_set>

namespace {

struct Block {
    char* ptr; // the master pointer: must stay the first member, the handle points to it
    GSSize size;
    GSSize room; // bytes actually allocated; a locked block can change size within it
    GSFlags state;
};

std::mutex sMutex;
std::unordered_set<Block*> sLiveBlocks;
long sMisuseCount = 0;
int sAllocationFailIn = 0;
int sReallocationFailIn = 0;
bool sMoveOnEveryReallocation = false;
thread_local GSErr sLastError = NoError;

GSHandle HandleOf(Block* block) {
    return &block->ptr;
}

// The live record of `h`, or null (reported as a misuse) when `h` is not a live handle.
Block* LiveBlock(const void* h, const char* caller) {
    Block* block = reinterpret_cast<Block*>(const_cast<void*>(h));
    if (sLiveBlocks.count(block) != 0)
        return block;
    ++sMisuseCount;
    std::fprintf(stderr, "achost: %s: %p is not a live memory handle\n", caller, h);
    return nullptr;
}

// malloc(0) may answer null, which would look like a failure: an empty block gets one byte of room.
char* AllocateBytes(GSSize nBytes) {
    return static_cast<char*>(std::malloc(std::max<GSSize>(nBytes, 1)));
}

GSHandle Fail(GSErr error) {
    sLastError = error;
    return nullptr;
}

void ReleaseBlock(Block* block) {
    sLiveBlocks.erase(block);
    std::free(block->ptr);
    delete block;
}

void ClearAfterResize(Block* block, GSSize oldSize, GSFlags reallocFlags) {
    if ((reallocFlags & REALLOC_FULLCLEAR) != 0)
        std::memset(block->ptr, 0, block->size);
    else if ((reallocFlags & REALLOC_CLEAR) != 0 && block->size > oldSize)
        std::memset(block->ptr + oldSize, 0, block->size - oldSize);
}

// Gives an unlocked block `nBytes` bytes, at a new address or not; false when memory is exhausted.
bool MoveOrResize(Block* block, GSSize nBytes) {
    char* moved = nullptr;
    if (sMoveOnEveryReallocation) {
        moved = AllocateBytes(nBytes);
        if (moved != nullptr) {
            std::memcpy(moved, block->ptr, std::min(block->size, nBytes));
            std::free(block->ptr);
        }
    } else {
        moved = static_cast<char*>(std::realloc(block->ptr, std::max<GSSize>(nBytes, 1)));
    }
    if (moved == nullptr)
        return false;
    block->ptr = moved;
    block->room = nBytes;
    return true;
}

} // namespace

GSHandle STDCALL BMAllocateHandle(GSSize nBytes, GSFlags allocFlags, short /*actionCode*/) {
    std::lock_guard<std::mutex> lock(sMutex);
    if (nBytes < 0)
        return Fail(ErrParam);
    if (achost_internal::FaultFiresNow(sAllocationFailIn))
        return Fail(ErrMemoryFull);
    char* bytes = AllocateBytes(nBytes);
    if (bytes == nullptr)
        return Fail(ErrMemoryFull);
    if ((allocFlags & ALLOCATE_CLEAR) != 0)
        std::memset(bytes, 0, nBytes);
    Block* block = new Block{bytes, nBytes, nBytes, 0};
    sLiveBlocks.insert(block);
    sLastError = NoError;
    return HandleOf(block);
}

GSHandle STDCALL BMReallocHandle(GSHandle h, GSSize nBytes, GSFlags reallocFlags, short /*actionCode*/) {
    std::lock_guard<std::mutex> lock(sMutex);
    if (h == nullptr)
        return Fail(ErrNilPtr);
    Block* block = LiveBlock(h, "BMReallocHandle");
    if (block == nullptr)
        return Fail(ErrNilPtr);
    if (nBytes < 0)
        return Fail(ErrParam);
    const bool locked = (block->state & HANDLE_STATE_LOCK) != 0;
    const bool resized = !achost_internal::FaultFiresNow(sReallocationFailIn) &&
                         (locked ? nBytes <= block->room : MoveOrResize(block, nBytes));
    if (!resized) {
        if ((reallocFlags & REALLOC_DISPOSE) != 0)
            ReleaseBlock(block);
        return Fail(ErrMemoryFull);
    }
    const GSSize oldSize = block->size;
    block->size = nBytes;
    ClearAfterResize(block, oldSize, reallocFlags);
    sLastError = NoError;
    return h;
}

GSSize STDCALL BMGetHandleSize(GSConstHandle h) {
    std::lock_guard<std::mutex> lock(sMutex);
    if (h == nullptr)
        return 0;
    const Block* block = LiveBlock(h, "BMGetHandleSize");
    return block != nullptr ? block->size : 0;
}

GSFlags STDCALL BMModifyHandleState(GSHandle h, GSFlags setFlags, GSFlags clearFlags) {
    std::lock_guard<std::mutex> lock(sMutex);
    if (h == nullptr)
        return 0;
    Block* block = LiveBlock(h, "BMModifyHandleState");
    if (block == nullptr)
        return 0;
    const GSFlags old = block->state;
    block->state = (old | setFlags) & ~clearFlags;
    return old;
}

void STDCALL BMKillHandle(GSHandle* h) {
    if (h == nullptr || *h == nullptr)
        return;
    std::lock_guard<std::mutex> lock(sMutex);
    Block* block = LiveBlock(*h, "BMKillHandle");
    if (block != nullptr)
        ReleaseBlock(block);
    *h = nullptr;
}

GSErr STDCALL BMError(void) {
    return sLastError;
}

void STDCALL BNZeroMemory(void* ptr, GSSize nBytes) {
    if (ptr != nullptr && nBytes > 0)
        std::memset(ptr, 0, nBytes);
}

namespace achost_internal {

bool FaultFiresNow(int& counter) {
    if (counter <= 0)
        return false;
    return --counter == 0;
}

bool MemoryFaultPending() {
    std::lock_guard<std::mutex> lock(sMutex);
    return sAllocationFailIn > 0 || sReallocationFailIn > 0;
}

void ClearMemoryFaults() {
    std::lock_guard<std::mutex> lock(sMutex);
    sAllocationFailIn = 0;
    sReallocationFailIn = 0;
    sMoveOnEveryReallocation = false;
}

} // namespace achost_internal

namespace achost {

void FailAllocation(int nth) {
    std::lock_guard<std::mutex> lock(sMutex);
    sAllocationFailIn = std::max(nth, 0);
}

void FailReallocation(int nth) {
    std::lock_guard<std::mutex> lock(sMutex);
    sReallocationFailIn = std::max(nth, 0);
}

void MoveBlocksOnEveryReallocation(bool on) {
    std::lock_guard<std::mutex> lock(sMutex);
    sMoveOnEveryReallocation = on;
}

long LiveHandleCount() {
    std::lock_guard<std::mutex> lock(sMutex);
    return static_cast<long>(sLiveBlocks.size());
}

long HandleMisuseCount() {
    std::lock_guard<std::mutex> lock(sMutex);
    return sMisuseCount;
}

} // namespace achost
