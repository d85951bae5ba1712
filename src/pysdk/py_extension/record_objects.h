#pragma once

#include <Python.h>

#include <string_view>

#include "core/frame/Frame.h"

namespace scripts {

// Makes the Python record of a received frame. The general conversion looks the type up and enters
// every object into a table of addresses, which costs more than all the rest of a delivery; records
// made here are owned by nobody else, so neither is needed. With the interpreter lock held.
class RecordObjects {
public:
    // `name`: of the matched database frame, empty when there is none; CAN frames carry it.
    // New reference, or null with a Python error set.
    [[nodiscard]] PyObject* make(rv::FrameType type, const rv::Frame& frame, std::string_view name);

private:
    PyTypeObject* m_can = nullptr;  // borrowed: registered types live as long as the interpreter
    PyTypeObject* m_lin = nullptr;
    PyTypeObject* m_eth = nullptr;
};

}  // namespace scripts
