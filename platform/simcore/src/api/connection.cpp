// Class interface: the connection to one USB or general bus device.
#include <algorithm>
#include <memory>
#include <string>

#include "api/DeviceText.h"
#include "api/JobCalls.h"
#include "api/OnBox.h"
#include "simcore/founder.h"

namespace simcore::api {

namespace {

using engine::BusKind;

class Connection final : public RvDeviceConnection {
public:
    explicit Connection(RvConnectionType type) : m_type(type) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() override { close(); }

    bool open(const char* devicePath, RvDeviceConnectionObserver* observer) override;
    void close() override;
    bool flushSriNo(unsigned char* out, int size) override;

    int getCanConfig(int32_t channel, RvCanChannelConfig* config) override {
        return call(Call::connectionGetCanConfig, [&](engine::Box& box) {
            return config == nullptr ? kRvErrorParam : box.canConfig(channel, *config);
        });
    }
    int setCanConfig(int32_t channel, const RvCanChannelConfig* config) override {
        return call(Call::connectionSetCanConfig, [&](engine::Box& box) {
            return config == nullptr ? kRvErrorParam : box.setCanConfig(channel, *config, true);
        });
    }
    int startTracing() override {
        return call(Call::connectionStartTracing, [](engine::Box& b) { return b.startTrace(); });
    }
    int stopTracing() override {
        return call(Call::connectionStopTracing, [](engine::Box& b) { return b.stopTrace(); });
    }
    int readCanFrames(RvCanFrame* frames, int32_t capacity, int32_t* count) override;
    int sendCanFrame(const RvCanFrame* frame) override {
        return call(Call::connectionSendCan, [&](engine::Box& box) {
            return frame == nullptr ? kRvErrorParam : box.sendCan(*frame);
        });
    }
    int addCanCycleFrame(const RvCanCycleJob* job) override {
        if (job == nullptr) return finish(kRvErrorParam);
        const JobTicket ticket(*job);
        return call(Call::connectionAddCycle,
                    [&](engine::Box& box) { return addCanJob(box, *job, ticket); });
    }
    int pauseCanCycleFrame(const char* uuid) override {
        return call(Call::connectionPauseCycle,
                    [&](engine::Box& box) { return pauseJob(box, BusKind::can, uuid); });
    }
    int resumeCanCycleFrame(const char* uuid) override {
        return call(Call::connectionResumeCycle,
                    [&](engine::Box& box) { return resumeJob(box, BusKind::can, uuid); });
    }
    int removeCanCycleFrame(const char* uuid) override {
        return call(Call::connectionRemoveCycle,
                    [&](engine::Box& box) { return box.removeJob(BusKind::can, uuidText(uuid)); });
    }

private:
    // The network and handle of the open session; empty network when closed.
    struct Session {
        std::shared_ptr<engine::Network> network;
        int32_t handle = 0;
    };
    [[nodiscard]] Session session() const {
        const std::lock_guard lock(m_mutex);
        return m_session;
    }
    [[nodiscard]] engine::Box* boxOf(const Session& session, int& error) const {
        error = kRvErrorNotOpen;
        return session.network == nullptr ? nullptr
                                          : session.network->boxByHandle(session.handle, error);
    }
    [[nodiscard]] bool reaches(const engine::Box& box) const;
    template <class Fn>
    [[nodiscard]] int call(Call which, Fn fn) {
        const Session current = session();
        int error = kRvOk;
        engine::Box* box = boxOf(current, error);
        const int verdict = Library::instance().enter(which, box);
        if (verdict != kRvOk) return verdict;
        if (box == nullptr) return finish(error);
        const engine::CoreGuard guard(current.network->core());
        box = boxOf(current, error);
        if (box == nullptr) return finish(error);
        return finish(fn(*box));
    }

    const RvConnectionType m_type;
    mutable std::mutex m_mutex;
    Session m_session;  // guarded by m_mutex
};

bool Connection::reaches(const engine::Box& box) const {
    switch (box.identity().type) {
        case engine::BoxType::hub4e:
            return m_type == RvConnectionTypeNetwork;
        case engine::BoxType::usbCan:
            return m_type == RvConnectionTypeUsb;
        case engine::BoxType::etas:
            return m_type == RvConnectionTypeEtas;
    }
    return false;
}

bool Connection::open(const char* devicePath, RvDeviceConnectionObserver* observer) {
    Library& library = Library::instance();
    const auto network = library.network();
    if (network == nullptr || devicePath == nullptr) return finish(kRvErrorNotInit) == kRvOk;
    if (session().network != nullptr) return finish(kRvErrorRefused) == kRvOk;
    std::string name;
    {
        const engine::CoreGuard guard(network->core());
        for (const auto& box : network->boxes()) {
            if (reaches(*box) && box->identity().path == devicePath) name = box->name();
        }
    }
    if (library.enter(Call::connectionOpen, name) != kRvOk) return false;
    engine::Box* box = network->boxByName(name);
    int result = kRvErrorHandle;
    int32_t handle = 0;
    if (box != nullptr) {
        const engine::CoreGuard guard(network->core());
        handle = box->handle();
        result = box->present() ? box->open() : kRvErrorGone;
        if (result == kRvOk) library.dispatcher().setConnectionObserver(handle, observer);
    }
    if (result == kRvOk) {
        const std::lock_guard lock(m_mutex);
        m_session = {network, handle};
    }
    return finish(result) == kRvOk;
}

void Connection::close() {
    Session ended;
    {
        const std::lock_guard lock(m_mutex);
        std::swap(ended, m_session);
    }
    if (ended.network == nullptr) return;
    Library& library = Library::instance();
    int error = kRvOk;
    static_cast<void>(library.enter(Call::connectionClose, boxOf(ended, error)));
    {
        const engine::CoreGuard guard(ended.network->core());
        engine::Box* box = boxOf(ended, error);
        if (box != nullptr) box->close();
    }
    library.dispatcher().setConnectionObserver(ended.handle, nullptr);
}

bool Connection::flushSriNo(unsigned char* out, int size) {
    const int result = call(Call::connectionFlushSriNo, [&](engine::Box& box) -> int {
        const auto& snr = box.identity().snr;
        if (out == nullptr || size < 0) return kRvErrorParam;
        std::copy_n(snr.begin(), std::min<size_t>(static_cast<size_t>(size), snr.size()), out);
        return kRvOk;
    });
    return result == kRvOk;
}

int Connection::readCanFrames(RvCanFrame* frames, int32_t capacity, int32_t* count) {
    if (count != nullptr) *count = 0;
    const Session current = session();
    int error = kRvOk;
    engine::Box* box = boxOf(current, error);
    const int verdict = Library::instance().enter(Call::connectionReadCan, box);
    if (verdict != kRvOk) return verdict;
    if (box == nullptr) return finish(error);
    return readFrames(*current.network, *box, frames, capacity, count);
}

}  // namespace

}  // namespace simcore::api

RvDeviceConnection* RvDeviceConnection::create(RvConnectionType type) {
    if (type < RvConnectionTypeNetwork || type > RvConnectionTypeEtas) return nullptr;
    return new simcore::api::Connection(type);
}

void RvDeviceConnection::destroy(RvDeviceConnection* connection) { delete connection; }
