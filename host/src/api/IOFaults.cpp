// Pending faults of file-system and other host calls, and ClearFaults for every kind of fault.
#include "APIdefs_ErrorCodes.h"
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
std::map<achost::HostCall, PendingFault> sCallFaults;

template <typename Key>
GSErrCode Fire(std::map<Key, PendingFault>& faults, Key key) {
    std::lock_guard<std::mutex> lock(sMutex);
    auto found = faults.find(key);
    if (found == faults.end() || !achost_internal::FaultFiresNow(found->second.failIn))
        return NoError;
    const GSErrCode code = found->second.code;
    faults.erase(found);
    return code;
}

} // namespace

namespace achost_internal {

GSErrCode InjectedFileFault(achost::FileOperation operation) {
    return Fire(sFaults, operation);
}

GSErrCode InjectedCallFault(achost::HostCall call) {
    return Fire(sCallFaults, call);
}

} // namespace achost_internal

namespace achost {

void FailFileOperation(FileOperation operation, GSErrCode code, int nth) {
    std::lock_guard<std::mutex> lock(sMutex);
    sFaults[operation] = PendingFault{std::max(nth, 0), code};
}

void FailHostCall(HostCall call, GSErrCode code, int nth) {
    std::lock_guard<std::mutex> lock(sMutex);
    sCallFaults[call] = PendingFault{std::max(nth, 0), code == NoError ? APIERR_GENERAL : code};
}

bool FaultPending() {
    if (achost_internal::MemoryFaultPending())
        return true;
    std::lock_guard<std::mutex> lock(sMutex);
    return !sFaults.empty() || !sCallFaults.empty();
}

void ClearFaults() {
    achost_internal::ClearMemoryFaults();
    std::lock_guard<std::mutex> lock(sMutex);
    sFaults.clear();
    sCallFaults.clear();
}

} // namespace achost
