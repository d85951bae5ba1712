#include <array>
#include <utility>

#include "dbc/DbcGrammar.h"
#include "dbc/DbcTokens.h"

namespace quill::dbjson::dbc {

namespace {

namespace pegtl = tao::pegtl;
using StatementInput =
    pegtl::memory_input<pegtl::tracking_mode::lazy, pegtl::eol::lf_crlf, const char*>;

template <class Rule>
const char* readRule(const char* begin, const char* end, StatementTokens& statement) {
    StatementInput in(begin, end, "");
    if (!pegtl::parse<Rule, grammar::Collect>(in, statement)) {
        statement.fail(in.current(), "another token");
    }
    return in.current();
}

using RuleReader = const char* (*)(const char*, const char*, StatementTokens&);

// In the order of Keyword.
constexpr std::array<RuleReader, 23> kRuleReaders = {
    nullptr,
    &readRule<grammar::Version>,
    nullptr,  // the list of new symbols needs to look ahead by lines
    &readRule<grammar::BitTiming>,
    &readRule<grammar::Nodes>,
    &readRule<grammar::ValueTable>,
    &readRule<grammar::Message>,
    &readRule<grammar::Signal>,
    &readRule<grammar::MessageSenders>,
    &readRule<grammar::EnvironmentVariable>,
    &readRule<grammar::EnvironmentData>,
    &readRule<grammar::Comment>,
    &readRule<grammar::AttributeDefinition>,
    &readRule<grammar::AttributeDefault>,
    &readRule<grammar::AttributeValue>,
    &readRule<grammar::Values>,
    &readRule<grammar::SignalType>,
    &readRule<grammar::SignalGroup>,
    &readRule<grammar::MultiplexedValue>,
    &readRule<grammar::AttributeDefinition>,
    &readRule<grammar::AttributeDefault>,
    &readRule<grammar::RelationValue>,
    &readRule<grammar::Ignored>,
};

// The most frequent ones first.
constexpr std::array<std::pair<std::string_view, Keyword>, 33> kKeywords = {{
    {"SG_", Keyword::Signal},
    {"BO_", Keyword::Message},
    {"BA_", Keyword::AttributeValue},
    {"CM_", Keyword::Comment},
    {"VAL_", Keyword::Values},
    {"BA_DEF_", Keyword::AttributeDefinition},
    {"BA_DEF_DEF_", Keyword::AttributeDefault},
    {"VAL_TABLE_", Keyword::ValueTable},
    {"SIG_VALTYPE_", Keyword::SignalType},
    {"SG_MUL_VAL_", Keyword::MultiplexedValue},
    {"BO_TX_BU_", Keyword::MessageSenders},
    {"SIG_GROUP_", Keyword::SignalGroup},
    {"EV_", Keyword::EnvironmentVariable},
    {"ENVVAR_DATA_", Keyword::EnvironmentData},
    {"BA_REL_", Keyword::RelationValue},
    {"BA_DEF_REL_", Keyword::RelationDefinition},
    {"BA_DEF_DEF_REL_", Keyword::RelationDefault},
    {"BU_", Keyword::Nodes},
    {"BS_", Keyword::BitTiming},
    {"NS_", Keyword::NewSymbols},
    {"VERSION", Keyword::Version},
    {"EV_DATA_", Keyword::Ignored},
    {"CAT_DEF_", Keyword::Ignored},
    {"CAT_", Keyword::Ignored},
    {"SGTYPE_", Keyword::Ignored},
    {"SGTYPE_VAL_", Keyword::Ignored},
    {"SIG_TYPE_REF_", Keyword::Ignored},
    {"SIGTYPE_VALTYPE_", Keyword::Ignored},
    {"BA_DEF_SGTYPE_", Keyword::Ignored},
    {"BA_DEF_DEF_SGTYPE_", Keyword::Ignored},
    {"BA_SGTYPE_", Keyword::Ignored},
    {"BA_SGTYPE_REL_", Keyword::Ignored},
    {"SG_TYPE_", Keyword::Ignored},
}};

}  // namespace

Keyword keywordOf(std::string_view word) {
    // This runs for every name of a list, and nearly all of them end here.
    if (word.size() < 3 || (word.back() != '_' && word.back() != 'N')) return Keyword::Unknown;
    for (const auto& [text, keyword] : kKeywords) {
        if (word == text) return keyword;
    }
    return Keyword::Unknown;
}

const char* readStatement(Keyword keyword, const char* begin, const char* end,
                          StatementTokens& statement) {
    statement.clear();
    return kRuleReaders[static_cast<size_t>(keyword)](begin, end, statement);
}

const char* skipBlank(const char* begin, const char* end) {
    StatementInput in(begin, end, "");
    static_cast<void>(pegtl::parse<grammar::Blank>(in));
    return in.current();
}

const char* skipWord(const char* begin, const char* end) {
    StatementInput in(begin, end, "");
    return pegtl::parse<grammar::Word>(in) ? in.current() : begin;
}

}  // namespace quill::dbjson::dbc
