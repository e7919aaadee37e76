// Helpers shared by the file-system tests: raw-ICU reference conversions, a scratch directory,
// a guard that replaces libc calls of the layer, and running a check as an unprivileged user.
#pragma once

#include "filesystem/filesystem_internal.hpp"

#include <fl/i18n/ustring.hpp>

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace qx_test {

using fl::ustring;

struct ucnv_closer {
    void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};

inline std::unique_ptr<UConverter, ucnv_closer> icu_open(const char* encoding, bool strict)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, ucnv_closer> converter(ucnv_open(encoding, &status));
    EXPECT_TRUE(U_SUCCESS(status)) << encoding;
    if (strict) {
        ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    }
    return converter;
}

// Raw ICU through a fresh converter: the reference result, or nullopt where a strict one fails.
inline std::optional<std::string> icu_from_unicode(const char* encoding, const ustring& text, bool strict)
{
    const auto converter = icu_open(encoding, strict);
    std::string out(text.size() * 4 + 4, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t n = ucnv_fromUChars(converter.get(), out.data(), int32_t(out.size()), text.data(),
                                      int32_t(text.size()), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    out.resize(std::size_t(n));
    return out;
}

inline std::optional<ustring> icu_to_unicode(const char* encoding, const std::string& bytes, bool strict)
{
    const auto converter = icu_open(encoding, strict);
    ustring out(bytes.size() * 2 + 2, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t n = ucnv_toUChars(converter.get(), out.data(), int32_t(out.size()), bytes.data(),
                                    int32_t(bytes.size()), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    out.resize(std::size_t(n));
    return out;
}

// A fresh directory under the build tree, removed with its contents at the end of the test.
class scratch_test : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (std::filesystem::path(QXI18N_TEST_BINARY_DIR) / "tests" / "filesystem" / "scratch_")
                                  .string() + std::string(6, 'X');
        ASSERT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
        root = pattern;
    }
    void TearDown() override
    {
        std::error_code ignored;
        std::filesystem::permissions(root, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(root, ignored);
    }
    std::string at(const std::string& name) const { return root + "/" + name; }
    ustring u16at(const std::string& name) const { return ustring(fl::filesystem::detail::from_filesystem_bytes(at(name))); }
    std::string root;
};

// Replaces libc calls of the layer for one scope.
class libc_override {
public:
    libc_override() : saved_(fl::filesystem::detail::libc()) {}
    ~libc_override() { fl::filesystem::detail::libc() = saved_; }
    libc_override(const libc_override&) = delete;
    libc_override& operator=(const libc_override&) = delete;

private:
    fl::filesystem::detail::system_calls saved_;
};

}  // namespace qx_test
