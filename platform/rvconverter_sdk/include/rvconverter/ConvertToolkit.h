#pragma once

#include <memory>
#include <string>

#include "rvconverter/ConvertContext.h"
#include "rvconverter/ConvertInfo.h"
#include "rvconverter/export.h"

namespace rv {

class RVCONVERTER_API ConvertToolkit {
public:
    // Creates the output file and the context that fills it. Null for a type that is not written
    // and for a file that cannot be created; then nothing is left on disk.
    [[nodiscard]] static std::shared_ptr<ConvertContext> createConvertContextPtr(
        const ConvertInfo& info);

    // Why the last creation on this thread failed; empty after one that succeeded.
    [[nodiscard]] static std::string lastError();
};

}  // namespace rv
