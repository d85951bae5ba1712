// Two ways of calling a callable with n CAN frames on a thread of its own; each answers ns a frame.
#include <pybind11/pybind11.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "core/frame/Frame.h"
#include "core/hardware/RVFrameResortBuffer.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/frame_delivery.h"
#include "pysdk/py_extension/interpreter_lock.h"
#include "pysdk/py_extension/record_objects.h"
#include "pysdk/py_extension/script_records.h"

namespace py = pybind11;
using Clock = std::chrono::steady_clock;

namespace {

constexpr size_t kPass = 2000;  // 200,000 frames/s, a pass every 10 ms
constexpr const char* kDevice = "02:00:00:00:00:01";

rv::FrameHolder makeCan(uint32_t number, uint32_t length) {
    rv::FrameHolder frame = rv::makeFrame(length);
    frame->type = rv::FrameType::Can;
    frame->seconds = 1'700'000'000U + number / 1'000'000U;
    frame->nanoseconds = number % 1'000'000U * 1000U;
    frame->id = number & 0x7FFU;
    std::memset(frame->payload().data(), static_cast<int>(number & 0xFFU), length);
    return frame;
}

double nsPerFrame(Clock::time_point start, size_t count) {
    const std::chrono::duration<double, std::nano> spent = Clock::now() - start;
    return spent.count() / static_cast<double>(count);
}

template <class Work>
double onThread(Work work) {
    const scripts::InterpreterRelease released;
    double result = 0;
    std::thread thread([&] { result = work(); });
    thread.join();
    return result;
}

// The least that one call costs: lock with a kept state, one record object, the call.
double floorLoop(const py::function& callable, size_t count, uint32_t length) {
    const rv::FrameHolder frame = makeCan(1, length);
    return onThread([&] {
        scripts::RecordObjects objects;
        scripts::enterInterpreter();
        scripts::leaveInterpreter();
        const auto start = Clock::now();
        for (size_t i = 0; i < count; ++i) {
            scripts::enterInterpreter();
            PyObject* record = objects.make(rv::FrameType::Can, *frame, {});
            Py_XDECREF(PyObject_CallOneArg(callable.ptr(), record));
            Py_XDECREF(record);
            scripts::leaveInterpreter();
        }
        return nsPerFrame(start, count);
    });
}

// The same with the general conversion in place of the module's own record making.
double convertLoop(const py::function& callable, size_t count, uint32_t length) {
    const rv::FrameHolder frame = makeCan(1, length);
    return onThread([&] {
        scripts::enterInterpreter();
        scripts::leaveInterpreter();
        const auto start = Clock::now();
        for (size_t i = 0; i < count; ++i) {
            scripts::enterInterpreter();
            {
                scripts::CANRawFrame record;
                scripts::fill(record, *frame);
                callable(std::move(record));
            }
            scripts::leaveInterpreter();
        }
        return nsPerFrame(start, count);
    });
}

// 1,000 identifiers and 100 ranges, which pass every frame of makeCan.
std::shared_ptr<rv::FilterSource> makeFilter() {
    auto source = std::make_shared<rv::FilterSource>();
    rv::CANFrameFilterItem item;
    for (uint32_t i = 0; i < 1000; ++i) {
        item.id = 2 * i;
        source->add(rv::FilterSource::Side::Pass, item);
    }
    item.isRange = true;
    for (uint32_t i = 0; i < 100; ++i) {
        item.idRangeStart = 21 * i;
        item.idRangeEnd = 21 * i + 20;
        source->add(rv::FilterSource::Side::Pass, item);
    }
    return source;
}

// From the resort buffer through the delivery to the callable and back, frames freed. Without a
// callable the frames end where they would be looked for.
double deliverLoop(const py::object& callable, size_t count, uint32_t length, bool filtered) {
    auto delivery = std::make_shared<scripts::FrameDelivery>();
    if (!callable.is_none()) {
        delivery->registries().setCan(kDevice, scripts::ScriptCallback(callable));
    }
    using Views = scripts::FrameViews;
    if (filtered) {
        delivery->views().setSubscriptionFilter(kDevice, Views::Bus::Can, Views::Form::Single,
                                                makeFilter());
    }
    const auto share = std::make_shared<const rv::Subscription>(
        rv::Subscription{delivery, rv::FrameInfo{kDevice}, 0});
    rv::RVFrameResortBuffer buffer;
    return onThread([&] {
        scripts::enterInterpreter();
        scripts::leaveInterpreter();
        Clock::duration spent{};
        for (size_t done = 0; done < count; done += kPass) {
            std::vector<rv::FrameHolder> batch;
            for (size_t i = 0; i < kPass; ++i) {
                batch.push_back(makeCan(static_cast<uint32_t>(done + i), length));
            }
            buffer.push(batch, share);
            const auto start = Clock::now();
            for (rv::ReceivedFrame& record : buffer.take(240000)) {
                record.subscription->callback->deliver(record.frame->type, record.frame,
                                                       record.subscription->info);
                record.frame.reset();
            }
            spent += Clock::now() - start;
        }
        return std::chrono::duration<double, std::nano>(spent).count() / static_cast<double>(count);
    });
}

}  // namespace

PYBIND11_MODULE(quill_bench_delivery, m) {
    spdlog::set_level(spdlog::level::warn);
    bindRecords(m);
    m.def("floor", &floorLoop, py::arg("callable"), py::arg("count"), py::arg("length"));
    m.def("convert", &convertLoop, py::arg("callable"), py::arg("count"), py::arg("length"));
    m.def("deliver", &deliverLoop, py::arg("callable"), py::arg("count"), py::arg("length"),
          py::arg("filtered") = false);
}
