#include "pysdk/py_extension/interpreter_lock.h"

#include <chrono>
#include <thread>

namespace scripts {
namespace {

thread_local PyThreadState* t_keptState = nullptr;

}  // namespace

ParkOnUnwind::~ParkOnUnwind() {
    while (!m_done) std::this_thread::sleep_for(std::chrono::hours(1));
}

void enterInterpreter() {
    if (t_keptState != nullptr) {
        PyEval_RestoreThread(t_keptState);
        return;
    }
    // Never released: the state belongs to this thread until the interpreter ends and frees it.
    (void)PyGILState_Ensure();
    t_keptState = PyThreadState_Get();
}

void leaveInterpreter() { PyEval_SaveThread(); }

}  // namespace scripts
