#pragma once

#include <algorithm>
#include <tao/pegtl.hpp>

#include "common/TextGrammar.h"
#include "ldf/LdfTokens.h"

// The grammar of a whole LIN description file. It takes blanks anywhere, sections in any order,
// and semicolons and commas that hand-written files add or leave out at ends of lists.
namespace quill::dbjson::ldf::grammar {

namespace pegtl = tao::pegtl;
using dbjson::grammar::Blank;
using dbjson::grammar::Sign;
using dbjson::grammar::UnsignedDecimal;

struct NameCharacter
    : pegtl::ranges<'a', 'z', 'A', 'Z', '0', '9', '_', '_', '\x80', '\xff', '$', '$'> {};
struct Name : pegtl::plus<NameCharacter> {};
struct Hexadecimal : pegtl::seq<pegtl::one<'0'>, pegtl::one<'x', 'X'>, pegtl::plus<pegtl::xdigit>> {
};
struct Decimal : pegtl::seq<pegtl::opt<Sign>, UnsignedDecimal> {};
// A name may begin with a digit in the wild; a number is one only when no letter follows.
struct Number : pegtl::seq<pegtl::sor<Hexadecimal, Decimal>, pegtl::not_at<NameCharacter>> {};
struct NumberWithUnit : pegtl::sor<Hexadecimal, Decimal> {};
struct TextBody : pegtl::star<pegtl::not_one<'"'>> {};

template <class Rule>
inline constexpr const char* kExpected = "something else";
template <>
inline constexpr const char* kExpected<Name> = "expected a name";
template <>
inline constexpr const char* kExpected<Number> = "expected a number";
template <>
inline constexpr const char* kExpected<NumberWithUnit> = "expected a number";

template <char C>
struct Mark : pegtl::one<C> {};
template <>
inline constexpr const char* kExpected<Mark<'"'>> = "text without closing quote";
template <>
inline constexpr const char* kExpected<Mark<':'>> = "expected ':'";
template <>
inline constexpr const char* kExpected<Mark<','>> = "expected ','";
template <>
inline constexpr const char* kExpected<Mark<';'>> = "expected ';'";
template <>
inline constexpr const char* kExpected<Mark<'='>> = "expected '='";
template <>
inline constexpr const char* kExpected<Mark<'{'>> = "expected '{'";
template <>
inline constexpr const char* kExpected<Mark<'}'>> = "expected '}'";

// The rule must match here, else the file is broken at this place.
template <class Rule>
struct Need {
    using rule_t = Need;
    using subs_t = pegtl::type_list<Rule>;

