#pragma once

#include <pybind11/pybind11.h>

#include <memory>

#include "pysdk/py_extension/interpreter_lock.h"

namespace scripts {

// A script's callable that any thread may copy, keep and drop. None becomes an empty one.
class ScriptCallback {
public:
    ScriptCallback() = default;
    // With the interpreter lock held.
    explicit ScriptCallback(pybind11::handle callable)
        : m_callable(callable.inc_ref().ptr(), &ScriptCallback::drop) {}

    explicit operator bool() const { return m_callable != nullptr; }
    // Borrowed; to be called with the interpreter lock held.
    [[nodiscard]] PyObject* get() const { return m_callable.get(); }

private:
    static void drop(PyObject* callable) {
        // Once the interpreter ends, losing a reference beats a crash.
        if (Py_IsInitialized() == 0 || _Py_IsFinalizing() != 0) return;
        ParkOnUnwind park;
        const PyGILState_STATE lock = PyGILState_Ensure();
        Py_DECREF(callable);
        PyGILState_Release(lock);
        park.done();
    }

    std::shared_ptr<PyObject> m_callable;  // copied without the interpreter lock
};

// Argument type of functions that take a callable for one kind of record.
template <class Record>
struct CallbackFor {
    ScriptCallback callback;
};

}  // namespace scripts

namespace pybind11::detail {

template <class Record>
struct type_caster<scripts::CallbackFor<Record>> {
    using Argument = scripts::CallbackFor<Record>;
    PYBIND11_TYPE_CASTER(Argument, const_name("Callable[[") + make_caster<Record>::name +
                                       const_name("], None]"));

    bool load(handle source, bool) {
        if (source.is_none()) return true;
        if (PyCallable_Check(source.ptr()) == 0) return false;
        value.callback = scripts::ScriptCallback(source);
        return true;
    }
};

}  // namespace pybind11::detail
