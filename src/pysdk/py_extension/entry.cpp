// Entry of the module: logging, environment, life cycle, registration.
#include <pybind11/pybind11.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "core/log/Log.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/pysdk_entry.h"
#include "quill_os/environment.h"
#include "quill_os/paths.h"

namespace py = pybind11;

namespace {

constexpr const char* kModuleText =
    R"(Scripting of in-vehicle bus interface boxes: CAN, CAN FD, LIN, Ethernet, FlexRay.

Life cycle: load, exit.
Boxes: getDeviceList gives a DeviceHandle per box; getDeviceConfig, setDeviceConfig,
    getChannelNames.
Receiving: subscribeCanFrame, subscribeLinFrame, subscribeEthFrame, subscribeCanFrameById, with
    lists of frames subscribeCanFrames and subscribeLinFrames, and the unsubscribe calls; records
    are CANRawFrame, LinFrame, EthFrame. getCounters tells where the frames are.
Sending: sendCanFrame, sendCanFDFrame; cyclically with startCyclicCanFrame and its relatives;
    startLinScheduleTable. FrameUpdate adds a rolling counter and a CRC (CrcType).
Recording: enableDataRecording, disableDataRecording, getRecordingStatus.
Databases: loadCanDBC, loadCanArxml, loadLinLDF; findFrame, decodeFrame and the signal calls.
Filters: CANFrameFilterList, LINFrameFilterList; attachDatabase names received frames.

    import QuillScriptsSDK as sdk

    sdk.load()
    box = sdk.getDeviceList(sdk.DeviceType.All, 3000)[0]
    sdk.subscribeCanFrame(box, print)
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x123, data=[1, 2, 3]))
    sdk.exit()

Channels count from 0, times are ns since the epoch on the clock of the box, payloads read as lists
of ints 0 to 255. Records are plain values that can be copied; frames, settings and schedule tables
can be made with keywords. A value out of its range raises ValueError, a wrong kind TypeError. Calls
that wait release the interpreter lock. Without a box on the network, a virtual one answers.)";

constexpr const char* kRootVariable = "QuillScriptsSDK_Root";
// Log readers find the two lines of the import by these places.
constexpr const char* kEntryFile = "src/pysdk/py_extension/entry";
constexpr const char* kInitFunction = "pybind11_init_QuillScriptsSDK";
constexpr int kDirectoryLine = 87;
constexpr int kRootLine = 93;

void setUpLog() {
    const auto appData = quill::os::getEnvironment("LocalAPPDATA");
    if (!appData) throw std::runtime_error("Unable to find AppData directory");
    const std::filesystem::path directory =
        quill::os::pathFromUtf8(*appData) / "RV" / "Quill" / "log";
    std::string reason;
    if (!quill::log::setup("QuillScriptsSDK", quill::os::pathToUtf8(directory), reason)) {
        throw std::runtime_error(reason);
    }
}

void logAt(int line, const std::string& text) {
    spdlog::default_logger_raw()->log(spdlog::source_loc{kEntryFile, line, kInitFunction},
                                      spdlog::level::info, "[{}] {}", quill::log::kPysdk, text);
}

void setRootVariable(const std::string& directory) {
    if (quill::os::setEnvironment(kRootVariable, directory)) {
        // os.environ is a copy that the interpreter took at its start.
        py::module_::import("os").attr("environ")[py::str(kRootVariable)] = py::str(directory);
    } else {
        std::fputs("unable set env\n", stderr);
    }
    logAt(kRootLine, quill::os::getEnvironment(kRootVariable).value_or(""));
}

void addLifeCycle(py::module_& m) {
    m.def(
        "load", [] { PySDKEntry::instance(); },
        R"(Make the SDK ready and start to look for boxes. Further calls do nothing.

Any other call does the same first; this one tells on standard output how it went: 'Init : true', or
'Init : false' with the reason in the log.)");
    m.def("exit", &PySDKEntry::destroyInstance,
          R"(Stop the SDK. To be called once, as the last call into the module.

A running recording is completed and all callables are dropped; one that runs is given a second to
return. Any later call raises RuntimeError.

Raises:
    RuntimeError: called from a frame callable.)");
    // A script may end without exit(): then no callable may run while the interpreter goes.
    py::module_::import("atexit").attr("register")(
        py::cpp_function(&PySDKEntry::closeAtInterpreterEnd));
}

}  // namespace

PYBIND11_MODULE(QuillScriptsSDK, m) {
    m.doc() = kModuleText;
    setUpLog();
    const auto directory = py::module_::import("os").attr("getcwd")().cast<std::string>();
    logAt(kDirectoryLine, directory);
    setRootVariable(directory);
    m.attr("__build_time__") = QUILL_BUILD_TIME;
    m.attr("__version__") = QUILL_VERSION;
    addLifeCycle(m);

    bindRecords(m);
    bindDatabaseRecords(m);
    bindFilterLists(m);
    bindDevice(m);
    bindTransmit(m);
    bindDatabaseFunctions(m);
    bindReceive(m);
    bindBatches(m);
    bindCounters(m);
    bindChannelCalls(m);
}
