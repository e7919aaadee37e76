// The diagnostics of to_ustring and to_string on non-ASCII input, which QX_CHAR_ENCODING_DIAG
// turns on as the library is loaded. CTest runs each suite in a process with the variable set as
// its name says; run by hand with the variable the other way, a suite skips.
#include <fl/i18n/conversion.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <tuple>

namespace {

using namespace fl::i18n;

// Runs every call, checks the length of its result and what it wrote to std::cout; then again
// with the variable flipped, which was read once, at load, and so changes nothing.
void expect_output(bool enabled)
{
    const std::string string_input = "to_ustring called with non-ASCII string input: ";
    const std::string pointer_input = "to_ustring called with non-ASCII char * input: ";
    const std::string to_string_input = "to_string called with non-ASCII input: ";
    const std::tuple<std::function<std::size_t()>, std::size_t, std::string> calls[] = {
        {[] { return to_ustring(std::string("plain ASCII 123")).size(); }, 15, ""},
        {[] { return to_ustring("plain").size() + to_string(u"plain").size(); }, 10, ""},
        {[] { return to_ustring(std::string()).size() + to_string(ustring()).size(); }, 0, ""},
        {[] { return to_ustring(std::string("caf\xC3\xA9")).size(); }, 4, string_input + "caf\xC3\xA9\n"},
        {[] { return to_ustring(std::string("\xE9x")).size(); }, 2, string_input + "\xE9x\n"},
        // The scan stops at a zero byte, and the text shown ends there; all bytes are converted.
        {[] { return to_ustring(std::string("a\0\xE9", 3)).size(); }, 3, ""},
        {[] { return to_ustring(std::string("\xC3\xA9\0z", 4)).size(); }, 3, string_input + "\xC3\xA9\n"},
        {[] { return to_ustring("\xC3\xA9t\xC3\xA9").size(); }, 3, pointer_input + "\xC3\xA9t\xC3\xA9\n"},
        {[] { return to_string(u"caf\u00E9").size(); }, 5, to_string_input + "caf\xC3\xA9\n"},
        {[] { return to_string(ustring(u"a\0\u00E9", 3)).size(); }, 4, ""},
        {[] { return to_string(ustring{u'x', 0xD800}).size(); }, 4, to_string_input + "x\xEF\xBF\xBD\n"},
    };
    for (const bool flipped : {false, true}) {
        if (flipped) enabled ? ::unsetenv("QX_CHAR_ENCODING_DIAG") : ::setenv("QX_CHAR_ENCODING_DIAG", "1", 1);
        for (std::size_t i = 0; i < std::size(calls); ++i) {
            testing::internal::CaptureStdout();
            const std::size_t length = std::get<0>(calls[i])();
            EXPECT_EQ(testing::internal::GetCapturedStdout(), enabled ? std::get<2>(calls[i]) : "") << "call " << i;
            EXPECT_EQ(length, std::get<1>(calls[i])) << "call " << i;
        }
    }
}

TEST(EncodingDiagnosticsOn, NonAsciiInputIsReported)
{
    if (std::getenv("QX_CHAR_ENCODING_DIAG") == nullptr)
        GTEST_SKIP() << "needs QX_CHAR_ENCODING_DIAG in the environment (CTest sets it)";
    expect_output(true);
}

TEST(EncodingDiagnosticsOff, NothingIsReported)
{
    if (std::getenv("QX_CHAR_ENCODING_DIAG") != nullptr)
        GTEST_SKIP() << "needs QX_CHAR_ENCODING_DIAG absent from the environment (CTest removes it)";
    expect_output(false);
}

}  // namespace
