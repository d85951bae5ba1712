#pragma once

#include <cstring>
#include <tao/pegtl.hpp>

#include "common/TextGrammar.h"
#include "dbc/DbcTokens.h"

// The grammar of one statement, without its keyword. Names are read generously: public databases
// hold names that begin with a digit, and letters of national code pages.
namespace quill::dbjson::dbc::grammar {

namespace pegtl = tao::pegtl;
using dbjson::grammar::Blank;
using dbjson::grammar::Sign;
using dbjson::grammar::UnsignedDecimal;

struct WordCharacter : pegtl::ranges<'a', 'z', 'A', 'Z', '0', '9', '_', '_', '\x80', '\xff', '.',
                                     '.', '-', '-', '$', '$'> {};
struct WordStart : pegtl::ranges<'a', 'z', 'A', 'Z', '0', '9', '_', '_', '\x80', '\xff', '$', '$'> {
};
struct Word : pegtl::seq<WordStart, pegtl::star<WordCharacter>> {};

// A word that does not begin the next statement.
struct PlainWord {
    template <class Input>
    static bool match(Input& in) {
        const char* const end = skipWord(in.current(), in.end());
        const auto size = static_cast<size_t>(end - in.current());
        if (size == 0 || keywordOf({in.current(), size}) != Keyword::Unknown) return false;
        in.bump_in_this_line(size);
        return true;
    }
};

// What C libraries print for values that are no numbers: inf, nan, 1.#INF, 1.#QNAN.
struct NotFinite
    : pegtl::seq<pegtl::sor<pegtl::istring<'i', 'n', 'f'>, pegtl::istring<'n', 'a', 'n'>,
                            pegtl::string<'1', '.', '#'>>,
                 pegtl::star<pegtl::alnum>> {};
struct Number : pegtl::seq<pegtl::opt<Sign>, pegtl::sor<NotFinite, UnsignedDecimal>> {};
struct Unsigned : pegtl::plus<pegtl::digit> {};
// The limits of a signal may be left out.
struct NumberOrNothing
    : pegtl::opt<pegtl::seq<pegtl::opt<Sign>, pegtl::sor<NotFinite, UnsignedDecimal>>> {};

// Text in quotes, from quote to quote. A quote after an odd number of backslashes is part of it.
struct Quoted {
    template <class Input>
    static bool match(Input& in) {
        const char* const begin = in.current();
        if (in.empty() || *begin != '"') return false;
        for (const char* at = begin + 1;; ++at) {
            at = static_cast<const char*>(std::memchr(at, '"', static_cast<size_t>(in.end() - at)));
            if (at == nullptr) return false;
            const char* slash = at;
            while (slash[-1] == '\\') --slash;
            if ((at - slash) % 2 != 0) continue;
            in.bump(static_cast<size_t>(at + 1 - begin));
            return true;
        }
    }
};

template <char C>
struct Mark : pegtl::one<C> {};

// Names of the rules in messages.
template <class Rule>
inline constexpr const char* kExpected = "something else";
template <>
inline constexpr const char* kExpected<Word> = "a name";
template <>
inline constexpr const char* kExpected<PlainWord> = "a name";
template <>
inline constexpr const char* kExpected<Number> = "a number";
template <>
inline constexpr const char* kExpected<Unsigned> = "a whole number";
template <>
inline constexpr const char* kExpected<Quoted> = "a text in quotes";
template <>
inline constexpr const char* kExpected<Mark<':'>> = "':'";
template <>
inline constexpr const char* kExpected<Mark<'|'>> = "'|'";
template <>
inline constexpr const char* kExpected<Mark<'@'>> = "'@'";
template <>
inline constexpr const char* kExpected<Mark<','>> = "','";
template <>
inline constexpr const char* kExpected<Mark<'('>> = "'('";
template <>
inline constexpr const char* kExpected<Mark<')'>> = "')'";
template <>
inline constexpr const char* kExpected<Mark<'['>> = "'['";
template <>
inline constexpr const char* kExpected<Mark<']'>> = "']'";
template <>
inline constexpr const char* kExpected<Mark<'-'>> = "'-'";

// The rule must match here; where it does not, the statement is damaged at this place. No
// exception is thrown: a damaged file may have a million of these.
template <class Rule>
struct Need {
    using rule_t = Need;
    using subs_t = pegtl::type_list<Rule>;

