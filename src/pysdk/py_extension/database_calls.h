#pragma once

#include <pybind11/pybind11.h>

#include <sstream>
#include <utility>

#include "databaseitem/DatabaseQueries.h"
#include "pysdk/py_extension/interpreter_lock.h"
#include "pysdk/py_extension/standard_output.h"
#include "pysdk/py_extension/typed_objects.h"

// How script functions run the database queries, which wait for a converter program.
namespace scripts {

// Runs a query with the interpreter lock released; an interrupted one raises what the signal
// handler raised.
template <class Query>
auto runQuery(Query&& query) {
    auto result = [&] {
        const InterpreterRelease released;
        return std::forward<Query>(query)();
    }();
    if (PyErr_Occurred() != nullptr) throw pybind11::error_already_set();
    return result;
}

template <class Value>
CodeAnd<std::decay_t<Value>> toPair(int code, Value&& value) {
    return pybind11::make_tuple(code, std::forward<Value>(value));
}

// Where converters are looked for beside the module, and Ctrl-C while one runs. Once, at import.
void setUpConverters();

}  // namespace scripts
