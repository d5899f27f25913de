// BM: the host's relocatable memory blocks ("handles").
//
// A handle is a pointer to a master pointer: *h is the block's current address. The master pointer
// stays put for the block's life, the block itself does not: a reallocation may move it, so a
// pointer taken from *h is valid only until the next BMReallocHandle of that handle, unless the
// handle is locked (a locked block is never moved). Every handle is released with BMKillHandle.
// The functions may be called from any thread, but one handle must not be used by two at once.
#pragma once

#include "GSRoot.hpp"

// Allocation flags of BMAllocateHandle.
#define ALLOCATE_ACTION 1
#define ALLOCATE_CLEAR 2 // the new block is filled with zero bytes
#define ALLOCATE_ESSENTIAL 4
#define ALLOCATE_EMPTY 8

// Reallocation flags of BMReallocHandle.
#define REALLOC_CLEAR 2       // bytes added by growing are zero
#define REALLOC_FULLCLEAR 0x8 // the whole block is zero afterwards
#define REALLOC_SHRINK 0x10
#define REALLOC_DISPOSE 0x20 // on failure the handle is released too
#define REALLOC_MOVEABLE 0x40

// Handle state flags of BMModifyHandleState.
#define HANDLE_STATE_LOCK 0x0001 // the block does not move while set

// A new handle of `nBytes` bytes (0 is allowed: an empty block with a valid master pointer), or
// null when the size is negative or memory is exhausted (BMError tells which). The caller owns the
// handle and releases it with BMKillHandle. `actionCode` is accepted and ignored.
GS_HOST_EXPORT GSHandle STDCALL BMAllocateHandle(GSSize nBytes, GSFlags allocFlags, short actionCode);

// Resizes the block of `h` to `nBytes` and returns the handle (the same value as `h`); the block may
// move unless it is locked, and keeps its first min(old, new) bytes. A locked block is resized in
// place only: growing it beyond the room it was given fails. On failure the result is null and `h`
// stays valid and unchanged, unless REALLOC_DISPOSE was given, in which case `h` is released.
GS_HOST_EXPORT GSHandle STDCALL BMReallocHandle(GSHandle h, GSSize nBytes, GSFlags reallocFlags,
                                                short actionCode);

// The size in bytes of the block of `h`; 0 for a null or unknown handle.
GS_HOST_EXPORT GSSize STDCALL BMGetHandleSize(GSConstHandle h);

// Sets the state flags `setFlags`, then clears `clearFlags`, and returns the state as it was before,
// so that a caller can restore it: old = BMModifyHandleState(h, HANDLE_STATE_LOCK, 0); ...;
// BMModifyHandleState(h, old, ~old). A null or unknown handle returns 0 and changes nothing.
GS_HOST_EXPORT GSFlags STDCALL BMModifyHandleState(GSHandle h, GSFlags setFlags, GSFlags clearFlags);

// Releases the handle `*h` and its block and sets `*h` to null. A null `h` or `*h` does nothing.
// Releasing a handle that is not alive (twice, or never allocated) is reported as a misuse.
GS_HOST_EXPORT void STDCALL BMKillHandle(GSHandle* h);

// The result of the last BM call of this thread: NoError, ErrParam, ErrMemoryFull or ErrNilPtr.
GS_HOST_EXPORT GSErr STDCALL BMError(void);

// Fills `nBytes` bytes at `ptr` with zero; a null pointer or a size of 0 or less does nothing.
GS_HOST_EXPORT void STDCALL BNZeroMemory(void* ptr, GSSize nBytes);