    template <pegtl::apply_mode A, pegtl::rewind_mode M, template <class...> class Action,
              template <class...> class Control, class Input>
    static bool match(Input& in, StatementTokens& statement) {
        if (Control<Rule>::template match<A, M, Action, Control>(in, statement)) return true;
        statement.fail(in.current(), kExpected<Rule>);
        return false;
    }
};
// A rule that must match, and the blank space after it.
template <class... Rules>
struct Then : pegtl::seq<pegtl::seq<Need<Rules>, Blank>...> {};

struct MissingSemicolon : pegtl::success {};
struct End : pegtl::sor<pegtl::one<';'>, MissingSemicolon> {};
struct OptionalEnd : pegtl::opt<pegtl::one<';'>> {};

struct ByteOrder : pegtl::one<'0', '1'> {};
template <>
inline constexpr const char* kExpected<ByteOrder> = "the byte order, 0 or 1";
struct SignMark : pegtl::one<'+', '-'> {};
template <>
inline constexpr const char* kExpected<SignMark> = "'+' or '-'";

struct Version : pegtl::seq<Blank, Then<Quoted>, OptionalEnd> {};

struct BitTimingNumbers
    : pegtl::seq<Unsigned, pegtl::star<Blank, pegtl::one<':', ','>, Blank, Unsigned>> {};
struct BitTiming
    : pegtl::seq<Blank, Then<Mark<':'>>, pegtl::opt<BitTimingNumbers, Blank>, OptionalEnd> {};

struct PlainWordList : pegtl::star<PlainWord, Blank, pegtl::opt<pegtl::one<','>, Blank>> {};
struct Nodes : pegtl::seq<Blank, Then<Mark<':'>>, PlainWordList, OptionalEnd> {};

struct ValueTexts : pegtl::star<Number, Blank, Need<Quoted>, Blank> {};
struct ValueTable : pegtl::seq<Blank, Then<Word>, ValueTexts, End> {};
// Of a signal (identifier and name) or of an environment variable (name); texts or a table's name.
struct ValuesOwner : pegtl::sor<pegtl::seq<pegtl::at<Unsigned, pegtl::not_at<WordCharacter>>,
                                           Unsigned, Blank, Need<Word>>,
                                Need<Word>> {};
struct Values : pegtl::seq<Blank, ValuesOwner, Blank,
                           pegtl::opt<pegtl::not_at<Number>, PlainWord, Blank>, ValueTexts, End> {};

struct Message : pegtl::seq<Blank, Then<Unsigned, Word, Mark<':'>, Unsigned>, pegtl::opt<PlainWord>,
                            Blank, OptionalEnd> {};

// Another receiver follows a comma anywhere, or blanks in the same line.
struct MoreReceivers : pegtl::star<pegtl::sor<pegtl::seq<Blank, pegtl::one<','>, Blank, PlainWord>,
                                              pegtl::seq<pegtl::plus<pegtl::blank>, PlainWord>>> {};
struct Receivers
    : pegtl::seq<pegtl::opt<PlainWord, MoreReceivers>, pegtl::star<Blank, pegtl::one<',', ';'>>> {};
struct Signal
    : pegtl::seq<Blank, Then<Word>, pegtl::opt<Word, Blank>,
                 Then<Mark<':'>, Unsigned, Mark<'|'>, Unsigned, Mark<'@'>, ByteOrder, SignMark,
                      Mark<'('>, Number, Mark<','>, Number, Mark<')'>, Mark<'['>, NumberOrNothing,
                      Mark<'|'>, NumberOrNothing, Mark<']'>, Quoted>,
                 Receivers> {};

struct MessageSenders : pegtl::seq<Blank, Then<Unsigned, Mark<':'>>, PlainWordList, End> {};

struct EnvironmentVariable
    : pegtl::seq<Blank,
                 Then<Word, Mark<':'>, Number, Mark<'['>, NumberOrNothing, Mark<'|'>,
                      NumberOrNothing, Mark<']'>, Quoted, Number, Number, Word>,
                 PlainWordList, End> {};
struct EnvironmentData : pegtl::seq<Blank, Then<Word, Mark<':'>, Unsigned>, End> {};

template <char A, char B>
struct Key : pegtl::seq<pegtl::string<A, B, '_'>, pegtl::not_at<WordCharacter>> {};
struct NodeKey : Key<'B', 'U'> {};
struct MessageKey : Key<'B', 'O'> {};
struct SignalKey : Key<'S', 'G'> {};
struct VariableKey : Key<'E', 'V'> {};
struct Object : pegtl::sor<pegtl::seq<SignalKey, Blank, Then<Unsigned, Word>>,
                           pegtl::seq<MessageKey, Blank, Then<Unsigned>>,
                           pegtl::seq<NodeKey, Blank, Then<Word>>,
                           pegtl::seq<VariableKey, Blank, Then<Word>>> {};

// "CM_ 145 "text"" occurs, with the identifier of a frame.
struct Comment : pegtl::seq<Blank, pegtl::opt<pegtl::sor<Object, pegtl::seq<Unsigned, Blank>>>,
                            Then<Quoted>, End> {};

struct Value : pegtl::sor<Quoted, Number, Word> {};
template <>
inline constexpr const char* kExpected<Value> = "a value";
struct DefinitionArguments
    : pegtl::star<pegtl::sor<Quoted, Number>, Blank, pegtl::opt<pegtl::one<','>, Blank>> {};
struct AttributeDefinition
    : pegtl::seq<Blank, pegtl::opt<Word, Blank>, Then<Quoted, Word>, DefinitionArguments, End> {};
struct AttributeDefault : pegtl::seq<Blank, Then<Quoted, Value>, End> {};
struct AttributeValue : pegtl::seq<Blank, Then<Quoted>, pegtl::opt<Object>, Then<Value>, End> {};
struct RelationWords : pegtl::star<pegtl::sor<Quoted, SignalKey, PlainWord, Number>, Blank> {};
struct RelationValue : pegtl::seq<Blank, Then<Quoted, Word>, RelationWords, End> {};

struct SignalType : pegtl::seq<Blank, Then<Unsigned, Word>, pegtl::opt<pegtl::one<':'>, Blank>,
                               Then<Unsigned>, End> {};
struct SignalGroup : pegtl::seq<Blank, Then<Unsigned, Word, Unsigned>,
                                pegtl::opt<pegtl::one<':'>, Blank>, PlainWordList, End> {};
struct RangeOfValues : Then<Unsigned, Mark<'-'>, Unsigned> {};
struct MultiplexedValue : pegtl::seq<Blank, Then<Unsigned, Word, Word>, RangeOfValues,
                                     pegtl::star<pegtl::one<','>, Blank, RangeOfValues>, End> {};

struct Semicolon : pegtl::one<';'> {};
template <>
inline constexpr const char* kExpected<Semicolon> = "';'";
struct Ignored
    : pegtl::seq<pegtl::disable<pegtl::star<pegtl::sor<Quoted, pegtl::not_one<';', '"'>>>>,
                 Need<Semicolon>> {};

template <class Rule>
struct Collect : pegtl::nothing<Rule> {};

template <TokenKind Kind>
struct Add {
    template <class ActionInput>
    static void apply(const ActionInput& in, StatementTokens& statement) {
        statement.add(Kind, in.begin(), in.end());
    }
};
template <>
struct Collect<Word> : Add<TokenKind::Word> {};
template <>
struct Collect<PlainWord> : Add<TokenKind::Word> {};
template <>
struct Collect<ByteOrder> : Add<TokenKind::Word> {};
template <>
struct Collect<SignMark> : Add<TokenKind::Word> {};
template <>
struct Collect<NodeKey> : Add<TokenKind::Word> {};
template <>
struct Collect<MessageKey> : Add<TokenKind::Word> {};
template <>
struct Collect<SignalKey> : Add<TokenKind::Word> {};
template <>
struct Collect<VariableKey> : Add<TokenKind::Word> {};
template <>
struct Collect<Unsigned> : Add<TokenKind::Number> {};
template <>
struct Collect<Number> : Add<TokenKind::Number> {};
template <>
struct Collect<NumberOrNothing> : Add<TokenKind::Number> {};
template <>
struct Collect<Quoted> {
    template <class ActionInput>
    static void apply(const ActionInput& in, StatementTokens& statement) {
        statement.add(TokenKind::Text, in.begin() + 1, in.end() - 1);
    }
};
template <>
struct Collect<MissingSemicolon> {
    static void apply0(StatementTokens& statement) { statement.missingSemicolon = true; }
};

}  // namespace quill::dbjson::dbc::grammar
