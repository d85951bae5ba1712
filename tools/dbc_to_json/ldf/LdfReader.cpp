#include "ldf/LdfReader.h"

#include <string>

#include "ldf/LdfGrammar.h"

namespace quill::dbjson::ldf {

Model readLdf(std::string_view text, Diagnostics& diagnostics) {
    namespace pegtl = tao::pegtl;
    using Input = pegtl::memory_input<pegtl::tracking_mode::lazy, pegtl::eol::lf_crlf, const char*>;
    Model model;
    LdfBuilder builder(model);
    Input in(text.data(), text.data() + text.size(), "");
    try {
        static_cast<void>(pegtl::parse<grammar::File, grammar::Collect>(in, builder));
        builder.finish();
    } catch (const SyntaxError& error) {
        const auto offset = static_cast<size_t>(error.at - text.data());
        const bool atEnd = offset == text.size();
        diagnostics.fail(offset, atEnd ? std::string("unexpected end of file, ") + error.expected
                                       : std::string(error.expected));
    }
    for (const char* const place : builder.unknownPlaces()) {
        diagnostics.warn(static_cast<size_t>(place - text.data()),
                         "unknown section or setting left out");
    }
    return model;
}

}  // namespace quill::dbjson::ldf
