#pragma once

#include <QObject>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/hardware/DeviceHub.h"
#include "core/hardware/boxdev/BoxConfig.h"

namespace rv {

// Keeps the configuration and the DIP-switch state of every known box and carries both to and from
// the boxes through their command documents. Thread-safe.
class RVBoxConfigManager : public QObject {
public:
    explicit RVBoxConfigManager(QObject* parent = nullptr) : QObject(parent) {}

    [[nodiscard]] std::optional<BoxConfig> config(const std::string& deviceId) const;
    // Asks the box; empty with a reason when it does not answer well.
    [[nodiscard]] std::optional<BoxConfig> fetch(const DeviceHub::Device& device,
                                                 std::string& reason);
    // Checks the settings, writes them to the box and reads back what it took.
    [[nodiscard]] bool write(const DeviceHub::Device& device, const BoxConfig& config,
                             std::string& reason);
    [[nodiscard]] std::optional<BoxIdentity> identity(const DeviceHub::Device& device,
                                                      std::string& reason);

    void noteDip(const std::string& deviceId, const DipState& dip);
    [[nodiscard]] std::optional<DipState> dip(const std::string& deviceId) const;
    void forget(const std::string& deviceId);

private:
    struct Entry {
        std::optional<BoxConfig> config;
        std::optional<DipState> dip;
    };
    mutable std::mutex m_mutex;
    std::map<std::string, Entry> m_entries;  // guarded by m_mutex
};

// The simulation side of a box; nothing of it is reached from scripts.
class RVBoxSimulationManager : public QObject {
public:
    explicit RVBoxSimulationManager(QObject* parent = nullptr) : QObject(parent) {}
};

}  // namespace rv
