// Error codes of the add-on interface (module 262: 0x80000000 | 262 << 16 | offset).
#pragma once

#include "GSRoot.hpp"

enum APIErrCodes : GSErrCode {
    APIERR_GENERAL = static_cast<GSErrCode>(0x81060001),
    APIERR_MEMFULL = static_cast<GSErrCode>(0x81060002),
    APIERR_CANCEL = static_cast<GSErrCode>(0x81060003),
    APIERR_BADID = static_cast<GSErrCode>(0x81060065),
    APIERR_BADINDEX = static_cast<GSErrCode>(0x81060066),
    APIERR_BADNAME = static_cast<GSErrCode>(0x81060067),
    APIERR_BADPARS = static_cast<GSErrCode>(0x81060068),
    APIERR_NOPLAN = static_cast<GSErrCode>(0x810600CB),
    APIERR_NOLIB = static_cast<GSErrCode>(0x810600CC),
    APIERR_NOTMINE = static_cast<GSErrCode>(0x81060132),
    APIERR_MODULNOTINSTALLED = static_cast<GSErrCode>(0x81060191),
    APIERR_MODULCMDNOTSUPPORTED = static_cast<GSErrCode>(0x81060193),
    APIERR_MODULCMDVERSNOTSUPPORTED = static_cast<GSErrCode>(0x81060194),
    APIERR_NOTINIT = static_cast<GSErrCode>(0x81060385),
    APIERR_NESTING = static_cast<GSErrCode>(0x81060386),
    APIERR_NOTSUPPORTED = static_cast<GSErrCode>(0x81060387),
    APIERR_REFUSEDCMD = static_cast<GSErrCode>(0x81060388),
    APIERR_REFUSEDPAR = static_cast<GSErrCode>(0x81060389),
    APIERR_READONLY = static_cast<GSErrCode>(0x8106038A),
    APIERR_MISSINGDEF = static_cast<GSErrCode>(0x810603EA)
};
