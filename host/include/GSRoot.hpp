// Basic types, calling-convention macros and general error codes of the host interface.
// Everything the add-on sees of the host is declared under host/include with the host's own names,
// so the add-on also builds against the real interface.
#pragma once

#include <cstddef>
#include <cstdint>

typedef std::int8_t Int8;
typedef std::uint8_t UInt8;
typedef std::int16_t Int16;
typedef std::uint16_t UInt16;
typedef std::int32_t Int32;
typedef std::uint32_t UInt32;
typedef std::int64_t Int64;
typedef std::uint64_t UInt64;

typedef UInt32 USize;
typedef UInt32 UIndex;
typedef Int32 GSSize;
typedef UInt32 GSType;
typedef UInt32 GSFlags;
typedef char* GSPtr;
typedef const char* GSConstPtr;
typedef GSPtr* GSHandle;
typedef const GSConstPtr* GSConstHandle;
typedef Int32 GSErrCode;
typedef Int32 GSErr;

namespace GS {
typedef std::intptr_t IntPtr;
typedef UInt16 uchar_t;
typedef uchar_t Utf16Char;
} // namespace GS

typedef GS::IntPtr GSResModule;
typedef UInt32 GSResType;
typedef Int32 GSResID;

// Calling conventions: empty on this platform.
#ifndef __ACENV_CALL
#define __ACENV_CALL
#endif
#ifndef __ACDLL_CALL
#define __ACDLL_CALL __ACENV_CALL
#endif
#ifndef CCALL
#define CCALL
#endif
#ifndef STDCALL
#define STDCALL
#endif
#ifndef DGCALLBACK
#define DGCALLBACK CCALL
#endif

// Marks a function the host library exports to add-ons (add-ons are built with hidden visibility).
#ifndef GS_HOST_EXPORT
#define GS_HOST_EXPORT __attribute__((visibility("default")))
#endif

// General error codes (plain values; module codes are 0x80000000 | module << 16 | offset).
enum GSErrCodes : GSErrCode {
    NoError = 0,
    ErrRead = -19,
    ErrDskFul = -34,
    ErrIO = -36,
    ErrEof = -39,
    ErrFnf = -43,
    ErrParam = -50,
    ErrMemoryFull = -108,
    ErrUserCanceled = -128,
    ErrNilPtr = -7001,
    ErrEmptyHandle = -7002,
    Error = -7003,
    Cancel = -7004
};
