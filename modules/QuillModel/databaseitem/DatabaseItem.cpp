#include "databaseitem/DatabaseItem.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <algorithm>

#include "core/log/Log.h"
#include "databaseitem/ConverterSettings.h"
#include "databaseitem/DatabaseFiles.h"
#include "quill_os/paths.h"
#include "quill_os/process.h"

namespace Model::database {
namespace {

constexpr const char* kContextKey = "context";
// A document can only vanish between converter and reading when somebody outside our lock removes
// it, so a few rounds are plenty.
constexpr int kMaxRounds = 4;

struct ConverterChoice {
    DatabaseKind kind;
    const char* suffix;
    const char* program;
};
constexpr ConverterChoice kConverters[] = {
    {DatabaseKind::Dbc, "dbc", "dbc2json"},
    {DatabaseKind::Arxml, "arxml", "database-parser-ts"},
    {DatabaseKind::Ldf, "ldf", "ldf2json"},
    {DatabaseKind::Fibex, "xml", "database-parser-ts"},
    {DatabaseKind::Fibex, "fibex", "database-parser-ts"},
};

std::vector<std::string> converterArguments(DatabaseKind kind, const std::string& path,
                                            const std::string& jsonPath) {
    switch (kind) {
        case DatabaseKind::Dbc:
            return {path, jsonPath, "--jsonExportAll"};
        case DatabaseKind::Ldf:
            return {path, jsonPath};
        case DatabaseKind::Arxml:
            return {"arxml-parse", path, "--outputPath", jsonPath};
        case DatabaseKind::Fibex:
            return {"fibex-parse", path, "--outputPath", jsonPath};
    }
    return {};
}

std::string joined(const std::vector<std::string>& texts) {
    std::string line;
    for (const std::string& text : texts) line += (line.empty() ? "" : " ") + text;
    return line;
}

std::string withoutLineEnd(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text;
}

// What a converter that did not succeed has to say.
std::string reasonOf(const quill::os::ProcessResult& result) {
    const std::string said = withoutLineEnd(result.output);
    switch (result.end) {
        case quill::os::ProcessEnd::TimedOut:
            return "converter ended after its time was up";
        case quill::os::ProcessEnd::Interrupted:
            return "interrupted";
        case quill::os::ProcessEnd::Crashed:
            return "converter crashed (" + std::to_string(result.code) + ") " + said;
        default:
            return said.empty() ? "exit status " + std::to_string(result.code) : said;
    }
}

bool isFolderWritable(const std::string& path) {
    const auto folder = quill::os::pathFromUtf8(path).parent_path();
    return quill::os::isWritableFolder(folder.empty() ? "." : folder);
}

}  // namespace

bool DatabaseItem::fail(const std::string& text) {
    QUILL_ERROR(quill::log::kDatabase, "{}", text);
    m_lastError = text;
    return false;
}

bool DatabaseItem::failPath(const std::string& path, const std::string& reason) {
    QUILL_ERROR(quill::log::kDatabase, "File path is invalid, File Path: {}", path);
    return fail(path + ": " + reason);
}

bool DatabaseItem::loadDB(const std::string& path, DatabaseKind kind) {
    clear();
    m_lastError.clear();
    if (!checkPath(path)) return false;
    const auto conversion = getExePath(path, kind);
    if (!conversion) return failPath(path, "no converter for this kind of file");
    if (!conversion->program.empty()) return convertAndRead(path, *conversion);
    if (parseJsonFile(path) == ReadResult::Done) return true;
    QUILL_ERROR(quill::log::kDatabase, "parseJsonFile failed, json file path : {}", path);
    return false;
}

bool DatabaseItem::checkPath(const std::string& path) {
    const PathCheck check = checkDatabasePath(path);
    if (check.state == PathState::Missing) return fail("no exist " + path);
    if (check.state == PathState::Usable) return true;
    return failPath(path, check.reason);
}

std::optional<DatabaseItem::Conversion> DatabaseItem::getExePath(const std::string& path,
                                                                 DatabaseKind kind) const {
    const std::string suffix = lowerSuffix(path);
    if (suffix == "json") return Conversion{{}, {}, path};
    const auto* choice = std::find_if(
        std::begin(kConverters), std::end(kConverters),
        [&](const ConverterChoice& c) { return c.kind == kind && suffix == c.suffix; });
    if (choice == std::end(kConverters)) return std::nullopt;
    const ConverterSettings settings = converterSettings();
    const std::string root = rootFolderOf(settings);
    QUILL_INFO(quill::log::kDatabase, "root dir: {}", root);
    const std::string jsonPath = withJsonSuffix(path);
    return Conversion{converterPath(settings, root, choice->program),
                      converterArguments(kind, path, jsonPath), jsonPath};
}

bool DatabaseItem::dbFile2Json(const std::string& program,
                               const std::vector<std::string>& arguments) {
    const ConverterSettings settings = converterSettings();
    quill::os::ProcessOptions options;
    options.timeout = settings.timeout;
    options.interrupted = settings.interrupted;
    const quill::os::ProcessResult result =
        quill::os::runProcess(quill::os::pathFromUtf8(program), arguments, options);
    if (result.end == quill::os::ProcessEnd::NotStarted) {
        QUILL_ERROR(quill::log::kDatabase, "start process error: {}, executeName: {}, args: {}",
                    result.error, program, joined(arguments));
        m_lastError = "start process error: " + result.error + ", executeName: " + program;
        return false;
    }
    if (!result.succeeded()) return fail(reasonOf(result));
    // What a converter left out of a damaged file.
    if (const std::string said = withoutLineEnd(result.output); !said.empty()) {
        QUILL_WARN(quill::log::kDatabase, "{}", said);
    }
    return true;
}

bool DatabaseItem::convertAndRead(const std::string& path, const Conversion& conversion) {
    const ConverterSettings settings = converterSettings();
    // Everyone who wants this document goes in turn, or one would remove what another is about to
    // read. Without the lock the rounds below still end in a whole document or in a failure.
    const DocumentLock lock(conversion.jsonPath, settings.timeout * 2, settings.interrupted);
    // Under the lock no converter of ours writes here, so what lies here was left by a killed one.
    if (lock.held()) removeLeftovers(conversion.jsonPath);
    for (int round = 0; round < kMaxRounds; ++round) {
        if (!removeOldDocument(conversion.jsonPath)) return false;
        QUILL_INFO(quill::log::kDatabase, "begin extern parse ...");
        if (!dbFile2Json(conversion.program, conversion.arguments)) {
            QUILL_ERROR(quill::log::kDatabase, "dbFile2Json failed, dbc path: {}", path);
            if (lock.held()) removeLeftovers(conversion.jsonPath);
            if (!isFolderWritable(path))
                (void)fail("the folder of " + path + " may not be written to");
            return false;
        }
        QUILL_INFO(quill::log::kDatabase, "end extern parse ...");
        const ReadResult result = parseJsonFile(conversion.jsonPath);
        if (result == ReadResult::Done) return true;
        if (result == ReadResult::Failed) break;
    }
    QUILL_ERROR(quill::log::kDatabase, "parseJsonFile failed, json file path : {}",
                conversion.jsonPath);
    return false;
}

bool DatabaseItem::removeOldDocument(const std::string& jsonPath) {
    if (isForeignDocument(jsonPath, documentKey())) {
        QUILL_WARN(
            quill::log::kDatabase,
            "{} was not written by a converter and is now replaced by the database's document",
            jsonPath);
    }
    std::string reason;
    if (!removeDocument(jsonPath, reason))
        return fail("cannot replace " + jsonPath + ": " + reason);
    return true;
}

DatabaseItem::ReadResult DatabaseItem::parseJsonFile(const std::string& jsonPath) {
    QUILL_INFO(quill::log::kDatabase, "begin parseJsonFile ...");
    DocumentContent content = readDocumentFile(jsonPath);
    if (content.state == DocumentContent::State::Missing) {
        (void)fail(jsonPath + ": the converter's document is not there");
        return ReadResult::Vanished;
    }
    std::string fault = content.fault;
    if (content.state == DocumentContent::State::Whole && readDocument(content.root, fault)) {
        m_lastError.clear();
        QUILL_INFO(quill::log::kDatabase, "end parseJsonFile");
        return ReadResult::Done;
    }
    (void)fail(jsonPath + ":" + fault);
    clear();
    return ReadResult::Failed;
}

void DatabaseItem::saveTo(QJsonObject& storage) const {
    QJsonArray blocks;
    for (const std::string& block : m_context) {
        const QByteArray bytes(block.data(), static_cast<qsizetype>(block.size()));
        blocks.append(QString::fromLatin1(bytes.toBase64()));
    }
    storage.insert(QLatin1String(kContextKey), blocks);
}

bool DatabaseItem::restoreFrom(const QJsonObject& storage) {
    const QJsonValue stored = storage.value(QLatin1String(kContextKey));
    if (!stored.isArray() && !stored.isUndefined() && !stored.isNull()) return false;
    std::vector<std::string> blocks;
    for (const QJsonValue value : stored.toArray()) {
        const auto decoded = QByteArray::fromBase64Encoding(
            value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
        if (!value.isString() || !decoded) return false;
        blocks.emplace_back(decoded.decoded.constData(),
                            static_cast<size_t>(decoded.decoded.size()));
    }
    m_context = std::move(blocks);
    return true;
}

}  // namespace Model::database
