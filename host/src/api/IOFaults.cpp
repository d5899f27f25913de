// Pending file-system faults, and ClearFaults for every kind of fault.
#include "BMInternal.hpp"
#include "IOInternal.hpp"

#include <algorithm>
#include <map>
#include <mutex>

namespace {

struct PendingFault {
    int failIn = 0;
    GSErrCode code = NoError;
};

std::mutex sMutex;
std::map<achost::FileOperation, PendingFault> sFaults;

} // namespace

namespace achost_internal {

GSErrCode InjectedFileFault(achost::FileOperation operation) {
    std::lock_guard<std::mutex> lock(sMutex);
    auto found = sFaults.find(operation);
    if (found == sFaults.end() || !FaultFiresNow(found->second.failIn))
        return NoError;
    const GSErrCode code = found->second.code;
    sFaults.erase(found);
    return code;
}

} // namespace achost_internal

namespace achost {

void FailFileOperation(FileOperation operation, GSErrCode code, int nth) {
    std::lock_guard<std::mutex> lock(sMutex);
    sFaults[operation] = PendingFault{std::max(nth, 0), code};
}

void ClearFaults() {
    achost_internal::ClearMemoryFaults();
    std::lock_guard<std::mutex> lock(sMutex);
    sFaults.clear();
}

} // namespace achost
