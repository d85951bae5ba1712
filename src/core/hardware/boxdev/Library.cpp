#include "core/hardware/boxdev/Library.h"

namespace RV::BoxDev {

std::mutex& libraryMutex() {
    // Never destroyed: reader threads of a script that ends without a stop may still call.
    static auto* mutex = new std::mutex;
    return *mutex;
}

const char* libraryResultText(int code) {
    switch (code) {
        case kRvOk:
            return "done";
        case kRvErrorHandle:
            return "no such device handle";
        case kRvErrorGone:
            return "device not reachable";
        case kRvErrorParam:
            return "argument out of range";
        case kRvErrorChannel:
            return "no such channel or channel disabled";
        case kRvErrorNotOpen:
            return "device not open";
        case kRvErrorBusOff:
            return "channel is bus-off";
        case kRvErrorRefused:
            return "refused by the device";
        case kRvErrorUnknownJob:
            return "no such cyclic job or schedule";
        case kRvErrorQueueFull:
            return "transmit queue full";
        case kRvErrorDuplicateJob:
            return "cyclic job exists already";
        case kRvErrorNotInit:
            return "device library not initialised";
        default:
            return "unknown failure of the device library";
    }
}

}  // namespace RV::BoxDev
