#include "pysdk/py_extension/frame_views.h"

#include <algorithm>
#include <utility>

#include "databaseitem/DatabaseQueries.h"

namespace scripts {
namespace {

constexpr const char* kRecordingView = "recording";
constexpr uint32_t kExtendedKey = 0x80000000U;

std::string viewOf(const std::string& mac, FrameViews::Form form) {
    return (form == FrameViews::Form::Single ? "subscription " : "list subscription ") + mac;
}

uint32_t nameKey(uint32_t id, bool extended) { return extended ? id | kExtendedKey : id; }

bool hasSuffix(std::string path, const std::string& suffix) {
    std::transform(path.begin(), path.end(), path.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return path.ends_with(suffix);
}

template <class Frames>
void addNames(const Frames& frames, ChannelDatabase& database) {
    for (const auto& frame : frames) {
        database.names.emplace(nameKey(static_cast<uint32_t>(frame->id), frame->isExtended),
                               frame->name);
    }
}

}  // namespace

FrameViews::FrameViews() { m_filters.addView(kRecordingView); }

void FrameViews::setSubscriptionFilter(const std::string& mac, Bus bus, Form form, List list) {
    m_filters.addView(viewOf(mac, form));
    m_filters.setFilter(viewOf(mac, form), bus, std::move(list));
    {
        const std::lock_guard lock(m_mutex);
        m_devices[mac] = true;
    }
    changed();
}

void FrameViews::setRecordingFilters(List can, List lin) {
    m_filters.setFilter(kRecordingView, Bus::Can, std::move(can));
    m_filters.setFilter(kRecordingView, Bus::Lin, std::move(lin));
    changed();
}

void FrameViews::attachDatabase(const std::string& mac, Bus bus, int32_t channel,
                                std::shared_ptr<const ChannelDatabase> database) {
    {
        const std::lock_guard lock(m_mutex);
        m_devices[mac] = true;
        auto& channels = bus == Bus::Can ? m_databases[mac].can : m_databases[mac].lin;
        if (database == nullptr) {
            channels.erase(channel);
        } else {
            channels[channel] = std::move(database);
        }
    }
    changed();
}

std::shared_ptr<Model::database::LDFFrame> FrameViews::linFrame(const std::string& mac,
                                                                int32_t channel,
                                                                uint32_t id) const {
    const std::lock_guard lock(m_mutex);
    const auto device = m_databases.find(mac);
    if (device == m_databases.end()) return nullptr;
    const auto database = device->second.lin.find(channel);
    if (database == device->second.lin.end()) return nullptr;
    const auto frame = database->second->linFrames.find(id);
    return frame == database->second->linFrames.end() ? nullptr : frame->second;
}

FrameViews::BusReaders FrameViews::readersOf(const std::string& view) const {
    return {m_filters.reader(view, Bus::Can), m_filters.reader(view, Bus::Lin)};
}

void FrameViews::refresh() {
    const uint64_t version = m_version.load(std::memory_order_acquire);
    const std::lock_guard lock(m_mutex);
    m_views.clear();
    for (const auto& [mac, used] : m_devices) {
        DeviceView& view = m_views[mac];
        view.single = readersOf(viewOf(mac, Form::Single));
        view.batch = readersOf(viewOf(mac, Form::Batch));
        const auto databases = m_databases.find(mac);
        if (databases != m_databases.end()) view.databases = databases->second;
    }
    m_recording = readersOf(kRecordingView);
    m_anything = version != 0;
    m_seenVersion = version;
}

FrameView FrameViews::look(rv::FrameType type, const rv::Frame& frame, const std::string& mac) {
    FrameView view;
    if (m_version.load(std::memory_order_acquire) != m_seenVersion) refresh();
    const bool isCan = type == rv::FrameType::Can;
    if (!m_anything || (!isCan && type != rv::FrameType::Lin)) return view;

    rv::FilterSubject subject;
    subject.id = frame.id;
    subject.extended = isCan && frame.can.extend.IDE() != 0;
    subject.dir = static_cast<uint16_t>(frame.direction);
    subject.channel = frame.channel;
    const auto device = m_views.find(mac);
    if (device != m_views.end()) {
        const auto& databases = isCan ? device->second.databases.can : device->second.databases.lin;
        const auto database = databases.find(frame.channel);
        if (database != databases.end()) {
            const auto& names = database->second->names;
            const auto name = names.find(nameKey(frame.id, subject.extended));
            if (name != names.end()) subject.name = name->second;
        }
        view.delivered = device->second.single.passes(isCan, subject);
        view.batched = device->second.batch.passes(isCan, subject);
    }
    view.name = subject.name;
    view.recorded = m_recording.passes(isCan, subject);
    return view;
}

std::shared_ptr<const ChannelDatabase> loadChannelDatabase(const std::string& path,
                                                           FrameViews::Bus& bus) {
    namespace db = Model::database;
    auto database = std::make_shared<ChannelDatabase>();
    bus = FrameViews::Bus::Can;
    if (hasSuffix(path, ".ldf")) {
        bus = FrameViews::Bus::Lin;
        const auto loaded = db::loadLinLDF(path);
        if (loaded.code != db::kQueryDone) return nullptr;
        for (const auto& frame : loaded.value->frame) {
            database->names.emplace(frame->id, frame->name);
            database->linFrames.emplace(frame->id, frame);
        }
        return database;
    }
    if (hasSuffix(path, ".arxml")) {
        const auto loaded = db::loadCanArxml(path);
        if (loaded.code != db::kQueryDone) return nullptr;
        for (const auto& cluster : loaded.value->clusters) addNames(cluster->dbcEntrys, *database);
        return database;
    }
    const auto loaded = db::loadCanDBC(path);
    if (loaded.code != db::kQueryDone) return nullptr;
    addNames(loaded.value->dbcEntrys, *database);
    return database;
}

}  // namespace scripts
