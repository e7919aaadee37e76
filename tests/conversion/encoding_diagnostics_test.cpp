// The diagnostics of to_ustring and to_string on non-ASCII input, which QX_CHAR_ENCODING_DIAG
// turns on as the library is loaded. CTest runs each suite in a process with the variable set as
// its name says; run by hand with the variable the other way, a suite skips.
#include <fl/i18n/conversion.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

namespace {

using namespace fl::i18n;

const std::string string_prefix = "to_ustring called with non-ASCII string input: ";
const std::string pointer_prefix = "to_ustring called with non-ASCII char * input: ";
const std::string ustring_prefix = "to_string called with non-ASCII input: ";

// Runs every call and checks the length of its result and what it wrote to std::cout.
void expect_output(bool enabled)
{
    const struct {
        std::function<std::size_t()> call;
        std::size_t length;
        std::string output;  // with diagnostics on
    } calls[] = {
        {[] { return to_ustring(std::string("plain ASCII 123")).size(); }, 15, ""},
        {[] { return to_ustring("plain ASCII 123").size(); }, 15, ""},
        {[] { return to_string(u"plain ASCII 123").size(); }, 15, ""},
        {[] { return to_ustring(std::string()).size() + to_string(ustring()).size(); }, 0, ""},
        {[] { return to_ustring(std::string("caf\xC3\xA9")).size(); }, 4, string_prefix + "caf\xC3\xA9\n"},
        {[] { return to_ustring(std::string("\xE9x")).size(); }, 2, string_prefix + "\xE9x\n"},
        // The scan stops at a zero byte, and the text shown ends there; all bytes are converted.
        {[] { return to_ustring(std::string("a\0\xE9", 3)).size(); }, 3, ""},
        {[] { return to_ustring(std::string("\xC3\xA9\0z", 4)).size(); }, 3, string_prefix + "\xC3\xA9\n"},
        {[] { return to_ustring("\xC3\xA9t\xC3\xA9").size(); }, 3, pointer_prefix + "\xC3\xA9t\xC3\xA9\n"},
        {[] { return to_string(u"caf\u00E9").size(); }, 5, ustring_prefix + "caf\xC3\xA9\n"},
        {[] { return to_string(ustring(u"a\0\u00E9", 3)).size(); }, 4, ""},
        {[] { return to_string(ustring{u'x', 0xD800}).size(); }, 4, ustring_prefix + "x\xEF\xBF\xBD\n"},
    };
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        testing::internal::CaptureStdout();
        const std::size_t length = calls[i].call();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), enabled ? calls[i].output : std::string()) << "call " << i;
        EXPECT_EQ(length, calls[i].length) << "call " << i;
    }
}

TEST(EncodingDiagnosticsOn, NonAsciiInputIsReported)
{
    if (std::getenv("QX_CHAR_ENCODING_DIAG") == nullptr)
        GTEST_SKIP() << "needs QX_CHAR_ENCODING_DIAG in the environment (CTest sets it)";
    expect_output(true);
    // The variable was read once, at load: removing it now changes nothing.
    ::unsetenv("QX_CHAR_ENCODING_DIAG");
    expect_output(true);
}

TEST(EncodingDiagnosticsOff, NothingIsReported)
{
    if (std::getenv("QX_CHAR_ENCODING_DIAG") != nullptr)
        GTEST_SKIP() << "needs QX_CHAR_ENCODING_DIAG absent from the environment (CTest removes it)";
    expect_output(false);
    ::setenv("QX_CHAR_ENCODING_DIAG", "1", 1);
    expect_output(false);
}

}  // namespace
