#include "core/playback/TraceFileImporter.h"

#include <chrono>
#include <thread>

#include "core/log/Log.h"
#include "core/playback/importer/AscLineFrameParser.h"
#include "core/playback/importer/BlfObjectFrameParser.h"
#include "core/playback/importer/PcapPacketParser.h"
#include "core/playback/importer/PcapngPacketParser.h"
#include "core/playback/importer/TraceAscFileParser.h"
#include "core/playback/importer/TraceBlfFileParser.h"
#include "core/playback/importer/TracePcapFileParser.h"
#include "core/playback/importer/TracePcapngFileParser.h"
#include "core/tracestorage/TraceStorage.h"
#include "quill_os/paths.h"
#include "quill_os/threads.h"

namespace playback {
namespace {
using quill::log::kImporter;
using tracestorage::ImportState;

// Long against the cost of waking up, short against the time that 99 batches last.
constexpr auto kPoll = std::chrono::microseconds(200);

// The importer whose stage runs on this thread: a stage must not wait for itself.
thread_local const TraceFileImporter* t_stageOf = nullptr;

constexpr uint32_t codeOf(ImportFailure failure) { return static_cast<uint32_t>(failure); }
}  // namespace

TraceFileImporter::TraceFileImporter(std::wstring path, Callback callback, ImportOptions options)
    : m_path(std::move(path)),
      m_type(classify(m_path)),
      m_callback(std::move(callback)),
      m_options(std::move(options)) {
    if (!m_options.storage) {
        std::string reason;
        m_options.storage = tracestorage::TraceStorage::openDefault(reason);
        if (!m_options.storage) QUILL_ERROR(kImporter, "no trace storage: {}", reason);
    }
    prepare();
}

TraceFileImporter::~TraceFileImporter() {
    stopStages();
    QUILL_INFO(kImporter, "~TraceFileImporter");
}

TraceFileType TraceFileImporter::classify(const std::wstring& path) {
    const size_t folder = path.find_last_of(L"/\\");
    const std::wstring name = folder == std::wstring::npos ? path : path.substr(folder + 1);
    const size_t dot = name.rfind(L'.');
    if (dot == std::wstring::npos) return TraceFileType::None;
    std::wstring extension = name.substr(dot);
    for (wchar_t& c : extension) {
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    if (extension == L".asc") return TraceFileType::Asc;
    if (extension == L".blf") return TraceFileType::Blf;
    if (extension == L".pcap") return TraceFileType::Pcap;
    if (extension == L".pcapng") return TraceFileType::Pcapng;
    return TraceFileType::None;
}

std::shared_ptr<TraceFileParser> TraceFileImporter::createTraceFileParser(
    TraceFileType type) const {
    switch (type) {
        case TraceFileType::Asc:
            return std::make_shared<TraceAscFileParser>(m_path, m_options.ascOption);
        case TraceFileType::Blf:
            return std::make_shared<TraceBlfFileParser>(m_path, m_options.blfOption);
        case TraceFileType::Pcap:
            return std::make_shared<TracePcapFileParser>(m_path, m_options.pcapOption);
        case TraceFileType::Pcapng:
            return std::make_shared<TracePcapngFileParser>(m_path);
        default:
            break;
    }
    QUILL_ERROR(kImporter, "unsupport file extension {}", static_cast<unsigned>(type));
    return nullptr;
}

std::shared_ptr<StandardFrameParser> TraceFileImporter::createStandardFrameParser(
    TraceFileType type) {
    switch (type) {
        case TraceFileType::Asc:
            return std::make_shared<AscLineFrameParser>();
        case TraceFileType::Blf:
            return std::make_shared<BlfObjectFrameParser>();
        case TraceFileType::Pcap:
            return std::make_shared<PcapPacketParser>();
        case TraceFileType::Pcapng:
            return std::make_shared<PcapngPacketParser>();
        default:
            break;
    }
    QUILL_ERROR(kImporter, "unsupport file extension {} ", static_cast<unsigned>(type));
    return nullptr;
}

void TraceFileImporter::prepare() {
    m_fileParser = createTraceFileParser(m_type);
    const auto header = m_fileParser ? m_fileParser->parseHeader() : std::nullopt;
    m_readable = header.has_value();
    m_identity = tracestorage::identifyFile(quill::os::utf8FromWide(m_path));
    const bool known = m_identity && m_options.storage;
    m_state = static_cast<uint32_t>(known ? m_options.storage->lookUp(*m_identity)
                                          : ImportState::NotImported);
    m_frameParser = createStandardFrameParser(m_type);
    if (m_frameParser && header) {
        m_frameParser->setHeader(*header);
        m_startNs = header->startNs;
    }
    m_used = false;
}

void TraceFileImporter::beginAsyncImport() {
    QUILL_INFO(kImporter, "begin async import");
    if (m_finished) wait();  // the import before is over but for its last steps
    const uint32_t state = m_state;
    if (state == static_cast<uint32_t>(ImportState::NotImported)) {
        startStages();
    } else if (state == static_cast<uint32_t>(ImportState::Imported)) {
        m_reported = false;
        importSuccess();
        QUILL_INFO(kImporter, "import finish, file have imported");
    } else {
        QUILL_ERROR(kImporter, "import state {}", state);
        importFail(codeOf(ImportFailure::Refused));
    }
}

void TraceFileImporter::startStages() {
    wait();
    if (m_used) prepare();
    if (m_state != static_cast<uint32_t>(ImportState::NotImported)) return beginAsyncImport();
    m_used = true;
    m_units.reset();
    m_frames.reset();
    m_unitCount = m_frameCount = m_storedCount = 0;
    m_finished = m_cancelled = m_reported = m_fileParsed = m_framesParsed = false;
    m_summary = {};
    m_state = static_cast<uint32_t>(ImportState::Importing);
    const auto start = [this](const char* name, void (TraceFileImporter::*stage)()) {
        m_stages.push_back(std::async(std::launch::async, [this, name, stage] {
            quill::os::setCurrentThreadName(name);
            t_stageOf = this;
            (this->*stage)();
        }));
    };
    m_stages.reserve(3);
    start("import-read", &TraceFileImporter::parseFile);
    start("import-parse", &TraceFileImporter::parseFrame);
    start("import-store", &TraceFileImporter::storeFrame);
}

bool TraceFileImporter::onStageThread() const { return t_stageOf == this; }

void TraceFileImporter::wait() {
    if (onStageThread()) return;
    for (auto& stage : m_stages) stage.wait();
    m_stages.clear();
}

void TraceFileImporter::cancelImport() {
    QUILL_INFO(kImporter, "cancelImport start");
    stopStages();
    QUILL_INFO(kImporter, "cancelImport success");
}

void TraceFileImporter::stopStages() {
    m_cancelled = true;
    // An index under construction would otherwise be built to its end. Another import in the same
    // storage is left alone.
    if (m_storing) m_options.storage->interrupt();
    wait();
}

void TraceFileImporter::report(const ImportResult& result) {
    if (!m_reported.exchange(true) && m_callback) m_callback(result);
}

void TraceFileImporter::importFail(uint32_t code) {
    QUILL_ERROR(kImporter, "importFail error code {}", code);
    m_finished = true;
    report({.success = false, .cancelled = false, .code = code, .stored = 0});
}

void TraceFileImporter::importSuccess() {
    QUILL_INFO(kImporter, "import success");
    m_finished = true;
    report({.success = true, .cancelled = false, .code = 0, .stored = m_storedCount});
}

ImportProgress TraceFileImporter::progress() const {
    return {.bytesRead = m_fileParser ? m_fileParser->bytesRead() : 0,
            .units = m_unitCount,
            .frames = m_frameCount,
            .stored = m_storedCount};
}

void TraceFileImporter::parseFile() {
    if (!m_fileParser) {
        QUILL_ERROR(kImporter, "parse file fail, file parser pointer is nullptr!");
        m_finished = true;
        importFail(codeOf(ImportFailure::NoParser));
    } else if (!m_readable) {
        m_fileParser->closeFile();
        importFail(codeOf(ImportFailure::Unreadable));
    } else {
        while (!stopped() && !m_fileParser->atEnd()) {
            if (m_units.full()) {
                std::this_thread::sleep_for(kPoll);
                continue;
            }
            auto& batch = m_units.writeSlot();
            batch.clear();
            m_fileParser->parseNextUnits(batch);
            if (batch.empty()) continue;
            m_unitCount += batch.size();
            m_units.push();
        }
        if (m_cancelled) {
            QUILL_CRITICAL(kImporter, "cancel import, parseFile finish");
        } else {
            QUILL_INFO(kImporter, "parseFile finish, unit nums {}", m_unitCount.load());
        }
        m_fileParser->closeFile();
    }
    m_fileParsed = true;
}

void TraceFileImporter::parseFrame() {
    if (!m_frameParser) {
        QUILL_ERROR(kImporter, "frame parse fail, frame parser pointer is nullptr!");
        importFail(codeOf(ImportFailure::NoParser));
    }
    while (m_frameParser && !stopped()) {
        // Asked before the ring: what stage 1 pushed before its end is then seen.
        const bool last = m_fileParsed;
        if (m_units.empty() && last) break;
        if (m_units.empty() || m_frames.full()) {
            std::this_thread::sleep_for(kPoll);
            continue;
        }
        auto& frames = m_frames.writeSlot();
        frames.clear();
        auto& units = m_units.readSlot();
        m_frameParser->parseUnits(units, frames);
        units.clear();
        m_units.pop();
        if (frames.empty()) continue;
        m_frameCount += frames.size();
        m_frames.push();
    }
    if (m_cancelled) {
        QUILL_CRITICAL(kImporter, "cancel import, parseFrame finish");
    } else if (m_frameParser) {
        QUILL_INFO(kImporter, "parseFrame finish, frame nums {}", m_frameCount.load());
    }
    m_framesParsed = true;
}

// Waits for the first frames; false when there are none or the import is over.
bool TraceFileImporter::waitForFrames() {
    while (!stopped()) {
        const bool last = m_framesParsed;
        if (!m_frames.empty()) return true;
        if (last) return false;
        std::this_thread::sleep_for(kPoll);
    }
    return false;
}

bool TraceFileImporter::storeBatches() {
    while (!stopped()) {
        const bool last = m_framesParsed;
        if (m_frames.empty()) {
            if (last) return true;
            std::this_thread::sleep_for(kPoll);
            continue;
        }
        auto& batch = m_frames.readSlot();
        QUILL_INFO(kImporter, "prepare insert into db frames {}", batch.size());
        if (!m_options.storage->insertFrames(batch)) return false;
        m_storedCount += batch.size();
        m_frames.pop();
    }
    return false;
}

void TraceFileImporter::collectSummary() {
    m_summary.format = m_fileParser ? m_fileParser->formatName() : "";
    m_summary.startNs = m_startNs;
    m_summary.units = m_unitCount;
    if (const auto* damage = m_fileParser ? m_fileParser->damage() : nullptr) {
        for (const auto& entry : damage->entries()) {
            m_summary.notes.push_back({entry.position, entry.text});
        }
        if (damage->total() > 0) {
            QUILL_WARN(kImporter, "file damaged in {} places, first at {}: {}", damage->total(),
                       damage->entries().front().position, damage->entries().front().text);
        }
    }
    if (m_frameParser) {
        m_summary.dropped = m_frameParser->dropped();
        m_summary.skipped = m_frameParser->skipped();
        const auto& notes = m_frameParser->notes();
        m_summary.notes.insert(m_summary.notes.end(), notes.begin(), notes.end());
    }
}

void TraceFileImporter::storeFrame() {
    const bool some = waitForFrames();
    auto* storage = m_options.storage.get();
    bool done = false;
    if (!stopped() && !some) {
        collectSummary();
        QUILL_ERROR(kImporter, "file just have header, no frame");
        importFail(codeOf(ImportFailure::NoFrames));
    } else if (!stopped()) {
        if (storage == nullptr || !m_identity || !storage->beginImport(*m_identity)) {
            QUILL_ERROR(kImporter, "data provider begin import fail!");
            importFail(codeOf(ImportFailure::Refused));
        } else if (m_storing = true; storeBatches()) {
            collectSummary();
            if (!stopped()) {
                done = storage->finishImport(m_summary);
                m_storing = false;  // also when it failed: the storage has taken everything back
            }
        }
    }
    if (!done) return giveUpStoring();
    m_state = static_cast<uint32_t>(ImportState::Imported);
    QUILL_INFO(kImporter, "import finish, store frames {}", m_storedCount.load());
    importSuccess();
}

// The end of an import that is not done. Whatever comes after the callback may begin anew, so the
// other stages are over and the storage is free before it.
void TraceFileImporter::giveUpStoring() {
    const bool storageFailed = !stopped();
    if (storageFailed) QUILL_ERROR(kImporter, "storing fails: {}", m_options.storage->lastError());
    m_finished = true;
    while (!m_fileParsed || !m_framesParsed) std::this_thread::sleep_for(kPoll);
    if (m_storing.exchange(false)) m_options.storage->abandonImport();
    m_storedCount = 0;
    m_state = static_cast<uint32_t>(ImportState::NotImported);
    if (storageFailed) importFail(codeOf(ImportFailure::Refused));
    if (m_cancelled) {
        QUILL_CRITICAL(kImporter, "cancel import, storeFrame finish");
        report({.success = false, .cancelled = true, .code = 0, .stored = 0});
    }
}

}  // namespace playback
