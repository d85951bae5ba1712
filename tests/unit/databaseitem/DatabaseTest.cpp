#include "DatabaseTest.h"

#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>

#include <atomic>
#include <fstream>
#include <sstream>

#include "databaseitem/ConverterSettings.h"
#include "quill_os/paths.h"

namespace fs = std::filesystem;

struct DatabaseTest::LogCapture {
    std::ostringstream text;
    std::shared_ptr<spdlog::logger> before = spdlog::default_logger();

    LogCapture() {
        auto sink = std::make_shared<spdlog::sinks::ostream_sink_mt>(text);
        auto logger = std::make_shared<spdlog::logger>("databasetest", sink);
        logger->set_pattern("%l %v");
        spdlog::set_default_logger(std::move(logger));
    }
    ~LogCapture() { spdlog::set_default_logger(before); }
};

DatabaseTest::DatabaseTest() : m_log(std::make_unique<LogCapture>()) {
    static std::atomic<int> counter{0};
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    m_folder = fs::temp_directory_path() /
               ("quill_db_" + std::to_string(stamp) + "_" + std::to_string(++counter));
#ifdef _WIN32
    const fs::path programs = m_folder / "root" / "public" / "dbc_to_json" / "win";
    const std::string suffix = ".exe";
#else
    const fs::path programs = m_folder / "root" / "public" / "dbc_to_json" / "linux";
    const std::string suffix;
#endif
    fs::create_directories(programs);
    for (const char* name : {"dbc2json", "database-parser-ts", "ldf2json"}) {
        fs::copy_file(FAKE_CONVERTER, programs / (name + suffix));
    }
    Model::database::ConverterSettings settings;
    settings.rootFolder = quill::os::pathToUtf8(m_folder / "root");
    Model::database::setConverterSettings(settings);
}

DatabaseTest::~DatabaseTest() {
    Model::database::setConverterSettings({});
    std::error_code error;
    fs::remove_all(m_folder, error);
}

std::string DatabaseTest::path(const std::string& name) const {
    return quill::os::pathToUtf8(m_folder / quill::os::pathFromUtf8(name));
}

std::string DatabaseTest::write(const std::string& name, const std::string& text) const {
    const fs::path file = m_folder / quill::os::pathFromUtf8(name);
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return quill::os::pathToUtf8(file);
}

std::string DatabaseTest::logText() const { return m_log->text.str(); }

bool DatabaseTest::exists(const std::string& name) const {
    return fs::exists(m_folder / quill::os::pathFromUtf8(name));
}
