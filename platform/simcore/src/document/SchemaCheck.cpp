#include "document/SchemaCheck.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>
#include <vector>

#include "document/NetworkSchema.h"
#include "document/SchemaMessages.h"

namespace simcore::document {

namespace {

using Adapter = valijson::adapters::NlohmannJsonAdapter;
using nlohmann::json;

// The schema as it is published, and prepared for checking.
struct NetworkSchema {
    json published;
    valijson::Schema compiled;

    NetworkSchema() : published(json::parse(networkSchemaText())) {
        json checked = published;
        // Matching takes a recursion for every character, too deep for payloads; and names that
        // break a rule are reported without a place. Both are left to the reader.
        checked["definitions"]["bytes"].erase("pattern");
        checked["properties"]["buses"].erase("propertyNames");
        valijson::SchemaParser(valijson::SchemaParser::kDraft7)
            .populateSchema(Adapter(checked), compiled);
    }
};

const NetworkSchema& networkSchema() {
    static const NetworkSchema kSchema;
    return kSchema;
}

// A checker that looks for every mistake keeps a few hundred bytes for each.
bool isSearchable(const json& document) {
    constexpr size_t kMostValues = 100'000;
    std::vector<const json*> open{&document};
    for (size_t seen = 0; !open.empty(); ++seen) {
        if (seen > kMostValues) return false;
        const json& value = *open.back();
        open.pop_back();
        if (!value.is_structured()) continue;
        if (value.size() > kMostValues) return false;
        for (const json& part : value) open.push_back(&part);
    }
    return true;
}

// Mistakes inside of a part are reported again for the part; these say no more.
bool isRepeated(const std::string& description) {
    return description.rfind("Failed to validate", 0) == 0 && !isChoiceMistake(description);
}

}  // namespace

std::string checkAgainstSchema(const json& document) {
    const NetworkSchema& schema = networkSchema();
    valijson::Validator validator;
    if (validator.validate(schema.compiled, Adapter(document), nullptr)) return {};
    if (!isSearchable(document)) return "document: has a mistake and is too large to say where";
    valijson::ValidationResults results;
    static_cast<void>(validator.validate(schema.compiled, Adapter(document), &results));
    const valijson::ValidationResults::Error* worst = nullptr;
    const auto rank = [](const auto& error) {
        return std::pair(error.context.size(), isChoiceMistake(error.description) ? 0 : 1);
    };
    for (const auto& error : results) {
        if (isRepeated(error.description)) continue;
        if (worst == nullptr || rank(error) < rank(*worst)) worst = &error;
    }
    if (worst == nullptr) return "document: does not fit its schema";
    return schemaMessage(schema.published, document, worst->context, worst->description);
}

}  // namespace simcore::document
