#include "document/DocumentReader.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

#include "document/PlanBuilder.h"
#include "document/SchemaCheck.h"
#include "quill_os/environment.h"
#include "quill_os/paths.h"

namespace simcore::document {

namespace {

constexpr size_t kLargestDocument = 16U * 1024U * 1024U;

std::optional<std::string> readWholeFile(const std::string& path, std::string& reason) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(quill::os::openFile(path, "rb"),
                                                               &std::fclose);
    if (file == nullptr) {
        reason = path + ": cannot be opened";
        return std::nullopt;
    }
    std::string text;
    char buffer[65536];
    while (const size_t got = std::fread(buffer, 1, sizeof buffer, file.get())) {
        text.append(buffer, got);
        if (text.size() > kLargestDocument) {
            reason = path + ": is too large for a network document";
            return std::nullopt;
        }
    }
    return text;
}

bool isJsonText(const std::string& document) {
    const size_t at = document.find_first_not_of(" \t\r\n");
    return at != std::string::npos && document[at] == '{';
}

std::optional<engine::NetworkPlan> planOf(const nlohmann::json& json, const std::string& folder,
                                          const std::string& origin, std::string& reason) {
    engine::NetworkPlan plan;
    Complaint complaint;
    PlanBuilder builder(plan, folder);
    builder.readDocument(Node(json, std::string(), complaint));
    if (complaint.text().empty()) return plan;
    reason = origin + ": " + complaint.text();
    return std::nullopt;
}

std::optional<engine::NetworkPlan> parse(const std::string& text, const std::string& folder,
                                         const std::string& origin, std::string& reason) {
    nlohmann::json json;
    try {
        json = nlohmann::json::parse(text);
    } catch (const nlohmann::json::exception& error) {
        // The library's text begins with its own error number; the position follows, or for a
        // number that no double holds, what is wrong with it.
        const std::string what = error.what();
        const size_t line = what.find("at line");
        const size_t number = what.find("number overflow");
        const size_t at = line == std::string::npos ? number : line;
        reason = origin + ": is not JSON: " + (at == std::string::npos ? what : what.substr(at));
        return std::nullopt;
    }
    const std::string mistake = checkAgainstSchema(json);
    if (mistake.empty()) return planOf(json, folder, origin, reason);
    reason = origin + ": " + mistake;
    return std::nullopt;
}

// Adds the replay of SIMCORE_REPLAY to the built-in network.
bool addReplay(engine::NetworkPlan& plan, const std::string& file, std::string& reason) {
    engine::ReplayPlan replay;
    replay.file = file;
    if (const auto speed = quill::os::getEnvironment("SIMCORE_REPLAY_SPEED")) {
        char* end = nullptr;
        replay.speed = std::strtod(speed->c_str(), &end);
        if (speed->empty() || *end != '\0' || !(replay.speed >= 0.0 && replay.speed <= 1e6)) {
            reason = "SIMCORE_REPLAY_SPEED: expected a number from 0 to 1000000";
            return false;
        }
    }
    for (const engine::BusPlan& bus : plan.buses) {
        replay.buses[static_cast<size_t>(bus.kind)].push_back(bus.name);
    }
    plan.sources.emplace_back(std::move(replay));
    return true;
}

}  // namespace

const char* builtInNetwork() {
    return R"({"boxes": [{"name": "RV-Hub4e", "mac": "02:51:55:49:4C:01", "serial": "RVH4E-0001"}]})";
}

std::optional<engine::NetworkPlan> readPlan(const std::string& document, const std::string& label,
                                            std::string& origin, std::string& reason) {
    if (isJsonText(document)) {
        origin = label;
        return parse(document, std::string(), origin, reason);
    }
    origin = document;
    const auto text = readWholeFile(document, reason);
    if (!text) return std::nullopt;
    const auto folder = quill::os::pathFromUtf8(document).parent_path();
    return parse(*text, quill::os::pathToUtf8(folder), origin, reason);
}

std::optional<engine::NetworkPlan> planFromEnvironment(std::string& origin, std::string& reason) {
    const auto document = quill::os::getEnvironment("SIMCORE_NETWORK");
    if (document && !document->empty()) {
        return readPlan(*document, "SIMCORE_NETWORK", origin, reason);
    }
    // Ours, so it is not held against the schema, which would cost every script its time.
    origin = "built-in network";
    auto plan = planOf(nlohmann::json::parse(builtInNetwork()), std::string(), origin, reason);
    const auto replay = quill::os::getEnvironment("SIMCORE_REPLAY");
    if (plan && replay && !replay->empty()) {
        origin = "SIMCORE_REPLAY";
        if (!addReplay(*plan, *replay, reason)) return std::nullopt;
    }
    return plan;
}

}  // namespace simcore::document
