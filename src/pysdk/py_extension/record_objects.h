#pragma once

#include <Python.h>

#include "core/frame/Frame.h"

namespace scripts {

// Makes the Python record of a received frame. The general conversion looks the type up and enters
// every object into a table of addresses, which costs more than all the rest of a delivery; records
// made here are owned by nobody else, so neither is needed. With the interpreter lock held.
class RecordObjects {
public:
    // New reference, or null with a Python error set.
    [[nodiscard]] PyObject* make(rv::FrameType type, const rv::Frame& frame);

private:
    PyTypeObject* m_can = nullptr;  // borrowed: registered types live as long as the interpreter
    PyTypeObject* m_lin = nullptr;
    PyTypeObject* m_eth = nullptr;
};

}  // namespace scripts
