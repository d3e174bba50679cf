#include "platform/Base64.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(Base64, WritesAndReadsTheKnownExamples) {
    const std::pair<std::string_view, std::string_view> examples[] = {{"", ""},
                                                                      {"f", "Zg=="},
                                                                      {"fo", "Zm8="},
                                                                      {"foo", "Zm9v"},
                                                                      {"foob", "Zm9vYg=="},
                                                                      {"fooba", "Zm9vYmE="},
                                                                      {"\xFF\xFE", "//4="}};
    for (const auto& [bytes, text] : examples) {
        EXPECT_EQ(base64(bytes), text);
        EXPECT_EQ(bytesOfBase64(text), bytes);
    }
}

TEST(Base64, ReadsBackEveryByte) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes += static_cast<char>(i);
        EXPECT_EQ(bytesOfBase64(base64(bytes)), bytes);
    }
}

TEST(Base64, RefusesAnyOtherText) {
    for (const std::string_view text : {"Z", "Zg", "Zg=", "Zg===", "====", "Z===", "Zg==Zg==",
                                        "Zm=v", "Zm9v\n", "Zm9-", "Zh==", "Zm9="}) {
        EXPECT_FALSE(bytesOfBase64(text)) << text;
    }
}

} // namespace
} // namespace ombrel
