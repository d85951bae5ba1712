#pragma once

#include <Python.h>

// The interpreter lock as threads of this module give it up and take it. When the interpreter has
// ended, CPython makes a thread that asks for the lock leave through a forced unwind, which would
// run destructors of a half-gone process and end it with an abort at the first function that lets
// nothing through. Such a thread is parked here instead: it sleeps until the process is gone.
namespace scripts {

// Parks the thread when its scope is left by anything else than done().
class ParkOnUnwind {
public:
    ParkOnUnwind() = default;
    ~ParkOnUnwind();
    ParkOnUnwind(const ParkOnUnwind&) = delete;
    ParkOnUnwind& operator=(const ParkOnUnwind&) = delete;

    void done() { m_done = true; }

private:
    bool m_done = false;
};

// Gives the lock up for a wait and takes it back at the end of the scope.
class InterpreterRelease {
public:
    InterpreterRelease() : m_state(PyEval_SaveThread()) {}
    ~InterpreterRelease() noexcept(false) {
        ParkOnUnwind park;
        PyEval_RestoreThread(m_state);
        park.done();
    }
    InterpreterRelease(const InterpreterRelease&) = delete;
    InterpreterRelease& operator=(const InterpreterRelease&) = delete;

private:
    PyThreadState* m_state;
};

// Takes the lock on a thread that the interpreter did not start. The thread's state is made once
// and kept for the thread's life: making one costs a hundred times what taking the lock does.
void enterInterpreter();
void leaveInterpreter();

}  // namespace scripts
