// The cases of XN_Resource_GetString the probe add-on runs (item k runs case k) and the test checks,
// over the lists of Probe.grc.
#pragma once

struct ResourceCase {
    short language;
    short resID;
    long index;
    bool localized;
    const char* expected;
    int stringReads; // ACAPI_Resource_* calls the lookup makes
};

inline constexpr ResourceCase kResourceCases[] = {
    {1, 32511, 2, true, "Two", 1},          // found
    {2, 32512, 1, true, "Un", 1},           // found in the current language
    {2, 32512, 3, true, "Three", 2},        // string missing in French: International
    {0, 32510, 2, true, "Two", 2},          // string missing in Italian: International
    {3, 32513, 1, true, "One", 2},          // no German list at all: International
    {2, 32512, 9, true, "_ERR_NO_", 3},     // missing in both; the fixed form is read too
    {1, 32000, 1, false, "_ERR_DPT_", 0},   // own list asked for without `localized`
    {1, 32511, 1, false, "_ERR_DPT_", 0},   // even when the list exists
    {3, 32713, 1, false, "Allgemein", 1},   // general list found
    {2, 32712, 1, false, "General one", 2}, // general list missing in French: International
    {1, 32712, 1, false, "_ERR_NO_", 1},    // International itself missing: no second try
    {4, 32714, 2, true, "_ERR_NO_", 2},     // general lists: no fixed-form read
};
inline constexpr int kResourceCaseCount = sizeof kResourceCases / sizeof kResourceCases[0];
