// A do-nothing add-on: the baseline cost of loading any add-on into the host.
#include "ACAPinc.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT API_AddonType CheckEnvironment(API_EnvirParams*) {
    return APIAddon_Normal;
}
EXPORT GSErrCode RegisterInterface() {
    return NoError;
}
EXPORT GSErrCode Initialize() {
    return NoError;
}
EXPORT GSErrCode FreeData() {
    return NoError;
}
