#include <gtest/gtest.h>

#include <utility>

#include "netproto/base64.h"
#include "netproto/md5.h"

namespace tintoral {
namespace {

std::string encoded(std::string_view text) {
    std::string out = "old";
    const std::size_t length = EncodeBase64(text, out);
    EXPECT_EQ(length, out.size());
    return out;
}

std::string decoded(std::string_view text) {
    std::string out = "old";
    const std::size_t length = DecodeBase64(text, out);
    EXPECT_EQ(length, out.size());
    return out;
}

// The texts of RFC 1321's own suite, and lengths around the end of a block as md5sum has them.
TEST(Md5, AgreesWithKnownDigests) {
    const std::pair<std::string, const char*> rows[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
        {std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"},
        {std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
        {std::string(64, 'a'), "014842d480b571495a4a0363793f7367"},
        {std::string(120, 'a'), "5f61c0ccad4cac44c75ff505e1f1e537"},
        {std::string(1000, 'a'), "cabe45dcc9ae5b66ba86600cca6b8ba8"},
    };
    for (const auto& [text, digest] : rows) EXPECT_EQ(md5Hex(text), digest) << text.size();
}

TEST(Base64, EncodesAsRfc4648) {
    const std::pair<const char*, const char*> rows[] = {{"", ""},
                                                        {"f", "Zg=="},
                                                        {"fo", "Zm8="},
                                                        {"foo", "Zm9v"},
                                                        {"foob", "Zm9vYg=="},
                                                        {"fooba", "Zm9vYmE="},
                                                        {"foobar", "Zm9vYmFy"},
                                                        {"\xFB\xEF\xFF", "++//"}};
    for (const auto& [text, expected] : rows) EXPECT_EQ(encoded(text), expected);
    EXPECT_EQ(encoded(std::string_view("fo\0bar", 6)), "Zm8=") << "ends at a NUL, as meant";
}

TEST(Base64, DecodesCredentialsAndKeepsItsOwnPlusAndSlash) {
    for (const char* text :
         {"", "u:p", "user:secret", "Aladdin:open sesame", "j\xC3\xBC:0123456789"})
        EXPECT_EQ(decoded(encoded(text)), text);
    // Were "+" 62 and "/" 63, these would be FB EF BE and FF FF FF.
    EXPECT_EQ(decoded("++++"), "\xBE\xFB\xEF");
    EXPECT_EQ(decoded("////"), "\xCF\x3C\xF3");
    EXPECT_EQ(decoded("*,-."), std::string("\xBB\x0C\x72"));
    EXPECT_EQ(decoded("A\nBC"), std::string("\x00\x00\x42", 3)) << "anything else is 0";
    EXPECT_EQ(decoded("Zg"), "f") << "a group that is cut off yields its whole bytes";
    EXPECT_EQ(decoded("Zg==Zg=="), "f");
}

}  // namespace
}  // namespace tintoral
