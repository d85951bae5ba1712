#include "unit/rvconverter/RecordWriting.h"

#include <gtest/gtest.h>

#include <future>
#include <utility>

#include "rvconverter/ConvertToolkit.h"

namespace quill::testing {

void writeRecords(const std::string& path, uint32_t type, std::vector<rv::RecordHandle> records) {
    constexpr size_t kListLength = 700;
    const size_t count = records.size();
    rv::ConvertInfo info;
    info.type = type;
    info.path = std::wstring(path.begin(), path.end());
    const auto context = rv::ConvertToolkit::createConvertContextPtr(info);
    ASSERT_NE(context, nullptr) << rv::ConvertToolkit::lastError();
    auto convert = std::async(std::launch::async, [&] { context->convertFrames(); });
    auto persist = std::async(std::launch::async, [&] { context->persistFrames(); });
    std::vector<rv::RecordHandle> list;
    for (rv::RecordHandle& record : records) {
        list.push_back(std::move(record));
        if (list.size() == kListLength) context->acceptRecords(std::exchange(list, {}));
    }
    context->acceptRecords(std::move(list));
    context->endOfInput();
    convert.wait();
    persist.wait();
    EXPECT_EQ(context->exportedFrames(), count);
    context->close();
    EXPECT_EQ(context->errorText(), "");
}

}  // namespace quill::testing
