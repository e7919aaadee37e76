// File-system checks that need a process of their own: an ASCII default encoding and the
// temporary-directory variables. CTest runs each test alone with QXI18N_SCENARIO naming it and
// the environment it needs.
#include "filesystem_test_support.hpp"
#include "locale/locale_context.hpp"
#include "locale/locale_impl.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/file_open.hpp>
#include <fl/i18n/locale.hpp>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using namespace qx_test;

class scenario : public testing::Test {
protected:
    void SetUp() override
    {
        const char* wanted = std::getenv("QXI18N_SCENARIO");
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        if (wanted == nullptr || name != wanted)
            GTEST_SKIP() << "runs only in a process of its own (QXI18N_SCENARIO=" << name << ")";
    }
};

template <class Converter, class Char>
auto convert(const Converter& c, const std::basic_string<Char>& s)
{
    return c.convert(s.data(), s.size());
}

// A global locale whose encoding is ASCII, where U+00E9 has no byte. Pushing it changes the
// process for good, hence the process of its own.
TEST_F(scenario, ascii_default_encoding)
{
    auto& context = fl::i18n::detail::locale_context();
    {
        std::lock_guard<std::mutex> lock(context.global_mutex);
        context.push_entry(std::make_unique<fl::i18n::QxLocaleImpl>(context.registry, "en_US.US-ASCII"));
    }
    const std::string encoding = fl::i18n::QxLocale::global().getEncoding();
    ASSERT_FALSE(icu_convert<char>(encoding.c_str(), ustring(u"caf\u00E9"), true)) << encoding;
    for (const ustring text : {u"caf\u00E9", u"soft\u00ADhyphen", u"plain", u"\U0001F600"}) {
        const auto lenient = icu_convert<char>(encoding.c_str(), text, false);
        EXPECT_EQ(convert(fs::codecvt_ustring_to_filesystem(true), text), lenient);
        EXPECT_EQ(fs::detail::to_filesystem_bytes(text), lenient);
        if (text == u"plain")
            EXPECT_EQ(convert(fs::codecvt_ustring_to_filesystem(false), text), "plain");
        else
            EXPECT_THROW(convert(fs::codecvt_ustring_to_narrow_string(false), text), fs::CvtInvalidCharacter);
    }
    const std::string bytes = "caf\xE9";
    EXPECT_THROW(convert(fs::codecvt_filesystem_to_ustring(false), bytes), fs::CvtInvalidCharacter);
    EXPECT_EQ(convert(fs::codecvt_narrow_string_to_ustring(true), bytes), icu_convert<char16_t>(encoding.c_str(), bytes, false));
    EXPECT_EQ(fs::to_ustring(boost::filesystem::path(bytes)), icu_convert<char16_t>(encoding.c_str(), bytes, false));
    // A name the encoding cannot hold is a name that names nothing.
    errno = 0;
    EXPECT_EQ(fs::fopen(ustring(u"/tmp/caf\u00E9"), "r", fs::codecvt_ustring_to_filesystem(false)), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

// QXI18N_TEMP_VARIABLES: names tried first, separated by ","; QXI18N_EXPECTED_TEMP: the answer.
TEST_F(scenario, temp_directory)
{
    std::vector<std::string> names;
    std::istringstream list(std::getenv("QXI18N_TEMP_VARIABLES") ? std::getenv("QXI18N_TEMP_VARIABLES") : "");
    for (std::string name; std::getline(list, name, ',');)
        names.push_back(name);
    const ustring found = names.empty() ? fs::temp_directory_name() : fs::temp_directory_name(names);
    const char* expected = std::getenv("QXI18N_EXPECTED_TEMP");
    ASSERT_NE(expected, nullptr);
    EXPECT_EQ(fs::detail::to_filesystem_bytes(found), expected);
}

}  // namespace
