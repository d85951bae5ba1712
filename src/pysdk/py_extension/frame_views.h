#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/capturefilter/model/CaptureFilterManager.h"
#include "core/frame/Frame.h"
#include "databaseitem/LinLdfRecords.h"

namespace scripts {

// Names of the frames of one channel, as a database gives them.
struct ChannelDatabase {
    // Key: identifier, bit 31 set for 29-bit ones.
    std::unordered_map<uint32_t, std::string> names;
    // LIN frames by identifier; empty for a CAN database.
    std::unordered_map<uint32_t, std::shared_ptr<Model::database::LDFFrame>> linFrames;
};

// What the consumers of a frame make of it.
struct FrameView {
    std::string_view name;  // of the database frame; empty when none is known
    bool delivered = true;  // passes the filter of the device's subscription
    bool batched = true;    // passes the filter of the device's subscription of lists
    bool recorded = true;   // passes the filter of the recording
};

// The filters of subscriptions and recording, and the databases attached to channels. Changed on
// script threads; while nothing changes, a look of the dispatch thread takes no lock.
class FrameViews {
public:
    using Bus = rv::CaptureFilterManager::Bus;
    using List = std::shared_ptr<rv::FilterSource>;

    FrameViews();

    enum class Form { Single, Batch };  // of the subscription: frame by frame or in lists

    // A null list passes everything.
    void setSubscriptionFilter(const std::string& mac, Bus bus, Form form, List list);
    void setRecordingFilters(List can, List lin);

    // A null database detaches the channel's.
    void attachDatabase(const std::string& mac, Bus bus, int32_t channel,
                        std::shared_ptr<const ChannelDatabase> database);
    // The LIN frame of an identifier in the channel's database; null when there is none.
    [[nodiscard]] std::shared_ptr<Model::database::LDFFrame> linFrame(const std::string& mac,
                                                                      int32_t channel,
                                                                      uint32_t id) const;

    // For the dispatch thread. The name stays valid until the next look.
    [[nodiscard]] FrameView look(rv::FrameType type, const rv::Frame& frame,
                                 const std::string& mac);

private:
    struct Channels {
        std::map<int32_t, std::shared_ptr<const ChannelDatabase>> can;
        std::map<int32_t, std::shared_ptr<const ChannelDatabase>> lin;
    };
    struct BusReaders {
        rv::FilterReader can;
        rv::FilterReader lin;
        [[nodiscard]] bool passes(bool isCan, const rv::FilterSubject& subject) {
            return (isCan ? can : lin).passes(subject);
        }
    };
    struct DeviceView {
        BusReaders single;
        BusReaders batch;
        Channels databases;
    };
    void refresh();
    [[nodiscard]] BusReaders readersOf(const std::string& view) const;
    void changed() { m_version.fetch_add(1, std::memory_order_release); }

    std::atomic<uint64_t> m_version{0};
    mutable std::mutex m_mutex;
    rv::CaptureFilterManager m_filters;  // one view for each subscription and the recording
    std::map<std::string, Channels> m_databases;  // guarded by m_mutex
    std::map<std::string, bool> m_devices;        // guarded by m_mutex; devices with a view

    // Used by the dispatch thread only.
    uint64_t m_seenVersion = 0;
    bool m_anything = false;
    std::map<std::string, DeviceView> m_views;
    BusReaders m_recording;
};

// Loads a database for a channel: a LIN description by its suffix ".ldf", else a CAN database
// (".dbc", ".arxml", ".json"). Null when the load fails. Waits for a converter.
[[nodiscard]] std::shared_ptr<const ChannelDatabase> loadChannelDatabase(const std::string& path,
                                                                         FrameViews::Bus& bus);

}  // namespace scripts
