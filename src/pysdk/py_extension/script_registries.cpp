#include "pysdk/py_extension/script_registries.h"

#include <numeric>
#include <utility>

namespace scripts {
namespace {

QByteArray keyOf(const std::string& mac) {
    return {mac.data(), static_cast<qsizetype>(mac.size())};
}

// A key for a look-up only; it does not own its text.
QByteArray borrowedKey(const std::string& mac) {
    return QByteArray::fromRawData(mac.data(), static_cast<qsizetype>(mac.size()));
}

template <class Table>
typename Table::mapped_type find(const Table& table, const typename Table::key_type& key) {
    const auto found = table.constFind(key);
    return found == table.constEnd() ? typename Table::mapped_type() : found.value();
}

}  // namespace

void ScriptRegistries::replace(DeviceTable& table, const std::string& mac,
                               ScriptCallback& callback) {
    const std::lock_guard lock(m_mutex);
    std::swap(table[keyOf(mac)], callback);
}

void ScriptRegistries::setBatch(const std::string& mac, Bus bus,
                                std::shared_ptr<BatchSubscription> batch) {
    // The parameter outlives the lock, and with it the subscription that was there before.
    const std::lock_guard lock(m_mutex);
    BatchTable& table = bus == Bus::Can ? m_canBatches : m_linBatches;
    std::shared_ptr<BatchSubscription>& place = table[keyOf(mac)];
    std::swap(place, batch);
    if (batch != nullptr) batch->ended = true;
    if (place == nullptr) table.remove(keyOf(mac));
}

bool ScriptRegistries::hasSubscription(const std::string& mac) const {
    const QByteArray key = borrowedKey(mac);
    const std::lock_guard lock(m_mutex);
    for (const DeviceTable* table : {&m_canByDevice, &m_linByDevice, &m_ethByDevice}) {
        if (table->contains(key)) return true;
    }
    return m_canBatches.contains(key) || m_linBatches.contains(key);
}

ScriptCallback ScriptRegistries::take(DeviceTable& table, const std::string& mac) {
    const std::lock_guard lock(m_mutex);
    return table.take(borrowedKey(mac));
}

void ScriptRegistries::setCan(const std::string& mac, ScriptCallback callback) {
    replace(m_canByDevice, mac, callback);
}

void ScriptRegistries::removeCan(const std::string& mac) { (void)take(m_canByDevice, mac); }

void ScriptRegistries::setLin(const std::string& mac, ScriptCallback callback) {
    replace(m_linByDevice, mac, callback);
}

void ScriptRegistries::removeLin(const std::string& mac) { (void)take(m_linByDevice, mac); }

void ScriptRegistries::setEth(const std::string& mac, ScriptCallback callback) {
    replace(m_ethByDevice, mac, callback);
}

void ScriptRegistries::removeEth(const std::string& mac) { (void)take(m_ethByDevice, mac); }

void ScriptRegistries::addId(uint32_t id, ScriptCallback callback) {
    const std::lock_guard lock(m_mutex);
    if (!m_idCounters.contains(id)) m_idCounters.insert(id, 0);
    // The parameter outlives the lock, and with it the callable that was there before.
    if (callback) std::swap(m_callbackById[id], callback);
}

void ScriptRegistries::removeId(uint32_t id) {
    ScriptCallback dropped;
    const std::lock_guard lock(m_mutex);
    m_idCounters.remove(id);
    dropped = m_callbackById.take(id);
}

uint64_t ScriptRegistries::countOf(uint32_t id) const {
    const std::lock_guard lock(m_mutex);
    return m_idCounters.value(id, 0);
}

CallbackTargets ScriptRegistries::targetsOf(rv::FrameType type, const rv::Frame& frame,
                                            const std::string& deviceId) {
    CallbackTargets targets;
    const std::lock_guard lock(m_mutex);
    if (m_closed) return targets;
    switch (type) {
        case rv::FrameType::Can: {
            targets.device = find(m_canByDevice, borrowedKey(deviceId));
            if (!m_canBatches.isEmpty()) targets.batch = find(m_canBatches, borrowedKey(deviceId));
            if (m_idCounters.isEmpty()) break;
            const auto counter = m_idCounters.find(frame.id);
            if (counter == m_idCounters.end()) break;
            ++counter.value();
            targets.byId = find(m_callbackById, frame.id);
            break;
        }
        case rv::FrameType::Lin:
            targets.device = find(m_linByDevice, borrowedKey(deviceId));
            if (!m_linBatches.isEmpty()) targets.batch = find(m_linBatches, borrowedKey(deviceId));
            break;
        case rv::FrameType::Ethernet:
            targets.device = find(m_ethByDevice, borrowedKey(deviceId));
            break;
        default:
            break;  // FlexRay frames are recorded only
    }
    return targets;
}

void ScriptRegistries::countError(rv::FrameType type) {
    const std::lock_guard lock(m_mutex);
    ++m_errorsByKind[static_cast<uint8_t>(type)];
}

uint64_t ScriptRegistries::errors() const {
    const std::lock_guard lock(m_mutex);
    return std::accumulate(m_errorsByKind.cbegin(), m_errorsByKind.cend(), uint64_t{0});
}

void ScriptRegistries::close() {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
}

void ScriptRegistries::clear() {
    // Moved out under the mutex, dropped in reverse order of declaration after it.
    DeviceTable can;
    DeviceTable eth;
    DeviceTable lin;
    QHash<uint32_t, ScriptCallback> byId;
    BatchTable canBatches;
    BatchTable linBatches;
    const std::lock_guard lock(m_mutex);
    can.swap(m_canByDevice);
    eth.swap(m_ethByDevice);
    lin.swap(m_linByDevice);
    for (const auto& batch : std::as_const(m_canBatches)) batch->ended = true;
    for (const auto& batch : std::as_const(m_linBatches)) batch->ended = true;
    canBatches.swap(m_canBatches);
    linBatches.swap(m_linBatches);
    m_idCounters.clear();
    byId.swap(m_callbackById);
}

}  // namespace scripts
