#include "pysdk/py_extension/standard_output.h"

#include <Python.h>

#include <cstdio>

namespace scripts {

void writeLine(const std::string& line) {
    const std::string whole = line + "\n";
    std::fwrite(whole.data(), 1, whole.size(), stdout);
    std::fflush(stdout);
}

void flushScriptOutput() {
    PyObject* out = PySys_GetObject("stdout");  // borrowed
    if (out == nullptr || out == Py_None) return;
    PyObject* result = PyObject_CallMethod(out, "flush", nullptr);
    // A stream that cannot be flushed is the script's own affair.
    if (result == nullptr) PyErr_Clear();
    Py_XDECREF(result);
}

}  // namespace scripts
