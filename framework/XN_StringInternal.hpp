// Helpers shared by the XN_String source files; not part of the framework's interface.
#pragma once

namespace xn_internal {

// -1, 0 or 1 for the first `count` positions (0: no limit) of two sequences whose values at
// position i are unitA(i) and unitB(i); stops after a position where both are 0.
template <class UnitA, class UnitB>
int CompareUnitRuns(unsigned int count, UnitA unitA, UnitB unitB) {
    unsigned int remaining = count == 0 ? 0xFFFFFFFFu : count;
    for (unsigned int i = 0; remaining > 0; ++i, --remaining) {
        const auto a = unitA(i);
        const auto b = unitB(i);
        if (a != b)
            return a < b ? -1 : 1;
        if (a == 0)
            break;
    }
    return 0;
}

} // namespace xn_internal