    template <pegtl::apply_mode A, pegtl::rewind_mode M, template <class...> class Action,
              template <class...> class Control, class Input>
    static bool match(Input& in, LdfBuilder& builder) {
        if (Control<Rule>::template match<A, M, Action, Control>(in, builder)) return true;
        throw SyntaxError{in.current(), kExpected<Rule>};
    }
};
struct Quoted : pegtl::seq<pegtl::one<'"'>, TextBody, Need<Mark<'"'>>> {};
template <>
inline constexpr const char* kExpected<Quoted> = "expected a text in quotes";
template <class... Rules>
struct Then : pegtl::seq<pegtl::seq<Need<Rules>, Blank>...> {};
template <char C>
struct Opt : pegtl::opt<pegtl::one<C>, Blank> {};
template <class... Rules>
struct If : pegtl::seq<pegtl::seq<Rules, Blank>...> {};

template <class Word>
struct Key : pegtl::seq<Word, pegtl::not_at<NameCharacter>, Blank> {};

// Section heads. "Word { ... }" around any number of Items.
template <class Word, class Item>
struct Section
    : pegtl::seq<Key<Word>, Then<Mark<'{'>>, pegtl::star<Item>, Then<Mark<'}'>>, Opt<';'>> {};

struct Names : pegtl::seq<If<Name>, pegtl::star<If<pegtl::one<','>>, If<Name>>> {};
struct NameList : pegtl::seq<pegtl::opt<Names>, Opt<','>> {};

// Settings of the head.
struct SettingKey
    : pegtl::sor<TAO_PEGTL_STRING("LIN_protocol_version"), TAO_PEGTL_STRING("LIN_language_version"),
                 TAO_PEGTL_STRING("LDF_file_revision"), TAO_PEGTL_STRING("Channel_name"),
                 TAO_PEGTL_STRING("LIN_speed")> {};
struct SettingValue : pegtl::sor<Quoted, NumberWithUnit> {};
template <>
inline constexpr const char* kExpected<SettingValue> = "expected a text in quotes or a number";
struct Setting : pegtl::seq<If<SettingKey>, Then<Mark<'='>, SettingValue>,
                            pegtl::star<NameCharacter>, Blank, Then<Mark<';'>>> {};
struct BigEndian
    : pegtl::seq<Key<TAO_PEGTL_STRING("LIN_sig_byte_order_big_endian")>, Then<Mark<';'>>> {};
struct LittleEndian
    : pegtl::seq<Key<TAO_PEGTL_STRING("LIN_sig_byte_order_little_endian")>, Then<Mark<';'>>> {};
struct FileMark : pegtl::seq<Key<TAO_PEGTL_STRING("LIN_description_file")>, Then<Mark<';'>>> {};
template <>
inline constexpr const char* kExpected<FileMark> =
    "not a LIN description file (expected LIN_description_file;)";

// Nodes.
struct WithUnit : pegtl::seq<Need<NumberWithUnit>, Blank,
                             pegtl::star<pegtl::sor<pegtl::ascii::alpha, pegtl::one<'%'>>>, Blank> {
};
struct MasterLine : pegtl::seq<Key<TAO_PEGTL_STRING("Master")>, Then<Mark<':'>, Name>,
                               pegtl::star<If<pegtl::one<','>>, WithUnit>, Then<Mark<';'>>> {};
struct SlavesLine
    : pegtl::seq<Key<TAO_PEGTL_STRING("Slaves")>, Then<Mark<':'>>, NameList, Then<Mark<';'>>> {};
struct NodesSection : Section<TAO_PEGTL_STRING("Nodes"), pegtl::sor<MasterLine, SlavesLine>> {};

// Signals.
struct ArrayMark : pegtl::one<'{'> {};
struct InitialArray : pegtl::seq<ArrayMark, Blank, Then<Number>,
                                 pegtl::star<If<pegtl::one<','>>, Then<Number>>, Then<Mark<'}'>>> {
};
struct SignalLine : pegtl::seq<If<Name>, Then<Mark<':'>, Number, Mark<','>>,
                               pegtl::sor<InitialArray, Then<Number>>,
                               pegtl::opt<If<pegtl::one<','>>, NameList>, Then<Mark<';'>>> {};
struct SignalsSection : Section<TAO_PEGTL_STRING("Signals"), SignalLine> {};
struct DiagnosticSignalsSection : Section<TAO_PEGTL_STRING("Diagnostic_signals"), SignalLine> {};
struct AddressLine : pegtl::seq<If<Name>, Then<Mark<':'>, Number, Mark<';'>>> {};
struct AddressesSection : Section<TAO_PEGTL_STRING("Diagnostic_addresses"), AddressLine> {};

// Frames. The rules of unconditional and diagnostic frames differ only in what they feed.
template <bool IsDiagnostic>
struct FrameHead : pegtl::seq<If<Name>, Then<Mark<':'>, Number>,
                              pegtl::opt<If<pegtl::one<','>>, Then<Name>,
                                         pegtl::opt<If<pegtl::one<','>>, Then<Number>>>> {};
template <bool IsDiagnostic>
struct FramePlace : pegtl::seq<If<Name>, Then<Mark<','>, Number, Mark<';'>>> {};
template <bool IsDiagnostic>
struct FrameBlock : pegtl::seq<FrameHead<IsDiagnostic>, Then<Mark<'{'>>,
                               pegtl::star<FramePlace<IsDiagnostic>>, Then<Mark<'}'>>, Opt<';'>> {};
struct FramesSection : Section<TAO_PEGTL_STRING("Frames"), FrameBlock<false>> {};
struct DiagnosticFramesSection : Section<TAO_PEGTL_STRING("Diagnostic_frames"), FrameBlock<true>> {
};
struct SporadicLine : pegtl::seq<If<Name>, Then<Mark<':'>>, NameList, Then<Mark<';'>>> {};
struct SporadicSection : Section<TAO_PEGTL_STRING("Sporadic_frames"), SporadicLine> {};
struct EventLine
    : pegtl::seq<If<Name>, Then<Mark<':'>>, pegtl::sor<If<Number>, Then<Name, Mark<','>, Number>>,
                 pegtl::opt<If<pegtl::one<','>>, NameList>, Then<Mark<';'>>> {};
struct EventSection : Section<TAO_PEGTL_STRING("Event_triggered_frames"), EventLine> {};

struct GroupHead : pegtl::seq<If<Name>, Then<Mark<':'>, Number>> {};
struct GroupPlace : pegtl::seq<If<Name>, Then<Mark<','>, Number, Mark<';'>>> {};
struct GroupBlock
    : pegtl::seq<GroupHead, Then<Mark<'{'>>, pegtl::star<GroupPlace>, Then<Mark<'}'>>, Opt<';'>> {};
struct GroupsSection : Section<TAO_PEGTL_STRING("Signal_groups"), GroupBlock> {};

// Node attributes.
struct NodeHead : If<Name> {};
struct Unit : pegtl::seq<pegtl::plus<pegtl::sor<pegtl::ascii::alpha, pegtl::one<'%'>>>> {};
struct PropertyValue
    : pegtl::seq<pegtl::sor<Quoted, pegtl::seq<Number, Blank, pegtl::opt<Unit>>,
                            pegtl::seq<NumberWithUnit, Blank, pegtl::opt<Unit>>, Name>,
                 Blank> {};
template <>
inline constexpr const char* kExpected<PropertyValue> = "expected a value";
struct ConfigurableFrame
    : pegtl::seq<If<Name>, pegtl::opt<If<pegtl::one<'='>>, Then<Number>>, Then<Mark<';'>>> {};
struct ConfigurableFrames : Section<TAO_PEGTL_STRING("configurable_frames"), ConfigurableFrame> {};
struct NodeProperty
    : pegtl::seq<If<Name>, Then<Mark<'='>>, Need<PropertyValue>,
                 pegtl::star<If<pegtl::one<','>>, Need<PropertyValue>>, Then<Mark<';'>>> {};
struct NodeBlock : pegtl::seq<NodeHead, Then<Mark<'{'>>,
                              pegtl::star<pegtl::sor<ConfigurableFrames, NodeProperty>>,
                              Then<Mark<'}'>>, Opt<';'>> {};
struct NodeAttributesSection : Section<TAO_PEGTL_STRING("Node_attributes"), NodeBlock> {};

// Schedules.
struct CommandArgument : pegtl::sor<If<Number>, If<Name>> {};
struct CommandArguments
    : pegtl::seq<If<Mark<'{'>>, pegtl::star<CommandArgument, Opt<','>>, Then<Mark<'}'>>> {};
struct DelayWord : pegtl::seq<TAO_PEGTL_STRING("delay"), pegtl::not_at<NameCharacter>> {};
template <>
inline constexpr const char* kExpected<DelayWord> = "expected 'delay'";
struct TableHead : If<Name> {};
struct TableEntry : pegtl::seq<If<Name>, pegtl::opt<CommandArguments>, Then<DelayWord>, WithUnit,
                               Then<Mark<';'>>> {};
struct TableBlock
    : pegtl::seq<TableHead, Then<Mark<'{'>>, pegtl::star<TableEntry>, Then<Mark<'}'>>, Opt<';'>> {};
struct ScheduleSection : Section<TAO_PEGTL_STRING("Schedule_tables"), TableBlock> {};

// Encodings.
struct EncodingHead : If<Name> {};
struct TrailingText : pegtl::opt<If<pegtl::one<','>>, Then<Quoted>> {};
struct LogicalValue : pegtl::seq<Key<TAO_PEGTL_STRING("logical_value")>, Then<Mark<','>, Number>,
                                 TrailingText, Then<Mark<';'>>> {};
struct PhysicalValue
    : pegtl::seq<Key<TAO_PEGTL_STRING("physical_value")>,
                 Then<Mark<','>, Number, Mark<','>, Number, Mark<','>, Number, Mark<','>, Number>,
                 TrailingText, Then<Mark<';'>>> {};
struct BcdValue : pegtl::seq<Key<TAO_PEGTL_STRING("bcd_value")>, Then<Mark<';'>>> {};
struct AsciiValue : pegtl::seq<Key<TAO_PEGTL_STRING("ascii_value")>, Then<Mark<';'>>> {};
struct EncodingBlock
    : pegtl::seq<EncodingHead, Then<Mark<'{'>>,
                 pegtl::star<pegtl::sor<LogicalValue, PhysicalValue, BcdValue, AsciiValue>>,
                 Then<Mark<'}'>>, Opt<';'>> {};
struct EncodingSection : Section<TAO_PEGTL_STRING("Signal_encoding_types"), EncodingBlock> {};
struct RepresentationLine : pegtl::seq<If<Name>, Then<Mark<':'>>, NameList, Then<Mark<';'>>> {};
struct RepresentationSection
    : Section<TAO_PEGTL_STRING("Signal_representation"), RepresentationLine> {};

// Anything else: up to its semicolon or its closing brace. Braces are counted, not recursed into,
// so that nesting has no limit to hit.
struct BalancedBraces {
    template <class Input>
    static bool match(Input& in) {
        if (in.empty() || *in.current() != '{') return false;
        size_t depth = 0;
        const char* at = in.current();
        for (; at != in.end(); ++at) {
            if (*at == '"') at = std::find(at + 1, in.end(), '"');
            if (at == in.end()) break;
            if (*at == '{') ++depth;
            if (*at == '}' && --depth == 0) break;
        }
        if (at == in.end()) throw SyntaxError{at, "expected '}'"};
        in.bump(static_cast<size_t>(at + 1 - in.current()));
        return true;
    }
};
struct CompositeSection : pegtl::seq<Key<TAO_PEGTL_STRING("composite")>, pegtl::at<Mark<'{'>>,
                                     BalancedBraces, Blank, Opt<';'>> {};
struct UnknownName : Name {};
struct UnknownRest
    : pegtl::sor<pegtl::one<';'>, pegtl::seq<BalancedBraces, Blank, pegtl::opt<pegtl::one<';'>>>> {
};
template <>
inline constexpr const char* kExpected<UnknownRest> = "expected ';' or '{'";
struct Unknown
    : pegtl::seq<UnknownName, pegtl::star<pegtl::not_one<';', '{', '}'>>, Then<UnknownRest>> {};

struct Statement
    : pegtl::sor<Setting, BigEndian, LittleEndian, NodesSection, CompositeSection, SignalsSection,
                 DiagnosticSignalsSection, AddressesSection, FramesSection, SporadicSection,
                 EventSection, DiagnosticFramesSection, NodeAttributesSection, ScheduleSection,
                 GroupsSection, EncodingSection, RepresentationSection, Unknown> {};
struct End : pegtl::eof {};
template <>
inline constexpr const char* kExpected<End> = "expected a section";
struct File : pegtl::seq<Blank, Need<FileMark>, pegtl::star<Statement>, Need<End>> {};

template <class Rule>
struct Collect : pegtl::nothing<Rule> {};

template <TokenKind Kind>
struct Add {
    template <class ActionInput>
    static void apply(const ActionInput& in, LdfBuilder& builder) {
        builder.add(Kind, in.begin(), in.end());
    }
};
template <>
struct Collect<Name> : Add<TokenKind::Name> {};
template <>
struct Collect<SettingKey> : Add<TokenKind::Name> {};
template <>
struct Collect<Number> : Add<TokenKind::Number> {};
template <>
struct Collect<NumberWithUnit> : Add<TokenKind::Number> {};
template <>
struct Collect<Unit> : Add<TokenKind::Name> {};
template <>
struct Collect<TextBody> : Add<TokenKind::Text> {};
// Marks the begin of an array of initial values among the tokens.
template <>
struct Collect<ArrayMark> : Add<TokenKind::Braces> {};

template <void (LdfBuilder::*Operation)()>
struct Do {
    static void apply0(LdfBuilder& builder) { (builder.*Operation)(); }
};
template <>
struct Collect<Setting> : Do<&LdfBuilder::setting> {};
template <>
struct Collect<BigEndian> : Do<&LdfBuilder::bigEndian> {};
template <>
struct Collect<MasterLine> : Do<&LdfBuilder::master> {};
template <>
struct Collect<SlavesLine> : Do<&LdfBuilder::slaves> {};
template <>
struct Collect<SignalLine> : Do<&LdfBuilder::signal> {};
template <>
struct Collect<AddressLine> : Do<&LdfBuilder::diagnosticAddress> {};
template <>
struct Collect<SporadicLine> : Do<&LdfBuilder::sporadicFrame> {};
template <>
struct Collect<EventLine> : Do<&LdfBuilder::eventTriggeredFrame> {};
template <>
struct Collect<GroupHead> : Do<&LdfBuilder::groupHead> {};
template <>
struct Collect<GroupPlace> : Do<&LdfBuilder::groupPlace> {};
template <>
struct Collect<NodeHead> : Do<&LdfBuilder::nodeHead> {};
template <>
struct Collect<NodeProperty> : Do<&LdfBuilder::nodeProperty> {};
template <>
struct Collect<ConfigurableFrame> : Do<&LdfBuilder::configurableFrame> {};
template <>
struct Collect<TableHead> : Do<&LdfBuilder::tableHead> {};
template <>
struct Collect<TableEntry> : Do<&LdfBuilder::tableEntry> {};
template <>
struct Collect<EncodingHead> : Do<&LdfBuilder::encodingHead> {};
template <>
struct Collect<RepresentationLine> : Do<&LdfBuilder::representation> {};

template <bool IsDiagnostic>
struct Collect<FrameHead<IsDiagnostic>> {
    static void apply0(LdfBuilder& builder) { builder.frameHead(IsDiagnostic); }
};
template <bool IsDiagnostic>
struct Collect<FramePlace<IsDiagnostic>> {
    static void apply0(LdfBuilder& builder) { builder.framePlace(IsDiagnostic); }
};
template <EncodingKind Kind>
struct Encode {
    static void apply0(LdfBuilder& builder) { builder.encodingValue(Kind); }
};
template <>
struct Collect<LogicalValue> : Encode<EncodingKind::Logical> {};
template <>
struct Collect<PhysicalValue> : Encode<EncodingKind::Physical> {};
template <>
struct Collect<BcdValue> : Encode<EncodingKind::Bcd> {};
template <>
struct Collect<AsciiValue> : Encode<EncodingKind::Ascii> {};
template <>
struct Collect<UnknownName> {
    template <class ActionInput>
    static void apply(const ActionInput& in, LdfBuilder& builder) {
        builder.unknown(in.begin());
    }
};

}  // namespace quill::dbjson::ldf::grammar
