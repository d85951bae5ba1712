#pragma once

#include <tao/pegtl.hpp>

// What the grammars of the text formats share: blanks, comments in the manner of C, numbers.
namespace quill::dbjson::grammar {

namespace pegtl = tao::pegtl;

struct LineComment : pegtl::seq<pegtl::string<'/', '/'>, pegtl::until<pegtl::eolf>> {};
// An open comment ends with the file, where what should follow is then missed. Failing here instead
// would read to the end again and again.
struct BlockComment : pegtl::seq<pegtl::string<'/', '*'>,
                                 pegtl::until<pegtl::sor<pegtl::string<'*', '/'>, pegtl::eof>>> {};
struct Blank : pegtl::star<pegtl::sor<pegtl::plus<pegtl::space>, LineComment, BlockComment>> {};

struct Sign : pegtl::one<'+', '-'> {};
struct Exponent : pegtl::seq<pegtl::one<'e', 'E'>, pegtl::opt<Sign>, pegtl::plus<pegtl::digit>> {};
struct UnsignedDecimal
    : pegtl::seq<pegtl::plus<pegtl::ranges<'0', '9', '.', '.'>>, pegtl::opt<Exponent>> {};

}  // namespace quill::dbjson::grammar
